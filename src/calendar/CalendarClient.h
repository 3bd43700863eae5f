#pragma once

#include "calendar/MeetingSource.h"

namespace kelp {

class AccountSource;
class Clock;
class HttpClient;

/// Reads Google Calendar v3 for every signed-in account, one request after the other. An account that fails does not
/// stop the others.
class CalendarClient final : public MeetingSource
{
public:
    /// `base` is the root of the interface, ending in /calendar/v3.
    CalendarClient(AccountSource &accounts, HttpClient &http, Clock &clock, QString base);

    void fetch(double hours, CalendarFilter isEnabled, QObject *context, Callback callback) override;

private:
    AccountSource &m_accounts;
    HttpClient &m_http;
    Clock &m_clock;
    QString m_base;
};

} // namespace kelp
