#pragma once

#include <QByteArray>

#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <cstdlib>

/// Called by libFuzzer for every input; the one thing that a fuzz target defines.
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t *data, std::size_t size);

/// Ends the target, so that the fuzzer keeps the input, where `condition` does not hold.
#define FUZZ_EXPECT(condition)                                                                                         \
    do {                                                                                                               \
        if (!(condition)) {                                                                                            \
            std::fprintf(stderr, "%s:%d: expected %s\n", __FILE__, __LINE__, #condition);                              \
            std::abort();                                                                                              \
        }                                                                                                              \
    } while (false)

namespace kelp::test {

/// A copy, so that reading past the end is reading past an allocation.
[[nodiscard]] inline QByteArray inputBytes(const std::uint8_t *data, std::size_t size)
{
    return {reinterpret_cast<const char *>(data), static_cast<qsizetype>(size)};
}

} // namespace kelp::test
