#pragma once

#include <QStringList>

namespace kelp::probe {

// The commands of kelp-probe. Each reads standard input, writes standard output and returns the exit status: 0 when it
// ran, 1 on bad input (with one line on standard error), 2 on bad usage.

inline constexpr int ran = 0;
inline constexpr int badInput = 1;
inline constexpr int badUsage = 2;

int chimeCommand(const QStringList &arguments);
int meetingsCommand(const QStringList &arguments);
int decodeCommand(const QStringList &arguments);
int hotkeyCommand(const QStringList &arguments);
int loopbackCommand(const QStringList &arguments);
int scheduleCommand(const QStringList &arguments);
int spotifyUriCommand(const QStringList &arguments);
int textCommand(const QStringList &arguments);

} // namespace kelp::probe
