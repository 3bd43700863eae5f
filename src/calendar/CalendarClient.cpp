#include "calendar/CalendarClient.h"

#include "auth/AccountSource.h"
#include "calendar/AccountFetch.h"

#include <QHash>
#include <QPointer>

#include <algorithm>

using namespace Qt::StringLiterals;

namespace kelp {

namespace {

/// One refresh: the accounts one after the other. Lives until it has called back or its context is gone.
class Fetch : public QObject
{
public:
    Fetch(AccountFetch::Services services, double hours, MeetingSource::CalendarFilter isEnabled, QObject *context,
          MeetingSource::Callback callback)
        : QObject(context),
          m_services(std::move(services)),
          m_accounts(m_services.accounts.accounts()),
          m_hours(hours),
          m_isEnabled(std::move(isEnabled)),
          m_callback(std::move(callback))
    {
    }

    void readNextAccount()
    {
        if (m_next == m_accounts.size()) {
            finish();
            return;
        }
        auto *fetch = new AccountFetch(m_services, m_accounts[m_next++], m_hours, m_isEnabled, this);
        connect(fetch, &AccountFetch::finished, this, [this, fetch](const AccountFetch::Outcome &outcome) {
            fetch->deleteLater();
            take(outcome);
            readNextAccount();
        });
        fetch->start();
    }

private:
    void take(const AccountFetch::Outcome &outcome)
    {
        if (outcome.error) {
            m_result.errors.append(outcome.email + u": "_s + outcome.error->text);
            m_lastingError |= !outcome.error->transient;
            return;
        }
        m_result.calendars += outcome.calendars;
        // The same event seen through two calendars is kept once, as it was seen last.
        for (const Meeting &meeting : outcome.meetings) {
            const auto known = m_indexById.constFind(meeting.id);
            if (known != m_indexById.constEnd()) {
                m_result.meetings[*known] = meeting;
            } else {
                m_indexById.insert(meeting.id, m_result.meetings.size());
                m_result.meetings.append(meeting);
            }
        }
    }

    void finish()
    {
        std::stable_sort(m_result.meetings.begin(), m_result.meetings.end(),
                         [](const Meeting &a, const Meeting &b) { return a.start < b.start; });
        m_result.errorsAreTransient = !m_result.errors.isEmpty() && !m_lastingError;
        deleteLater();
        m_callback(std::move(m_result));
    }

    AccountFetch::Services m_services;
    QList<Account> m_accounts; ///< as they were at the start
    double m_hours;
    MeetingSource::CalendarFilter m_isEnabled;
    MeetingSource::Callback m_callback;
    qsizetype m_next = 0;
    FetchResult m_result;
    QHash<QString, qsizetype> m_indexById;
    bool m_lastingError = false;
};

} // namespace

CalendarClient::CalendarClient(AccountSource &accounts, HttpClient &http, Clock &clock, QString base)
    : m_accounts(accounts), m_http(http), m_clock(clock), m_base(std::move(base))
{
}

void CalendarClient::fetch(double hours, CalendarFilter isEnabled, QObject *context, Callback callback)
{
    auto *fetch =
        new Fetch({m_accounts, m_http, m_clock, m_base}, hours, std::move(isEnabled), context, std::move(callback));
    fetch->readNextAccount();
}

} // namespace kelp
