#include "settings/AccountGroup.h"

#include "settings/CalendarRow.h"
#include "settings/ExpanderRow.h"
#include "settings/IconButton.h"
#include "settings/PanelTexts.h"
#include "settings/RemovalQuestion.h"
#include "settings/SymbolView.h"

#include <QHBoxLayout>
#include <QMenu>
#include <QStyle>

#include <algorithm>
#include <utility>

using namespace Qt::StringLiterals;

namespace kelp {

namespace {

constexpr Spring spring{0.15, 0.85};

QColor colourOf(const CalendarInfo &calendar)
{
    return calendar.color ? QColor(*calendar.color) : QColor();
}

} // namespace

AccountGroup::AccountGroup(const QString &email, QWidget *parent) : RowGroup(parent), m_email(email)
{
    makeHeader();
    m_body = new QWidget(this);
    m_list = new QVBoxLayout(m_body);
    m_list->setContentsMargins(0, 4, 0, 5);
    m_list->setSpacing(0);
    m_note = new PanelLabel(12, QFont::Normal, Ink::Secondary, m_body);
    m_note->setContentsMargins(rowInset, 6, rowInset, 6);
    m_list->addWidget(m_note);
    addRow(m_body);
    m_body->hide();
    connect(&m_turn, &QVariantAnimation::valueChanged, this, [this](const QVariant &seconds) {
        const double way = spring.position(seconds.toDouble());
        m_chevron->turn(90 * (m_header->isExpanded() ? way : 1 - way));
    });
    // The spring only comes very near to where it rests.
    connect(&m_turn, &QVariantAnimation::finished, this, [this] { m_chevron->turn(m_header->isExpanded() ? 90 : 0); });
}

void AccountGroup::makeHeader()
{
    m_header = new ExpanderRow(m_email, this);
    m_header->row().setContentsMargins(rowInset, 7, 8, 7);
    m_chevron = new SymbolView(u"chevron-right"_s, 10, Ink::Secondary, m_header);
    auto *email = new PanelLabel(13, QFont::Medium, Ink::Primary, m_header);
    email->setText(m_email);
    m_count = new PanelLabel(11, QFont::Normal, Ink::Secondary, m_header);
    m_count->setSizePolicy(QSizePolicy::Fixed, QSizePolicy::Preferred);
    for (QWidget *each : {email, m_count})
        each->setAttribute(Qt::WA_TransparentForMouseEvents);
    auto *more = new IconButton(u"ellipsis"_s, u"Options for "_s + panel::within(m_email), m_header);
    more->setToolTip({});
    auto *menu = new QMenu(more);
    connect(menu->addAction(u"Remove account…"_s), &QAction::triggered, this, &AccountGroup::removalRequested);
    more->openOnClick(menu);
    m_header->row().addWidget(m_chevron);
    m_header->row().addWidget(email, 1);
    m_header->row().addWidget(m_count);
    m_header->row().addWidget(more);
    addRow(m_header);
    connect(m_header, &ExpanderRow::clicked, this, &AccountGroup::expansionToggled);
}

bool AccountGroup::present(const State &state)
{
    const auto selected = std::count_if(state.calendars.begin(), state.calendars.end(), [&](const CalendarInfo &each) {
        return state.enabledKeys.contains(each.key());
    });
    m_count->setText(u"%1 of %2"_s.arg(selected).arg(state.calendars.size()));
    bool isRearranged = ask(state.isConfirmingRemoval);
    if (state.isExpanded)
        isRearranged = showCalendars(state) || isRearranged;
    if (state.isExpanded != m_header->isExpanded())
        expand(state.isExpanded);
    return isRearranged;
}

void AccountGroup::expand(bool isExpanded)
{
    m_body->setVisible(isExpanded);
    m_header->setExpanded(isExpanded);
    m_turn.stop();
    if (!isVisible() || !style()->styleHint(QStyle::SH_Widget_Animation_Duration, nullptr, this)) {
        m_chevron->turn(isExpanded ? 90 : 0);
        return;
    }
    m_turn.setStartValue(0.0);
    m_turn.setEndValue(spring.settlingTime());
    m_turn.setDuration(static_cast<int>(spring.settlingTime() * 1000));
    m_turn.start();
}

bool AccountGroup::showCalendars(const State &state)
{
    m_note->setText(state.isRefreshing ? u"Loading calendars…"_s : u"No calendars loaded"_s);
    m_note->setVisible(state.calendars.isEmpty());
    const bool isRearranged = state.calendars != m_calendars;
    if (isRearranged) {
        m_calendars = state.calendars;
        // The row that was clicked may be among those that go.
        for (CalendarRow *row : std::exchange(m_rows, {})) {
            m_list->removeWidget(row);
            row->hide();
            row->deleteLater();
        }
        for (const CalendarInfo &calendar : std::as_const(m_calendars)) {
            auto *row = new CalendarRow(panel::displayName(calendar.name), colourOf(calendar), m_body);
            connect(row, &CalendarRow::toggled, this,
                    [this, calendar](bool on) { Q_EMIT calendarToggled(calendar, on); });
            m_list->addWidget(row);
            row->show();
            m_rows.append(row);
        }
    }
    for (qsizetype i = 0; i < m_rows.size(); ++i)
        m_rows[i]->reflect(state.enabledKeys.contains(m_calendars[i].key()));
    return isRearranged;
}

bool AccountGroup::ask(bool isConfirming)
{
    if (isConfirming == (m_question != nullptr))
        return false;
    if (isConfirming) {
        m_question = new RemovalQuestion(m_email, this);
        connect(m_question, &RemovalQuestion::answered, this, &AccountGroup::removalAnswered);
        insertRow(1, m_question);
        m_question->show();
        m_question->ask();
    } else {
        // One of its buttons may be the one that was pressed.
        m_question->hide();
        m_question->deleteLater();
        m_question = nullptr;
    }
    return true;
}

} // namespace kelp
