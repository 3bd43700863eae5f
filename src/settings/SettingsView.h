#pragma once

#include <QSet>
#include <QWidget>

#include <functional>
#include <memory>
#include <optional>

class QScrollArea;
class QVBoxLayout;

namespace kelp {

class CalendarsView;
class Clock;
class GoogleAuth;
class LoginItem;
class OptionsView;
class PanelLabel;
class PausedBanner;
class Preferences;
class Scheduler;
class SignInPanel;
class UpNextView;
class UrlOpener;

/// Kelp's panel: a column of 320 points that tells what comes next and holds what can be switched. Without an account
/// it only offers to sign in.
///
/// It follows what it shows by signals, and once a second while it is open; while it is closed it does nothing. Closing
/// it (`close`) forgets what was opened and said in it; merely hidden, as to be shown above other windows, it stays as
/// it is.
class SettingsView : public QWidget
{
    Q_OBJECT

public:
    static constexpr int columnWidth = 320;

    struct Services
    {
        GoogleAuth &auth;
        Scheduler &scheduler;
        Preferences &preferences;
        Clock &clock;
        UrlOpener &opener;
        LoginItem &loginItem;
    };

    explicit SettingsView(Services services, QWidget *parent = nullptr);
    ~SettingsView() override;

    /// Opens the appearance window; without it, the panel offers no way there.
    std::function<void()> onAppearance;
    /// Whether keys typed in other applications can be seen. Where not, the hotkey's switch says so. Asked again and
    /// again while the panel is open; without it they cannot.
    std::function<bool()> isHotkeyTrusted;

    /// Shows an error at the bottom; an empty text takes it away.
    void setError(const QString &error);
    /// Brings a hidden panel up to date, so that it has its size before it is shown.
    void prepare();

Q_SIGNALS:
    void signInRequested();

protected:
    void closeEvent(QCloseEvent *event) override;
    bool eventFilter(QObject *watched, QEvent *event) override;
    void hideEvent(QHideEvent *event) override;
    void keyPressEvent(QKeyEvent *event) override;
    void paintEvent(QPaintEvent *event) override;
    void showEvent(QShowEvent *event) override;

private:
    void build();
    void connectViews();
    void tick();
    void follow();
    void refresh();
    void updateMeetings();
    [[nodiscard]] bool updateCalendars();
    void updateError();
    void startSignIn();
    void tellOfLoginItem(const QString &error);
    void answerRemoval(const QString &email, bool remove);
    void fit();

    Services m_services;
    QWidget *m_header;
    QScrollArea *m_scroll;
    QWidget *m_content;
    QVBoxLayout *m_column;
    PausedBanner *m_banner;
    UpNextView *m_upNext;
    OptionsView *m_options;
    CalendarsView *m_calendars;
    QWidget *m_account; ///< all that is shown only with an account
    SignInPanel *m_signIn;
    PanelLabel *m_error;
    QString m_ownError;
    QSet<QString> m_expanded;                   ///< addresses of the accounts whose calendars are shown
    std::optional<QString> m_confirmingRemoval; ///< the account that is to be removed, if the user agrees
    std::unique_ptr<QObject> m_ticking;         ///< context of the ticks while the panel is open
};

} // namespace kelp
