#include "settings/CalendarRow.h"
#include "settings/PanelFixture.h"
#include "ui/DesktopPalette.h"
#include "ui/KelpStyle.h"

#include <QAbstractButton>
#include <QAccessible>
#include <QApplication>
#include <QComboBox>
#include <QElapsedTimer>
#include <QLayout>
#include <QScreen>
#include <QScrollArea>
#include <QScrollBar>
#include <QTest>
#include <QVariantAnimation>

using namespace kelp;
using namespace kelp::test;
using namespace Qt::StringLiterals;

/// Accounts and their calendars in the panel, its size, and the way of the keyboard through it.
class tst_SettingsCalendars : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void initTestCase() { QApplication::setStyle(new KelpStyle); }
    void init() { panel = std::make_unique<PanelFixture>(); }
    void cleanup();

    void listsAccountsInTheirOrder();
    void showsTheCalendarsOfAnExpandedAccount();
    void togglesACalendar();
    void saysWhetherCalendarsAreStillLoading();
    void removesAnAccountOnlyAfterAsking();
    void escapeAnswersTheQuestionThenClosesThePanel();
    void forgetsWhatWasOpenWhenItCloses();
    void anAccountMayGoWhileItIsAskedFor();
    void fiveHundredCalendarsScrollAndStayFast();
    void isAsHighAsWhatItShows();
    void tabGoesThroughEverythingFromTopToBottom();
    void everythingThatTakesTheKeyboardHasANameAndARole();
    void followsTheDesktopsColoursAtOnce();

private:
    [[nodiscard]] QStringList rows() const
    {
        QStringList names;
        for (const CalendarRow *each : panel->view->findChildren<CalendarRow *>()) {
            if (each->isVisible())
                names.append(each->accessibleName());
        }
        return names;
    }
    /// The names of what has the keyboard, one Tab after the other, until it comes around.
    [[nodiscard]] QStringList tabs() const;

    std::unique_ptr<PanelFixture> panel;
};

namespace {

constexpr Instant nine{1767258000};
const QString ben = u"ben@example.com"_s;
const QString removal = u"Remove account…"_s;

QString optionsFor(const QString &email)
{
    return u"Options for "_s + email;
}

QString nameOf(QWidget *widget)
{
    return widget ? QAccessible::queryAccessibleInterface(widget)->text(QAccessible::Name) : QString();
}

} // namespace

void tst_SettingsCalendars::cleanup()
{
    panel.reset();
    QApplication::setPalette(QPalette());
}

void tst_SettingsCalendars::listsAccountsInTheirOrder()
{
    panel->open({ben, ada});
    panel->bring(dozen(ada));
    const QStringList texts = panel->texts();
    const qsizetype first = texts.indexOf(u"Calendars"_s);
    QCOMPARE(texts.mid(first), (QStringList{u"Calendars"_s, ben, u"0 of 0"_s, ada, u"8 of 12"_s}));
    QVERIFY(panel->button(ben)->mapToGlobal(QPoint()).y() < panel->button(ada)->mapToGlobal(QPoint()).y());
    QVERIFY(panel->button(ada)->mapToGlobal(QPoint()).y() < panel->button(u"Add account"_s)->mapToGlobal(QPoint()).y());
    QVERIFY(panel->button(ada)->height() >= 28);
}

void tst_SettingsCalendars::showsTheCalendarsOfAnExpandedAccount()
{
    panel->open({ada, ben});
    panel->bring({calendar(ada, u"Work"_s), calendar(ben, u"Other"_s), calendar(ada, u"a & <b>"_s),
                  calendar(ada, u"webcal://feeds.example.org/x.ics"_s, {}, false)});
    QCOMPARE(rows(), QStringList());
    panel->click(ada);
    QCOMPARE(rows(), (QStringList{u"Work"_s, u"a & <b>"_s, u"feeds.example.org"_s}));
    QVERIFY(panel->button(u"Work"_s)->isChecked());
    QVERIFY(!panel->button(u"feeds.example.org"_s)->isChecked());
    panel->click(ben);
    QCOMPARE(rows().size(), 4);
    panel->click(ada);
    QCOMPARE(rows(), QStringList{u"Other"_s});
    QTest::keyClick(panel->button(ada), Qt::Key_Return);
    QCOMPARE(rows().size(), 4);
    // A refresh brings another list.
    panel->bring({calendar(ada, u"Work"_s), calendar(ada, u"New"_s)});
    QCOMPARE(rows(), (QStringList{u"Work"_s, u"New"_s}));
}

void tst_SettingsCalendars::togglesACalendar()
{
    panel->open({ada});
    panel->bring(dozen(ada));
    panel->click(ada);
    panel->click(u"Holidays in Germany"_s);
    QCOMPARE(panel->preferences.get(preference::calendarChoices),
             (ChoiceDictionary{{ada + u"|Holidays in Germany"_s, true}}));
    QVERIFY(panel->reads(u"9 of 12"_s));
    panel->click(u"Work"_s);
    QCOMPARE(panel->preferences.get(preference::calendarChoices).value(ada + u"|Work"_s, true), false);
    QVERIFY(panel->reads(u"8 of 12"_s));
    QVERIFY(!panel->button(u"Work"_s)->isChecked());
    QVERIFY(panel->scheduler->isRefreshing());
    // The row that was clicked is still the same one, with the keyboard.
    QTest::keyClick(panel->button(u"Work"_s), Qt::Key_Space);
    QVERIFY(panel->button(u"Work"_s)->isChecked());
    // What is written elsewhere is shown, too.
    panel->preferences.set(preference::calendarChoices, {{ada + u"|Work"_s, false}});
    QVERIFY(!panel->button(u"Work"_s)->isChecked());
}

void tst_SettingsCalendars::saysWhetherCalendarsAreStillLoading()
{
    panel->open({ada});
    panel->click(ada);
    QVERIFY(panel->reads(u"No calendars loaded"_s));
    panel->scheduler->refresh();
    QVERIFY(panel->reads(u"Loading calendars…"_s));
    QVERIFY(!panel->reads(u"No calendars loaded"_s));
    while (panel->http.open() > 0)
        panel->http.fail(HttpError::Kind::transport, u"no network"_s);
    QVERIFY(!panel->scheduler->isRefreshing());
    QVERIFY(panel->reads(u"No calendars loaded"_s));
    panel->bring(dozen(ada));
    QVERIFY(!panel->reads(u"No calendars loaded"_s));
}

void tst_SettingsCalendars::removesAnAccountOnlyAfterAsking()
{
    panel->open({ada, ben});
    QCOMPARE(panel->menu(optionsFor(ada)), QStringList{removal});
    panel->choose(optionsFor(ada), removal);
    QVERIFY(panel->reads(u"Remove ada@example.com"_s));
    QCOMPARE(nameOf(QApplication::focusWidget()), u"Cancel"_s); // Return does no harm
    QCOMPARE(panel->auth->accounts().size(), 2);
    panel->click(u"Cancel"_s);
    QVERIFY(!panel->reads(u"Remove ada@example.com"_s));
    QCOMPARE(panel->auth->accounts().size(), 2);
    // Asking for one asks no more for the other.
    panel->choose(optionsFor(ada), removal);
    panel->choose(optionsFor(ben), removal);
    QVERIFY(!panel->reads(u"Remove ada@example.com"_s));
    QVERIFY(panel->reads(u"Remove ben@example.com"_s));
    panel->choose(optionsFor(ada), removal);
    panel->click(u"Remove"_s);
    QCOMPARE(panel->auth->accounts().size(), 1);
    QCOMPARE(panel->auth->accounts().first().email, ben);
    QVERIFY(panel->scheduler->isRefreshing()); // what the account showed goes, too
    QVERIFY(!panel->button(ada));
    panel->choose(optionsFor(ben), removal);
    panel->click(u"Remove"_s);
    QVERIFY(panel->button(u"Sign in with Google"_s));
}

void tst_SettingsCalendars::escapeAnswersTheQuestionThenClosesThePanel()
{
    panel->open({ada});
    panel->choose(optionsFor(ada), removal);
    QTest::keyClick(QApplication::focusWidget(), Qt::Key_Escape);
    QVERIFY(!panel->reads(u"Remove ada@example.com"_s));
    QVERIFY(panel->view->isVisible());
    QTest::keyClick(panel->view.get(), Qt::Key_Escape);
    QVERIFY(!panel->view->isVisible());
    QCOMPARE(panel->auth->accounts().size(), 1);
}

void tst_SettingsCalendars::forgetsWhatWasOpenWhenItCloses()
{
    panel->open({ada});
    panel->bring(dozen(ada));
    panel->click(ada);
    panel->choose(optionsFor(ada), removal);
    panel->view->close();
    panel->view->show();
    QCOMPARE(rows(), QStringList());
    QVERIFY(!panel->reads(u"Remove ada@example.com"_s));
}

void tst_SettingsCalendars::anAccountMayGoWhileItIsAskedFor()
{
    panel->open({ada, ben});
    panel->bring(dozen(ada) + dozen(ben));
    panel->click(ada);
    panel->choose(optionsFor(ada), removal);
    QAbstractButton *remove = panel->button(u"Remove"_s);
    panel->auth->signOut(panel->auth->accounts().first()); // Google has revoked it
    QVERIFY(!panel->reads(u"Remove ada@example.com"_s));
    remove->click(); // it is there until the loop comes around, and finds nothing to remove
    QCOMPARE(panel->auth->accounts().size(), 1);
    PanelFixture::settle();
    QVERIFY(!panel->button(ada));
    // Were it added again, nothing would be asked.
    panel->choose(optionsFor(ben), removal);
    panel->auth->signOut(panel->auth->accounts().first());
    QVERIFY(panel->button(u"Sign in with Google"_s));
}

void tst_SettingsCalendars::fiveHundredCalendarsScrollAndStayFast()
{
    QList<CalendarInfo> many;
    ChoiceDictionary choices;
    for (int i = 0; i < 500; ++i) {
        many.append(calendar(ada, u"Calendar %1 "_s.arg(i) + QString(i % 200, u'x')));
        choices.insert(many.last().key(), i % 2 == 0);
    }
    panel->preferences.set(preference::calendarChoices, choices);
    panel->open({ada});
    QElapsedTimer timer;
    timer.start();
    panel->bring(many);
    panel->click(ada);
    QCOMPARE(rows().size(), 500);
    QVERIFY(panel->reads(u"250 of 500"_s));
    const qint64 opening = timer.restart();
    panel->clock.advance(20);
    const qint64 ticks = timer.restart();
    qInfo() << "opening took" << opening << "ms, twenty seconds of it" << ticks << "ms";
    // Generous, for machines that are busy or instrumented: what is quadratic takes many times that.
    QVERIFY(opening < 3000);
    QVERIFY(ticks < 1500);
    const auto *area = panel->view->findChild<QScrollArea *>();
    QVERIFY(area->verticalScrollBar()->maximum() > 500 * 28 - 2000);
    QVERIFY(panel->view->height() <= panel->view->screen()->availableGeometry().height());
    QCOMPARE(area->horizontalScrollBar()->maximum(), 0);
    // The keyboard's way leads into view.
    QAbstractButton *last = panel->button(many.last().name);
    last->setFocus(Qt::TabFocusReason);
    area->widget()->layout()->activate();
    QTest::keyClick(last, Qt::Key_Backtab);
    QTest::keyClick(QApplication::focusWidget(), Qt::Key_Tab);
    QCOMPARE(QApplication::focusWidget(), last);
    QVERIFY(area->viewport()->rect().intersects(QRect(last->mapTo(area->viewport(), QPoint()), last->size())));
}

void tst_SettingsCalendars::isAsHighAsWhatItShows()
{
    panel->open({ada});
    const int empty = panel->view->height();
    panel->bring(dozen(ada).first(3), {meeting(u"Review"_s, nine + 3600)});
    const int withMeeting = panel->view->height();

    QVERIFY(withMeeting > empty);
    panel->click(ada);
    QCOMPARE(panel->view->height(), withMeeting + 3 * 28 + 9);
    const auto *area = panel->view->findChild<QScrollArea *>();
    QCOMPARE(area->verticalScrollBar()->maximum(), 0);
    panel->click(ada);
    QCOMPARE(panel->view->height(), withMeeting);
    QCOMPARE(panel->view->width(), 320);
}

QStringList tst_SettingsCalendars::tabs() const
{
    QStringList names;
    QTest::keyClick(panel->view.get(), Qt::Key_Tab);
    const QWidget *first = QApplication::focusWidget();
    for (int i = 0; i < 100; ++i) {
        QWidget *focused = QApplication::focusWidget();
        names.append(nameOf(focused));
        QTest::keyClick(focused, Qt::Key_Tab);
        if (QApplication::focusWidget() == first)
            break;
    }
    return names;
}

void tst_SettingsCalendars::tabGoesThroughEverythingFromTopToBottom()
{
    panel->open({ada, ben});
    panel->bring({calendar(ada, u"Work"_s), calendar(ada, u"Home"_s), calendar(ben, u"Bens"_s)},
                 {meeting(u"Review"_s, nine + 60, u"https://meet.google.com/abc-defg-hij"_s)});
    panel->scheduler->setPausedUntil(nine + 3600);
    panel->click(ben);
    panel->click(ada); // its rows are made later, and stand above
    panel->choose(optionsFor(ada), removal);
    panel->view->setFocus();
    QCOMPARE(tabs(), (QStringList{u"Refresh calendar"_s,
                                  u"Pause Kelp"_s,
                                  u"Quit Kelp"_s,
                                  u"Resume"_s,
                                  u"Join Google Meet"_s,
                                  u"1 min before"_s,
                                  u"Video meetings only"_s,
                                  u"Press / twice to open Kelp"_s,
                                  u"Launch at login"_s,
                                  u"Themes, sounds & more"_s,
                                  ada,
                                  optionsFor(ada),
                                  u"Cancel"_s,
                                  u"Remove"_s,
                                  u"Work"_s,
                                  u"Home"_s,
                                  ben,
                                  optionsFor(ben),
                                  u"Bens"_s,
                                  u"Add account"_s}));
}

void tst_SettingsCalendars::everythingThatTakesTheKeyboardHasANameAndARole()
{
    panel->open({ada});
    panel->bring(dozen(ada));
    panel->click(ada);
    int count = 0;
    for (QWidget *each : panel->view->findChildren<QWidget *>()) {
        if (!(each->focusPolicy() & Qt::TabFocus) || !each->isVisible())
            continue;
        const QAccessibleInterface *accessible = QAccessible::queryAccessibleInterface(each);
        QVERIFY2(!accessible->text(QAccessible::Name).isEmpty(), each->metaObject()->className());
        const QList<QAccessible::Role> roles{QAccessible::Button, QAccessible::CheckBox, QAccessible::ComboBox};
        QVERIFY2(roles.contains(accessible->role()), each->metaObject()->className());
        ++count;
    }
    QVERIFY(count > 20);
    // A combo box is called what is chosen; what it is for is said by the label beside it.
    const auto *lead = panel->view->findChild<QComboBox *>();
    const auto labels =
        QAccessible::queryAccessibleInterface(const_cast<QComboBox *>(lead))->relations(QAccessible::Label);
    QCOMPARE(labels.size(), 1);
    QCOMPARE(labels.first().first->text(QAccessible::Name), u"Remind me"_s);
    QAccessibleInterface *account = QAccessible::queryAccessibleInterface(panel->button(ada));
    QVERIFY(account->state().expandable && account->state().expanded && !account->state().collapsed);
    panel->click(ada);
    QVERIFY(account->state().collapsed && !account->state().expanded);
    account->actionInterface()->doAction(QAccessibleActionInterface::pressAction());
    QCOMPARE(rows().size(), 12);
}

void tst_SettingsCalendars::followsTheDesktopsColoursAtOnce()
{
    panel->open({ada});
    panel->bring(dozen(ada), {meeting(u"Review"_s, nine + 3600)});
    const auto ground = [this] {
        PanelFixture::settle();
        return panel->view->grab().toImage().pixelColor(0, 0).lightness();
    };
    QApplication::setPalette(ownPalette(false, {}));
    QVERIFY(ground() > 200);
    QApplication::setPalette(ownPalette(true, {}));
    QVERIFY(ground() < 60);
    QApplication::setPalette(ownPalette(false, {}));
    QVERIFY(ground() > 200);
}

QTEST_MAIN(tst_SettingsCalendars)
#include "tst_SettingsCalendars.moc"
