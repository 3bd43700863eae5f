#include "calendar/MeetingLink.h"

#include "base/Uri.h"

#include <QUrl>

#include <algorithm>
#include <array>

using namespace Qt::StringLiterals;

namespace kelp {

namespace {

constexpr QLatin1StringView zoomDomain("zoom.us");

struct Provider
{
    QLatin1StringView domain;
    QLatin1StringView name;
    /// What follows the domain in a link that is found in free text.
    QLatin1StringView path;
};

/// The providers' web domains and the beginnings of their meeting links.
constexpr std::array providers{
    Provider{zoomDomain, "Zoom"_L1, {}}, // its paths are below
    Provider{"meet.google.com"_L1, "Google Meet"_L1, "/"_L1},
    Provider{"teams.microsoft.com"_L1, "Teams"_L1, "/l/meetup-join"_L1},
    Provider{"teams.live.com"_L1, "Teams"_L1, "/meet"_L1},
    Provider{"webex.com"_L1, "Webex"_L1, "/"_L1},
    Provider{"around.co"_L1, "Around"_L1, "/"_L1},
};

/// Meetings, personal rooms, webinars and start links.
constexpr std::array zoomPaths{"/j/"_L1, "/my/"_L1, "/w/"_L1, "/s/"_L1};

/// What ends a link in free text: white space of any script, quotes and angle brackets.
bool endsLink(QChar c)
{
    return c.isSpace() || c == u'"' || c == u'\'' || c == u'<' || c == u'>';
}

/// Like QString::toCaseFolded, but never changes the length.
QString caseFolded(const QString &text)
{
    QString folded = text;
    std::transform(folded.cbegin(), folded.cend(), folded.begin(), [](QChar c) { return c.toCaseFolded(); });
    return folded;
}

/// Where in the case-folded `run` the last beginning of a meeting link's domain stands; negative without one.
qsizetype lastProvider(QStringView run)
{
    qsizetype last = -1;
    const auto look = [&](const QString &pattern) { last = std::max(last, run.lastIndexOf(pattern)); };
    for (const Provider &provider : providers) {
        if (!provider.path.isEmpty())
            look(provider.domain + provider.path);
    }
    for (const QLatin1StringView path : zoomPaths)
        look(zoomDomain + path);
    return last;
}

/// Where "http://" or "https://" begins first in the case-folded `run` so that it ends at or before `limit`.
std::optional<qsizetype> firstScheme(QStringView run, qsizetype limit)
{
    for (qsizetype at = run.indexOf("http"_L1); at >= 0; at = run.indexOf("http"_L1, at + 1)) {
        const QStringView rest = run.mid(at + 4);
        const qsizetype length = rest.startsWith("://"_L1) ? 7 : rest.startsWith("s://"_L1) ? 8 : 0;
        if (length > 0)
            return at + length <= limit ? std::optional(at) : std::nullopt;
    }
    return {};
}

/// Punctuation around a link that belongs to the sentence.
QString trimmed(const QString &link)
{
    constexpr QStringView punctuation = u").,;>]";
    qsizetype begin = 0;
    qsizetype end = link.size();
    while (begin < end && punctuation.contains(link[begin]))
        ++begin;
    while (end > begin && punctuation.contains(link[end - 1]))
        --end;
    return link.mid(begin, end - begin);
}

} // namespace

std::optional<MeetingLink> MeetingLink::fromText(const QString &text)
{
    if (text.isEmpty() || !Uri::parse(text) || !QUrl(text, QUrl::StrictMode).isValid())
        return {};
    return MeetingLink(text);
}

std::optional<QString> MeetingLink::provider() const
{
    const QString host = Uri::parse(m_text)->host.value_or(QString()).toLower();
    const auto provider = std::find_if(providers.begin(), providers.end(),
                                       [&](const Provider &each) { return host.contains(each.domain); });
    return provider == providers.end() ? std::nullopt : std::optional<QString>(provider->name);
}

bool MeetingLink::isWebLink() const
{
    const Uri uri = *Uri::parse(m_text);
    const QString scheme = uri.scheme.value_or(QString()).toLower();
    return (scheme == "https"_L1 || scheme == "http"_L1) && !uri.host.value_or(QString()).isEmpty();
}

std::optional<QString> MeetingLink::applicationLink() const
{
    const Uri uri = *Uri::parse(m_text);
    if (!uri.host.value_or(QString()).contains(zoomDomain))
        return {};
    const QStringList components = uri.pathComponents();
    const qsizetype number = components.indexOf(u"j"_s) + 1;
    if (number == 0 || number == components.size())
        return {};

    QByteArray link = "zoommtg://zoom.us/join?action=join&confno=" + percentEncoded(components[number]);
    if (const std::optional<QString> password = uri.queryValue(u"pwd"))
        link += "&pwd=" + percentEncoded(*password);
    return QString::fromLatin1(link);
}

std::optional<QString> findMeetingLink(const QString &text)
{
    // A link runs to the next character that ends it, so it is enough to ask each run of other characters whether a
    // scheme stands somewhere before a provider in it. A regular expression would need quadratic time here.
    const QString folded = caseFolded(text);
    for (qsizetype begin = 0; begin < text.size();) {
        const auto isEnd = [](QChar c) { return endsLink(c); };
        const auto end = std::find_if(text.cbegin() + begin, text.cend(), isEnd) - text.cbegin();
        const QStringView run = QStringView(folded).mid(begin, end - begin);
        if (const std::optional<qsizetype> scheme = firstScheme(run, lastProvider(run)))
            return trimmed(text.mid(begin + *scheme, end - begin - *scheme));
        begin = end + 1;
    }
    return {};
}

} // namespace kelp
