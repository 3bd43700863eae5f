#pragma once

#include <QString>

#include <optional>

namespace kelp {

/// One calendar of one account.
struct CalendarInfo
{
    QString googleID;
    QString accountEmail;
    QString name; ///< the user's own name for it, else the calendar's, else its identifier
    bool isPrimary = false;
    bool googleSelected = false;  ///< shown in Google's own calendar view
    std::optional<QString> color; ///< "#rrggbb"

    /// What tells calendars apart, also between accounts: account e-mail, "|", Google's identifier.
    [[nodiscard]] QString key() const { return accountEmail + QLatin1Char('|') + googleID; }

    friend bool operator==(const CalendarInfo &, const CalendarInfo &) = default;
};

} // namespace kelp
