#pragma once

#include <optional>
#include <string>
#include <string_view>

namespace kelp {

/// The file that the desktop's sound theme, or a theme that it inherits from, has for `name`, looked for where
/// freedesktop.org's rules for sound themes say. Theme sounds have lower-case names, so that "glass" serves for
/// "Glass".
[[nodiscard]] std::optional<std::string> themeSound(std::string_view name);

} // namespace kelp
