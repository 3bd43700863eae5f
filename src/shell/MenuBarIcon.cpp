#include "shell/MenuBarIcon.h"

#include "shell/IconShapes.h"

#include <QPainter>

#include <algorithm>
#include <cmath>

namespace kelp::MenuBarIcon {

namespace {

constexpr double svgSize = 22; ///< that of most panels

QByteArray pathData(const QPainterPath &path)
{
    QByteArray data;
    for (int i = 0; i < path.elementCount(); ++i) {
        const QPainterPath::Element element = path.elementAt(i);
        if (element.type == QPainterPath::MoveToElement)
            data += i == 0 ? "M" : "zM";
        else if (element.type == QPainterPath::LineToElement)
            data += 'L';
        else
            data += element.type == QPainterPath::CurveToElement ? 'C' : ' ';
        data += QByteArray::number(element.x, 'f', 2) + ' ' + QByteArray::number(element.y, 'f', 2);
    }
    return data.isEmpty() ? data : data + 'z';
}

QPainterPath whole(const QList<IconShape> &shapes)
{
    QPainterPath all;
    for (const IconShape &shape : shapes)
        all.addPath(shape.path);
    return all;
}

/// As much of it lies outside of the shapes as inside, where they cover it.
QPen rimPen(const QColor &colour, double pixels)
{
    return QPen(colour, std::max(2.0, pixels / 11), Qt::SolidLine, Qt::FlatCap, Qt::RoundJoin);
}

} // namespace

void paint(QPainter &painter, const QSizeF &size, const Content &content, const Colours &colours)
{
    const double side = std::min(size.width(), size.height());
    const double density =
        painter.device()->devicePixelRatioF() * std::sqrt(std::abs(painter.transform().determinant()));
    const double pixels = side * density;
    if (!(pixels > 0))
        return;
    painter.save();
    painter.setRenderHint(QPainter::Antialiasing);
    painter.scale(1 / density, 1 / density);
    const QList<IconShape> shapes = iconShapes(content, pixels);
    if (colours.rim.isValid())
        painter.strokePath(whole(shapes), rimPen(colours.rim, pixels));
    for (const IconShape &shape : shapes) {
        QColor tone = colours.shape;
        tone.setAlphaF(static_cast<float>(tone.alphaF() * shape.opacity));
        painter.fillPath(shape.path, tone);
    }
    painter.restore();
}

QImage make(double size, const Content &content, const Colours &colours, double devicePixelRatio)
{
    const int pixels = static_cast<int>(std::lround(size * devicePixelRatio));
    QImage image(pixels, pixels, QImage::Format_ARGB32_Premultiplied);
    image.setDevicePixelRatio(devicePixelRatio);
    image.fill(Qt::transparent);
    if (!image.isNull()) {
        QPainter painter(&image);
        paint(painter, {size, size}, content, colours);
    }
    return image;
}

QByteArray svg(const Content &content, const Colours &colours)
{
    const QByteArray side = QByteArray::number(svgSize);
    // GTK colours every shape; KDE replaces the style sheet of this name.
    QByteArray text = "<svg xmlns=\"http://www.w3.org/2000/svg\" width=\"" + side + "\" height=\"" + side +
                      "\" viewBox=\"0 0 " + side + ' ' + side +
                      "\">\n<style type=\"text/css\" id=\"current-color-scheme\">.ColorScheme-Text{color:" +
                      colours.shape.name().toLatin1() + ";}</style>\n";
    const QList<IconShape> shapes = iconShapes(content, svgSize);
    if (colours.rim.isValid()) {
        const QPen pen = rimPen(colours.rim, svgSize);
        text += "<path fill=\"none\" stroke=\"" + pen.color().name().toLatin1() + "\" stroke-opacity=\"" +
                QByteArray::number(pen.color().alphaF(), 'f', 2) + "\" stroke-width=\"" +
                QByteArray::number(pen.widthF()) + "\" stroke-linejoin=\"round\" d=\"" + pathData(whole(shapes)) +
                "\"/>\n";
    }
    for (const IconShape &shape : shapes) {
        text += "<path class=\"ColorScheme-Text\" fill=\"currentColor\"";
        if (shape.opacity < 1)
            text += " opacity=\"" + QByteArray::number(shape.opacity) + '"';
        if (shape.path.fillRule() == Qt::OddEvenFill)
            text += " fill-rule=\"evenodd\"";
        text += " d=\"" + pathData(shape.path) + "\"/>\n";
    }
    return text + "</svg>\n";
}

} // namespace kelp::MenuBarIcon
