#pragma once

#include "capture/Recorder.h"
#include "overlay/OverlayScene.h"

#include <QImage>
#include <QRect>
#include <QString>

// What tests of the recorder's frames share.

namespace kelp {

/// The clip of that name, with `customPicture` behind the user's own theme; without frames where there is none.
[[nodiscard]] Recorder::Clip clipNamed(const QString &name, const QImage &customPicture = {});

/// A picture for frames, `density` pixels a point.
[[nodiscard]] QImage blankFrame(double density = Recorder::density);
/// What is seen `t` seconds into a clip.
[[nodiscard]] QImage frameOf(const Recorder::Frame &frame, double t, double density = Recorder::density);

/// The overlay that clips should show, put together without the recorder: in that theme, for the sample meeting 52
/// seconds after the clip's beginning.
[[nodiscard]] OverlayScene recordedScene(const QString &theme, bool ring, const QImage &customPicture = {});
/// The whole of it `t` seconds into a clip.
[[nodiscard]] QImage pictureOf(const OverlayScene &scene, double t, double density = Recorder::density);

/// The smallest rectangle around all pixels in which two pictures of one size differ by more than `tolerance` in a
/// channel, 0…255.
[[nodiscard]] QRect differentPart(const QImage &a, const QImage &b, int tolerance);

} // namespace kelp
