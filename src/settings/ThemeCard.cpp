#include "settings/ThemeCard.h"

#include "settings/Pictures.h"
#include "ui/DesktopColours.h"
#include "ui/KelpStyle.h"

#include <QPainter>

namespace kelp {

ThemeCard::ThemeCard(const QString &id, const QString &name, QWidget *parent) : GridTile(id, name, parent) {}

void ThemeCard::setThumbnail(const QImage &thumbnail)
{
    m_thumbnail = thumbnail;
    update();
}

void ThemeCard::paintPicture(QPainter &painter, const QRectF &frame)
{
    if (m_thumbnail.isNull())
        paintBox(painter, frame, radius, DesktopColours::of(palette()).hover, Qt::transparent);
    else
        paintRounded(painter, frame, radius, m_thumbnail);
}

} // namespace kelp
