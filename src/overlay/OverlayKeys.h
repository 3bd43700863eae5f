#pragma once

#include <QObject>
#include <QSet>

#include <functional>

class QKeyEvent;

namespace kelp {

class ScreenCover;

/// The keys that belong to the overlay whichever of its buttons has the focus: Return and Enter, Esc. All others go on
/// to the window.
class OverlayKeys final : public QObject
{
    Q_OBJECT

public:
    /// `isOurs` tells whether an event's receiver belongs to the overlay.
    OverlayKeys(const ScreenCover &cover, std::function<bool(const QObject *)> isOurs, QObject *parent = nullptr);

    void start();
    void stop();

Q_SIGNALS:
    void confirmed(); ///< Return or Enter
    void dismissed(); ///< Esc

protected:
    bool eventFilter(QObject *receiver, QEvent *event) override;

private:
    bool take(const QKeyEvent &event);

    const ScreenCover &m_cover;
    std::function<bool(const QObject *)> m_isOurs;
    /// Native codes of keys that went down before the overlay had the keyboard. Holding them on is no press.
    QSet<quint32> m_held;
};

} // namespace kelp
