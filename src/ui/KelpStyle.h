#pragma once

#include <QProxyStyle>

class QPainter;

namespace kelp {

/// How Kelp's ordinary windows look: fields, menus, choices, scroll bars and tips with soft corners, hairlines and a
/// clear focus, in the colours of the desktop (DesktopColours).
class KelpStyle final : public QProxyStyle
{
    Q_OBJECT

public:
    KelpStyle();

    void polish(QWidget *widget) override;
    using QProxyStyle::polish;
    void drawPrimitive(PrimitiveElement element, const QStyleOption *option, QPainter *painter,
                       const QWidget *widget) const override;
    void drawControl(ControlElement element, const QStyleOption *option, QPainter *painter,
                     const QWidget *widget) const override;
    void drawComplexControl(ComplexControl control, const QStyleOptionComplex *option, QPainter *painter,
                            const QWidget *widget) const override;
    [[nodiscard]] QSize sizeFromContents(ContentsType type, const QStyleOption *option, const QSize &size,
                                         const QWidget *widget) const override;
    [[nodiscard]] QRect subControlRect(ComplexControl control, const QStyleOptionComplex *option, SubControl part,
                                       const QWidget *widget) const override;
    [[nodiscard]] QRect subElementRect(SubElement element, const QStyleOption *option,
                                       const QWidget *widget) const override;
    [[nodiscard]] int pixelMetric(PixelMetric metric, const QStyleOption *option, const QWidget *widget) const override;
    [[nodiscard]] int styleHint(StyleHint hint, const QStyleOption *option, const QWidget *widget,
                                QStyleHintReturn *data) const override;
};

/// The ring around what has the keyboard's focus, just outside of `frame`.
void paintFocusRing(QPainter &painter, const QRectF &frame, double radius, const QPalette &palette);
/// A line of one device pixel along the inside of `frame`'s edge, or a filled shape with such a line.
void paintBox(QPainter &painter, const QRectF &frame, double radius, const QColor &fill, const QColor &line);

} // namespace kelp
