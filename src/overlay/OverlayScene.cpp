#include "overlay/OverlayScene.h"

#include "overlay/MeetingCard.h"
#include "overlay/WelcomeCard.h"
#include "ui/BlankImage.h"

#include <QPainter>

#include <algorithm>
#include <cmath>
#include <limits>
#include <utility>

namespace kelp {

namespace {

constexpr double widestCard = 1000;
constexpr double sideMargin = 48;

/// What a view of that size leaves for the card.
QSizeF roomFor(const QSizeF &size)
{
    return {std::clamp(size.width() - 2 * sideMargin, 1.0, widestCard),
            std::max(1.0, size.height() - 2 * OverlayScene::bleed)};
}

/// Where the card is still too high, the title makes room first.
Arrangement withLowerTitle(MeetingCard card, const Arrangement &tooHigh, const QSizeF &room, Instant now,
                           const ButtonStates &buttons)
{
    const double title = card.title().arrange(room.width()).size().height();
    card.titleHeight = title - (tooHigh.size().height() - room.height());
    return card.element(now, buttons).arrange(room.width());
}

/// The whole card smaller, where it is too high for its room.
Arrangement fitted(Arrangement card, const QSizeF &room)
{
    if (card.size().height() <= room.height())
        return card;
    const double factor = room.height() / card.size().height();
    Arrangement result(card.size() * factor);
    result.addChild(card, QTransform::fromScale(factor, factor));
    return result;
}

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
    const QSizeF room = roomFor(size);
    const auto reminder = meetingCard();
    Arrangement card =
        reminder ? reminder->element(now, buttons).arrange(room.width())
                 : WelcomeCard{std::get<WelcomeContent>(content), theme}.element(now, buttons).arrange(room.width());
    if (reminder && card.size().height() > room.height())
        card = withLowerTitle(*reminder, card, room, now, buttons);
    return fitted(std::move(card), room);
}

QPointF OverlayScene::cardPosition(const QSizeF &size, const Arrangement &card)
{
    return {std::floor((size.width() - card.size().width()) / 2),
            std::floor((size.height() - card.size().height()) / 2)};
}

QImage OverlayScene::cardPicture(const Arrangement &card, double density, Instant now)
{
    const QRectF frame = card.frame().adjusted(-bleed, -bleed, bleed, bleed);
    QImage picture = transparentImage(frame.size(), density);
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
