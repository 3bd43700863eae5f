#include "Request.h"

namespace kelp::sandbox {

Request Request::fromTarget(const QByteArray &method, const QByteArray &target)
{
    Request request;
    request.method = method;
    const qsizetype question = target.indexOf('?');
    request.path = question < 0 ? target : target.left(question);
    request.rawQuery = question < 0 ? QByteArray() : target.mid(question + 1);
    for (const QByteArray &segment : request.path.mid(1).split('/')) {
        const std::optional<QString> decoded = percentDecoded(segment);
        request.isWellFormed = request.isWellFormed && decoded;
        request.segments.append(decoded.value_or(QString()));
    }
    const std::optional<Parameters> query = Parameters::decode(request.rawQuery);
    request.isWellFormed = request.isWellFormed && query;
    request.query = query.value_or(Parameters());
    return request;
}

QByteArray Request::header(const QByteArray &name) const
{
    for (const auto &[key, value] : headers) {
        if (key == name)
            return value;
    }
    return {};
}

bool Request::hasForm() const
{
    const QByteArray type = header("content-type");
    return type.split(';').first().trimmed().toLower() == "application/x-www-form-urlencoded";
}

} // namespace kelp::sandbox
