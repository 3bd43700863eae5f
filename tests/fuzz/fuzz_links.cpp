#include "base/Uri.h"
#include "calendar/Meeting.h"
#include "fuzz/FuzzTarget.h"
#include "support/FakeUrlOpener.h"

#include <QUrlQuery>

#include <algorithm>

using namespace kelp;
using namespace Qt::StringLiterals;

namespace {

bool isOutsideLinks(QChar c)
{
    return c.isSpace() || QStringView(u"\"'<>").contains(c);
}

/// What Kelp hands to the desktop is of a form that may be opened, and the conference form has no more in it than the
/// conference's number and password.
void checkJoining(const MeetingLink &link)
{
    test::FakeUrlOpener opener;
    Meeting meeting{.joinURL = link};
    meeting.join(opener);
    opener.handledSchemes = {u"zoommtg"_s};
    meeting.join(opener);
    FUZZ_EXPECT(opener.opened.size() == (meeting.canJoin() ? 2 : 0));
    for (const QString &opened : std::as_const(opener.opened)) {
        FUZZ_EXPECT(isOpenable(opened));
        const QUrl url(opened, QUrl::StrictMode);
        FUZZ_EXPECT(url.isValid());
        if (url.scheme() != "zoommtg"_L1)
            continue;
        FUZZ_EXPECT(url.host() == "zoom.us"_L1 && !url.hasFragment());
        const auto items = QUrlQuery(url).queryItems();
        FUZZ_EXPECT(items.size() == 2 || (items.size() == 3 && items[2].first == "pwd"_L1));
        FUZZ_EXPECT(items[0] == std::pair(u"action"_s, u"join"_s) && items[1].first == "confno"_L1);
    }
}

void checkLink(const QString &text)
{
    const std::optional<MeetingLink> link = MeetingLink::fromText(text);
    if (!link)
        return;
    FUZZ_EXPECT(link->text() == text && !text.isEmpty());
    FUZZ_EXPECT(std::none_of(text.begin(), text.end(), [](QChar c) { return c.isSpace() || c == u'"' || c == u'<'; }));
    FUZZ_EXPECT(!link->provider() || !link->provider()->isEmpty());
    FUZZ_EXPECT(!link->isWebLink() || link->text().startsWith("http"_L1, Qt::CaseInsensitive));
    checkJoining(*link);
}

void checkFinding(const QString &text)
{
    const std::optional<QString> found = findMeetingLink(text);
    if (!found)
        return;
    FUZZ_EXPECT(found->startsWith("http"_L1, Qt::CaseInsensitive) && found->contains("://"_L1));
    FUZZ_EXPECT(std::none_of(found->begin(), found->end(), isOutsideLinks));
    FUZZ_EXPECT(text.contains(*found));
    FUZZ_EXPECT(findMeetingLink(*found) == found);
    checkLink(*found);
}

void checkUri(const QString &text)
{
    const std::optional<Uri> uri = Uri::parse(text);
    if (!uri)
        return;
    for (const std::optional<QString> &part : {uri->scheme, uri->host, std::optional(uri->path), uri->query})
        FUZZ_EXPECT(!part || text.contains(*part));
    FUZZ_EXPECT(!uri->pathComponents().contains(QString()));
    FUZZ_EXPECT(uri->queryItems().size() == (uri->query ? uri->query->count(u'&') + 1 : 0));
}

void checkEncoding(const QString &text)
{
    const QByteArray encoded = percentEncoded(text);
    FUZZ_EXPECT(QByteArray::fromPercentEncoding(encoded) == text.toUtf8());
    FUZZ_EXPECT(std::all_of(encoded.begin(), encoded.end(), [](char c) { return c > ' ' && c < 127 && c != '&'; }));
    FUZZ_EXPECT(Uri::parse(QString::fromLatin1("x:?a=" + encoded)));
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t *data, std::size_t size)
{
    const QString text = QString::fromUtf8(test::inputBytes(data, size));
    checkFinding(text);
    checkLink(text);
    checkUri(text);
    checkEncoding(text);
    return 0;
}
