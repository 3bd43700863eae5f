#include "EventsQuery.h"

#include "CalendarRecords.h"

#include <QJsonArray>
#include <QJsonDocument>

namespace kelp::sandbox {

using namespace Qt::StringLiterals;

namespace {

const QByteArray pageTokenMark = "page:";

Answer badRequest(const QString &reason, const QString &message)
{
    return Answer::apiError(400, reason, message);
}

Result<std::optional<Instant>, Answer> instant(const Parameters &query, const QString &name)
{
    const std::optional<QString> text = query.find(name);
    if (!text)
        return std::optional<Instant>();
    const std::optional<Instant> parsed = Instant::parse(*text);
    if (!parsed)
        return Failure(badRequest(u"badRequest"_s, u"Bad Request"_s));
    return parsed;
}

} // namespace

Answer invalidValue(const QString &name, const QString &value)
{
    return badRequest(u"invalidParameter"_s, u"Invalid value '%1' for parameter '%2'."_s.arg(value, name));
}

Result<bool, Answer> flag(const Parameters &query, const QString &name)
{
    const QString value = query.find(name).value_or(u"false"_s);
    if (value != u"true" && value != u"false")
        return Failure(invalidValue(name, value));
    return value == u"true";
}

Result<PageRequest, Answer> PageRequest::read(const Parameters &query, int defaultSize, int largestSize)
{
    PageRequest page{0, defaultSize};
    if (const auto text = query.find(u"maxResults"_s)) {
        bool isNumber = false;
        const int size = text->toInt(&isNumber);
        if (!isNumber || size < 1)
            return Failure(invalidValue(u"maxResults"_s, *text));
        page.size = std::min(size, largestSize);
    }
    if (const auto text = query.find(u"pageToken"_s)) {
        const QByteArray token = QByteArray::fromBase64(text->toLatin1(), QByteArray::Base64UrlEncoding);
        bool isNumber = false;
        page.offset = token.mid(pageTokenMark.size()).toInt(&isNumber);
        if (!token.startsWith(pageTokenMark) || !isNumber || page.offset < 1)
            return Failure(invalidValue(u"pageToken"_s, *text));
    }
    return page;
}

QJsonObject PageRequest::cut(QJsonObject list, const QJsonArray &all) const
{
    QJsonArray items;
    const qsizetype end = std::min(offset + size, all.size());
    for (qsizetype i = offset; i < end; ++i)
        items.append(all[i]);
    const QString hash = shortHash(QString::fromUtf8(QJsonDocument(all).toJson(QJsonDocument::Compact)));
    list[u"etag"_s] = u"\"p%1\""_s.arg(hash);
    list[u"items"_s] = items;
    if (end < all.size()) {
        const QByteArray token = pageTokenMark + QByteArray::number(end);
        list[u"nextPageToken"_s] = QString::fromLatin1(token.toBase64(QByteArray::Base64UrlEncoding));
    } else {
        list[u"nextSyncToken"_s] = u"CP%1="_s.arg(hash);
    }
    return list;
}

Result<EventsQuery, Answer> EventsQuery::read(const Parameters &query)
{
    if (query.find(u"syncToken"_s))
        return Failure(
            Answer::apiError(410, u"fullSyncRequired"_s, u"Sync token is no longer valid, a full sync is required."_s));
    const auto from = instant(query, u"timeMin"_s);
    const auto to = instant(query, u"timeMax"_s);
    const auto singleEvents = flag(query, u"singleEvents"_s);
    const auto page = PageRequest::read(query, 250, 2500);
    if (!from || !to)
        return Failure(!from ? from.error() : to.error());
    if (!singleEvents)
        return Failure(singleEvents.error());
    if (!page)
        return Failure(page.error());
    if (*from && *to && **to <= **from)
        return Failure(badRequest(u"timeRangeEmpty"_s, u"The specified time range is empty."_s));
    const QString order = query.value(u"orderBy"_s);
    if (!order.isEmpty() && order != u"startTime" && order != u"updated")
        return Failure(invalidValue(u"orderBy"_s, order));
    if (order == u"startTime" && !*singleEvents)
        return Failure(
            badRequest(u"badRequest"_s, u"The requested ordering is not available for the particular query."_s));
    return EventsQuery{{*from, *to}, *singleEvents, order == u"startTime", *page};
}

} // namespace kelp::sandbox
