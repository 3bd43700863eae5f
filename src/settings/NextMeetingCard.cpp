#include "settings/NextMeetingCard.h"

#include "settings/PanelTexts.h"
#include "settings/SymbolView.h"
#include "settings/TextButton.h"
#include "ui/DateTexts.h"
#include "ui/DesktopColours.h"
#include "ui/KelpStyle.h"

#include <QHBoxLayout>
#include <QPainter>

using namespace Qt::StringLiterals;

namespace kelp {

namespace {

constexpr double joinableBefore = 600; // seconds

QString timeRange(const Meeting &meeting, Instant now)
{
    return u"%1, %2 – %3"_s.arg(panel::day(meeting.start, now), shortTime(meeting.start), shortTime(meeting.end));
}

} // namespace

NextMeetingCard::NextMeetingCard(QWidget *parent)
    : QWidget(parent),
      m_title(new PanelLabel(15, QFont::DemiBold, Ink::Primary, this)),
      m_time(new PanelLabel(12, QFont::Normal, Ink::Secondary, this)),
      m_symbol(new SymbolView(u"bell"_s, 13, Ink::Accent, this)),
      m_status(new PanelLabel(12, QFont::Medium, Ink::Accent, this)),
      m_join(new TextButton(u"Join"_s, TextButton::Look::Prominent, this)),
      m_joinRow(new QWidget(this))
{
    auto *column = new QVBoxLayout(this);
    column->setContentsMargins(14, 12, 14, 13);
    column->setSpacing(0);
    m_title->setMaximumLines(2);
    column->addWidget(m_title);
    column->addSpacing(3);
    column->addWidget(m_time);
    column->addSpacing(8);
    auto *status = new QHBoxLayout;
    status->setSpacing(6);
    status->addWidget(m_symbol);
    status->addWidget(m_status, 1);
    column->addLayout(status);
    auto *join = new QVBoxLayout(m_joinRow);
    join->setContentsMargins(0, 9, 0, 0);
    join->addWidget(m_join);
    column->addWidget(m_joinRow);
    m_join->setSizePolicy(QSizePolicy::Expanding, QSizePolicy::Fixed);
    connect(m_join, &TextButton::clicked, this, [this] { Q_EMIT joined(m_meeting); });
}

bool NextMeetingCard::isJoinable(const Meeting &meeting, Instant now)
{
    return meeting.start - now <= joinableBefore && now < meeting.end;
}

void NextMeetingCard::present(const Scheduler::Popup &next, Instant now)
{
    m_meeting = next.meeting;
    m_title->setText(m_meeting.title);
    m_time->setText(timeRange(m_meeting, now));
    const bool hasStarted = m_meeting.start <= now;
    m_symbol->present(hasStarted ? u"record-circle"_s : u"bell"_s, Ink::Accent);
    m_status->setText(hasStarted ? u"Started "_s + panel::ago(m_meeting.start, now) : panel::countdown(next.at, now));
    const std::optional<QString> provider = m_meeting.provider();
    m_join->setText(provider ? u"Join "_s + *provider : u"Join"_s);
    m_joinRow->setVisible(m_meeting.canJoin() && isJoinable(m_meeting, now));
}

void NextMeetingCard::paintEvent(QPaintEvent *)
{
    QPainter painter(this);
    painter.setRenderHint(QPainter::Antialiasing);
    const DesktopColours colours = DesktopColours::of(palette());
    paintBox(painter, rect(), 10, colours.group, colours.hairline);
}

} // namespace kelp
