#include "overlay/MeetingCard.h"

#include "overlay/CardTags.h"
#include "overlay/CountdownFigures.h"
#include "overlay/CountdownRing.h"
#include "ui/DateTexts.h"
#include "ui/PlainText.h"

#include <algorithm>
#include <cmath>

using namespace Qt::StringLiterals;

namespace kelp {

namespace {

const QString separator = u"  ·  "_s;

} // namespace

QString MeetingCard::countdown(Instant start, Instant now)
{
    const std::int64_t seconds = wholeSeconds(start - now);
    if (seconds >= 1)
        return u"Starts in "_s + minutesAndSeconds(seconds);
    if (static_cast<double>(seconds) > -startingSeconds)
        return u"Starting now"_s;
    return u"Started "_s + minutesAndSeconds(-seconds) + u" ago"_s;
}

double MeetingCard::untilNextCountdown(Instant start, Instant now)
{
    // The text turns half a second after every whole one; just past it the rounding is on the new side for certain.
    constexpr double past = 0.005;
    const double remaining = start - now;
    return remaining - (std::round(remaining) - 0.5) + past;
}

QString MeetingCard::countdownWords(Instant now) const
{
    const double remaining = meeting.start - now;
    if (options.ringCountdown)
        return CountdownRing::label(remaining) + u' ' + CountdownRing::caption(remaining);
    return countdown(meeting.start, now);
}

double MeetingCard::untilNextWords(Instant now) const
{
    return options.ringCountdown ? CountdownRing::untilNextLabel(meeting.start - now)
                                 : untilNextCountdown(meeting.start, now);
}

QStringList MeetingCard::detailItems() const
{
    QStringList items{shortTime(meeting.start) + u" – "_s + shortTime(meeting.end)};
    if (options.showAttendees && meeting.attendeeCount >= 2)
        items.append(u"%1 people"_s.arg(meeting.attendeeCount));
    return items;
}

QString MeetingCard::details() const
{
    QStringList items = detailItems();
    if (options.showCalendar)
        items.append(meeting.calendarName);
    return items.join(separator);
}

Element MeetingCard::countdownElement(Instant now) const
{
    return tagged(tag::countdown, options.ringCountdown ? ring(now) : pill(now));
}

Element MeetingCard::element(Instant now, const ButtonStates &buttons) const
{
    std::vector<Element> heading{padded({0, 0, 0, options.ringCountdown ? 8.0 : 0.0}, countdownElement(now)),
                                 padded({0, 10, 0, 0}, title())};
    QStringList items = detailItems();
    if (options.showCalendar)
        items.append(isolated(meeting.calendarName));
    heading.push_back(text(items.join(separator)).font(designFont(theme.font, 20)).colour(faded(theme.text, 0.6)));

    std::vector<Element> parts{vertical(14, heading), padded({0, 18, 0, 0}, buttonRow(buttons))};
    if (previous)
        parts.push_back(previousRow(buttons.value(tag::joinPrevious)));
    parts.push_back(hint());
    return vertical(20, parts);
}

Element MeetingCard::pill(Instant now) const
{
    const Text words = text(countdown(meeting.start, now))
                           .font(designFont(theme.countdownFont, 20, QFont::DemiBold))
                           .colour(faded(theme.text, 0.8))
                           .fixedDigits();
    return filled(Shape::capsule(), faded(theme.text, 0.12), padded({16, 6, 16, 6}, words));
}

Element MeetingCard::ring(Instant now) const
{
    const double total = static_cast<double>(std::max<std::int64_t>(options.leadMinutes, 1)) * 60;
    return CountdownRing{meeting.start, total, theme}.element(now);
}

Element MeetingCard::title() const
{
    Text words = text(meeting.title)
                     .font(designFont(theme.font, 60, theme.titleWeight))
                     .colour(theme.text)
                     .lines(3)
                     .shrink(0.5)
                     .height(titleHeight);
    if (theme.cursor)
        words = words.cursor(theme.accent);
    return glowing(22, faded(theme.accent, theme.glow ? 0.55 : 0), words);
}

Element MeetingCard::buttonRow(const ButtonStates &buttons) const
{
    std::vector<Element> row;
    const auto add = [&](const QString &name, const QString &label, const QString &symbolName, bool isPrimary) {
        row.push_back(tagged(name, themedButton(label, symbolName, theme, isPrimary, buttons.value(name))));
    };
    if (meeting.canJoin())
        add(tag::join, u"Join "_s + meeting.provider().value_or(u"meeting"_s), u"video"_s, true);
    add(tag::snooze, u"Snooze %1 min"_s.arg(options.snoozeMinutes), {}, false);
    add(tag::dismiss, u"Dismiss"_s, {}, false);
    return horizontal(14, row);
}

Element MeetingCard::previousRow(const ButtonState &joinButton) const
{
    constexpr int size = 15;
    const Text words = text(u"Still on: "_s + isolated(previous->title) + u" ·"_s)
                           .font(designFont(theme.font, size))
                           .colour(faded(theme.text, 0.55));
    return atMost(700,
                  horizontal(6, {words, tagged(tag::joinPrevious, plainButton(u"Join"_s, size, theme, joinButton))}));
}

Element MeetingCard::hint() const
{
    return text(meeting.canJoin() ? u"Return to join · Esc to dismiss"_s : u"Esc to dismiss"_s)
        .font(designFont(theme.font, 13))
        .colour(faded(theme.text, 0.4));
}

} // namespace kelp
