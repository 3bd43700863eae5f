#pragma once

#include "schedule/Scheduler.h"

#include <QList>
#include <QWidget>

class QGridLayout;

namespace kelp {

class NextMeetingCard;
class PanelLabel;

/// What comes next: the meeting of the next reminder, and a line for each of the following ones.
class UpNextView final : public QWidget
{
    Q_OBJECT

public:
    static constexpr int furtherMeetings = 3;

    explicit UpNextView(QWidget *parent = nullptr);

    void present(const std::optional<Scheduler::Popup> &next, const QList<Meeting> &further, Instant now);

Q_SIGNALS:
    void joined(const kelp::Meeting &meeting);

private:
    struct Line
    {
        PanelLabel *time;
        PanelLabel *title;
    };

    [[nodiscard]] QWidget *makeNothing();
    [[nodiscard]] QWidget *makeLines();

    NextMeetingCard *m_card;
    QWidget *m_nothing;
    QList<Line> m_lines;
    QWidget *m_further;
};

} // namespace kelp
