#pragma once

#include <QString>

#include <optional>

namespace kelp {

/// The text beside the icon in the tray: " 5m", " now", or nothing. The leading space keeps it off the icon.
/// `secondsUntilStart` is that of the next meeting, below 0 once it has started; nothing where there is none.
[[nodiscard]] QString statusTitle(std::optional<double> secondsUntilStart, bool isPaused);

} // namespace kelp
