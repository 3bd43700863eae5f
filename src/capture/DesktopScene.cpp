#include "capture/DesktopScene.h"

#include "capture/DesktopTags.h"
#include "capture/MockWindows.h"
#include "capture/Wallpaper.h"
#include "ui/Element.h"
#include "ui/Fonts.h"

#include <QLinearGradient>
#include <QPainter>

using namespace Qt::StringLiterals;

namespace kelp {

namespace {

constexpr double barHeight = 22;
constexpr double tileSize = 50;

const QColor barInk(28, 30, 36);

Element barText(const QString &words, QFont::Weight weight = QFont::Medium)
{
    return text(words).font(designFont(FontDesign::Default, 13, weight)).colour(barInk);
}

Element barSymbol(const QString &name, double height)
{
    return tagged(name, symbol(name, height, barInk));
}

/// Half the bar: what stands at one end of it.
Element barHalf(Qt::Alignment alignment, double spacing, std::vector<Element> items)
{
    return sized({DesktopScene::size.width() / 2, barHeight}, alignment,
                 padded({16, 0, 16, 0}, horizontal(spacing, std::move(items))));
}

Element menuBar()
{
    std::vector<Element> menus{barText(u"Finder"_s, QFont::Bold)};
    for (const char *name : {"File", "Edit", "View", "Go", "Window", "Help"})
        menus.push_back(barText(QString::fromLatin1(name)));
    const Element left = barHalf(Qt::AlignLeft, 20, std::move(menus));
    const Element right = barHalf(Qt::AlignRight, 15,
                                  {barSymbol(u"wifi"_s, 16), barSymbol(u"battery-75"_s, 21),
                                   barSymbol(u"calendar-clock"_s, 16), barText(u"Wed 29 Oct  9:59"_s)});
    return layered({filled(Shape::rectangle(), QColor(255, 255, 255, 178),
                           tagged(desktopTag::menuBar, space(DesktopScene::size.width(), barHeight))),
                    horizontal(0, {left, right})});
}

Element tile(const std::array<float, 3> &rgb, const QString &sign)
{
    const QColor colour = QColor::fromRgbF(rgb[0], rgb[1], rgb[2]);
    QLinearGradient light(0, 0, 0, tileSize);
    light.setColorAt(0, colour.lighter(122));
    light.setColorAt(1, colour.darker(108));
    const Element face = sized({tileSize, tileSize}, Qt::AlignCenter,
                               sign.isEmpty() ? space(0, 0) : symbol(sign, 26, QColor(255, 255, 255, 235)));
    return glowing(5, QColor(0, 20, 40, 70),
                   outlined(Shape::rounded(12), QPen(QColor(255, 255, 255, 60), 1), -0.5,
                            filled(Shape::rounded(12), light, tagged(desktopTag::tile, face))));
}

Element dock()
{
    static const std::array<QString, 10> signs{u"dock-compass"_s,   u"dock-chat"_s, u"dock-note"_s, u"dock-wave"_s,
                                               u"calendar-clock"_s, u"dock-sun"_s,  u"dock-mail"_s, u"dock-gear"_s,
                                               u"dock-picture"_s,   u"video"_s};
    std::vector<Element> tiles;
    for (std::size_t i = 0; i < DesktopScene::dockColors.size(); ++i)
        tiles.push_back(tile(DesktopScene::dockColors[i], signs[i]));
    return outlined(Shape::rounded(20), QPen(QColor(255, 255, 255, 90), 1), -0.5,
                    filled(Shape::rounded(20), QColor(240, 248, 250, 92),
                           padded({11, 10, 11, 10}, horizontal(11, std::move(tiles)))));
}

Element desktop()
{
    const auto at = [](Qt::Alignment alignment, const QMarginsF &margins, const Element &child) {
        return sized(DesktopScene::size, alignment, padded(margins, child));
    };
    return layered({drawing(DesktopScene::size, 0,
                            {.paint = [](QPainter &painter, Instant) { paintWallpaper(painter, DesktopScene::size); }}),
                    at(Qt::AlignLeft | Qt::AlignTop, {118, 74, 0, 0}, mockRoadmap()),
                    at(Qt::AlignRight | Qt::AlignTop, {0, 214, 104, 0}, mockInbox()),
                    at(Qt::AlignHCenter | Qt::AlignBottom, {0, 0, 0, 10}, dock()),
                    at(Qt::AlignLeft | Qt::AlignTop, {}, menuBar())});
}

} // namespace

DesktopScene::DesktopScene() : m_arrangement(desktop().arrange(size.width())) {}

void DesktopScene::paint(QPainter &painter, const QString &typed, bool caret) const
{
    const double density = painter.device()->devicePixelRatioF();
    if (m_still.isNull() || m_still.devicePixelRatio() != density) {
        m_still = QImage((size * density).toSize(), QImage::Format_RGB32);
        m_still.setDevicePixelRatio(density);
        QPainter baking(&m_still);
        m_arrangement.paint(baking, {});
    }
    painter.drawImage(QPointF(), m_still);
    paintNote(painter, typed, caret);
}

void DesktopScene::paintNote(QPainter &painter, const QString &typed, bool caret) const
{
    const QRectF line = m_arrangement.frameOf(desktopTag::note).value_or(QRectF());
    const Arrangement note = mockNote(typed, caret).arrange(line.width());
    painter.save();
    painter.translate(line.topLeft());
    note.paint(painter, {});
    painter.restore();
}

QImage DesktopScene::picture(double density, const QString &typed) const
{
    QImage image((size * density).toSize(), QImage::Format_RGB32);
    image.setDevicePixelRatio(density);
    QPainter painter(&image);
    m_arrangement.paint(painter, {});
    paintNote(painter, typed, false);
    return image;
}

} // namespace kelp
