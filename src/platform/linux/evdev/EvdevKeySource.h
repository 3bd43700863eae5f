#pragma once

#include "platform/KeySource.h"
#include "platform/linux/KeyTranslator.h"
#include "platform/linux/evdev/EvdevKeyboard.h"

#include <QHash>

#include <memory>

class QFileSystemWatcher;

namespace kelp {

class Clock;

/// The keys of the keyboards that the kernel knows, for desktops that do not tell of them. That takes the right to read
/// the devices, which most users do not have; devices that come, and rights that are granted later, are taken up
/// when the folder changes.
class EvdevKeySource final : public KeySource
{
    Q_OBJECT

public:
    /// Begins to read a device, as EvdevKeyboard::open does. What it hands out ends that when it goes; null where there
    /// is nothing to be read.
    using Open =
        std::function<std::shared_ptr<void>(const QString &path, EvdevKeyboard::Take take, std::function<void()> lost)>;

    explicit EvdevKeySource(Clock &clock, QString folder = QStringLiteral("/dev/input"),
                            Open open = EvdevKeyboard::open, QObject *parent = nullptr);
    ~EvdevKeySource() override;

    void start() override;
    [[nodiscard]] bool seesAll() const override { return !m_keyboards.empty(); }

private:
    void lookLater();
    void look();
    void readKeymap();
    void take(const input_event &event);
    void lose(const QString &path);

    Clock &m_clock;
    QString m_folder;
    Open m_open;
    QFileSystemWatcher *m_watcher = nullptr;
    bool m_willLook = false;
    QHash<QString, std::shared_ptr<void>> m_keyboards; ///< by the path of the device
    KeyTranslator m_translator;
    bool m_hasKeymap = false;
};

} // namespace kelp
