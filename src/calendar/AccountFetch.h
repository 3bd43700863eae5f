#pragma once

#include "auth/Account.h"
#include "base/Result.h"
#include "calendar/MeetingSource.h"
#include "calendar/WireRecords.h"

#include <QByteArray>
#include <QObject>

namespace kelp {

class AccountSource;
class Clock;
class HttpClient;

/// Reads one account's calendars and meetings; deletes itself with its parent.
///
///     start → (GET calendarList) → takeCalendars → readNextCalendar ─┬→ (GET events) → takeEvents ─┐
///                                                       ↑            └→ finished                   │
///                                                       └──────────────────────────────────────────┘
class AccountFetch : public QObject
{
    Q_OBJECT

public:
    /// Why an account could not be read.
    struct Error
    {
        QString text;
        bool transient = false;
    };
    struct Outcome
    {
        QString email; ///< the account's address, as Google gives it
        QList<CalendarInfo> calendars;
        QList<Meeting> meetings;
        std::optional<Error> error;
    };

    struct Services
    {
        AccountSource &accounts;
        HttpClient &http;
        Clock &clock;
        QString base; ///< root of the calendar interface, without a slash at the end
    };

    AccountFetch(Services services, Account account, double hours, MeetingSource::CalendarFilter isEnabled,
                 QObject *parent);

    void start();

Q_SIGNALS:
    /// Once. On an error the lists are empty.
    void finished(const kelp::AccountFetch::Outcome &outcome);

private:
    using BodyHandler = void (AccountFetch::*)(const QByteArray &body);

    void get(const QString &url, bool retry, BodyHandler handler);
    void takeCalendars(const QByteArray &body);
    void repairEmail(const QList<GCalendarList::Entry> &entries);
    void readNextCalendar();
    void takeEvents(const QByteArray &body);
    void fail(const QString &text, bool transient);
    [[nodiscard]] QString eventsUrl(const CalendarInfo &calendar) const;

    Services m_services;
    Account m_account;
    double m_hours;
    MeetingSource::CalendarFilter m_isEnabled;
    Instant m_started;
    qsizetype m_next = 0; ///< index of the calendar that is read next
    QList<CalendarInfo> m_calendars;
    QList<Meeting> m_meetings;
};

} // namespace kelp
