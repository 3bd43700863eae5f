#include "platform/linux/evdev/EvdevKeyboard.h"

#include <QFile>
#include <QSocketNotifier>

#include <ctime>
#include <utility>

#include <fcntl.h>
#include <libevdev/libevdev.h>
#include <unistd.h>

namespace kelp {

namespace {

/// Power buttons and mice have keys, too.
bool isKeyboard(const libevdev *device)
{
    return libevdev_has_event_code(device, EV_KEY, KEY_A) && libevdev_has_event_code(device, EV_KEY, KEY_LEFTSHIFT) &&
           libevdev_has_event_code(device, EV_KEY, KEY_SPACE);
}

} // namespace

std::shared_ptr<EvdevKeyboard> EvdevKeyboard::open(const QString &path, Take take, std::function<void()> lost)
{
    const int descriptor = ::open(QFile::encodeName(path).constData(), O_RDONLY | O_NONBLOCK | O_CLOEXEC | O_NOCTTY);
    if (descriptor < 0)
        return {};
    libevdev *device = nullptr;
    if (libevdev_new_from_fd(descriptor, &device) == 0 && isKeyboard(device) &&
        libevdev_set_clock_id(device, CLOCK_MONOTONIC) == 0)
        return std::shared_ptr<EvdevKeyboard>(new EvdevKeyboard(descriptor, device, std::move(take), std::move(lost)));
    libevdev_free(device);
    ::close(descriptor);
    return {};
}

EvdevKeyboard::EvdevKeyboard(int descriptor, libevdev *device, Take take, std::function<void()> lost)
    : m_descriptor(descriptor),
      m_device(device),
      m_take(std::move(take)),
      m_lost(std::move(lost)),
      m_notifier(std::make_unique<QSocketNotifier>(descriptor, QSocketNotifier::Read))
{
    QObject::connect(m_notifier.get(), &QSocketNotifier::activated, m_notifier.get(), [this] { read(); });
}

EvdevKeyboard::~EvdevKeyboard()
{
    m_notifier.reset();
    libevdev_free(m_device);
    ::close(m_descriptor);
}

void EvdevKeyboard::read()
{
    int flags = LIBEVDEV_READ_FLAG_NORMAL;
    for (;;) {
        input_event event{};
        const int status = libevdev_next_event(m_device, static_cast<unsigned>(flags), &event);
        // After an overflow the library makes up for what was missed.
        flags = status == LIBEVDEV_READ_STATUS_SYNC ? LIBEVDEV_READ_FLAG_SYNC : LIBEVDEV_READ_FLAG_NORMAL;
        if (status == -EAGAIN)
            return;
        if (status < 0) {
            m_notifier->setEnabled(false);
            m_lost(); // may be the end of this
            return;
        }
        if (event.type == EV_KEY)
            m_take(event);
    }
}

} // namespace kelp
