#pragma once

#include "auth/GoogleAuth.h"
#include "calendar/CalendarClient.h"
#include "preferences/Preferences.h"
#include "schedule/Scheduler.h"
#include "settings/SettingsView.h"
#include "support/FakeClock.h"
#include "support/FakeHttpClient.h"
#include "support/FakeLoginItem.h"
#include "support/FakeUrlOpener.h"

#include <QTemporaryDir>

#include <memory>

class QAbstractButton;

namespace kelp::test {

/// A panel over the real accounts and the real scheduler; what comes from outside (clock, network, desktop) is the
/// test's own. It is 2026-01-01 09:00 UTC, a Thursday.
class PanelFixture
{
public:
    PanelFixture();
    ~PanelFixture();

    /// The panel for these accounts, shown.
    void open(const QStringList &emails = {}, const GoogleAuth::Client &builtIn = {});
    /// What a refresh brings: an answer of all calendars.
    void bring(const QList<CalendarInfo> &calendars, const QList<Meeting> &meetings = {},
               const QStringList &errors = {});
    /// Lets what was asked for happen, such as a deletion or a new layout.
    static void settle();

    /// The visible button, switch or row of that (accessible) name, or null.
    [[nodiscard]] QAbstractButton *button(const QString &name) const;
    /// The visible texts, in the order of the layouts.
    [[nodiscard]] QStringList texts() const;
    [[nodiscard]] bool reads(const QString &text) const { return texts().contains(text); }
    void click(const QString &name) const;
    /// The texts of a button's menu as it is when it opens.
    [[nodiscard]] QStringList menu(const QString &name) const;
    void choose(const QString &name, const QString &item) const;

    Preferences preferences;
    FakeClock clock;
    FakeHttpClient http;
    FakeUrlOpener opener;
    FakeLoginItem loginItem;
    std::unique_ptr<GoogleAuth> auth;
    std::unique_ptr<CalendarClient> client;
    std::unique_ptr<Scheduler> scheduler;
    std::unique_ptr<SettingsView> view;

private:
    QTemporaryDir m_folder;
};

/// A calendar that Google shows.
[[nodiscard]] CalendarInfo calendar(const QString &email, const QString &name, const QString &color = {},
                                    bool isSelected = true);
/// A meeting of half an hour in the first calendar of `ada@example.com`.
[[nodiscard]] Meeting meeting(const QString &title, Instant start, const QString &link = {});
/// "ada@example.com" and a dozen calendars, a few of which are not selected.
[[nodiscard]] QList<CalendarInfo> dozen(const QString &email);

inline const QString ada = QStringLiteral("ada@example.com");
inline const QString work = QStringLiteral("Work");

} // namespace kelp::test
