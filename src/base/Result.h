#pragma once

#include <tl/expected.hpp>

namespace kelp {

/// The outcome of an operation that can fail: a value of `T`, or an error of `E`.
template<typename T, typename E>
using Result = tl::expected<T, E>;

/// `return Failure(error);` from a function that returns a Result.
template<typename E>
[[nodiscard]] auto Failure(E error)
{
    return tl::unexpected<E>(std::move(error));
}

} // namespace kelp
