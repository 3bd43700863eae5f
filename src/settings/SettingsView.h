#pragma once

#include <QWidget>

class QLabel;
class QLineEdit;
class QPushButton;
class QVBoxLayout;

namespace kelp {

class GoogleAuth;
class Preferences;
class Scheduler;
struct Account;

/// Kelp's panel: a 320-point column with the accounts, signing in, and Quit.
class SettingsView : public QWidget
{
    Q_OBJECT

public:
    SettingsView(GoogleAuth &auth, Scheduler &scheduler, Preferences &preferences, QWidget *parent = nullptr);

    /// Shows an error at the bottom; an empty text takes it away.
    void setError(const QString &error);

Q_SIGNALS:
    void signInRequested();

private:
    void buildHeader();
    void buildSignIn();
    QLineEdit *addClientField(const QString &title, bool isSecret);
    void update();
    void rebuildAccounts();
    QWidget *accountRow(const Account &account);
    void confirmRemoval(const Account &account);

    GoogleAuth &m_auth;
    Scheduler &m_scheduler;
    Preferences &m_preferences;
    QVBoxLayout *m_column;
    QWidget *m_accounts;
    QLabel *m_invitation;
    QLineEdit *m_clientID = nullptr; ///< only without a built-in OAuth client
    QLineEdit *m_clientSecret = nullptr;
    QPushButton *m_signIn;
    QLabel *m_error;
    QString m_ownError;
};

} // namespace kelp
