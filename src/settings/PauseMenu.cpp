#include "settings/PauseMenu.h"

#include "base/Clock.h"
#include "schedule/Scheduler.h"
#include "settings/PanelTexts.h"

using namespace Qt::StringLiterals;

namespace kelp {

namespace {

constexpr double hour = 3600;
constexpr int widestTitle = 260; // points; menus are no place to read in

/// A menu takes "&" for a shortcut.
QString withoutMnemonics(QString text)
{
    return text.replace(u'&', u"&&"_s);
}

} // namespace

PauseMenu::PauseMenu(Scheduler &scheduler, Clock &clock, QWidget *parent)
    : QMenu(parent), m_scheduler(scheduler), m_clock(clock)
{
    // What can be chosen changes with the time.
    connect(this, &QMenu::aboutToShow, this, &PauseMenu::fill);
    fill();
}

void PauseMenu::fill()
{
    clear();
    connect(addAction(u"For 1 hour"_s), &QAction::triggered, this,
            [this] { m_scheduler.setPausedUntil(m_clock.now() + hour); });
    if (const std::optional<Meeting> next = m_scheduler.nextMeeting()) {
        const QString title = fontMetrics().elidedText(panel::within(next->title), Qt::ElideRight, widestTitle);
        connect(addAction(withoutMnemonics(u"Until %1 ends"_s.arg(title))), &QAction::triggered, this,
                [this, end = next->end] { m_scheduler.setPausedUntil(end); });
    }
    connect(addAction(u"Until tomorrow"_s), &QAction::triggered, this,
            [this] { m_scheduler.setPausedUntil(panel::tomorrow(m_clock.now())); });
}

} // namespace kelp
