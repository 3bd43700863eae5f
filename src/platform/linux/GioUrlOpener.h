#pragma once

#include "platform/UrlOpener.h"

namespace kelp {

/// UrlOpener on GIO, which knows the desktop's handlers and, unlike Qt, never falls back to a browser for a scheme
/// that has none.
class GioUrlOpener final : public UrlOpener
{
public:
    [[nodiscard]] bool hasHandler(const QString &scheme) const override;
    void open(const QString &link) override;
};

} // namespace kelp
