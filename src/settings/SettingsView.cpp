#include "settings/SettingsView.h"

#include "auth/GoogleAuth.h"
#include "base/Clock.h"
#include "platform/UrlOpener.h"
#include "preferences/Preferences.h"
#include "schedule/Scheduler.h"
#include "settings/CalendarsView.h"
#include "settings/OptionsView.h"
#include "settings/PanelHeader.h"
#include "settings/PanelOrder.h"
#include "settings/PausedBanner.h"
#include "settings/Rows.h"
#include "settings/SignInPanel.h"
#include "settings/UpNextView.h"
#include "ui/DesktopColours.h"

#include <QEvent>
#include <QKeyEvent>
#include <QMenu>
#include <QPainter>
#include <QScreen>
#include <QScrollArea>
#include <QScrollBar>
#include <QStyle>
#include <QVBoxLayout>

#include <algorithm>
#include <cmath>

using namespace Qt::StringLiterals;

namespace kelp {

namespace {

constexpr int margin = 12;
constexpr int blockSpacing = 14;
constexpr int screenMargin = 24; ///< that the panel leaves free above and below, window decoration included
constexpr int decoration = 40;

} // namespace

SettingsView::SettingsView(Services services, QWidget *parent) : QWidget(parent), m_services(services)
{
    setFocusPolicy(Qt::ClickFocus);
    build();
    connectViews();
    refresh();
    orderFocus(*this);
}

SettingsView::~SettingsView() = default;

void SettingsView::build()
{
    auto *frame = new QVBoxLayout(this);
    frame->setContentsMargins({});
    frame->setSpacing(0);
    m_header = new PanelHeader(m_services.scheduler, m_services.clock, this);
    frame->addWidget(m_header);

    m_scroll = new QScrollArea(this);
    m_scroll->setFrameShape(QFrame::NoFrame);
    m_scroll->setHorizontalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
    m_scroll->setWidgetResizable(true);
    m_scroll->setFocusPolicy(Qt::NoFocus);
    m_scroll->viewport()->setAutoFillBackground(false);
    frame->addWidget(m_scroll, 1);

    m_content = new QWidget;
    m_content->setAutoFillBackground(false);
    m_column = new QVBoxLayout(m_content);
    m_column->setContentsMargins(margin, 3, margin, margin + 2);
    m_column->setSpacing(blockSpacing);
    m_account = new QWidget(m_content);
    auto *blocks = new QVBoxLayout(m_account);
    blocks->setContentsMargins({});
    blocks->setSpacing(blockSpacing);
    m_banner = new PausedBanner(m_account);
    m_upNext = new UpNextView(m_account);
    m_options = new OptionsView(m_services.preferences, m_services.loginItem, m_account);
    m_calendars = new CalendarsView(m_account);
    blocks->addWidget(m_banner);
    blocks->addWidget(m_upNext);
    blocks->addWidget(new Divider(m_account));
    blocks->addWidget(m_options);
    blocks->addWidget(new Divider(m_account));
    blocks->addWidget(m_calendars);
    m_signIn = new SignInPanel(m_services.auth, m_services.preferences, m_content);
    m_error = new PanelLabel(12, QFont::Normal, Ink::Danger, m_content);
    m_error->setObjectName(u"error"_s);
    m_error->setMaximumLines(0);
    m_error->setContentsMargins(textInset, 0, textInset, 0);
    m_column->addWidget(m_account);
    m_column->addWidget(m_signIn);
    m_column->addWidget(m_error);
    m_column->addStretch(1);
    m_scroll->setWidget(m_content);
    m_content->installEventFilter(this);
}

void SettingsView::connectViews()
{
    connect(m_banner, &PausedBanner::resumed, this, [this] { m_services.scheduler.setPausedUntil({}); });
    connect(m_upNext, &UpNextView::joined, this, [this](const Meeting &meeting) { meeting.join(m_services.opener); });
    connect(m_options, &OptionsView::appearanceRequested, this, [this] { onAppearance(); });
    connect(m_options, &OptionsView::loginItemChanged, this, &SettingsView::tellOfLoginItem);
    connect(m_calendars, &CalendarsView::expansionToggled, this, [this](const QString &email) {
        if (!m_expanded.remove(email))
            m_expanded.insert(email);
        refresh();
    });
    connect(m_calendars, &CalendarsView::removalRequested, this, [this](const QString &email) {
        m_confirmingRemoval = email;
        refresh();
    });
    connect(m_calendars, &CalendarsView::removalAnswered, this, &SettingsView::answerRemoval);
    connect(m_calendars, &CalendarsView::calendarToggled, this, [this](const CalendarInfo &calendar, bool enabled) {
        m_services.scheduler.setCalendar(calendar, enabled);
    });
    connect(m_calendars, &CalendarsView::signInRequested, this, &SettingsView::startSignIn);
    connect(m_signIn, &SignInPanel::signInRequested, this, &SettingsView::startSignIn);
    connect(&m_services.auth, &GoogleAuth::accountsChanged, this, &SettingsView::follow);
    connect(&m_services.auth, &GoogleAuth::isSigningInChanged, this, &SettingsView::follow);
    connect(&m_services.scheduler, &Scheduler::stateChanged, this, &SettingsView::follow);
    connect(&m_services.preferences, &Preferences::changed, this, &SettingsView::follow);
}

void SettingsView::prepare()
{
    if (!isVisible())
        refresh();
}

void SettingsView::setError(const QString &error)
{
    m_ownError = error;
    follow();
    if (!error.isEmpty() && isVisible())
        m_scroll->ensureWidgetVisible(m_error);
}

void SettingsView::startSignIn()
{
    setError({});
    Q_EMIT signInRequested();
}

void SettingsView::tellOfLoginItem(const QString &error)
{
    static const QString topic = u"Launch at login: "_s;
    if (!error.isEmpty())
        setError(topic + error);
    else if (m_ownError.startsWith(topic)) // any other error is still true
        setError({});
}

void SettingsView::answerRemoval(const QString &email, bool remove)
{
    m_confirmingRemoval.reset();
    if (!remove) {
        refresh();
        return;
    }
    const QList<Account> accounts = m_services.auth.accounts();
    const auto account =
        std::find_if(accounts.begin(), accounts.end(), [&](const Account &each) { return each.email == email; });
    if (account != accounts.end())
        m_services.auth.signOut(*account);
    m_services.scheduler.refresh();
    refresh();
}

void SettingsView::follow()
{
    // What is not to be seen is brought up to date before it is.
    if (isVisible())
        refresh();
}

void SettingsView::refresh()
{
    const bool hasAccounts = !m_services.auth.accounts().isEmpty();
    m_account->setVisible(hasAccounts);
    m_signIn->setVisible(!hasAccounts);
    bool isRearranged = false;
    if (hasAccounts) {
        updateMeetings();
        m_options->refresh(isHotkeyTrusted && isHotkeyTrusted(), onAppearance != nullptr);
        isRearranged = updateCalendars();
    } else {
        m_expanded.clear();
        m_confirmingRemoval.reset();
        m_signIn->refresh();
    }
    updateError();
    if (isRearranged)
        orderFocus(*this);
    arrange(*m_content);
    fit();
}

void SettingsView::updateMeetings()
{
    const Scheduler &scheduler = m_services.scheduler;
    const Instant now = m_services.clock.now();
    m_banner->setVisible(scheduler.isPaused());
    if (scheduler.isPaused())
        m_banner->present(*scheduler.pausedUntil(), now);
    const std::optional<Scheduler::Popup> next = scheduler.nextPopup();
    m_upNext->present(
        next, scheduler.upcoming(next ? std::optional(next->meeting) : std::nullopt, UpNextView::furtherMeetings), now);
}

bool SettingsView::updateCalendars()
{
    const Scheduler &scheduler = m_services.scheduler;
    const QSet<QString> enabled = scheduler.enabledKeys();
    QList<CalendarsView::AccountState> states;
    for (const Account &account : m_services.auth.accounts()) {
        AccountGroup::State state{.calendars = {},
                                  .enabledKeys = enabled,
                                  .isExpanded = m_expanded.contains(account.email),
                                  .isConfirmingRemoval = m_confirmingRemoval == account.email,
                                  .isRefreshing = scheduler.isRefreshing()};
        std::copy_if(scheduler.calendars().begin(), scheduler.calendars().end(), std::back_inserter(state.calendars),
                     [&](const CalendarInfo &each) { return each.accountEmail == account.email; });
        states.append({account.email, state});
    }
    return m_calendars->present(states, m_services.auth.isSigningIn());
}

void SettingsView::updateError()
{
    const QString error = m_ownError.isEmpty() ? m_services.scheduler.lastError().value_or(QString()) : m_ownError;
    if (m_error->text() != error)
        m_error->setText(error);
    m_error->setVisible(!error.isEmpty());
}

void SettingsView::tick()
{
    refresh();
    // On the second, so that all figures change together.
    const double seconds = m_services.clock.now().secondsSince1970;
    m_services.clock.after(std::floor(seconds) + 1 - seconds + 0.005, m_ticking.get(), [this] { tick(); });
}

void SettingsView::showEvent(QShowEvent *event)
{
    QWidget::showEvent(event);
    m_ticking = std::make_unique<QObject>();
    if (!event->spontaneous() && !focusWidget())
        setFocus(); // of the panel itself: the ring comes with the first Tab
    tick();
}

void SettingsView::closeEvent(QCloseEvent *event)
{
    QWidget::closeEvent(event);
    m_ownError.clear();
    m_expanded.clear();
    m_confirmingRemoval.reset();
    m_scroll->verticalScrollBar()->setValue(0);
    if (QWidget *focused = focusWidget())
        focused->clearFocus();
}

void SettingsView::hideEvent(QHideEvent *event)
{
    QWidget::hideEvent(event);
    m_ticking.reset();
    // Windows of their own: left alone, they would stay, and keep the mouse and the keyboard to themselves.
    for (QMenu *menu : findChildren<QMenu *>())
        menu->close();
}

void SettingsView::keyPressEvent(QKeyEvent *event)
{
    if (event->key() != Qt::Key_Escape) {
        QWidget::keyPressEvent(event);
    } else if (m_confirmingRemoval) {
        m_confirmingRemoval.reset();
        refresh();
    } else {
        close();
    }
}

void SettingsView::paintEvent(QPaintEvent *)
{
    QPainter painter(this);
    painter.fillRect(rect(), DesktopColours::of(palette()).window);
}

bool SettingsView::eventFilter(QObject *watched, QEvent *event)
{
    if (watched == m_content && event->type() == QEvent::LayoutRequest)
        fit();
    return QWidget::eventFilter(watched, event);
}

/// The panel is as high as what it shows, and where that is more than the screen has, it scrolls.
void SettingsView::fit()
{
    const QRect available = screen()->availableGeometry();
    const int most = available.height() - 2 * screenMargin - decoration;
    const int header = m_header->sizeHint().height();
    const auto wanted = [&] {
        return header + (m_column->hasHeightForWidth() ? m_column->totalHeightForWidth(columnWidth)
                                                       : m_column->totalSizeHint().height());
    };
    const bool scrolls = wanted() > most;
    // The scroll bar stands in the margin, so that nothing moves when it comes.
    const int bar = scrolls ? style()->pixelMetric(QStyle::PM_ScrollBarExtent) : 0;
    QMargins margins = m_column->contentsMargins();
    const bool mirrored = layoutDirection() == Qt::RightToLeft;
    margins.setLeft(margin - (mirrored ? bar : 0));
    margins.setRight(margin - (mirrored ? 0 : bar));
    m_column->setContentsMargins(margins);
    m_scroll->setVerticalScrollBarPolicy(scrolls ? Qt::ScrollBarAlwaysOn : Qt::ScrollBarAlwaysOff);
    setFixedSize(columnWidth, std::min(wanted(), most));
    if (isVisible() && frameGeometry().bottom() > available.bottom())
        move(x(), std::max(available.top(), available.bottom() + 1 - frameGeometry().height()));
}

} // namespace kelp
