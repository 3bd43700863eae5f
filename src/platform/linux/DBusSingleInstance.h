#pragma once

#include "platform/SingleInstance.h"

#include <memory>

namespace kelp {

class Clock;
class DBusApplicationObject;

/// SingleInstance by a name on the session bus, app.kelp.Kelp; a configuration at another place than the usual one
/// gets a name of its own. Where there is no bus, or it does not answer within 2 s, a lock on a file in the
/// configuration folder decides, and the second process cannot make the first show itself.
class DBusSingleInstance final : public SingleInstance
{
    Q_OBJECT

public:
    static constexpr double patience = 2; ///< seconds to wait for the bus

    explicit DBusSingleInstance(Clock &clock, QObject *parent = nullptr);
    ~DBusSingleInstance() override;

    void claim() override;

    /// The bus name for the current configuration folder.
    [[nodiscard]] static QString busName();

private:
    enum class Claim { owned, taken, noBus };

    void decide(Claim claim);
    /// False where another Kelp holds it. A folder that cannot be written to must not keep the reminders from coming.
    [[nodiscard]] bool takeLock();

    Clock &m_clock;
    std::shared_ptr<DBusApplicationObject> m_object; ///< shared with the thread that registers it
    bool m_decided = false;
    int m_lock = -1; ///< file descriptor that holds the lock
};

} // namespace kelp
