#pragma once

#include "overlay/OverlayScene.h"

#include <QImage>
#include <QList>
#include <QObject>
#include <QSize>

#include <memory>

namespace kelp {

class Clock;

/// Makes small pictures of overlays one at a time, in between everything else, so that a window can be shown before
/// they are there.
class Thumbnails final : public QObject
{
    Q_OBJECT

public:
    explicit Thumbnails(Clock &clock, QObject *parent = nullptr);

    /// Each scene as it looks at `shown`, in so many pixels. What was still to be made is forgotten.
    void make(QList<OverlayScene> scenes, const QSize &pixels, Instant shown);
    void stop();

Q_SIGNALS:
    void made(const kelp::OverlayScene &scene, const QImage &thumbnail);

private:
    void next();

    Clock &m_clock;
    QList<OverlayScene> m_scenes;
    QSize m_pixels;
    Instant m_shown;
    std::unique_ptr<QObject> m_turn; ///< context of the next one
};

} // namespace kelp
