#pragma once

#include <functional>
#include <memory>

class QSocketNotifier;
class QString;
struct input_event;
struct libevdev;

namespace kelp {

/// One keyboard, open for reading.
class EvdevKeyboard
{
public:
    using Take = std::function<void(const input_event &)>;

    /// Null where the device is not a keyboard or may not be read. `lost` is called when it has gone.
    [[nodiscard]] static std::shared_ptr<EvdevKeyboard> open(const QString &path, Take take,
                                                             std::function<void()> lost);
    ~EvdevKeyboard();
    EvdevKeyboard(const EvdevKeyboard &) = delete;
    EvdevKeyboard &operator=(const EvdevKeyboard &) = delete;

private:
    EvdevKeyboard(int descriptor, libevdev *device, Take take, std::function<void()> lost);
    void read();

    int m_descriptor;
    libevdev *m_device;
    Take m_take;
    std::function<void()> m_lost;
    std::unique_ptr<QSocketNotifier> m_notifier;
};

} // namespace kelp
