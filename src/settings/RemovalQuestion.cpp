#include "settings/RemovalQuestion.h"

#include "settings/PanelTexts.h"
#include "settings/Rows.h"
#include "settings/TextButton.h"

#include <QAccessible>
#include <QHBoxLayout>

using namespace Qt::StringLiterals;

namespace kelp {

RemovalQuestion::RemovalQuestion(const QString &email, QWidget *parent)
    : QWidget(parent),
      m_title(new PanelLabel(13, QFont::DemiBold, Ink::Primary, this)),
      m_cancel(new TextButton(u"Cancel"_s, TextButton::Look::Quiet, this))
{
    auto *column = new QVBoxLayout(this);
    column->setContentsMargins(rowInset, 10, rowInset - 2, 10);
    column->setSpacing(8);
    m_title->setText(u"Remove "_s + panel::within(email));
    m_title->setMaximumLines(3);
    column->addWidget(m_title);
    auto *remove = new TextButton(u"Remove"_s, TextButton::Look::Destructive, this);
    auto *answers = new QHBoxLayout;
    answers->setSpacing(4);
    for (TextButton *each : {m_cancel, remove}) {
        each->setSizePolicy(QSizePolicy::Expanding, QSizePolicy::Fixed);
        answers->addWidget(each, 1);
    }
    column->addLayout(answers);
    setAccessibleName(m_title->text());
    connect(m_cancel, &TextButton::clicked, this, [this] { Q_EMIT answered(false); });
    connect(remove, &TextButton::clicked, this, [this] { Q_EMIT answered(true); });
}

void RemovalQuestion::ask()
{
    m_cancel->setFocus(Qt::PopupFocusReason);
    QAccessibleEvent alert(m_title, QAccessible::Alert);
    QAccessible::updateAccessibility(&alert);
}

} // namespace kelp
