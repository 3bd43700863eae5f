#include "settings/ImageTile.h"

#include "ui/DesktopColours.h"
#include "ui/KelpStyle.h"

#include <QPainter>

using namespace Qt::StringLiterals;

namespace kelp {

namespace {

const QString choose = u"Choose image…"_s;

} // namespace

ImageTile::ImageTile(const QString &id, const QString &name, QWidget *parent) : ThemeCard(id, name, parent)
{
    setAccessibleName(choose);
}

void ImageTile::setPicture(bool has)
{
    if (m_hasPicture == has)
        return;
    m_hasPicture = has;
    setAccessibleName(has ? QString() : choose);
    update();
}

void ImageTile::paintPicture(QPainter &painter, const QRectF &frame)
{
    if (m_hasPicture) {
        ThemeCard::paintPicture(painter, frame);
        return;
    }
    const DesktopColours colours = DesktopColours::of(palette());
    paintBox(painter, frame, radius, colours.hover, Qt::transparent);
    constexpr double symbolSize = 20;
    paintNote(painter, frame, u"photo-badge-plus"_s, symbolSize, choose);
}

} // namespace kelp
