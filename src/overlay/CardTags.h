#pragma once

#include <QString>

namespace kelp::tag {

// The tagged elements of the cards: the one part that changes by itself, and the buttons.

inline const QString countdown = QStringLiteral("countdown");
inline const QString join = QStringLiteral("join");
inline const QString snooze = QStringLiteral("snooze");
inline const QString dismiss = QStringLiteral("dismiss");
inline const QString joinPrevious = QStringLiteral("joinPrevious");

} // namespace kelp::tag
