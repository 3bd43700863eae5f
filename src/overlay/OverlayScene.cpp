#include "overlay/OverlayScene.h"

#include "overlay/MeetingCard.h"
#include "overlay/WelcomeCard.h"
#include "themes/ThemeBackgroundView.h"

#include <QImage>
#include <QPainter>

#include <algorithm>
#include <cmath>

namespace kelp {

namespace {

constexpr double widestCard = 1000;
constexpr double sideMargin = 48;

} // namespace

Arrangement OverlayScene::card(const QSizeF &size, Instant now, const ButtonStates &buttons) const
{
    const double room = std::max(1.0, std::min(widestCard, size.width() - 2 * sideMargin));
    if (const auto *reminder = std::get_if<MeetingContent>(&content))
        return MeetingCard{reminder->meeting, reminder->previous, theme, options}.element(now, buttons).arrange(room);
    return WelcomeCard{std::get<WelcomeContent>(content), theme}.element(now, buttons).arrange(room);
}

QPointF OverlayScene::cardPosition(const QSizeF &size, const Arrangement &card)
{
    return {std::floor((size.width() - card.size().width()) / 2),
            std::floor((size.height() - card.size().height()) / 2)};
}

void OverlayScene::paint(QPainter &painter, const QSizeF &size, Instant now, const ButtonStates &buttons) const
{
    ThemeBackgroundView(theme).paint(painter, size);
    const Arrangement laidOut = card(size, now, buttons);
    // By way of a picture of its own, as in the live window: Qt blends the edges of letters differently on what is
    // transparent, and a still should not differ from the window by a shade.
    const double density = painter.device()->devicePixelRatioF();
    const QRectF frame = laidOut.frame().adjusted(-bleed, -bleed, bleed, bleed);
    QImage picture((frame.size() * density).toSize(), QImage::Format_ARGB32_Premultiplied);
    picture.setDevicePixelRatio(density);
    picture.fill(Qt::transparent);
    QPainter cardPainter(&picture);
    cardPainter.translate(-frame.topLeft());
    laidOut.paint(cardPainter);
    cardPainter.end();
    painter.drawImage(cardPosition(size, laidOut) + frame.topLeft(), picture);
}

} // namespace kelp
