#pragma once

#include "platform/KeySource.h"

namespace kelp {

/// The keys that Kelp's own windows get. They get them all the same.
class OwnWindowKeys final : public KeySource
{
    Q_OBJECT

public:
    using KeySource::KeySource;

    void start() override;
    [[nodiscard]] bool seesAll() const override { return false; }

protected:
    bool eventFilter(QObject *receiver, QEvent *event) override;
};

} // namespace kelp
