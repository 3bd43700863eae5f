#include "overlay/WelcomeCard.h"

#include "overlay/CardTags.h"
#include "ui/DateTexts.h"
#include "ui/PlainText.h"

using namespace Qt::StringLiterals;

namespace kelp {

namespace {

QString connectedLine(const QString &account, std::int64_t calendarCount)
{
    const QString calendars = calendarCount == 1 ? u"1 calendar"_s : u"%1 calendars"_s.arg(calendarCount);
    return u"Connected to "_s + account + u" · "_s + calendars;
}

QString nextMeetingLine(const QString &title, Instant start, Instant now)
{
    return u"Next meeting: "_s + title + u" at "_s + shortTimeWithDay(start, now) + u" ("_s + relativeTime(start, now) +
           u")"_s;
}

} // namespace

QString WelcomeCard::connected() const
{
    return connectedLine(content.email.value_or(u"Google"_s), content.calendarCount);
}

QString WelcomeCard::nextLine(Instant now) const
{
    if (!content.next)
        return u"No meetings in the next 24 hours"_s;
    return nextMeetingLine(content.next->title, content.next->start, now);
}

Element WelcomeCard::element(Instant now, const ButtonStates &buttons) const
{
    // The same lines with the strangers' words isolated, for the eye only.
    const QString account = content.email ? isolated(*content.email) : u"Google"_s;
    const QString next =
        content.next ? nextMeetingLine(isolated(content.next->title), content.next->start, now) : nextLine(now);
    const QFont lineFont = designFont(theme.font, 20);
    return vertical(
        20, {glowing(24, faded(theme.accent, theme.glow ? 0.7 : 0), symbol(u"checkmark-circle"_s, 72, theme.accent)),
             padded({0, 6, 0, 0},
                    text(u"Kelp is set up"_s).font(designFont(theme.font, 56, theme.titleWeight)).colour(theme.text)),
             vertical(
                 10, {text(connectedLine(account, content.calendarCount)).font(lineFont).colour(faded(theme.text, 0.7)),
                      text(next).font(lineFont).colour(faded(theme.text, 0.55)).lines(2)}),
             padded({0, 18, 0, 0},
                    tagged(tag::dismiss, themedButton(u"Got it"_s, {}, theme, true, buttons.value(tag::dismiss)))),
             text(u"This screen will cover your displays right before each meeting."_s)
                 .font(designFont(theme.font, 13))
                 .colour(faded(theme.text, 0.4))});
}

} // namespace kelp
