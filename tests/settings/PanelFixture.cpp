#include "settings/PanelFixture.h"

#include "settings/IconButton.h"
#include "ui/PlainText.h"

#include <QAbstractButton>
#include <QApplication>
#include <QFile>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QLabel>
#include <QMenu>
#include <QPushButton>
#include <QTest>

using namespace Qt::StringLiterals;

namespace kelp::test {

PanelFixture::PanelFixture() = default;

PanelFixture::~PanelFixture()
{
    view.reset();
}

void PanelFixture::open(const QStringList &emails, const GoogleAuth::Client &builtIn)
{
    QJsonArray accounts;
    for (const QString &email : emails)
        accounts.append(QJsonObject{{u"email"_s, email}, {u"refreshToken"_s, u"1//"_s + email}});
    if (!emails.isEmpty()) {
        preferences.set(preference::clientID, u"id"_s);
        preferences.set(preference::clientSecret, u"secret"_s);
    }
    QFile file(m_folder.filePath(u"accounts.json"_s));
    QVERIFY(file.open(QIODevice::WriteOnly));
    file.write(QJsonDocument(accounts).toJson());
    file.close();
    view.reset();
    scheduler.reset();
    auth = std::make_unique<GoogleAuth>(GoogleAuth::Services{preferences, http, clock, opener}, GoogleEndpoints{},
                                        builtIn, m_folder.path());
    client = std::make_unique<CalendarClient>(*auth, http, clock, u"http://api"_s);
    scheduler = std::make_unique<Scheduler>(Scheduler::Services{preferences, clock, *client, *auth});
    view = std::make_unique<SettingsView>(
        SettingsView::Services{*auth, *scheduler, preferences, clock, opener, loginItem});
    view->setWindowTitle(u"Kelp"_s);
    view->onAppearance = [] {};
    view->isHotkeyTrusted = [] { return true; };
    view->prepare();
    view->show();
    view->activateWindow();
    QVERIFY(QTest::qWaitForWindowActive(view.get()));
}

void PanelFixture::bring(const QList<CalendarInfo> &calendars, const QList<Meeting> &meetings,
                         const QStringList &errors)
{
    scheduler->apply({.calendars = calendars, .meetings = meetings, .errors = errors});
    Q_EMIT scheduler->stateChanged();
    settle();
}

void PanelFixture::settle()
{
    QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
    QCoreApplication::processEvents();
}

QAbstractButton *PanelFixture::button(const QString &name) const
{
    for (QAbstractButton *each : view->findChildren<QAbstractButton *>()) {
        const QString named = each->accessibleName().isEmpty() ? each->text() : each->accessibleName();
        if (each->isVisible() && withoutIsolates(named) == name)
            return each;
    }
    return nullptr;
}

QStringList PanelFixture::texts() const
{
    QStringList result;
    for (const QLabel *each : view->findChildren<QLabel *>()) {
        if (each->isVisible())
            result.append(each->text());
    }
    return result;
}

void PanelFixture::click(const QString &name) const
{
    QAbstractButton *target = button(name);
    QVERIFY2(target, qPrintable(name));
    QTest::mouseClick(target, Qt::LeftButton);
    settle();
}

QStringList PanelFixture::menu(const QString &name) const
{
    const auto *owner = qobject_cast<IconButton *>(button(name));
    if (!owner || !owner->opened())
        return {};
    Q_EMIT owner->opened()->aboutToShow();
    QStringList result;
    for (const QAction *each : owner->opened()->actions())
        result.append(withoutIsolates(each->text()).replace(u"&&"_s, u"&"_s));
    return result;
}

void PanelFixture::choose(const QString &name, const QString &item) const
{
    const auto *owner = qobject_cast<IconButton *>(button(name));
    QVERIFY2(owner && owner->opened(), qPrintable(name));
    const QStringList items = menu(name);
    QVERIFY2(items.contains(item), qPrintable(items.join(u'\n')));
    owner->opened()->actions().at(items.indexOf(item))->trigger();
    settle();
}

CalendarInfo calendar(const QString &email, const QString &name, const QString &color, bool isSelected)
{
    return {.googleID = name.isEmpty() ? email : name,
            .accountEmail = email,
            .name = name,
            .googleSelected = isSelected,
            .color = color.isEmpty() ? std::nullopt : std::optional(color)};
}

Meeting meeting(const QString &title, Instant start, const QString &link)
{
    return {.id = title + u'|' + QString::number(start.secondsSince1970),
            .title = title,
            .start = start,
            .end = start + 1800,
            .joinURL = MeetingLink::fromText(link),
            .calendarName = work,
            .calendarID = calendar(ada, work).key()};
}

QList<CalendarInfo> dozen(const QString &email)
{
    return {calendar(email, work, u"#4285f4"_s),
            calendar(email, u"Personal"_s, u"#0b8043"_s),
            calendar(email, u"Team Tide 🌊"_s, u"#8e24aa"_s),
            calendar(email, u"Interviews"_s, u"#d50000"_s),
            calendar(email, u"On call & releases"_s, u"#f4511e"_s),
            calendar(email, u"فريق التصميم"_s, u"#039be5"_s),
            calendar(email, u"Holidays in Germany"_s, u"#f6bf26"_s, false),
            calendar(email, u"Birthdays"_s, u"#33b679"_s, false),
            calendar(email, u"webcal://sports.example.org/club/2026.ics?key=1"_s, u"#616161"_s, false),
            calendar(email, u"Cross-functional planning, reviews and everything else that did not fit"_s, u"#7986cb"_s),
            calendar(email, u"<b>Facilities</b>"_s, u"#e67c73"_s, false),
            calendar(email, u"家族の予定"_s, u"#3f51b5"_s)};
}

} // namespace kelp::test
