#pragma once

#include "base/Instant.h"

#include <QImage>
#include <QString>
#include <QStringList>

#include <functional>
#include <vector>

class QPainter;

namespace kelp {

class Clock;
class Progress;

/// Renders Kelp's promotional clips and pictures. The same ones on every run: the time that they show is the clips'
/// own.
namespace Recorder {

/// 1440 × 900 points at 4/3 pixels a point.
inline constexpr QSize canvas(1440, 900);
inline constexpr QSize pixels(1920, 1200);
inline constexpr double density = 4.0 / 3;
inline constexpr int framesPerSecond = 30;

/// Paints what is seen `t` seconds into a clip on the picture of the time before, which has `pixels` and counts in
/// points. False where it has nothing to paint because nothing has changed.
using Frame = std::function<bool(QPainter &painter, double t)>;

/// A clip that can be recorded.
struct Clip
{
    QString name;
    double seconds;
    double poster; ///< the time of its still
    /// Makes its frames, which are to be painted one after the other.
    std::function<Frame()> frames;

    [[nodiscard]] qint64 frameCount() const { return static_cast<qint64>(seconds * framesPerSecond); }
};

/// All of them, in the order in which they are recorded: "hero", one for each theme, and "ring".
[[nodiscard]] std::vector<Clip> clips(const QImage &customPicture);

/// Writes into `folder`, which is made where it is missing: hero.mp4, a clip of each theme, ring.mp4, each with a
/// poster beside it (.jpg), and og.jpg, or those that `only` names. `customPicture` is the one behind the user's own
/// theme. What was written, and what could not be, goes to the standard output; `clock` is for the progress.
void run(const QString &folder, const QStringList &only, const QImage &customPicture, const Clock &clock);

/// Writes <name>.mp4 and the poster, <name>.jpg, into `folder`.
void record(const Clip &clip, const QString &folder, Progress &progress, const Clock &clock);

/// The time at which all clips begin: a Wednesday, 52 seconds before ten.
[[nodiscard]] Instant reference();

} // namespace Recorder

} // namespace kelp
