#include "base/Uri.h"

#include <QByteArray>
#include <QStringDecoder>

#include <algorithm>

namespace kelp {

namespace {

bool isLetter(QChar c)
{
    return (c >= u'a' && c <= u'z') || (c >= u'A' && c <= u'Z');
}
bool isDigit(QChar c)
{
    return c >= u'0' && c <= u'9';
}
bool isHexDigit(QChar c)
{
    return isDigit(c) || (c >= u'a' && c <= u'f') || (c >= u'A' && c <= u'F');
}

/// RFC 3986: unreserved / sub-delims.
bool isPlain(QChar c)
{
    return isLetter(c) || isDigit(c) || QStringView(u"-._~!$&'()*+,;=").contains(c);
}

/// Whether every character is plain, a percent escape or one of `extra`.
bool consistsOf(QStringView text, QStringView extra)
{
    for (qsizetype i = 0; i < text.size(); ++i) {
        if (text[i] == u'%') {
            if (i + 2 >= text.size() || !isHexDigit(text[i + 1]) || !isHexDigit(text[i + 2]))
                return false;
            i += 2;
        } else if (!isPlain(text[i]) && !extra.contains(text[i])) {
            return false;
        }
    }
    return true;
}

bool isScheme(QStringView text)
{
    return !text.isEmpty() && isLetter(text[0]) && std::all_of(text.begin(), text.end(), [](QChar c) {
        return isLetter(c) || isDigit(c) || c == u'+' || c == u'-' || c == u'.';
    });
}

/// Removes what stands behind the first `delimiter`, and the delimiter, from `rest` and returns it.
std::optional<QStringView> takeTail(QStringView &rest, QChar delimiter)
{
    const qsizetype position = rest.indexOf(delimiter);
    if (position < 0)
        return {};
    const QStringView tail = rest.mid(position + 1);
    rest = rest.left(position);
    return tail;
}

/// The host of [userinfo "@"] host [":" port].
std::optional<QStringView> hostOf(QStringView authority)
{
    QStringView hostAndPort = authority;
    if (const qsizetype at = authority.lastIndexOf(u'@'); at >= 0) {
        if (!consistsOf(authority.left(at), u":"))
            return {};
        hostAndPort = authority.mid(at + 1);
    }
    qsizetype end = 0;
    if (hostAndPort.startsWith(u'[')) {
        end = hostAndPort.indexOf(u']') + 1;
        if (end == 0 || !consistsOf(hostAndPort.mid(1, end - 2), u":"))
            return {};
    } else {
        const qsizetype colon = hostAndPort.indexOf(u':');
        end = colon < 0 ? hostAndPort.size() : colon;
        if (!consistsOf(hostAndPort.left(end), {}))
            return {};
    }
    const QStringView port = hostAndPort.mid(end);
    if (!port.isEmpty() && (port[0] != u':' || !std::all_of(port.begin() + 1, port.end(), isDigit)))
        return {};
    return hostAndPort.left(end);
}

std::optional<QString> decoded(QStringView text)
{
    QStringDecoder decoder(QStringDecoder::Utf8, QStringDecoder::Flag::Stateless);
    const QString result = decoder(QByteArray::fromPercentEncoding(text.toUtf8()));
    return decoder.hasError() ? std::nullopt : std::optional(result);
}

} // namespace

std::optional<Uri> Uri::parse(QStringView text)
{
    QStringView rest = text;
    const std::optional<QStringView> fragment = takeTail(rest, u'#');
    const std::optional<QStringView> query = takeTail(rest, u'?');
    if ((fragment && !consistsOf(*fragment, u":@/?")) || (query && !consistsOf(*query, u":@/?")))
        return {};

    Uri uri;
    if (query)
        uri.query = query->toString();
    // A colon before the first slash ends the scheme; a relative reference may not hold one there.
    const qsizetype colon = rest.indexOf(u':');
    const qsizetype slash = rest.indexOf(u'/');
    if (colon >= 0 && (slash < 0 || colon < slash)) {
        if (!isScheme(rest.left(colon)))
            return {};
        uri.scheme = rest.left(colon).toString();
        rest = rest.mid(colon + 1);
    }
    if (rest.startsWith(u"//")) {
        const qsizetype end = rest.indexOf(u'/', 2);
        const std::optional<QStringView> host = hostOf(end < 0 ? rest.mid(2) : rest.mid(2, end - 2));
        if (!host)
            return {};
        uri.host = host->toString();
        rest = end < 0 ? QStringView() : rest.mid(end);
    }
    if (!consistsOf(rest, u":@/"))
        return {};
    uri.path = rest.toString();
    return uri;
}

QStringList Uri::pathComponents() const
{
    QStringList components;
    if (path.startsWith(u'/'))
        components.append(QStringLiteral("/"));
    const auto segments = QStringView(path).split(u'/', Qt::SkipEmptyParts);
    for (const QStringView segment : segments)
        components.append(decoded(segment).value_or(segment.toString()));
    return components;
}

QList<Uri::QueryItem> Uri::queryItems() const
{
    QList<QueryItem> items;
    if (!query)
        return items;
    const auto pieces = QStringView(*query).split(u'&');
    for (QStringView piece : pieces) {
        const std::optional<QStringView> value = takeTail(piece, u'=');
        items.append({decoded(piece).value_or(piece.toString()), value ? decoded(*value) : std::nullopt});
    }
    return items;
}

std::optional<QString> Uri::queryValue(QStringView name) const
{
    const QList<QueryItem> items = queryItems();
    const auto item =
        std::find_if(items.begin(), items.end(), [&](const QueryItem &each) { return each.name == name; });
    return item == items.end() ? std::nullopt : item->value;
}

QByteArray percentEncoded(const QString &text, QByteArrayView literal)
{
    // QByteArray leaves letters, digits and "-._~" alone.
    return text.toUtf8().toPercentEncoding(literal.toByteArray());
}

} // namespace kelp
