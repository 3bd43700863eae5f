#pragma once

#include <QApplication>
#include <QSet>

namespace kelp {

class OverlayView;

/// Counts what the overlay paints, and notes when each of its windows has shown its first picture.
class OverlayMeter final : public QApplication
{
public:
    using QApplication::QApplication;

    bool notify(QObject *receiver, QEvent *event) override;

    /// Forgets what was seen so far.
    void reset();
    /// Windows that have painted.
    [[nodiscard]] qsizetype painted() const { return m_painted.size(); }
    [[nodiscard]] int paints() const { return m_paints; }

private:
    int m_depth = 0;
    int m_paints = 0;
    QSet<QObject *> m_paintedNow;
    QSet<QObject *> m_painted;
};

} // namespace kelp
