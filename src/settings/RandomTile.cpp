#include "settings/RandomTile.h"

#include "themes/Theme.h"
#include "ui/DesktopColours.h"
#include "ui/KelpStyle.h"

#include <QLinearGradient>
#include <QPainter>

#include <vector>

using namespace Qt::StringLiterals;

namespace kelp {

namespace {

/// A breath of every coloured theme's accent.
QLinearGradient accents(const QRectF &frame, float opacity)
{
    std::vector<QColor> colours;
    for (const OverlayTheme &theme : OverlayTheme::all()) {
        if (theme.accent.saturationF() > 0.2F)
            colours.push_back(theme.accent);
    }
    QLinearGradient gradient(frame.topLeft(), frame.bottomRight());
    for (std::size_t i = 0; i < colours.size(); ++i) {
        QColor colour = colours[i];
        colour.setAlphaF(opacity);
        gradient.setColorAt(colours.size() < 2 ? 0 : static_cast<double>(i) / static_cast<double>(colours.size() - 1),
                            colour);
    }
    return gradient;
}

} // namespace

RandomTile::RandomTile(QWidget *parent) : GridTile(u"random"_s, u"Surprise me"_s, parent) {}

void RandomTile::paintPicture(QPainter &painter, const QRectF &frame)
{
    const DesktopColours colours = DesktopColours::of(palette());
    paintBox(painter, frame, radius, colours.group, Qt::transparent);
    painter.setPen(Qt::NoPen);
    painter.setBrush(accents(frame, colours.dark ? 0.22F : 0.26F));
    painter.drawRoundedRect(frame, radius, radius);
    constexpr double symbolSize = 18; // the picture of a 14-point font's symbol
    paintNote(painter, frame, u"shuffle"_s, symbolSize, text());
}

} // namespace kelp
