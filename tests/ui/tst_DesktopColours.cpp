#include "ui/DesktopColours.h"
#include "ui/DesktopPalette.h"

#include <QApplication>
#include <QStyle>
#include <QTest>

using namespace kelp;
using namespace Qt::StringLiterals;

class tst_DesktopColours : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void cleanup() { QApplication::setPalette(QPalette()); }
    void textsAreReadableOnEveryGround_data();
    void textsAreReadableOnEveryGround();
    void knowsDarkFromLight();
    void followsADesktopWithoutAPaletteOfItsOwn();
    void keepsThePaletteOfADesktopThatHasOne();
};

namespace {

QPalette palette(const QColor &window, const QColor &text, const QColor &highlight)
{
    QPalette result;
    result.setColor(QPalette::Window, window);
    result.setColor(QPalette::WindowText, text);
    result.setColor(QPalette::Highlight, highlight);
    return result;
}

} // namespace

void tst_DesktopColours::textsAreReadableOnEveryGround_data()
{
    QTest::addColumn<QPalette>("palette");
    const QList<std::pair<const char *, QColor>> accents{{"blue", QColor(0x35, 0x84, 0xE4)},
                                                         {"yellow", QColor(0xE5, 0xA5, 0x0A)},
                                                         {"green", QColor(0x2E, 0xC2, 0x7E)},
                                                         {"black", Qt::black},
                                                         {"white", Qt::white},
                                                         {"grey", QColor(128, 128, 128)}};
    for (const auto &[name, accent] : accents) {
        QTest::addRow("own light, %s", name) << ownPalette(false, accent);
        QTest::addRow("own dark, %s", name) << ownPalette(true, accent);
        QTest::addRow("Breeze, %s", name) << palette(QColor(0xEF, 0xF0, 0xF1), QColor(0x23, 0x26, 0x29), accent);
        QTest::addRow("Breeze Dark, %s", name) << palette(QColor(0x20, 0x23, 0x26), QColor(0xFC, 0xFC, 0xFC), accent);
        QTest::addRow("high contrast, %s", name) << palette(Qt::black, Qt::white, accent);
    }
    QTest::newRow("own") << ownPalette(false, {});
}

void tst_DesktopColours::textsAreReadableOnEveryGround()
{
    QFETCH(QPalette, palette);
    const DesktopColours colours = DesktopColours::of(palette);
    for (const QColor &ground : {colours.window, colours.group}) {
        for (const QColor &ink : {colours.primary, colours.secondary, colours.accentInk, colours.dangerInk}) {
            const QString what = ink.name() + u" on "_s + ground.name();
            QVERIFY2(contrast(ink, ground) >= 4.5, qPrintable(what));
        }
        QVERIFY(contrast(colours.outline, ground) >= 3);
    }
    QVERIFY(contrast(colours.accentText, colours.accent) >= 4.5);
    QVERIFY(contrast(colours.dangerText, colours.danger) >= 4.5);
}

void tst_DesktopColours::knowsDarkFromLight()
{
    QVERIFY(DesktopColours::of(ownPalette(true, {})).dark);
    QVERIFY(!DesktopColours::of(ownPalette(false, {})).dark);
    QCOMPARE(contrast(Qt::black, Qt::white), 21.0);
    QCOMPARE(contrast(Qt::red, Qt::red), 1.0);
}

void tst_DesktopColours::followsADesktopWithoutAPaletteOfItsOwn()
{
    applyDesktopPalette(true, QColor(Qt::magenta));
    QVERIFY(DesktopColours::of(QApplication::palette()).dark);
    QCOMPARE(QApplication::palette().color(QPalette::Highlight), QColor(Qt::magenta));
    applyDesktopPalette(false, {});
    QVERIFY(!DesktopColours::of(QApplication::palette()).dark);
    QVERIFY(QApplication::palette().color(QPalette::Highlight) != QColor(Qt::magenta));
    applyDesktopPalette({}, {});
    QVERIFY(!DesktopColours::of(QApplication::palette()).dark);
}

void tst_DesktopColours::keepsThePaletteOfADesktopThatHasOne()
{
    // The nearest thing to a desktop's palette that there is without one.
    const QPalette desktops = palette(QColor(0x20, 0x23, 0x26), QColor(0xFC, 0xFC, 0xFC), Qt::cyan);
    QVERIFY(isPaletteFor(desktops, {}));
    QVERIFY(isPaletteFor(desktops, true));
    QVERIFY(!isPaletteFor(desktops, false));
    QVERIFY(!isPaletteFor(QApplication::style()->standardPalette(), {}));
}

QTEST_MAIN(tst_DesktopColours)
#include "tst_DesktopColours.moc"
