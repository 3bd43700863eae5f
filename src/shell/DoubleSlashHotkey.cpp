#include "shell/DoubleSlashHotkey.h"

#include "preferences/Preferences.h"

using namespace Qt::StringLiterals;

namespace kelp {

namespace {

/// Differences of times are compared to a microsecond: 4.4 − 4.0 is more than 0.4 in binary.
constexpr double precision = 1e-6;

} // namespace

DoubleSlashHotkey::DoubleSlashHotkey(const Preferences &preferences, QObject *parent)
    : QObject(parent), m_preferences(preferences)
{
}

void DoubleSlashHotkey::start(KeySource &ownWindows, KeySource &everywhere)
{
    m_everywhere = &everywhere;
    connect(&everywhere, &KeySource::pressed, this, &DoubleSlashHotkey::handle);
    connect(&everywhere, &KeySource::seesAllChanged, this, &DoubleSlashHotkey::trustedChanged);
    connect(&ownWindows, &KeySource::pressed, this, [this](const KeyPress &key) {
        // Seen twice, one slash would be two.
        if (!isTrusted())
            handle(key);
    });
    ownWindows.start();
    everywhere.start();
}

void DoubleSlashHotkey::handle(const KeyPress &key)
{
    if (!m_preferences.get(preference::doubleSlash))
        return;
    const bool isSlash = !key.control && !key.alt && !key.meta && !key.isRepeat && key.text == "/"_L1;
    if (isSlash) {
        handleSlash(key.time);
    } else {
        m_firstSlash.reset();
        m_lastOtherKey = key.time;
    }
}

void DoubleSlashHotkey::handleSlash(double time)
{
    if (m_firstSlash && time - *m_firstSlash <= window + precision) {
        m_firstSlash.reset();
        Q_EMIT triggered();
    } else if (time - m_lastOtherKey < quietBefore - precision) {
        m_firstSlash.reset();
        m_lastOtherKey = time;
    } else {
        m_firstSlash = time;
    }
}

} // namespace kelp
