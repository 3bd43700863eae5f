#include "platform/linux/PortalAppearance.h"

#include "support/FakePortal.h"
#include "support/PrivateBus.h"

#include <QSignalSpy>
#include <QTest>

using namespace kelp;
using namespace kelp::test;
using namespace Qt::StringLiterals;

class tst_PortalAppearance : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void initTestCase();
    void knowsNothingWithoutAPortal();
    void readsTheColourScheme_data();
    void readsTheColourScheme();
    void followsChanges();
    void takesNoNonsenseForAColour_data();
    void takesNoNonsenseForAColour();

private:
    PrivateBus bus;
};

namespace {

const QString scheme = u"color-scheme"_s;
const QString accent = u"accent-color"_s;

QVariant colour(double red, double green, double blue)
{
    return QVariant::fromValue(PortalColour{red, green, blue});
}

} // namespace

void tst_PortalAppearance::initTestCase()
{
    QVERIFY(bus.start());
    // Before anything of this process connects to its session bus.
    qputenv("DBUS_SESSION_BUS_ADDRESS", bus.address().toLatin1());
}

void tst_PortalAppearance::knowsNothingWithoutAPortal()
{
    PortalAppearance appearance;
    QSignalSpy changed(&appearance, &PortalAppearance::changed);
    FakePortal portal(bus.connection()); // comes later, and tells when something changes
    QVERIFY(!appearance.isDark());
    QVERIFY(!appearance.accent());
    portal.change(scheme, 1U);
    QTRY_COMPARE(appearance.isDark(), std::optional(true));
    QCOMPARE(changed.size(), 1);
}

void tst_PortalAppearance::readsTheColourScheme_data()
{
    QTest::addColumn<QVariant>("value");
    QTest::addColumn<int>("expected"); // -1 = nothing
    QTest::newRow("no preference") << QVariant(0U) << -1;
    QTest::newRow("dark") << QVariant(1U) << 1;
    QTest::newRow("light") << QVariant(2U) << 0;
    QTest::newRow("unknown") << QVariant(7U) << -1;
    QTest::newRow("a text") << QVariant(u"dark"_s) << -1;
}

void tst_PortalAppearance::readsTheColourScheme()
{
    QFETCH(QVariant, value);
    QFETCH(int, expected);
    FakePortal portal(bus.connection());
    portal.values = {{scheme, value}, {accent, colour(1, 0.5, 0)}};
    PortalAppearance appearance;
    QTRY_VERIFY(appearance.accent()); // asked for after the scheme, and so answered after it
    QCOMPARE(*appearance.accent(), QColor::fromRgbF(1, 0.5F, 0));
    QCOMPARE(appearance.isDark() ? int(*appearance.isDark()) : -1, expected);
}

void tst_PortalAppearance::followsChanges()
{
    FakePortal portal(bus.connection());
    portal.values = {{scheme, 2U}};
    PortalAppearance appearance;
    QTRY_COMPARE(appearance.isDark(), std::optional(false));
    portal.change(scheme, 1U);
    QTRY_COMPARE(appearance.isDark(), std::optional(true));
    portal.change(accent, colour(0, 0, 1));
    QTRY_COMPARE(appearance.accent(), std::optional(QColor(Qt::blue)));
    portal.change(scheme, 0U);
    QTRY_COMPARE(appearance.isDark(), std::nullopt);
}

void tst_PortalAppearance::takesNoNonsenseForAColour_data()
{
    QTest::addColumn<QVariant>("value");
    QTest::newRow("out of range") << colour(-1, -1, -1);
    QTest::newRow("too much") << colour(0, 1.01, 0);
    QTest::newRow("no number") << colour(0, qQNaN(), 0);
    QTest::newRow("a text") << QVariant(u"#ff0000"_s);
    QTest::newRow("another type") << QVariant(QStringList{u"a"_s, u"b"_s});
}

void tst_PortalAppearance::takesNoNonsenseForAColour()
{
    QFETCH(QVariant, value);
    FakePortal portal(bus.connection());
    portal.values = {{scheme, 1U}, {accent, colour(0, 0, 1)}};
    PortalAppearance appearance;
    QTRY_VERIFY(appearance.accent());
    portal.change(accent, value);
    QTRY_VERIFY(!appearance.accent());
}

QTEST_GUILESS_MAIN(tst_PortalAppearance)
#include "tst_PortalAppearance.moc"
