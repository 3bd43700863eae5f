#include "calendar/CalendarError.h"

#include "base/Json.h"

#include <QJsonObject>
#include <QTextBoundaryFinder>

using namespace Qt::StringLiterals;

namespace kelp {

namespace {

/// The first `count` characters as a reader counts them; never half of one.
QString firstCharacters(const QString &text, int count)
{
    QTextBoundaryFinder finder(QTextBoundaryFinder::Grapheme, text);
    for (int i = 0; i < count && finder.position() < text.size(); ++i) {
        if (finder.toNextBoundary() < 0)
            return text;
    }
    return text.left(finder.position());
}

} // namespace

QString CalendarError::description() const
{
    const auto json = parseJson(body);
    const QJsonValue message = json ? json->toObject().value("error"_L1).toObject().value("message"_L1) : QJsonValue();
    const QString detail = message.isString() ? message.toString() : firstCharacters(QString::fromUtf8(body), 200);
    return u"Google Calendar error "_s + QString::number(status) + u": "_s + detail;
}

} // namespace kelp
