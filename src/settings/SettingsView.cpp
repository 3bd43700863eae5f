#include "settings/SettingsView.h"

#include "auth/GoogleAuth.h"
#include "preferences/Preferences.h"
#include "schedule/Scheduler.h"

#include <QApplication>
#include <QHBoxLayout>
#include <QLabel>
#include <QLineEdit>
#include <QMessageBox>
#include <QPushButton>
#include <QVBoxLayout>

using namespace Qt::StringLiterals;

namespace kelp {

namespace {

constexpr int columnWidth = 320;
constexpr int margin = 16;

QLabel *plainLabel(const QString &text, QWidget *parent)
{
    auto *label = new QLabel(text, parent);
    // Addresses and errors come from elsewhere: never markup.
    label->setTextFormat(Qt::PlainText);
    label->setWordWrap(true);
    return label;
}

void setPixelSize(QWidget *widget, int size, QFont::Weight weight = QFont::Normal)
{
    QFont font = widget->font();
    font.setPixelSize(size);
    font.setWeight(weight);
    widget->setFont(font);
}

} // namespace

SettingsView::SettingsView(GoogleAuth &auth, Scheduler &scheduler, Preferences &preferences, QWidget *parent)
    : QWidget(parent),
      m_auth(auth),
      m_scheduler(scheduler),
      m_preferences(preferences),
      m_column(new QVBoxLayout(this)),
      m_accounts(new QWidget(this))
{
    m_column->setContentsMargins(margin, 14, margin, margin);
    m_column->setSpacing(12);
    // The column is as wide as its strut, and as high as what it shows.
    m_column->addStrut(columnWidth - 2 * margin);
    m_column->setSizeConstraint(QLayout::SetFixedSize);
    buildHeader();
    m_column->addWidget(m_accounts);
    buildSignIn();
    m_error = plainLabel({}, this);
    m_error->setObjectName(u"error"_s);
    setPixelSize(m_error, 12);
    m_column->addWidget(m_error);

    connect(&m_auth, &GoogleAuth::accountsChanged, this, &SettingsView::rebuildAccounts);
    connect(&m_auth, &GoogleAuth::isSigningInChanged, this, &SettingsView::update);
    connect(&m_scheduler, &Scheduler::stateChanged, this, &SettingsView::update);
    rebuildAccounts();
}

void SettingsView::buildHeader()
{
    auto *row = new QHBoxLayout;
    QLabel *title = plainLabel(u"Kelp"_s, this);
    setPixelSize(title, 15, QFont::DemiBold);
    auto *quit = new QPushButton(u"Quit Kelp"_s, this);
    quit->setAutoDefault(false);
    connect(quit, &QPushButton::clicked, qApp, &QCoreApplication::quit);
    row->addWidget(title, 1);
    row->addWidget(quit);
    m_column->addLayout(row);
}

void SettingsView::buildSignIn()
{
    m_invitation = plainLabel(
        u"Connect your Google Calendar and Kelp will take over your screen right before each meeting."_s, this);
    m_column->addWidget(m_invitation);
    if (!m_auth.hasBuiltInClient()) {
        m_clientID = addClientField(u"Client ID"_s, false);
        m_clientID->setText(m_preferences.get(preference::clientID));
        connect(m_clientID, &QLineEdit::textEdited, this, [this](const QString &text) {
            m_preferences.set(preference::clientID, text);
            update();
        });
        m_clientSecret = addClientField(u"Client secret"_s, true);
        m_clientSecret->setText(m_preferences.get(preference::clientSecret));
        connect(m_clientSecret, &QLineEdit::textEdited, this, [this](const QString &text) {
            m_preferences.set(preference::clientSecret, text);
            update();
        });
    }
    m_signIn = new QPushButton(this);
    m_signIn->setObjectName(u"signIn"_s);
    connect(m_signIn, &QPushButton::clicked, this, [this] {
        setError({});
        Q_EMIT signInRequested();
    });
    m_column->addWidget(m_signIn);
}

QLineEdit *SettingsView::addClientField(const QString &title, bool isSecret)
{
    auto *field = new QLineEdit(this);
    field->setPlaceholderText(title);
    field->setAccessibleName(title);
    field->setEchoMode(isSecret ? QLineEdit::Password : QLineEdit::Normal);
    m_column->addWidget(field);
    return field;
}

void SettingsView::setError(const QString &error)
{
    m_ownError = error;
    update();
}

void SettingsView::update()
{
    const bool hasAccounts = !m_auth.accounts().isEmpty();
    m_invitation->setVisible(!hasAccounts);
    for (QLineEdit *field : {m_clientID, m_clientSecret}) {
        if (field)
            field->setVisible(!hasAccounts);
    }
    const bool hasClient =
        !m_clientID || (!m_clientID->text().trimmed().isEmpty() && !m_clientSecret->text().trimmed().isEmpty());
    m_signIn->setText(m_auth.isSigningIn() ? u"Waiting for Google…"_s
                      : hasAccounts        ? u"Add account"_s
                                           : u"Sign in with Google"_s);
    m_signIn->setEnabled(hasClient && !m_auth.isSigningIn());

    const QString error = m_ownError.isEmpty() ? m_scheduler.lastError().value_or(QString()) : m_ownError;
    m_error->setText(error);
    m_error->setVisible(!error.isEmpty());
}

void SettingsView::rebuildAccounts()
{
    auto *list = new QWidget(this);
    auto *rows = new QVBoxLayout(list);
    rows->setContentsMargins({});
    rows->setSpacing(6);
    for (const Account &account : m_auth.accounts())
        rows->addWidget(accountRow(account));
    delete m_column->replaceWidget(m_accounts, list); // the place in the column, which is handed back; not the widget
    // The row whose button was pressed may be among those that go.
    m_accounts->hide();
    m_accounts->deleteLater();
    m_accounts = list;
    m_accounts->setVisible(!m_auth.accounts().isEmpty());
    update();
}

QWidget *SettingsView::accountRow(const Account &account)
{
    auto *row = new QWidget;
    auto *layout = new QHBoxLayout(row);
    layout->setContentsMargins({});
    QLabel *email = plainLabel(account.email, row);
    auto *remove = new QPushButton(u"Remove…"_s, row);
    remove->setAutoDefault(false);
    remove->setAccessibleName(u"Remove "_s + account.email);
    connect(remove, &QPushButton::clicked, this, [this, account] { confirmRemoval(account); });
    layout->addWidget(email, 1);
    layout->addWidget(remove);
    return row;
}

void SettingsView::confirmRemoval(const Account &account)
{
    auto *question =
        new QMessageBox(QMessageBox::Question, u"Kelp"_s, u"Remove "_s + account.email, QMessageBox::Cancel, this);
    question->setTextFormat(Qt::PlainText);
    question->addButton(u"Remove"_s, QMessageBox::DestructiveRole);
    question->setAttribute(Qt::WA_DeleteOnClose);
    connect(question, &QMessageBox::buttonClicked, this, [this, question, account](QAbstractButton *button) {
        if (question->buttonRole(button) != QMessageBox::DestructiveRole)
            return;
        m_auth.signOut(account);
        m_scheduler.refresh();
    });
    question->open();
}

} // namespace kelp
