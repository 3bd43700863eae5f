#include "capture/OverlayFilm.h"

#include "ui/BlankImage.h"

#include <QPainter>

#include <utility>

namespace kelp {

namespace {

constexpr double bleed = OverlayScene::bleed;

} // namespace

OverlayFilm::OverlayFilm(OverlayScene scene, const QSizeF &size)
    : m_scene(std::move(scene)),
      m_size(size),
      m_background(m_scene.theme, m_scene.background),
      m_moves(m_scene.theme.animation || std::holds_alternative<ImageBackground>(m_scene.theme.background))
{
}

void OverlayFilm::paintBackground(QPainter &painter, Instant shown)
{
    m_background.paint(painter, m_size, shown);
}

void OverlayFilm::paintCard(QPainter &painter, Instant shown, const ButtonStates &buttons, const Entrance &entrance,
                            double opacity)
{
    updateCard(painter.device()->devicePixelRatioF(), shown, buttons);
    painter.save();
    entrance.paint(painter, frame(), m_card, opacity);
    painter.restore();
}

bool OverlayFilm::paint(QPainter &painter, Instant shown)
{
    const bool cardChanges = updateCard(painter.device()->devicePixelRatioF(), shown, {});
    if (!cardChanges && !m_moves)
        return false;
    paintBackground(painter, shown);
    paintCard(painter, shown);
    return true;
}

QRectF OverlayFilm::frameOf(const QString &tag, Instant shown) const
{
    const Arrangement card = m_scene.card(m_size, shown, {});
    return card.frameOf(tag).value_or(QRectF()).translated(OverlayScene::cardPosition(m_size, card));
}

bool OverlayFilm::updateCard(double density, Instant shown, const ButtonStates &buttons)
{
    const Instant before = std::exchange(m_shown, shown);
    if (!m_card.isNull() && buttons == m_buttons && m_scene.countdown(before) == m_scene.countdown(shown)) {
        const std::vector<QRectF> parts = m_arrangement.changed(before, shown);
        for (const QRectF &part : parts)
            paintPart(shown, part);
        return !parts.empty();
    }
    m_buttons = buttons;
    const Arrangement old = std::exchange(m_arrangement, m_scene.card(m_size, shown, buttons));
    m_arrangement.inheritGlows(old);
    m_card = transparentImage(frame().size(), density);
    paintPart(shown, frame().translated(-OverlayScene::cardPosition(m_size, m_arrangement)));
    return true;
}

/// `dirty` is in the card's own coordinates.
void OverlayFilm::paintPart(Instant shown, const QRectF &dirty)
{
    QPainter painter(&m_card);
    painter.translate(bleed, bleed);
    const QRectF whole = dirty.toAlignedRect();
    painter.setClipRect(whole);
    painter.setCompositionMode(QPainter::CompositionMode_Source);
    painter.fillRect(whole, Qt::transparent);
    painter.setCompositionMode(QPainter::CompositionMode_SourceOver);
    m_arrangement.paint(painter, shown, whole);
}

QRectF OverlayFilm::frame() const
{
    return m_arrangement.frame()
        .translated(OverlayScene::cardPosition(m_size, m_arrangement))
        .adjusted(-bleed, -bleed, bleed, bleed);
}

} // namespace kelp
