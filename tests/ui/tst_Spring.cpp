#include "ui/Spring.h"

#include <QTest>

#include <cmath>

using namespace kelp;

class tst_Spring : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void startsAtRestAndSettles_data();
    void startsAtRestAndSettles();
    void followsItsEquationOfMotion_data() { startsAtRestAndSettles_data(); }
    void followsItsEquationOfMotion();
    void overshootsOnlyBelowCriticalDamping();
};

void tst_Spring::startsAtRestAndSettles_data()
{
    QTest::addColumn<double>("response");
    QTest::addColumn<double>("damping");
    QTest::newRow("entrance") << 0.7 << 0.75;
    QTest::newRow("hover") << 0.25 << 1.0;
    QTest::newRow("press") << 0.15 << 1.0;
    QTest::newRow("bouncy") << 0.5 << 0.2;
}

void tst_Spring::startsAtRestAndSettles()
{
    QFETCH(double, response);
    QFETCH(double, damping);
    const Spring spring{response, damping};
    QCOMPARE(spring.position(-1), 0.0);
    QCOMPARE(spring.position(0), 0.0);
    QVERIFY(spring.position(1e-4) < 0.01);
    for (double later = 0; later < 2; later += 0.01)
        QVERIFY(std::abs(spring.position(spring.settlingTime() + later) - 1) <= 0.0011);
    QVERIFY(std::abs(spring.position(spring.settlingTime() * 0.3) - 1) > 0.001);
}

void tst_Spring::followsItsEquationOfMotion()
{
    QFETCH(double, response);
    QFETCH(double, damping);
    // x'' + 2·damping·omega·x' + omega²·(x - 1) = 0, by small steps
    const Spring spring{response, damping};
    const double omega = 2 * std::acos(-1) / response;
    constexpr double step = 1e-5;
    double x = 0;
    double v = 0;
    for (int i = 0; i < 50'000; ++i) {
        v += step * (omega * omega * (1 - x) - 2 * damping * omega * v);
        x += step * v;
    }
    QVERIFY(std::abs(x - spring.position(50'000 * step)) < 0.001);
}

void tst_Spring::overshootsOnlyBelowCriticalDamping()
{
    double most = 0;
    double mostCritical = 0;
    for (double t = 0; t < 3; t += 0.001) {
        most = std::max(most, Spring{0.7, 0.75}.position(t));
        mostCritical = std::max(mostCritical, Spring{0.25, 1.0}.position(t));
    }
    QVERIFY(most > 1.01 && most < 1.05);
    QVERIFY(mostCritical <= 1);
}

QTEST_GUILESS_MAIN(tst_Spring)
#include "tst_Spring.moc"
