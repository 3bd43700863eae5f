#pragma once

#include <QString>

namespace kelp::folders {

/// Where the preferences live: $XDG_CONFIG_HOME/Kelp. Created by the first write.
[[nodiscard]] QString configuration();

/// Where accounts and copies of the user's own files live: $XDG_DATA_HOME/Kelp. Created by the first write.
[[nodiscard]] QString data();

/// Whether the configuration is at its usual place below the home folder that the user database names. A demo or a test
/// has its own place and must not be mistaken for the user's Kelp.
[[nodiscard]] bool isUsualConfiguration();

/// The path of a program that belongs to this one: in the same folder, or, where Kelp is installed, in
/// ../libexec/kelp. Needs no QCoreApplication.
[[nodiscard]] QString program(const QString &name);

/// The path of a file or folder that comes with this program: in the same folder, or, where Kelp is installed, in
/// ../share/kelp. Needs no QCoreApplication.
[[nodiscard]] QString shared(const QString &name);

} // namespace kelp::folders
