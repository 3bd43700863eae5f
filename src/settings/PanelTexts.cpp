#include "settings/PanelTexts.h"

#include "base/Uri.h"
#include "ui/DateTexts.h"
#include "ui/PlainText.h"

#include <algorithm>
#include <array>

using namespace Qt::StringLiterals;

namespace kelp::panel {

namespace {

bool isSameDay(Instant a, Instant b)
{
    return a.toLocalDateTime().date() == b.toLocalDateTime().date();
}

/// Whole seconds from `from` to `to`, truncated toward zero.
std::int64_t secondsBetween(Instant from, Instant to)
{
    return Instant{to - from}.wholeSeconds();
}

} // namespace

QString countdown(Instant target, Instant now)
{
    // Two centuries are as good as for ever, and leave room for the sums below.
    const std::int64_t seconds = std::min<std::int64_t>(secondsBetween(now, target), 6'400'000'000);
    if (seconds < 1)
        return u"now"_s;
    if (seconds < 60)
        return u"Kelp in %1s"_s.arg(seconds);
    const std::int64_t minutes = seconds / 60 + 1;
    if (minutes < 60 || seconds + 59 <= 3599)
        return u"Kelp in %1 min"_s.arg(minutes);
    return u"Kelp in %1 h %2 min"_s.arg(minutes / 60).arg(minutes % 60);
}

QString ago(Instant instant, Instant now)
{
    const std::int64_t seconds = secondsBetween(instant, now);
    return seconds >= 60 ? u"%1 min ago"_s.arg(seconds / 60) : u"just now"_s;
}

QString shortTime(Instant instant, Instant now)
{
    return isSameDay(instant, now) ? kelp::shortTime(instant) : localizedTime(instant, u"EEEjjmm"_s);
}

QString day(Instant instant, Instant now)
{
    if (isSameDay(instant, now))
        return u"Today"_s;
    if (isSameDay(instant, tomorrow(now)))
        return u"Tomorrow"_s;
    return localizedTime(instant, u"EEEdMMM"_s);
}

QString pauseEnd(Instant end, Instant now)
{
    return localizedTime(end, isSameDay(end, now) ? u"jmm"_s : u"EEEjmm"_s);
}

QString displayName(const QString &name)
{
    constexpr std::array prefixes{"webcal://"_L1, "http://"_L1, "https://"_L1};
    if (std::none_of(prefixes.begin(), prefixes.end(), [&](QLatin1StringView each) { return name.startsWith(each); }))
        return name;
    const std::optional<Uri> uri = Uri::parse(name);
    return uri && uri->host && !uri->host->isEmpty() ? *uri->host : name;
}

Instant tomorrow(Instant now)
{
    // Some days do not begin at midnight.
    return Instant::fromDateTime(now.toLocalDateTime().date().addDays(1).startOfDay());
}

QString within(const QString &text)
{
    const QString flat = flattened(text);
    // Where everything runs from left to right there is nothing to keep apart, and the text stays as it was written.
    const bool turns = std::any_of(flat.begin(), flat.end(), [](QChar each) {
        return each.direction() == QChar::DirR || each.direction() == QChar::DirAL ||
               each.direction() == QChar::DirAN || each.isSurrogate();
    });
    return turns ? isolated(flat) : withoutIsolates(flat);
}

} // namespace kelp::panel
