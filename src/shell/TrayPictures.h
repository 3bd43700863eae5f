#pragma once

#include "platform/StatusItem.h"

#include <QByteArray>
#include <QStringList>

#include <optional>

namespace kelp {

/// Every form of MenuBarIcon that the tray may have to show: the calendar, the pause sign, and each text.
class TrayPictures final : public StatusPictures
{
public:
    /// The content of the files, which the build writes: drawing them all would hold up every start.
    [[nodiscard]] static QStringList names();
    [[nodiscard]] static QByteArray svg(const QString &name);
    [[nodiscard]] static QByteArray symbolicSvg(const QString &name);

    [[nodiscard]] QString folder() const override;
    [[nodiscard]] QImage image(const QString &name, int pixels) const override;
};

/// What the tray shows; the arguments are those of `statusTitle`.
[[nodiscard]] StatusLook statusLook(std::optional<double> secondsUntilStart, bool isPaused);

} // namespace kelp
