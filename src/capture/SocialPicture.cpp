#include "capture/SocialPicture.h"

#include "themes/ThemeBackgroundView.h"
#include "ui/Element.h"
#include "ui/Fonts.h"

#include <QPainter>
#include <QSvgRenderer>

using namespace Qt::StringLiterals;

namespace kelp {

namespace {

constexpr QSize size(1200, 630);
/// 2 s after 2001-01-01 00:00 UTC, from which animated layers count.
constexpr Instant shown{978307200 + 2.0};
constexpr double logoSize = 96;

Element logo()
{
    return drawing({logoSize, logoSize}, 0, {.paint = [](QPainter &painter, Instant) {
                       painter.setRenderHint(QPainter::Antialiasing);
                       QSvgRenderer(u":/logo/kelp.svg"_s).render(&painter, QRectF(0, 0, logoSize, logoSize));
                   }});
}

Element words(const QString &what, int pixels, QFont::Weight weight, const QColor &colour)
{
    return text(what).font(designFont(FontDesign::Rounded, pixels, weight)).colour(colour);
}

Element card(const QColor &glow)
{
    const Element name = horizontal(26, {logo(), words(u"Kelp"_s, 56, QFont::Bold, Qt::white)});
    const Element promise = glowing(26, glow,
                                    vertical(4, {words(u"The meeting reminder"_s, 46, QFont::Bold, Qt::white),
                                                 words(u"you can't ignore."_s, 46, QFont::Bold, Qt::white)}));
    return vertical(40, {name, promise, words(u"kelp.app"_s, 22, QFont::DemiBold, QColor(255, 255, 255, 190))});
}

} // namespace

QImage socialPicture()
{
    const OverlayTheme aurora = OverlayTheme::named(u"aurora"_s);
    QImage image(size, QImage::Format_RGB32);
    QPainter painter(&image);
    ThemeBackgroundView(aurora, {.animate = true}).paint(painter, size, shown);
    QColor glow = aurora.accent;
    glow.setAlphaF(0.4F);
    const Arrangement laidOut = sized(size, Qt::AlignCenter, card(glow)).arrange(size.width());
    laidOut.paint(painter, shown);
    return image;
}

} // namespace kelp
