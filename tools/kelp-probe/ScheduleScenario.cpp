#include "ScheduleScenario.h"

#include "ManualClock.h"
#include "ScenarioReader.h"

#include "auth/AccountSource.h"
#include "preferences/Preferences.h"
#include "schedule/DuePolicy.h"
#include "schedule/Scheduler.h"
#include "schedule/SnoozePolicy.h"

#include <QJsonDocument>

#include <algorithm>
#include <memory>

using namespace Qt::StringLiterals;

namespace kelp::probe {

namespace {

/// No account and no calendar service: a scenario brings its lists itself.
class NoService final : public AccountSource, public MeetingSource
{
public:
    [[nodiscard]] const QList<Account> &accounts() const override { return m_accounts; }
    void validAccessToken(const Account &, bool, QObject *, TokenCallback) override {}
    void rename(const Account &, const QString &) override {}
    void fetch(double, CalendarFilter, QObject *, Callback) override {}

private:
    QList<Account> m_accounts;
};

/// One run: the scheduler, and an overlay that is nothing but the meeting it shows.
class Run
{
public:
    explicit Run(Scenario scenario)
        : m_scenario(std::move(scenario)),
          m_preferences(m_scenario.preferences),
          m_lists{.calendars = m_scenario.calendars, .meetings = m_scenario.meetings}
    {
        m_clock.set(m_scenario.from);
    }

    QList<QByteArray> lines()
    {
        makeScheduler();
        while (m_clock.now() <= m_scenario.to) {
            carryOutActions();
            if (m_clock.now() > m_scenario.to)
                break;
            m_scheduler->tick();
            m_clock.set(m_clock.now() + m_scenario.step);
        }
        return m_lines;
    }

private:
    void makeScheduler()
    {
        m_onScreen.reset();
        m_scheduler =
            std::make_unique<Scheduler>(Scheduler::Services{m_preferences, m_clock, m_noService, m_noService});
        m_scheduler->onDue = [this](const Meeting &meeting) { return show(meeting); };
        QObject::connect(m_scheduler.get(), &Scheduler::swallowed, m_scheduler.get(),
                         [this](const Meeting &meeting) { write("swallowed"_L1, meeting.id); });
        m_scheduler->apply(m_lists);
    }

    bool show(const Meeting &meeting)
    {
        const DueDecision decision = decideDue(meeting, m_onScreen, m_clock.now());
        if (!decision.show) {
            write("refused"_L1, meeting.id);
            return false;
        }
        m_onScreen = meeting;
        const QJsonValue previous = decision.previous ? QJsonValue(decision.previous->id) : QJsonValue();
        write("shown"_L1, meeting.id, {{u"previous"_s, previous}});
        return true;
    }

    void hide()
    {
        write("hidden"_L1, m_onScreen->id);
        m_onScreen.reset();
    }

    void carryOutActions()
    {
        // A jump may let actions become due that stand earlier in the list.
        const auto isDue = [this](const Scenario::Action &action) { return action.at <= m_clock.now(); };
        QList<Scenario::Action> &actions = m_scenario.actions;
        for (auto next = std::find_if(actions.begin(), actions.end(), isDue); next != actions.end();
             next = std::find_if(actions.begin(), actions.end(), isDue)) {
            const Scenario::Action action = *next;
            actions.erase(next);
            carryOut(action);
        }
    }

    void carryOut(const Scenario::Action &action)
    {
        using Kind = Scenario::Action::Kind;
        switch (action.kind) {
        case Kind::join:
            if (m_onScreen && m_onScreen->canJoin())
                hide();
            break;
        case Kind::snooze:
            if (m_onScreen) {
                m_scheduler->snooze(*m_onScreen, snoozeSeconds(m_preferences));
                hide();
            }
            break;
        case Kind::dismiss:
            if (m_onScreen)
                hide();
            break;
        case Kind::pause:
            m_scheduler->setPausedUntil(action.instant);
            break;
        case Kind::resume:
            m_scheduler->setPausedUntil({});
            break;
        case Kind::restart:
            makeScheduler();
            break;
        case Kind::jump:
            m_clock.set(action.instant);
            break;
        case Kind::meetings:
            m_lists.meetings = action.meetings;
            m_lists.calendars = action.calendars.value_or(m_lists.calendars);
            m_scheduler->apply(m_lists);
            break;
        }
    }

    void write(QLatin1StringView event, const QString &id, QJsonObject line = {})
    {
        line.insert(u"at"_s, m_clock.now().secondsSince1970);
        line.insert(u"event"_s, event);
        line.insert(u"id"_s, id);
        m_lines.append(QJsonDocument(line).toJson(QJsonDocument::Compact));
    }

    Scenario m_scenario;
    ManualClock m_clock;
    Preferences m_preferences;
    NoService m_noService;
    FetchResult m_lists;
    std::unique_ptr<Scheduler> m_scheduler;
    std::optional<Meeting> m_onScreen;
    QList<QByteArray> m_lines;
};

} // namespace

Result<QList<QByteArray>, QString> runScheduleScenario(const QJsonObject &scenario)
{
    auto read = readScenario(scenario);
    if (!read)
        return Failure(read.error());
    return Run(*std::move(read)).lines();
}

} // namespace kelp::probe
