#include "base/Instant.h"
#include "fuzz/FuzzTarget.h"

#include <cmath>
#include <cstring>
#include <limits>

using namespace kelp;

namespace {

constexpr double leastWritten = -62135596800.0;  // 0001-01-01T00:00:00Z
constexpr double mostWritten = 253402300799.999; // 9999-12-31T23:59:59.999Z

/// Whatever the instant, what is written of it can be read; in the years 1 to 9999 it is the same instant.
void checkWriting(Instant instant)
{
    const double seconds = instant.secondsSince1970;
    const QString written = instant.toIso8601Milliseconds();
    const QString whole = instant.toIso8601();
    const std::optional<Instant> read = Instant::parse(written);
    const std::optional<Instant> readWhole = Instant::parse(whole);
    FUZZ_EXPECT(written.size() == 24 && read);
    FUZZ_EXPECT(whole.size() == 20 && readWhole);
    FUZZ_EXPECT(read->toIso8601Milliseconds() == written);
    FUZZ_EXPECT(readWhole->toIso8601() == whole);
    if (seconds >= leastWritten && seconds <= mostWritten) {
        // A double of this size is exact to 2^-15 s.
        FUZZ_EXPECT(std::abs(*read - instant) <= 0.0005 + 0x1p-15);
        FUZZ_EXPECT(readWhole->secondsSince1970 == std::floor(seconds));
    }
    FUZZ_EXPECT(instant.toLocalDateTime().isValid());
    if (std::abs(seconds) < 0x1p62)
        FUZZ_EXPECT(static_cast<double>(instant.wholeSeconds()) == std::trunc(seconds));
}

void checkDecimal(double value)
{
    const QString text = shortestDecimal(value);
    FUZZ_EXPECT(text.toDouble() == value);
    FUZZ_EXPECT(text.indexOf(u'.') > 0 && !text.endsWith(u'.') && !text.contains(u'e'));
}

/// Whether the text ends in "Z" or a numeric offset.
bool hasOffset(const QString &text)
{
    return text.endsWith(u'Z') || (text.size() > 6 && (text[text.size() - 6] == u'+' || text[text.size() - 6] == u'-'));
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t *data, std::size_t size)
{
    const QString text = QString::fromUtf8(test::inputBytes(data, size));
    if (const std::optional<Instant> instant = Instant::parse(text)) {
        FUZZ_EXPECT(text.size() >= 20 && text[10] == u'T' && hasOffset(text));
        FUZZ_EXPECT(std::isfinite(instant->secondsSince1970));
        checkWriting(*instant);
        checkDecimal(instant->secondsSince1970);
    }
    if (size >= sizeof(double)) {
        double value = 0;
        std::memcpy(&value, data, sizeof value);
        checkWriting({value});
        if (std::isfinite(value))
            checkDecimal(value);
    }
    return 0;
}
