#include "settings/CalendarsView.h"

#include "settings/TextButton.h"

#include <QVBoxLayout>

#include <algorithm>
#include <utility>

using namespace Qt::StringLiterals;

namespace kelp {

CalendarsView::CalendarsView(QWidget *parent) : QWidget(parent)
{
    auto *column = new QVBoxLayout(this);
    column->setContentsMargins({});
    column->setSpacing(8);
    column->addWidget(new SectionTitle(u"Calendars"_s, this));
    m_groupColumn = new QVBoxLayout;
    m_groupColumn->setSpacing(8);
    column->addLayout(m_groupColumn);
    m_add = new TextButton(u"Add account"_s, TextButton::Look::Plain, this);
    connect(m_add, &TextButton::clicked, this, &CalendarsView::signInRequested);
    column->addWidget(m_add, 0, Qt::AlignLeading);
}

bool CalendarsView::present(const QList<AccountState> &accounts, bool isSigningIn)
{
    m_add->setText(isSigningIn ? u"Waiting for Google…"_s : u"Add account"_s);
    m_add->setEnabled(!isSigningIn);
    const auto isSame = [](const AccountGroup *group, const AccountState &account) {
        return group->email() == account.email;
    };
    bool isRearranged = !std::equal(m_groups.begin(), m_groups.end(), accounts.begin(), accounts.end(), isSame);
    if (isRearranged) {
        // Groups that stay keep what they show. The one that goes may have the button that was pressed.
        QList<AccountGroup *> old = std::exchange(m_groups, {});
        for (const AccountState &account : accounts) {
            const auto kept =
                std::find_if(old.begin(), old.end(), [&](const AccountGroup *each) { return isSame(each, account); });
            AccountGroup *group = kept == old.end() ? makeGroup(account.email) : *kept;
            old.removeOne(group);
            m_groups.append(group);
            m_groupColumn->addWidget(group);
            group->show();
        }
        for (AccountGroup *group : std::as_const(old)) {
            group->hide();
            group->deleteLater();
        }
    }
    for (qsizetype i = 0; i < m_groups.size(); ++i)
        isRearranged = m_groups[i]->present(accounts[i].state) || isRearranged;
    return isRearranged;
}

AccountGroup *CalendarsView::makeGroup(const QString &email)
{
    auto *group = new AccountGroup(email, this);
    connect(group, &AccountGroup::expansionToggled, this, [this, email] { Q_EMIT expansionToggled(email); });
    connect(group, &AccountGroup::removalRequested, this, [this, email] { Q_EMIT removalRequested(email); });
    connect(group, &AccountGroup::removalAnswered, this,
            [this, email](bool remove) { Q_EMIT removalAnswered(email, remove); });
    connect(group, &AccountGroup::calendarToggled, this, &CalendarsView::calendarToggled);
    return group;
}

} // namespace kelp
