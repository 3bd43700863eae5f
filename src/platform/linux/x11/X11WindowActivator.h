#pragma once

#include "platform/WindowActivator.h"

#include <QAbstractNativeEventFilter>
#include <QPointer>
#include <QSet>
#include <QWidget>

namespace kelp {

/// Activates a window under X11 on behalf of the user, as a taskbar does. A window that asks for itself is kept behind
/// where the user was in another one last: Kelp is asked by a key, a tray icon or a second start, of which the window
/// manager knows nothing.
class X11WindowActivator final : public WindowActivator, private QAbstractNativeEventFilter
{
public:
    void keepOutOfLists(QWidget &window) override;
    void activate(QWidget &window, const QString &token) override;
    [[nodiscard]] bool isActive(const QWidget &window) const override;
    void whenLeft(QWidget &window, std::function<void()> action) override;

private:
    void tellLists(QWidget &window) const;
    bool nativeEventFilter(const QByteArray &type, void *message, qintptr *result) override;

    QSet<const QObject *> m_unlisted;
    QPointer<QWidget> m_watched;
    std::function<void()> m_left;
};

} // namespace kelp
