#pragma once

#include "base/AtomicFile.h"
#include "base/Instant.h"
#include "base/Result.h"

#include <QImage>
#include <QString>
#include <QStringList>

#include <functional>

class QObject;

namespace kelp {

class Preferences;
struct OverlayTheme;

/// The pictures behind the card. Main thread only.
///
/// Decoded are raster images of at most 50 MiB and 64 megapixels, whatever their name says; what is larger than a large
/// screen is scaled down. Everything else counts as no picture.
namespace ThemeImages {

/// A built-in picture: "zen", "space" or "lofi". Null when there is none of that name.
[[nodiscard]] QImage bundled(const QString &name);

/// The user's own picture. Null when none is chosen, or when it is missing or cannot be read.
[[nodiscard]] QImage custom(const Preferences &preferences);

/// The picture in a file, whoever's it is; null when it cannot be read. Keeps nothing. The only one here that any
/// thread may call: a large picture takes a while.
[[nodiscard]] QImage decoded(const QString &path);

/// The formats of pictures that can be decoded here, as they end names of files: "png". Which of them there are depends
/// on the plugins of Qt that are installed.
[[nodiscard]] QStringList formats();

/// Copies a picture chosen by the user into Kelp's own folder, under a name made of the present time, and makes it the
/// user's picture. The copy of the previous one is removed. Any failure leaves the previous picture.
[[nodiscard]] Result<void, FileError> setCustom(const QString &path, Preferences &preferences, Instant now);

/// Whether an overlay in `theme` can be shown without waiting for a picture.
[[nodiscard]] bool isReady(const OverlayTheme &theme, const Preferences &preferences);

/// Decodes the theme's picture on another thread and keeps as much of it as a view of `view` pixels can show; then
/// calls `done` with it, or with a null picture when it cannot be read. Neither happens once `context` is gone.
void load(const OverlayTheme &theme, const Preferences &preferences, const QSize &view, QObject *context,
          std::function<void(const QImage &)> done);

/// Lets go of all decoded pictures; they are decoded again when they are asked for.
void forgetDecoded();
/// The same for all but what that theme shows.
void forgetDecodedBut(const OverlayTheme &theme, const Preferences &preferences);

} // namespace ThemeImages

} // namespace kelp
