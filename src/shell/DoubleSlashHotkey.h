#pragma once

#include "platform/KeySource.h"

#include <optional>

namespace kelp {

class Preferences;

/// Tells when "/" is pressed twice on purpose, anywhere, and not while "//" is typed within a text.
///
///     idle ──(slash after 0.6 s without typing)──→ armed ──(slash within 0.4 s)──→ triggered, idle
///                                                    └──(any other key)──→ idle
class DoubleSlashHotkey : public QObject
{
    Q_OBJECT

public:
    static constexpr double window = 0.4;      ///< seconds: the greatest gap between the two slashes
    static constexpr double quietBefore = 0.6; ///< seconds: the least time from the last typing key to the first slash

    explicit DoubleSlashHotkey(const Preferences &preferences, QObject *parent = nullptr);

    /// Takes keys from `everywhere` while that sees all, else from `ownWindows`. Both must outlive this.
    void start(KeySource &ownWindows, KeySource &everywhere);
    /// Takes notice of a key, unless the user has switched this off.
    void handle(const KeyPress &key);

    /// Whether it works in other applications, too.
    [[nodiscard]] bool isTrusted() const { return m_everywhere && m_everywhere->seesAll(); }

Q_SIGNALS:
    void triggered();
    void trustedChanged();

private:
    void handleSlash(double time);

    const Preferences &m_preferences;
    const KeySource *m_everywhere = nullptr;
    std::optional<double> m_firstSlash; ///< time of an armed slash
    double m_lastOtherKey = 0;          ///< time of the last key that counted as typing
};

} // namespace kelp
