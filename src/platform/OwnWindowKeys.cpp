#include "platform/OwnWindowKeys.h"

#include "platform/EventTime.h"

#include <QCoreApplication>
#include <QKeyEvent>

namespace kelp {

namespace {

bool isModifier(int key)
{
    return (key >= Qt::Key_Shift && key <= Qt::Key_ScrollLock) || (key >= Qt::Key_Super_L && key <= Qt::Key_Hyper_R) ||
           (key >= Qt::Key_AltGr && key <= Qt::Key_Multi_key) || key == Qt::Key_Mode_switch;
}

/// Keyboards on the screen and other programs that type may send keys without a time.
double timeOf(const QKeyEvent &key)
{
    return key.timestamp() == 0 ? monotonicTime() : eventTime(static_cast<std::uint32_t>(key.timestamp()));
}

} // namespace

void OwnWindowKeys::start()
{
    QCoreApplication::instance()->installEventFilter(this);
}

bool OwnWindowKeys::eventFilter(QObject *receiver, QEvent *event)
{
    // A window gets each key once, the widgets in it perhaps several times.
    if (event->type() == QEvent::KeyPress && receiver->isWindowType()) {
        const auto &key = static_cast<const QKeyEvent &>(*event);
        if (!isModifier(key.key())) {
            const Qt::KeyboardModifiers held = key.modifiers();
            Q_EMIT pressed({.time = timeOf(key),
                            .text = key.text(),
                            .control = held.testFlag(Qt::ControlModifier),
                            .alt = held.testFlag(Qt::AltModifier) || held.testFlag(Qt::GroupSwitchModifier),
                            .meta = held.testFlag(Qt::MetaModifier),
                            .isRepeat = key.isAutoRepeat()});
        }
    }
    return false;
}

} // namespace kelp
