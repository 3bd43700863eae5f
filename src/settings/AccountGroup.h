#pragma once

#include "calendar/CalendarInfo.h"
#include "settings/Rows.h"
#include "ui/Spring.h"

#include <QList>
#include <QSet>
#include <QVariantAnimation>

class QVBoxLayout;

namespace kelp {

class CalendarRow;
class ExpanderRow;
class RemovalQuestion;
class SymbolView;

/// An account and, when it is expanded, its calendars.
class AccountGroup final : public RowGroup
{
    Q_OBJECT

public:
    struct State
    {
        QList<CalendarInfo> calendars;
        QSet<QString> enabledKeys;
        bool isExpanded = false;
        bool isConfirmingRemoval = false;
        bool isRefreshing = false;
    };

    explicit AccountGroup(const QString &email, QWidget *parent = nullptr);

    [[nodiscard]] const QString &email() const { return m_email; }
    /// Returns whether rows were added or taken away.
    bool present(const State &state);

Q_SIGNALS:
    void expansionToggled();
    void removalRequested();
    void removalAnswered(bool remove);
    void calendarToggled(const kelp::CalendarInfo &calendar, bool enabled);

private:
    void makeHeader();
    void expand(bool isExpanded);
    [[nodiscard]] bool showCalendars(const State &state);
    [[nodiscard]] bool ask(bool isConfirming);

    QString m_email;
    ExpanderRow *m_header;
    SymbolView *m_chevron;
    PanelLabel *m_count;
    QWidget *m_body;
    QVBoxLayout *m_list;
    PanelLabel *m_note;                    ///< in the place of calendars
    RemovalQuestion *m_question = nullptr; ///< while it is asked
    QList<CalendarInfo> m_calendars;
    QList<CalendarRow *> m_rows;
    QVariantAnimation m_turn{this}; ///< its value is the time in seconds
};

} // namespace kelp
