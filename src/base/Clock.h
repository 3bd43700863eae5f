#pragma once

#include "base/Instant.h"

#include <functional>

class QObject;

namespace kelp {

/// Where the time comes from, and what wakes up later. Everything that depends on time takes a Clock, so that
/// tests advance it by hand.
class Clock
{
public:
    virtual ~Clock() = default;

    [[nodiscard]] virtual Instant now() const = 0;
    /// Runs `action` once, `seconds` from now by the monotonic clock, unless `context` is destroyed before.
    virtual void after(double seconds, QObject *context, std::function<void()> action) = 0;
    /// Runs `action` every `seconds` by the monotonic clock for as long as `context` lives. The interval may be off by
    /// 5 %, so that wake-ups fall together.
    virtual void every(double seconds, QObject *context, std::function<void()> action) = 0;
};

/// The computer's clock, with Qt's timers.
class SystemClock final : public Clock
{
public:
    [[nodiscard]] Instant now() const override;
    void after(double seconds, QObject *context, std::function<void()> action) override;
    void every(double seconds, QObject *context, std::function<void()> action) override;
};

} // namespace kelp
