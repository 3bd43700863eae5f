#include "auth/AccountStore.h"
#include "base/Json.h"
#include "fuzz/FuzzTarget.h"

#include <QJsonArray>

using namespace kelp;

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t *data, std::size_t size)
{
    const QByteArray text = test::inputBytes(data, size);
    const std::optional<QList<Account>> accounts = decodeAccounts(text);
    if (!accounts)
        return 0;
    FUZZ_EXPECT(parseJson(text)->toArray().size() == accounts->size());
    const QString written = encodeAccounts(*accounts);
    FUZZ_EXPECT(decodeAccounts(written.toUtf8()) == accounts);
    return 0;
}
