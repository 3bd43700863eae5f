#include "settings/PreviewPicture.h"

#include <QPainter>

#include <algorithm>
#include <utility>

namespace kelp {

PreviewPicture::PreviewPicture(OverlayScene scene)
    : m_scene(std::move(scene)), m_background(m_scene.theme, m_scene.background)
{
}

QImage PreviewPicture::paint(Instant now, const QSize &pixels)
{
    // Never coarser than a screen of one pixel per point: the lines and stars of a scene would shimmer.
    const double density = std::max(1.0, static_cast<double>(pixels.width()) / screen.width());
    const QSize size = (QSizeF(screen) * density).toSize();
    if (m_frame.size() != size) {
        m_frame = QImage(size, QImage::Format_RGB32);
        m_frame.setDevicePixelRatio(density);
        m_card = {};
    }
    const double age = now - m_cardTime;
    if (m_card.isNull() || age < 0 || age >= m_cardLasts)
        paintCard(now, density);
    QPainter painter(&m_frame);
    m_background.paint(painter, screen, now);
    painter.drawImage(m_cardPosition, m_card);
    painter.end();
    QImage picture = m_frame.size() == pixels ? m_frame.copy()
                                              : m_frame.scaled(pixels, Qt::IgnoreAspectRatio, Qt::SmoothTransformation);
    picture.setDevicePixelRatio(1);
    return picture;
}

void PreviewPicture::paintCard(Instant now, double density)
{
    const Arrangement card = m_scene.card(screen, now, {});
    constexpr double bleed = OverlayScene::bleed;
    const QRectF frame = card.frame().adjusted(-bleed, -bleed, bleed, bleed);
    m_card = OverlayScene::cardPicture(card, density, now);
    m_cardPosition = OverlayScene::cardPosition(screen, card) + frame.topLeft();
    m_cardTime = now;
    m_cardLasts = std::min(m_scene.untilNextCountdown(now), card.untilChange(now, density));
}

double PreviewPicture::untilChange() const
{
    return m_background.movingPart(screen).isEmpty() ? m_cardLasts
                                                     : std::min(m_cardLasts, m_background.leastInterval());
}

} // namespace kelp
