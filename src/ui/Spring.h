#pragma once

namespace kelp {

/// A damped spring pulled from 0 to 1, at rest when let go.
struct Spring
{
    double response;        ///< seconds of one undamped swing
    double dampingFraction; ///< 1 settles without overshooting; above 1 counts as 1

    /// Where it is `seconds` after it was let go.
    [[nodiscard]] double position(double seconds) const;
    /// After this many seconds it stays within a thousandth of its end.
    [[nodiscard]] double settlingTime() const;
};

} // namespace kelp
