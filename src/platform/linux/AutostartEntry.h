#pragma once

#include "platform/LoginItem.h"

#include <QStringList>

namespace kelp {

/// LoginItem by a desktop entry in the user's autostart folder, `$XDG_CONFIG_HOME/autostart`, by
/// freedesktop.org's rules for autostart. One of the system's (`$XDG_CONFIG_DIRS`) counts while the user has none;
/// it is switched off by a hidden entry in its place.
class AutostartEntry final : public LoginItem
{
public:
    /// `program` is started at login. The entry that the user has comes first in `folders`.
    AutostartEntry(QString program, QStringList folders);
    /// For this program and this user.
    AutostartEntry();

    [[nodiscard]] bool isEnabled() const override;
    [[nodiscard]] Result<void, QString> setEnabled(bool enabled) override;

    /// The user's entry.
    [[nodiscard]] QString path() const;

private:
    [[nodiscard]] QByteArray entry() const;
    [[nodiscard]] bool systemHasOne() const;

    QString m_program;
    QStringList m_folders;
};

} // namespace kelp
