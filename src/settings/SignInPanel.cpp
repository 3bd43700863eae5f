#include "settings/SignInPanel.h"

#include "auth/GoogleAuth.h"
#include "preferences/Preferences.h"
#include "settings/Rows.h"
#include "settings/TextButton.h"
#include "ui/Fonts.h"

#include <QLineEdit>
#include <QVBoxLayout>

using namespace Qt::StringLiterals;

namespace kelp {

SignInPanel::SignInPanel(GoogleAuth &auth, Preferences &preferences, QWidget *parent)
    : QWidget(parent), m_auth(auth), m_preferences(preferences)
{
    auto *column = new QVBoxLayout(this);
    column->setContentsMargins({});
    column->setSpacing(8);
    auto *invitation = new PanelLabel(12, QFont::Normal, Ink::Secondary, this);
    invitation->setMaximumLines(0);
    invitation->setText(
        u"Connect your Google Calendar and Kelp will take over your screen right before each meeting."_s);
    invitation->setContentsMargins(textInset, 0, textInset, 4);
    column->addWidget(invitation);
    if (!m_auth.hasBuiltInClient()) {
        m_clientID = addField(*column, u"Client ID"_s);
        m_clientSecret = addField(*column, u"Client secret"_s);
        m_clientSecret->setEchoMode(QLineEdit::Password);
        connect(m_clientID, &QLineEdit::textEdited, this,
                [this](const QString &text) { m_preferences.set(preference::clientID, text); });
        connect(m_clientSecret, &QLineEdit::textEdited, this,
                [this](const QString &text) { m_preferences.set(preference::clientSecret, text); });
        column->addSpacing(2);
    }
    m_signIn = new TextButton(u"Sign in with Google"_s, TextButton::Look::Prominent, this);
    m_signIn->setSizePolicy(QSizePolicy::Expanding, QSizePolicy::Fixed);
    connect(m_signIn, &TextButton::clicked, this, &SignInPanel::signInRequested);
    column->addWidget(m_signIn);
}

QLineEdit *SignInPanel::addField(QVBoxLayout &column, const QString &title)
{
    auto *field = new QLineEdit(this);
    field->setFont(designFont(FontDesign::Default, 13));
    field->setPlaceholderText(title);
    field->setAccessibleName(title);
    // Return in a field does what comes next.
    connect(field, &QLineEdit::returnPressed, this, [this] {
        if (m_signIn->isEnabled())
            Q_EMIT signInRequested();
    });
    column.addWidget(field);
    return field;
}

void SignInPanel::refresh()
{
    if (m_clientID) {
        const auto show = [this](QLineEdit *field, const PreferenceKey<QString> &key) {
            if (const QString stored = m_preferences.get(key); field->text() != stored)
                field->setText(stored);
        };
        show(m_clientID, preference::clientID);
        show(m_clientSecret, preference::clientSecret);
    }
    m_signIn->setText(m_auth.isSigningIn() ? u"Waiting for Google…"_s : u"Sign in with Google"_s);
    m_signIn->setEnabled(hasClient() && !m_auth.isSigningIn());
}

bool SignInPanel::hasClient() const
{
    const auto isEntered = [this](const PreferenceKey<QString> &key) {
        return !m_preferences.get(key).trimmed().isEmpty();
    };
    return m_auth.hasBuiltInClient() || (isEntered(preference::clientID) && isEntered(preference::clientSecret));
}

} // namespace kelp
