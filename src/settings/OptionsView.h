#pragma once

#include <QWidget>

namespace kelp {

class HoverRow;
class LoginItem;
class Picker;
class Preferences;
class SwitchRow;

/// When to be reminded, of what, and how Kelp is reached.
class OptionsView final : public QWidget
{
    Q_OBJECT

public:
    OptionsView(Preferences &preferences, LoginItem &loginItem, QWidget *parent = nullptr);

    /// Shows what is stored and what is so: the preferences, the login item's real state, and whether keys typed
    /// elsewhere can be seen.
    void refresh(bool hotkeyIsTrusted, bool hasAppearance);

Q_SIGNALS:
    void appearanceRequested();
    /// Launch at login could be changed (an empty text) or not (why).
    void loginItemChanged(const QString &error);

private:
    [[nodiscard]] QWidget *makeLeadRow();
    [[nodiscard]] HoverRow *makeAppearanceRow();
    void setLaunchAtLogin(bool on);

    Preferences &m_preferences;
    LoginItem &m_loginItem;
    Picker *m_leadMinutes;
    SwitchRow *m_onlyWithVideo;
    SwitchRow *m_doubleSlash;
    SwitchRow *m_launchAtLogin;
    HoverRow *m_appearance;
};

} // namespace kelp
