#pragma once

#include <QString>

namespace kelp {

// Titles and names come from strangers. They are drawn as plain text, on their own line ends and controls nothing.

/// Line ends, tabs and other control characters become a space, direction overrides go, and the text is cut where
/// nobody could read it any more (1,000 characters).
[[nodiscard]] QString flattened(const QString &text);
/// Between first-strong-isolate and pop-directional-isolate, so that its direction leaves our own text beside it alone.
[[nodiscard]] QString isolated(const QString &text);
/// Without the marks of `isolated`: what a screen reader says.
[[nodiscard]] QString withoutIsolates(const QString &text);

} // namespace kelp
