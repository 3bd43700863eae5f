#pragma once

namespace kelp {

struct CommandLine;

/// Carries out "--snapshot" or "--record" and returns the exit status. `program` is the path in argv[0]. Needs neither
/// a display nor a bus, and makes a QGuiApplication of its own.
///
/// KELP_CAPTURE_TIME ("2026-01-01T09:00:00Z") stands for the present time.
[[nodiscard]] int runCapture(char *program, const CommandLine &commandLine);

} // namespace kelp
