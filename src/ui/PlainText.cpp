#include "ui/PlainText.h"

using namespace Qt::StringLiterals;

namespace kelp {

namespace {

constexpr qsizetype longestText = 1000;
constexpr char16_t lineSeparator = 0x2028;
constexpr char16_t paragraphSeparator = 0x2029;
constexpr char16_t firstStrongIsolate = 0x2068;
constexpr char16_t popDirectionalIsolate = 0x2069;

/// Embeddings and overrides (U+202A…U+202E): they can make a text read as another one.
bool isOverride(char16_t unit)
{
    return unit >= 0x202A && unit <= 0x202E;
}

bool isIsolate(char16_t unit)
{
    return unit >= 0x2066 && unit <= popDirectionalIsolate;
}

} // namespace

QString flattened(const QString &text)
{
    QString result;
    result.reserve(qMin(text.size(), longestText));
    for (const QChar each : text) {
        const char16_t unit = each.unicode();
        if (isOverride(unit))
            continue;
        if (result.size() >= longestText && !each.isLowSurrogate())
            break;
        const bool breaks =
            each.category() == QChar::Other_Control || unit == lineSeparator || unit == paragraphSeparator;
        if (!breaks)
            result.append(each);
        else if (!result.endsWith(u' '))
            result.append(u' ');
    }
    return result.trimmed();
}

QString isolated(const QString &text)
{
    return QChar(firstStrongIsolate) + withoutIsolates(text) + QChar(popDirectionalIsolate);
}

QString withoutIsolates(const QString &text)
{
    QString result = text;
    result.removeIf([](QChar each) { return isIsolate(each.unicode()); });
    return result;
}

} // namespace kelp
