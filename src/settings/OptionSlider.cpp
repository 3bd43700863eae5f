#include "settings/OptionSlider.h"

#include "base/Clock.h"
#include "settings/SymbolView.h"
#include "ui/DesktopColours.h"
#include "ui/KelpStyle.h"

#include <QHBoxLayout>
#include <QMouseEvent>
#include <QPainter>
#include <QSignalBlocker>
#include <QStyle>

#include <algorithm>
#include <cmath>

namespace kelp {

namespace {

constexpr double knobSize = 16;
constexpr double trackWidth = 4;
constexpr int sliderHeight = 24;
constexpr double keepInterval = 0.1; // seconds

int hundredths(double value)
{
    return static_cast<int>(std::lround(value * 100));
}

/// A click anywhere takes the knob there.
class Slider final : public QSlider
{
public:
    explicit Slider(QWidget *parent) : QSlider(Qt::Horizontal, parent)
    {
        setAttribute(Qt::WA_Hover);
        setFixedHeight(sliderHeight);
    }

protected:
    void mousePressEvent(QMouseEvent *event) override
    {
        if (event->button() != Qt::LeftButton)
            return;
        setSliderDown(true);
        setSliderPosition(valueAt(event->position().x()));
    }
    void mouseMoveEvent(QMouseEvent *event) override
    {
        if (isSliderDown())
            setSliderPosition(valueAt(event->position().x()));
    }
    void mouseReleaseEvent(QMouseEvent *event) override
    {
        if (event->button() == Qt::LeftButton)
            setSliderDown(false);
    }
    void wheelEvent(QWheelEvent *event) override { event->ignore(); } // scrolls what it lies in

    void paintEvent(QPaintEvent *) override
    {
        QPainter painter(this);
        painter.setRenderHint(QPainter::Antialiasing);
        const DesktopColours colours = DesktopColours::of(palette());
        const double middle = height() / 2.0;
        const QRectF track(2, middle - trackWidth / 2, width() - 4, trackWidth);
        const double x = knobX();
        paintBox(painter, track, trackWidth / 2, colours.trackOff, Qt::transparent);
        QRectF filled = track;
        if (isMirrored())
            filled.setLeft(x);
        else
            filled.setRight(x);
        paintBox(painter, filled, trackWidth / 2, colours.accent, Qt::transparent);
        const double size = isSliderDown() ? knobSize + 1 : knobSize;
        const QRectF knob(x - size / 2, middle - size / 2, size, size);
        paintBox(painter, knob.translated(0, 0.8).adjusted(-0.4, -0.4, 0.4, 0.4), size, QColor(0, 0, 0, 50),
                 Qt::transparent);
        paintBox(painter, knob, size / 2, Qt::white, QColor(0, 0, 0, 38));
        if (hasFocus())
            paintFocusRing(painter, knob, size / 2, palette());
    }

private:
    [[nodiscard]] bool isMirrored() const { return layoutDirection() == Qt::RightToLeft; }
    [[nodiscard]] double room() const { return width() - knobSize - 4; }
    [[nodiscard]] double knobX() const
    {
        const double part = static_cast<double>(sliderPosition() - minimum()) / (maximum() - minimum());
        return knobSize / 2 + 2 + room() * (isMirrored() ? 1 - part : part);
    }
    [[nodiscard]] int valueAt(double x) const
    {
        const double part = std::clamp((x - knobSize / 2 - 2) / room(), 0.0, 1.0);
        return minimum() + static_cast<int>(std::lround((isMirrored() ? 1 - part : part) * (maximum() - minimum())));
    }
};

} // namespace

OptionSlider::OptionSlider(Clock &clock, const QString &name, Range range, const QString &lowSymbol,
                           const QString &highSymbol, QWidget *parent)
    : QWidget(parent), m_clock(clock), m_slider(new Slider(this))
{
    constexpr int symbolSize = 15;
    m_slider->setAccessibleName(name);
    m_slider->setRange(hundredths(range.least), hundredths(range.most));
    m_slider->setSingleStep(5);
    m_slider->setPageStep(10);
    auto *row = new QHBoxLayout(this);
    row->setContentsMargins(3, 0, 0, 0);
    row->setSpacing(8);
    row->addWidget(new SymbolView(lowSymbol, symbolSize, Ink::Secondary, this));
    row->addWidget(m_slider, 1);
    row->addWidget(new SymbolView(highSymbol, symbolSize, Ink::Secondary, this));
    setFocusProxy(m_slider);
    connect(m_slider, &QSlider::valueChanged, this, &OptionSlider::follow);
    connect(m_slider, &QSlider::sliderReleased, this, &OptionSlider::settle);
}

void OptionSlider::show(double value)
{
    if (m_slider->isSliderDown())
        return;
    const QSignalBlocker blocker(m_slider);
    m_slider->setValue(hundredths(std::clamp(value, 0.0, 1.0)));
}

void OptionSlider::follow()
{
    Q_EMIT moved(value());
    const bool wasUnsettled = std::exchange(m_isUnsettled, true);
    if (!m_slider->isSliderDown())
        settle();
    else if (!wasUnsettled) // each value is a file to be written
        m_clock.after(keepInterval, this, [this] { settle(); });
}

void OptionSlider::settle()
{
    if (std::exchange(m_isUnsettled, false))
        Q_EMIT chosen(value());
}

} // namespace kelp
