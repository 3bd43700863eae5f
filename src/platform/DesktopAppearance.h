#pragma once

#include <QColor>
#include <QObject>

#include <optional>

namespace kelp {

/// What the user has chosen for the whole desktop and Kelp keeps to.
class DesktopAppearance : public QObject
{
    Q_OBJECT

public:
    using QObject::QObject;

    /// Whether things are to appear without moving.
    [[nodiscard]] virtual bool reducesMotion() const = 0;
    /// Whether dark windows are wanted, or light ones; nothing where the user has no preference.
    [[nodiscard]] virtual std::optional<bool> isDark() const = 0;
    /// The colour of what is chosen or switched on, where the user has one.
    [[nodiscard]] virtual std::optional<QColor> accent() const = 0;

Q_SIGNALS:
    /// One of them is another now. Also soon after the start: asking the desktop takes a while, and nothing is known
    /// until it has answered.
    void changed();
};

} // namespace kelp
