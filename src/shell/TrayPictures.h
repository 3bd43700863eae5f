#pragma once

#include "platform/StatusItem.h"

#include <optional>

namespace kelp {

/// Every form of MenuBarIcon that the tray may have to show: the calendar, the pause sign, and each text.
class TrayPictures final : public StatusPictures
{
public:
    [[nodiscard]] QStringList names() const override;
    [[nodiscard]] QByteArray symbolicSvg(const QString &name) const override;
    [[nodiscard]] QByteArray svg(const QString &name) const override;
    [[nodiscard]] QImage image(const QString &name, int pixels) const override;
};

/// What the tray shows; the arguments are those of `statusTitle`.
[[nodiscard]] StatusLook statusLook(std::optional<double> secondsUntilStart, bool isPaused);

} // namespace kelp
