#pragma once

#include "schedule/Scheduler.h"

#include <QWidget>

namespace kelp {

class PanelLabel;
class SymbolView;
class TextButton;

/// The meeting whose reminder comes next: what, when, how long until Kelp shows it, and a button to join around its
/// start.
class NextMeetingCard final : public QWidget
{
    Q_OBJECT

public:
    explicit NextMeetingCard(QWidget *parent = nullptr);

    void present(const Scheduler::Popup &next, Instant now);

    /// From ten minutes before its start until its end.
    [[nodiscard]] static bool isJoinable(const Meeting &meeting, Instant now);

Q_SIGNALS:
    void joined(const kelp::Meeting &meeting);

protected:
    void paintEvent(QPaintEvent *event) override;

private:
    Meeting m_meeting;
    PanelLabel *m_title;
    PanelLabel *m_time;
    SymbolView *m_symbol;
    PanelLabel *m_status;
    TextButton *m_join;
    QWidget *m_joinRow;
};

} // namespace kelp
