#pragma once

namespace kelp {

/// What Kelp and its child process `kelp-sound` say to each other. The command line is
///
///     kelp-sound play --volume V (--file PATH | --bytes) [--name NAME] [--parent PID]
///     kelp-sound import --file PATH --to PATH [--parent PID]
///     kelp-sound warm [--parent PID]
///
/// `play` ends with the sound. --bytes takes a WAV file from standard input; --name is tried first, as a sound of that
/// name in the desktop's sound themes. `import` copies a file, to a new private one, if it can be played. `warm` lets
/// GStreamer look at its plugins, which takes a while when they have changed.
///
/// One line on standard output tells that the sound can be heard now, or that the file can be played and is being
/// copied.
inline constexpr char childReport[] = "ready\n";

/// The exit status.
enum class ChildStatus {
    done = 0,
    unusable = 1, ///< there is no such sound, or nothing can be made of it
    badUsage = 2,
    noOutput = 3, ///< nothing to play it on
    notCopied = 4 ///< errno is not told: a full disk and a folder that cannot be written look the same to the user
};

} // namespace kelp
