#pragma once

#include <QString>

namespace kelp::desktopTag {

// The tagged elements of the mock desktop: frames alone, whose texts lie beside them. The symbols of the menu bar are
// tagged with their own names.

inline const QString menuBar = QStringLiteral("menuBar");
inline const QString roadmap = QStringLiteral("roadmap");
inline const QString inbox = QStringLiteral("inbox");
inline const QString note = QStringLiteral("note"); ///< the line in the document that is being written
inline const QString tile = QStringLiteral("tile"); ///< one for each of the dock

} // namespace kelp::desktopTag
