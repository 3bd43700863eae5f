#pragma once

#include "platform/LoginItem.h"

namespace kelp::test {

/// A login item that does what a test says, and that others may change, too.
class FakeLoginItem final : public LoginItem
{
public:
    [[nodiscard]] bool isEnabled() const override { return enabled; }
    [[nodiscard]] Result<void, QString> setEnabled(bool wanted) override
    {
        if (!error.isEmpty())
            return Failure(error);
        enabled = wanted;
        return {};
    }

    bool enabled = false;
    QString error; ///< why it cannot be changed
};

} // namespace kelp::test
