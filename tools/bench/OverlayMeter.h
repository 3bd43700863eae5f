#pragma once

#include <QApplication>
#include <QElapsedTimer>
#include <QSet>

namespace kelp {

class OverlayView;

/// Counts what the overlay paints, and notes when each of its windows has shown its first picture.
class OverlayMeter final : public QApplication
{
public:
    using QApplication::QApplication;

    bool notify(QObject *receiver, QEvent *event) override;

    /// Forgets what was seen so far; from now on time counts.
    void reset();
    /// Windows that have painted.
    [[nodiscard]] qsizetype painted() const { return m_painted.size(); }
    /// Milliseconds from `reset` until the last of them had painted its first picture. What the same event leads to
    /// after that, such as questions to the display server about the focus, is not in it.
    [[nodiscard]] double firstPictures() const { return m_firstPictures; }
    [[nodiscard]] int paints() const { return m_paints; }

private:
    int m_depth = 0;
    int m_paints = 0;
    QSet<QObject *> m_paintedNow;
    QSet<QObject *> m_painted;
    QElapsedTimer m_sinceReset;
    double m_firstPictures = 0;
};

} // namespace kelp
