#include "Answer.h"

#include <QJsonArray>
#include <QJsonDocument>

namespace kelp::sandbox {

using namespace Qt::StringLiterals;

namespace {

QString statusName(int code)
{
    switch (code) {
    case 400:
        return u"INVALID_ARGUMENT"_s;
    case 401:
        return u"UNAUTHENTICATED"_s;
    case 403:
        return u"PERMISSION_DENIED"_s;
    case 404:
        return u"NOT_FOUND"_s;
    default:
        return u"UNKNOWN"_s;
    }
}

} // namespace

Answer Answer::json(int status, const QJsonObject &object)
{
    Answer answer;
    answer.status = status;
    answer.contentType = "application/json; charset=UTF-8";
    answer.body = QJsonDocument(object).toJson();
    answer.headers = {{"Cache-Control", "private, max-age=0, must-revalidate, no-transform"},
                      {"X-Content-Type-Options", "nosniff"}};
    return answer;
}

Answer Answer::html(int status, const QString &page)
{
    Answer answer;
    answer.status = status;
    answer.contentType = "text/html; charset=utf-8";
    answer.body = page.toUtf8();
    answer.headers = {{"Cache-Control", "no-store"}, {"Referrer-Policy", "no-referrer"}};
    return answer;
}

Answer Answer::redirect(const QByteArray &location)
{
    Answer answer = html(302, u"<!DOCTYPE html><title>Moved</title><p>The document has moved.</p>\n"_s);
    answer.headers.emplaceBack("Location", location);
    return answer;
}

Answer Answer::notFound()
{
    return html(404, u"<!DOCTYPE html><html lang=\"en\"><title>Error 404 (Not Found)</title>"
                     "<p><b>404.</b> The requested URL was not found on this server.</p></html>\n"_s);
}

Answer Answer::apiError(int code, const QString &reason, const QString &message)
{
    QJsonObject detail{{u"message"_s, message}, {u"domain"_s, u"global"_s}, {u"reason"_s, reason}};
    if (code == 401) {
        detail[u"location"_s] = u"Authorization"_s;
        detail[u"locationType"_s] = u"header"_s;
    }
    Answer answer = json(code, {{u"error"_s, QJsonObject{{u"code"_s, code},
                                                         {u"message"_s, message},
                                                         {u"errors"_s, QJsonArray{detail}},
                                                         {u"status"_s, statusName(code)}}}});
    if (code == 401)
        answer.headers.emplaceBack("WWW-Authenticate",
                                   "Bearer realm=\"https://accounts.google.com/\", error=\"invalid_token\"");
    return answer;
}

Answer Answer::oauthError(int code, const QString &error, const QString &description)
{
    return json(code, {{u"error"_s, error}, {u"error_description"_s, description}});
}

} // namespace kelp::sandbox
