#include "base/Json.h"

#include <QJsonArray>
#include <QJsonDocument>

using namespace Qt::StringLiterals;

namespace kelp {

Result<QJsonValue, JsonError> parseJson(const QByteArray &text)
{
    // QJsonDocument takes only arrays and objects at the top, so the text is made the one element of an array.
    QJsonParseError error;
    const QJsonArray array = QJsonDocument::fromJson('[' + text + "\n]", &error).array();
    if (error.error != QJsonParseError::NoError)
        return Failure(JsonError{u"The answer is not valid JSON: "_s + error.errorString()});
    if (array.size() != 1)
        return Failure(JsonError{u"The answer is not valid JSON."_s});
    return array.first();
}

} // namespace kelp
