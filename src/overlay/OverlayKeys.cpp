#include "overlay/OverlayKeys.h"

#include "platform/ScreenCover.h"

#include <QCoreApplication>
#include <QGuiApplication>
#include <QKeyEvent>
#include <QWindow>

#include <utility>

namespace kelp {

OverlayKeys::OverlayKeys(const ScreenCover &cover, std::function<bool(const QObject *)> isOurs, QObject *parent)
    : QObject(parent), m_cover(cover), m_isOurs(std::move(isOurs))
{
    connect(qGuiApp, &QGuiApplication::focusWindowChanged, this, [this](const QWindow *now) {
        if (now && m_isOurs(now))
            m_held = m_cover.heldKeys();
    });
}

void OverlayKeys::start()
{
    m_held = m_cover.heldKeys();
    QCoreApplication::instance()->installEventFilter(this);
}

void OverlayKeys::stop()
{
    QCoreApplication::instance()->removeEventFilter(this);
}

bool OverlayKeys::eventFilter(QObject *receiver, QEvent *event)
{
    const bool isPress = event->type() == QEvent::KeyPress;
    if ((!isPress && event->type() != QEvent::KeyRelease) || !m_isOurs(receiver))
        return false;
    const auto &key = static_cast<const QKeyEvent &>(*event);
    if (isPress && take(key)) {
        event->accept(); // or it would go on to the receiver's parent
        return true;
    }
    if (!isPress && !key.isAutoRepeat())
        m_held.remove(key.nativeScanCode());
    return false;
}

bool OverlayKeys::take(const QKeyEvent &event)
{
    const bool isConfirm = event.key() == Qt::Key_Return || event.key() == Qt::Key_Enter;
    if (!isConfirm && event.key() != Qt::Key_Escape)
        return false;
    if (event.isAutoRepeat() || m_held.contains(event.nativeScanCode()))
        return true;
    if (isConfirm)
        Q_EMIT confirmed();
    else
        Q_EMIT dismissed();
    return true;
}

} // namespace kelp
