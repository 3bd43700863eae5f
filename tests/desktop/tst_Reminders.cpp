#include "desktop/OneAccount.h"
#include "support/KelpRig.h"

#include <QTest>

using namespace kelp::test;
using namespace Qt::StringLiterals;

/// Who has the keyboard of a real desktop when a reminder and the panel meet.
class tst_Reminders : public QObject, private KelpRig
{
    Q_OBJECT

private Q_SLOTS:
    void initTestCase() { QVERIFY(startDesktop()); }
    void init() { desktop.forget(); }
    void cleanup() { endKelp(); }

    void slashesTakeNothingFromTheOverlay();
};

namespace {

constexpr int soon = 12'000; // ms: a tick comes every 5 s, and the machine may be busy

} // namespace

void tst_Reminders::slashesTakeNothingFromTheOverlay()
{
    oneAccount::signIn(desktop);
    QVERIFY(startSandbox(oneAccount::seed({oneAccount::meeting(u"review"_s, u"Design review"_s, 50)})));
    QVERIFY(startKelp());
    QTRY_VERIFY_WITH_TIMEOUT(kelp->coversBothMonitors(), soon);
    QTRY_VERIFY_WITH_TIMEOUT(kelp->output().contains("the keys of all applications are heard"), soon);
    person->pressSlashes();
    desktop.display().run(u"xdotool"_s, {u"sleep"_s, u"0.5"_s}); // as long as a window takes to get the keyboard
    QVERIFY(kelp->coversBothMonitors());
    person->press({u"Return"_s});
    QTRY_COMPARE(desktop.opened().value(0), oneAccount::joinLink.toUtf8());
    QCOMPARE(desktop.opened().size(), 1);
    QTRY_VERIFY(kelp->panelIsActive()); // as was asked for
}

QTEST_GUILESS_MAIN(tst_Reminders)

#include "tst_Reminders.moc"
