#include "platform/linux/evdev/EvdevKeySource.h"

#include "base/Clock.h"
#include "base/Logging.h"
#include "platform/linux/wayland/WaylandKeymap.h"

#include <QDir>
#include <QFileSystemWatcher>

#include <linux/input.h>

#include <utility>

using namespace Qt::StringLiterals;

namespace kelp {

namespace {

constexpr quint32 firstKeyCode = 8; ///< XKB counts the kernel's keys from here
constexpr double settling = 0.2;    ///< seconds that a new device takes to get its owner and rights

} // namespace

EvdevKeySource::EvdevKeySource(Clock &clock, QString folder, Open open, QObject *parent)
    : KeySource(parent), m_clock(clock), m_folder(std::move(folder)), m_open(std::move(open))
{
    m_translator.followModifiers();
}

EvdevKeySource::~EvdevKeySource() = default;

void EvdevKeySource::start()
{
    m_watcher = new QFileSystemWatcher(this);
    if (QDir(m_folder).exists())
        m_watcher->addPath(m_folder);
    connect(m_watcher, &QFileSystemWatcher::directoryChanged, this, &EvdevKeySource::lookLater);
    look();
}

void EvdevKeySource::lookLater()
{
    if (std::exchange(m_willLook, true))
        return;
    m_clock.after(settling, this, [this] {
        m_willLook = false;
        look();
    });
}

void EvdevKeySource::look()
{
    const bool before = seesAll();
    const QStringList names = QDir(m_folder).entryList({u"event*"_s}, QDir::System | QDir::Files);
    for (const QString &name : names) {
        const QString path = m_folder + u'/' + name;
        if (m_keyboards.contains(path))
            continue;
        const auto keyboard = m_open(
            path, [this](const input_event &event) { take(event); },
            // Not while it is being read.
            [this, path] {
                QMetaObject::invokeMethod(
                    this, [this, path] { lose(path); }, Qt::QueuedConnection);
            });
        if (keyboard)
            m_keyboards.insert(path, keyboard);
    }
    if (seesAll() && !std::exchange(m_hasKeymap, true))
        readKeymap();
    if (seesAll() == before)
        return;
    qCInfo(logPlatform) << "the keys of all applications are heard";
    Q_EMIT seesAllChanged();
}

void EvdevKeySource::readKeymap()
{
    new WaylandKeymap([this](xkb_keymap *keymap) { m_translator.setKeymap(keymap); }, this);
}

void EvdevKeySource::take(const input_event &event)
{
    const quint32 code = event.code + firstKeyCode;
    if (event.value == 0) {
        m_translator.keyUp(code);
        return;
    }
    // The kernel says 2 for a key that is held; the translator finds that out by itself.
    if (std::optional<KeyPress> press = m_translator.keyDown(code)) {
        press->time = static_cast<double>(event.input_event_sec) + static_cast<double>(event.input_event_usec) / 1e6;
        Q_EMIT pressed(*press);
    }
}

void EvdevKeySource::lose(const QString &path)
{
    m_keyboards.remove(path);
    if (!seesAll())
        Q_EMIT seesAllChanged();
}

} // namespace kelp
