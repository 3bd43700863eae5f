#include "overlay/OverlayScene.h"

#include "overlay/MeetingCard.h"
#include "overlay/WelcomeCard.h"

#include <QPainter>

#include <algorithm>
#include <cmath>
#include <limits>

namespace kelp {

namespace {

constexpr double widestCard = 1000;
constexpr double sideMargin = 48;

} // namespace

std::optional<MeetingCard> OverlayScene::meetingCard() const
{
    if (const auto *reminder = std::get_if<MeetingContent>(&content))
        return MeetingCard{reminder->meeting, reminder->previous, theme, options};
    return {};
}

QString OverlayScene::countdown(Instant now) const
{
    const auto card = meetingCard();
    return card ? card->countdownWords(now) : QString();
}

double OverlayScene::untilNextCountdown(Instant now) const
{
    const auto card = meetingCard();
    return card ? card->untilNextWords(now) : std::numeric_limits<double>::infinity();
}

Arrangement OverlayScene::card(const QSizeF &size, Instant now, const ButtonStates &buttons) const
{
    const double room = std::max(1.0, std::min(widestCard, size.width() - 2 * sideMargin));
    if (const auto card = meetingCard())
        return card->element(now, buttons).arrange(room);
    return WelcomeCard{std::get<WelcomeContent>(content), theme}.element(now, buttons).arrange(room);
}

QPointF OverlayScene::cardPosition(const QSizeF &size, const Arrangement &card)
{
    return {std::floor((size.width() - card.size().width()) / 2),
            std::floor((size.height() - card.size().height()) / 2)};
}

QImage OverlayScene::cardPicture(const Arrangement &card, double density, Instant now)
{
    const QRectF frame = card.frame().adjusted(-bleed, -bleed, bleed, bleed);
    QImage picture((frame.size() * density).toSize(), QImage::Format_ARGB32_Premultiplied);
    picture.setDevicePixelRatio(density);
    picture.fill(Qt::transparent);
    QPainter painter(&picture);
    painter.translate(-frame.topLeft());
    card.paint(painter, now);
    return picture;
}

void OverlayScene::paint(QPainter &painter, const QSizeF &size, Instant now, const ButtonStates &buttons) const
{
    ThemeBackgroundView(theme, background).paint(painter, size, now);
    const Arrangement laidOut = card(size, now, buttons);
    // By way of a picture of its own, as in the live window: Qt blends the edges of letters differently on what is
    // transparent, and a still should not differ from the window by a shade.
    const double density = painter.device()->devicePixelRatioF();
    const QPointF corner = laidOut.frame().topLeft() - QPointF(bleed, bleed);
    painter.drawImage(cardPosition(size, laidOut) + corner, cardPicture(laidOut, density, now));
}

} // namespace kelp
