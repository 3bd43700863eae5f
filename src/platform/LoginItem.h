#pragma once

#include "base/Result.h"

#include <QString>

namespace kelp {

/// Whether the desktop starts Kelp when the user logs in. Others may change it, too.
class LoginItem
{
public:
    virtual ~LoginItem() = default;

    /// As it really is now.
    [[nodiscard]] virtual bool isEnabled() const = 0;
    /// The error is a text for the user.
    [[nodiscard]] virtual Result<void, QString> setEnabled(bool enabled) = 0;
};

} // namespace kelp
