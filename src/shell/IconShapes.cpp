#include "shell/IconShapes.h"

#include "ui/Fonts.h"

#include <QTransform>

#include <cmath>

using namespace Qt::StringLiterals;

namespace kelp::MenuBarIcon {

namespace {

/// The calendar and the curtain are drawn in a space of 18 × 18 in which y grows upwards.
constexpr double designSize = 18;

QPainterPath rounded(const QRectF &rectangle, double radius)
{
    QPainterPath path;
    path.addRoundedRect(rectangle, radius, radius);
    return path;
}

/// Qt's operations on paths turn curves into lines whose length is right for a drawing of some hundred units.
constexpr double fineness = 64;

QPainterPath scaled(const QPainterPath &path, double factor)
{
    return QTransform::fromScale(factor, factor).map(path);
}

QPainterPath united(const QList<QPainterPath> &paths)
{
    QPainterPath all;
    for (const QPainterPath &each : paths)
        all = all.united(scaled(each, fineness));
    return scaled(all, 1 / fineness);
}

QPainterPath without(const QPainterPath &path, const QPainterPath &other)
{
    return scaled(scaled(path, fineness).subtracted(scaled(other, fineness)), 1 / fineness);
}

QPainterPath outline(const QPainterPath &path, double width)
{
    QPainterPathStroker stroker;
    stroker.setWidth(width * fineness);
    stroker.setJoinStyle(Qt::MiterJoin);
    return scaled(stroker.createStroke(scaled(path, fineness)), 1 / fineness);
}

QPainterPath curtain()
{
    QPainterPath path(QPointF(9.4, 15.8));
    path.cubicTo(QPointF(10.4, 9.0), QPointF(7.0, 3.4), QPointF(2.6, 2.2));
    path.cubicTo(QPointF(1.8, 2.0), QPointF(1.2, 2.6), QPointF(1.2, 3.6));
    path.lineTo(1.2, 8.6);
    path.cubicTo(QPointF(5.6, 8.8), QPointF(8.6, 11.8), QPointF(9.4, 15.8));
    path.closeSubpath();
    return path;
}

/// The calendar without what the curtain and the gap around it take away.
QList<IconShape> calendarAndCurtain()
{
    const QRectF body(6.0, 2.5, 11.6, 10.0);
    const double top = body.y() + body.height(); // y grows upwards

    const QPainterPath frame = outline(rounded(body.adjusted(0.7, 0.7, -0.7, -0.7), 1.8), 1.4);
    const QPainterPath band = rounded({body.x(), top - 3, body.width(), 3.0}, 2.2);
    QPainterPath squared;
    squared.addRect(body.x(), top - 3, body.width(), 1.5);
    const QPainterPath ring = rounded({13.9, 11.0, 1.7, 3.6}, 0.85);
    const QPainterPath gap = united({outline(curtain(), 2.0), curtain()});
    QList<IconShape> shapes{{without(united({frame, band, squared, ring}), gap), 1.0}};
    const auto cell = [&](double x, double y, double opacity) {
        shapes.append({without(rounded({x, y, 2.3, 2.3}, 0.5), gap), opacity});
    };
    cell(10.6, 6.4, 0.4);
    cell(13.6, 6.4, 1.0); // the day that is meant
    cell(10.6, 3.6, 0.4);
    cell(13.6, 3.6, 0.4);
    shapes.append({curtain(), 1.0});
    return shapes;
}

/// A pause sign in a circle, in a space of 22 × 22. Its straight edges are on whole pixels.
QList<IconShape> pauseInCircle(double pixels)
{
    const double unit = pixels / 22;
    const auto whole = [unit](double length) { return std::round(length * unit); };
    const double edge = whole(1);
    const double thickness = std::max(1.0, whole(2));
    QPainterPath disc;
    disc.addEllipse(QRectF(edge, edge, pixels - 2 * edge, pixels - 2 * edge));
    const double inner = edge + thickness;
    QPainterPath hole;
    hole.addEllipse(QRectF(inner, inner, pixels - 2 * inner, pixels - 2 * inner));
    const double left = whole(7);
    const double width = whole(3);
    const auto bar = [&](double x) { return rounded({x, whole(7), width, whole(15) - whole(7)}, 0.6 * unit); };
    return {{without(disc, hole), 1.0}, {united({bar(left), bar(pixels - left - width)}), 1.0}};
}

/// The head of a calendar: a band with two rings. Its edges are on whole pixels.
QPainterPath pageHead(double unit)
{
    const auto whole = [unit](double length) { return std::round(length * unit); };
    const double top = whole(3);
    const double bottom = whole(7);
    const QPainterPath head = rounded({whole(2), top, whole(18), bottom - top}, 2 * unit);
    QPainterPath squared;
    squared.addRect(whole(2), whole(5), whole(18), bottom - whole(5));
    const double width = whole(2);
    const auto ring = [&](double x) { return rounded({x, whole(1), width, whole(3)}, width / 2); };
    return united({head, squared, ring(whole(5)), ring(whole(22) - whole(5) - width)});
}

/// How high letters are, without what round ones stick out above and below.
double ordinaryHeight(const QFont &font, bool isNumber)
{
    QPainterPath path;
    path.addText(0, 0, font, isNumber ? u"1"_s : u"x"_s);
    return path.boundingRect().height();
}

/// `text` in bold letters that stand on a line of whole pixels, as large as there is room.
QPainterPath pageText(const QString &text, double unit)
{
    const bool isNumber = text.at(0).isDigit();
    const double bottom = std::round((isNumber ? 21 : 20) * unit);
    const double height = std::round((isNumber ? 12 : 8) * unit);
    const double widest = std::floor(20 * unit);

    const QFont font = designFont(FontDesign::Default, 100, QFont::Bold);
    QPainterPath letters;
    letters.addText(0, 0, font, text);
    const double scale = height / ordinaryHeight(font, isNumber);
    const QRectF bounds = letters.boundingRect();
    QTransform place;
    place.translate(11 * unit, bottom);
    place.scale(std::min(scale, widest / bounds.width()), scale);
    place.translate(-bounds.center().x(), 0);
    return place.map(letters);
}

/// A calendar's page in a space of 22 × 22.
QList<IconShape> page(const QString &text, double pixels)
{
    const double unit = pixels / 22;
    return {{pageHead(unit), 1.0}, {pageText(text, unit), 1.0}};
}

} // namespace

QList<IconShape> iconShapes(const Content &content, double pixels)
{
    if (content.isPaused)
        return pauseInCircle(pixels);
    if (!content.text.isEmpty())
        return page(content.text, pixels);
    QList<IconShape> shapes = calendarAndCurtain();
    const double scale = pixels / designSize;
    const QTransform upright(scale, 0, 0, -scale, 0, pixels);
    for (IconShape &shape : shapes)
        shape.path = upright.map(shape.path);
    return shapes;
}

} // namespace kelp::MenuBarIcon
