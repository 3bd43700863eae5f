#pragma once

#include "base/Instant.h"

#include <QImage>

#include <optional>

/// What a capture sets so that everything driven by time renders the same frames again. Nothing is set in normal use.
/// Consulted where time enters, never inside a view.
namespace kelp::KelpClock {

/// The time that is shown instead of the present one.
inline std::optional<Instant> override;
/// A picture of the desktop, for stills of themes that blur it.
inline QImage backdrop;

/// `present`, unless another time is to be shown.
[[nodiscard]] inline Instant shown(Instant present)
{
    return override.value_or(present);
}

} // namespace kelp::KelpClock
