#pragma once

#include <QSlider>
#include <QWidget>

namespace kelp {

class Clock;

/// A slider between two symbols. While it is dragged it tells where it is, and now and then that the value is to be
/// kept.
class OptionSlider final : public QWidget
{
    Q_OBJECT

public:
    struct Range
    {
        double least;
        double most;
    };

    /// `name` is what a screen reader calls it.
    OptionSlider(Clock &clock, const QString &name, Range range, const QString &lowSymbol, const QString &highSymbol,
                 QWidget *parent = nullptr);

    /// Moves it there without a signal; what lies outside the range is shown at its end. Not while it is dragged.
    void show(double value);
    [[nodiscard]] double value() const { return m_slider->value() / 100.0; }
    /// Keeps what a drag has not yet kept.
    void settle();

Q_SIGNALS:
    /// It is there now.
    void moved(double value);
    /// The value is to be kept: at the end of a drag, and ten times a second while it lasts.
    void chosen(double value);

private:
    void follow();

    Clock &m_clock;
    QSlider *m_slider; ///< in hundredths
    bool m_isUnsettled = false;
};

} // namespace kelp
