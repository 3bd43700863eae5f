#include "settings/Thumbnails.h"

#include "base/Clock.h"
#include "settings/PreviewPicture.h"

#include <utility>

namespace kelp {

Thumbnails::Thumbnails(Clock &clock, QObject *parent) : QObject(parent), m_clock(clock) {}

void Thumbnails::make(QList<OverlayScene> scenes, const QSize &pixels, Instant shown)
{
    m_scenes = std::move(scenes);
    m_pixels = pixels;
    m_shown = shown;
    next();
}

void Thumbnails::stop()
{
    m_scenes.clear();
    m_turn.reset();
}

void Thumbnails::next()
{
    if (m_scenes.isEmpty() || m_pixels.isEmpty())
        return stop();
    m_turn = std::make_unique<QObject>();
    m_clock.after(0, m_turn.get(), [this] {
        const OverlayScene scene = m_scenes.takeFirst();
        Q_EMIT made(scene, PreviewPicture(scene).paint(m_shown, m_pixels));
        next();
    });
}

} // namespace kelp
