#include "auth/RedirectRequest.h"
#include "fuzz/FuzzTarget.h"

#include <QList>

#include <algorithm>

using namespace kelp;
using namespace Qt::StringLiterals;

namespace {

const QString expectedState = u"expected-state"_s;

void checkResponse(const QByteArray &response)
{
    const qsizetype end = response.indexOf("\r\n\r\n");
    FUZZ_EXPECT(end > 0);
    const QByteArray head = response.left(end);
    const QByteArray page = response.mid(end + 4);
    FUZZ_EXPECT(head.startsWith("HTTP/1.1 200 OK\r\n") || head.startsWith("HTTP/1.1 404 Not Found\r\n"));
    FUZZ_EXPECT(head.contains("\r\nContent-Length: " + QByteArray::number(page.size()) + "\r\n"));
    FUZZ_EXPECT(head.endsWith("\r\nConnection: close"));
    // Nothing of the request gets into the head: it has as many lines as ever.
    FUZZ_EXPECT(head.count('\n') == 3 && head.count('\r') == 3);
    FUZZ_EXPECT(page.startsWith("<html>") && page.endsWith("</html>") && page.isValidUtf8());
}

bool hasState(const QByteArray &request)
{
    const QList<QByteArray> pieces = request.split(' ');
    return std::any_of(pieces.begin(), pieces.end(), [](const QByteArray &piece) {
        return QByteArray::fromPercentEncoding(piece).contains("state=" + expectedState.toUtf8());
    });
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t *data, std::size_t size)
{
    const QByteArray request = test::inputBytes(data, size);
    const RedirectAnswer answer = answerRedirect(request, expectedState);
    checkResponse(answer.response);
    FUZZ_EXPECT(answer.outcome.has_value() == answer.response.startsWith("HTTP/1.1 200 OK\r\n"));
    if (answer.outcome && *answer.outcome) {
        FUZZ_EXPECT(hasState(request));
        const RedirectAnswer other = answerRedirect(request, u"another-state"_s);
        FUZZ_EXPECT(!other.outcome || !*other.outcome);
    } else if (answer.outcome) {
        FUZZ_EXPECT(answer.outcome->error().kind == AuthError::Kind::server);
        FUZZ_EXPECT(answer.outcome->error().description().startsWith("Google sign-in failed: "_L1));
    }
    return 0;
}
