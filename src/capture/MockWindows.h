#pragma once

#include "capture/DesktopTags.h"
#include "ui/Element.h"

#include <QString>

namespace kelp {

// The windows of the mock desktop.

/// "Q4 roadmap.md", 760 points wide; the line of the last note is tagged `desktopTag::note` and empty.
[[nodiscard]] Element mockRoadmap();
/// What stands in that line.
[[nodiscard]] Element mockNote(const QString &typed, bool caret);
/// "Inbox", 470 × 380 points.
[[nodiscard]] Element mockInbox();

} // namespace kelp
