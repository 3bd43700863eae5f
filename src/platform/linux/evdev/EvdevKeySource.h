#pragma once

#include "platform/KeySource.h"
#include "platform/linux/KeyTranslator.h"

#include <QHash>

#include <memory>

class QFileSystemWatcher;
struct input_event;

namespace kelp {

class Clock;
class EvdevKeyboard;

/// The keys of the keyboards that the kernel knows, for desktops that do not tell of them. That takes the right to read
/// the devices, which most users do not have; devices that come, and rights that are granted later, are taken up
/// when the folder changes.
class EvdevKeySource final : public KeySource
{
    Q_OBJECT

public:
    explicit EvdevKeySource(Clock &clock, QString folder = QStringLiteral("/dev/input"), QObject *parent = nullptr);
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
    QFileSystemWatcher *m_watcher = nullptr;
    bool m_willLook = false;
    QHash<QString, std::shared_ptr<EvdevKeyboard>> m_keyboards; ///< by the path of the device
    KeyTranslator m_translator;
    bool m_hasKeymap = false;
};

} // namespace kelp
