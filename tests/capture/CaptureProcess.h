#pragma once

#include <QByteArray>
#include <QProcessEnvironment>
#include <QString>
#include <QStringList>

namespace kelp {

/// What a run of `kelp` in a capture mode left behind.
struct CaptureResult
{
    int status = -1;
    QString output;
    QString errors;
};

/// The environment of a machine without a display, a bus or settings, whatever variables of a desktop may be left: in
/// UTC, with one locale, at 2026-01-05 09:59:13, with `home` as the only folder.
[[nodiscard]] QProcessEnvironment bareEnvironment(const QString &home);

/// Runs `kelp` with these arguments and waits until it has ended.
[[nodiscard]] CaptureResult runKelp(const QStringList &arguments, const QProcessEnvironment &environment);

/// What a file holds; nothing where it cannot be read.
[[nodiscard]] QByteArray contentOf(const QString &path);

} // namespace kelp
