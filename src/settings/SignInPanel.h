#pragma once

#include <QWidget>

class QLineEdit;
class QVBoxLayout;

namespace kelp {

class GoogleAuth;
class Preferences;
class TextButton;

/// What the panel shows while there is no account: what Kelp is for, the OAuth client to use where none is built in,
/// and the way to sign in.
class SignInPanel final : public QWidget
{
    Q_OBJECT

public:
    SignInPanel(GoogleAuth &auth, Preferences &preferences, QWidget *parent = nullptr);

    void refresh();

Q_SIGNALS:
    void signInRequested();

private:
    [[nodiscard]] QLineEdit *addField(QVBoxLayout &column, const QString &title);
    [[nodiscard]] bool hasClient() const;

    GoogleAuth &m_auth;
    Preferences &m_preferences;
    QLineEdit *m_clientID = nullptr; ///< only without a built-in OAuth client
    QLineEdit *m_clientSecret = nullptr;
    TextButton *m_signIn;
};

} // namespace kelp
