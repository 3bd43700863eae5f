#pragma once

#include "settings/AccountGroup.h"

#include <QWidget>

class QVBoxLayout;

namespace kelp {

class TextButton;

/// The accounts with their calendars, and a way to add one.
class CalendarsView final : public QWidget
{
    Q_OBJECT

public:
    struct AccountState
    {
        QString email;
        AccountGroup::State state;
    };

    explicit CalendarsView(QWidget *parent = nullptr);

    /// Returns whether rows were added or taken away.
    bool present(const QList<AccountState> &accounts, bool isSigningIn);

Q_SIGNALS:
    void expansionToggled(const QString &email);
    void removalRequested(const QString &email);
    void removalAnswered(const QString &email, bool remove);
    void calendarToggled(const kelp::CalendarInfo &calendar, bool enabled);
    void signInRequested();

private:
    [[nodiscard]] AccountGroup *makeGroup(const QString &email);

    QVBoxLayout *m_groupColumn;
    QList<AccountGroup *> m_groups;
    TextButton *m_add;
};

} // namespace kelp
