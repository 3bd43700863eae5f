#include "settings/AppearanceFixture.h"

#include <QTest>

using namespace kelp;
using namespace kelp::test;
using namespace Qt::StringLiterals;

/// The appearance window among the user's other windows: what it is called, and where it stands.
class tst_AppearancePlace : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void hasATitle();
    void staysWhereItIsSeen_data();
    void staysWhereItIsSeen();
    void comesBackFromAScreenThatIsGone_data();
    void comesBackFromAScreenThatIsGone();
    void staysWhereThereIsNoScreenAtAll();
};

namespace {

const QList<QRect> screens{{0, 0, 1280, 680}, {1280, 0, 1920, 1080}};

} // namespace

void tst_AppearancePlace::hasATitle()
{
    AppearanceFixture window;
    QCOMPARE(window.view->windowTitle(), u"Kelp Appearance"_s);
}

void tst_AppearancePlace::staysWhereItIsSeen_data()
{
    QTest::addColumn<QRect>("place");
    QTest::newRow("first screen") << QRect(100, 80, 800, 560);
    QTest::newRow("second screen") << QRect(1600, 300, 1000, 700);
    QTest::newRow("across both") << QRect(1000, 40, 960, 680);
    QTest::newRow("mostly outside") << QRect(3100, 1000, 960, 680);
}

void tst_AppearancePlace::staysWhereItIsSeen()
{
    QFETCH(QRect, place);
    AppearanceFixture window;
    window.view->setGeometry(place);
    window.view->returnTo(screens);
    QCOMPARE(window.view->geometry(), place);
}

void tst_AppearancePlace::comesBackFromAScreenThatIsGone_data()
{
    QTest::addColumn<QRect>("before");
    QTest::addColumn<QRect>("after");
    QTest::newRow("beside") << QRect(4000, 200, 800, 560) << QRect(240, 60, 800, 560);
    QTest::newRow("above, but for the lower part") << QRect(300, -500, 800, 560) << QRect(240, 60, 800, 560);
    QTest::newRow("larger than what is left") << QRect(-2000, 0, 1900, 1000) << QRect(10, 20, 1260, 640);
}

void tst_AppearancePlace::comesBackFromAScreenThatIsGone()
{
    QFETCH(QRect, before);
    QFETCH(QRect, after);
    AppearanceFixture window;
    window.view->setGeometry(before);
    window.view->returnTo(screens);
    QCOMPARE(window.view->geometry(), after);
}

void tst_AppearancePlace::staysWhereThereIsNoScreenAtAll()
{
    AppearanceFixture window;
    const QRect place(4000, 200, 800, 560);
    window.view->setGeometry(place);
    window.view->returnTo({});
    QCOMPARE(window.view->geometry(), place);
}

QTEST_MAIN(tst_AppearancePlace)
#include "tst_AppearancePlace.moc"
