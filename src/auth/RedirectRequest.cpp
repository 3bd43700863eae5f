#include "auth/RedirectRequest.h"

#include "base/Uri.h"

#include <QStringDecoder>

using namespace Qt::StringLiterals;

namespace kelp {

namespace {

/// "/?code=…&state=…" of "GET /?code=…&state=… HTTP/1.1"; "/" where there is none.
QString requestTarget(const QByteArray &request)
{
    QStringDecoder decoder(QStringDecoder::Utf8, QStringDecoder::Flag::Stateless);
    const QString text = decoder(request);
    const QStringList pieces = decoder.hasError() ? QStringList() : text.split(u' ', Qt::SkipEmptyParts);
    return pieces.size() < 2 ? u"/"_s : pieces[1];
}

QByteArray response(const QByteArray &status, const QString &message)
{
    const QByteArray page = "<html><body style=\"font-family:-apple-system;padding:40px\"><h2>Kelp</h2><p>" +
                            message.toUtf8() + "</p><script>window.close()</script></body></html>";
    return "HTTP/1.1 " + status +
           "\r\nContent-Type: text/html; charset=utf-8\r\nContent-Length: " + QByteArray::number(page.size()) +
           "\r\nConnection: close\r\n\r\n" + page;
}

} // namespace

RedirectAnswer answerRedirect(const QByteArray &request, const QString &expectedState)
{
    // The host only makes a whole URL of the target.
    const Uri uri = Uri::parse(u"http://localhost"_s + requestTarget(request)).value_or(Uri());
    const std::optional<QString> code = uri.queryValue(u"code");
    const std::optional<QString> error = uri.queryValue(u"error");

    if (code && uri.queryValue(u"state") == expectedState)
        return {response("200 OK", u"You can close this tab and go back to Kelp."_s), *code};
    if (error) {
        return {response("200 OK", u"Sign-in failed: "_s + *error),
                Failure(AuthError::fromServer(u"Google sign-in failed: "_s + *error))};
    }
    return {response("404 Not Found", {}), {}};
}

} // namespace kelp
