#include "settings/UpNextView.h"

#include "settings/NextMeetingCard.h"
#include "settings/PanelTexts.h"
#include "settings/Rows.h"
#include "settings/SymbolView.h"

#include <QGridLayout>

using namespace Qt::StringLiterals;

namespace kelp {

namespace {

constexpr int timeColumn = 64; // points; more where the locale's weekdays and times need more

} // namespace

UpNextView::UpNextView(QWidget *parent) : QWidget(parent)
{
    auto *column = new QVBoxLayout(this);
    column->setContentsMargins({});
    column->setSpacing(8);
    column->addWidget(new SectionTitle(u"Up next"_s, this));
    m_card = new NextMeetingCard(this);
    connect(m_card, &NextMeetingCard::joined, this, &UpNextView::joined);
    column->addWidget(m_card);
    m_further = makeLines();
    column->addWidget(m_further);
    m_nothing = makeNothing();
    column->addWidget(m_nothing);
}

QWidget *UpNextView::makeNothing()
{
    auto *nothing = new QWidget(this);
    auto *row = new QHBoxLayout(nothing);
    row->setContentsMargins(textInset, 4, textInset, 4);
    row->setSpacing(8);
    row->addWidget(new SymbolView(u"sun-max"_s, 16, Ink::Secondary, nothing));
    auto *text = new PanelLabel(13, QFont::Normal, Ink::Secondary, nothing);
    text->setText(u"No meetings in the next 24 hours"_s);
    row->addWidget(text, 1);
    return nothing;
}

QWidget *UpNextView::makeLines()
{
    auto *lines = new QWidget(this);
    auto *grid = new QGridLayout(lines);
    grid->setContentsMargins(14, 3, 14, 0);
    grid->setHorizontalSpacing(8);
    grid->setVerticalSpacing(7);
    grid->setColumnMinimumWidth(0, timeColumn);
    grid->setColumnStretch(1, 1);
    for (int i = 0; i < furtherMeetings; ++i) {
        const Line line{new PanelLabel(12, QFont::Medium, Ink::Secondary, lines),
                        new PanelLabel(12, QFont::Normal, Ink::Primary, lines)};
        line.time->setSizePolicy(QSizePolicy::Fixed, QSizePolicy::Preferred);
        grid->addWidget(line.time, i, 0);
        grid->addWidget(line.title, i, 1);
        m_lines.append(line);
    }
    return lines;
}

void UpNextView::present(const std::optional<Scheduler::Popup> &next, const QList<Meeting> &further, Instant now)
{
    m_card->setVisible(next.has_value());
    m_nothing->setVisible(!next);
    m_further->setVisible(next && !further.isEmpty());
    if (!next)
        return;
    m_card->present(*next, now);
    for (qsizetype i = 0; i < m_lines.size(); ++i) {
        const bool isShown = i < further.size();
        m_lines[i].time->setVisible(isShown);
        m_lines[i].title->setVisible(isShown);
        if (isShown) {
            m_lines[i].time->setText(panel::shortTime(further[i].start, now));
            m_lines[i].title->setText(further[i].title);
        }
    }
}

} // namespace kelp
