#include "settings/CalendarRow.h"
#include "settings/HoverRow.h"
#include "settings/IconButton.h"
#include "settings/NextMeetingCard.h"
#include "settings/PanelFixture.h"
#include "settings/SymbolView.h"
#include "ui/DesktopColours.h"
#include "ui/KelpStyle.h"

#include <QAbstractButton>
#include <QApplication>
#include <QLabel>
#include <QSignalSpy>
#include <QTest>

using namespace kelp;
using namespace kelp::test;
using namespace Qt::StringLiterals;

/// Sizes, weights, symbols and what the pointer brings about.
class tst_PanelLook : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void initTestCase() { QApplication::setStyle(new KelpStyle); }
    void init() { panel = std::make_unique<PanelFixture>(); }
    void cleanup() { panel.reset(); }

    void aCalendarShowsItsBoxAndItsColour();
    void theStatusHasASymbolOfItsOwn();
    void theChevronTurnsWithTheCalendars();
    void aRowUnderThePointerIsShaded();
    void aSymbolUnderThePointerIsShaded();
    void allOfASymbolsSquareCanBeClicked_data();
    void allOfASymbolsSquareCanBeClicked();
    void textsHaveTheirSizesAndWeights();
    void symbolsHaveTheirSizes();

private:
    [[nodiscard]] const QLabel *label(const QString &text) const;
    [[nodiscard]] DesktopColours colours() const { return DesktopColours::of(panel->view->palette()); }

    std::unique_ptr<PanelFixture> panel;
};

namespace {

constexpr Instant nine{1767258000};

/// What the widget itself paints, on nothing.
QImage painted(QWidget &widget)
{
    QImage image(widget.size(), QImage::Format_ARGB32_Premultiplied);
    image.fill(Qt::transparent);
    widget.render(&image, {}, {}, QWidget::RenderFlags());
    return image;
}

/// The same of a symbol as it should be.
QImage symbol(const QString &name, int size, Ink ink, double degrees = 0)
{
    SymbolView view(name, size, ink);
    view.turn(degrees);
    return painted(view);
}

/// As if the pointer had come over it.
void hover(QWidget &widget)
{
    widget.setAttribute(Qt::WA_UnderMouse);
}

QList<QSize> symbolSizes(const QWidget &parent)
{
    QList<QSize> sizes;
    for (const SymbolView *each : parent.findChildren<SymbolView *>())
        sizes.append(each->size());
    return sizes;
}

} // namespace

const QLabel *tst_PanelLook::label(const QString &text) const
{
    for (const QLabel *each : panel->view->findChildren<QLabel *>()) {
        if (each->isVisible() && each->text() == text)
            return each;
    }
    return nullptr;
}

void tst_PanelLook::aCalendarShowsItsBoxAndItsColour()
{
    CalendarRow row(u"Work"_s, QColor(0x8e, 0x24, 0xaa));
    row.resize(296, row.sizeHint().height());
    const int middle = row.height() / 2;
    const DesktopColours desktop = DesktopColours::of(row.palette());
    QImage off = painted(row);
    row.setChecked(true);
    QImage on = painted(row);
    for (const QImage &each : {off, on})
        QCOMPARE(each.pixelColor(38, middle), QColor(0x8e, 0x24, 0xaa));
    // The box has 11 × 11 points, and its left edge at 13.
    const QRect box(13, middle - 5, 11, 11);
    QCOMPARE(on.pixelColor(box.left() + 1, middle), desktop.accent);
    QCOMPARE(on.pixelColor(box.left() - 1, middle).alpha(), 0);
    QCOMPARE(on.pixelColor(box.right() + 1, middle).alpha(), 0);
    bool hasMark = false;
    for (int x = box.left() + 2; x < box.right() - 1; ++x)
        hasMark = hasMark || on.pixelColor(x, middle) != desktop.accent;
    QVERIFY(hasMark);
    QCOMPARE(off.pixelColor(box.center().x(), middle).alpha(), 0);
    QVERIFY(off.pixelColor(box.left(), middle).alpha() > 200);
    QVERIFY(off.pixelColor(box.right(), middle).alpha() > 200);
}

void tst_PanelLook::theStatusHasASymbolOfItsOwn()
{
    panel->open({ada});
    panel->bring(dozen(ada), {meeting(u"Review"_s, nine + 120)});
    auto *shown = panel->view->findChild<NextMeetingCard *>()->findChild<SymbolView *>();
    const int size = shown->width();
    QVERIFY(symbol(u"bell"_s, size, Ink::Accent) != symbol(u"record-circle"_s, size, Ink::Accent));
    QCOMPARE(painted(*shown), symbol(u"bell"_s, size, Ink::Accent));
    panel->clock.advance(119);
    QCOMPARE(painted(*shown), symbol(u"bell"_s, size, Ink::Accent));
    panel->clock.advance(2); // it has started
    QCOMPARE(painted(*shown), symbol(u"record-circle"_s, size, Ink::Accent));
}

void tst_PanelLook::theChevronTurnsWithTheCalendars()
{
    panel->open({ada});
    panel->bring(dozen(ada));
    auto *chevron = panel->button(ada)->findChild<SymbolView *>();
    const QImage closed = symbol(u"chevron-right"_s, 10, Ink::Secondary);
    const QImage opened = symbol(u"chevron-right"_s, 10, Ink::Secondary, 90);
    QVERIFY(closed != opened);
    QCOMPARE(painted(*chevron), closed);
    panel->click(ada);
    QTRY_COMPARE(painted(*chevron), opened);
    panel->click(ada);
    QTRY_COMPARE(painted(*chevron), closed);
}

void tst_PanelLook::aRowUnderThePointerIsShaded()
{
    HoverRow row;
    row.resize(296, 28);
    QCOMPARE(painted(row).pixelColor(148, 14).alpha(), 0);
    hover(row);
    const QColor shade = painted(row).pixelColor(148, 14);
    QCOMPARE(shade.alpha(), qRound(0.08 * 255));
    QCOMPARE(DesktopColours::of(row.palette()).primary, QColor(Qt::black)); // in which no colour is lost by blending
    QCOMPARE(shade.rgb() & 0xFFFFFF, 0U);
}

void tst_PanelLook::aSymbolUnderThePointerIsShaded()
{
    IconButton button(u"power"_s, u"Quit Kelp"_s);
    QCOMPARE(button.size(), QSize(22, 22));
    QCOMPARE(painted(button).pixelColor(2, 11).alpha(), 0);
    hover(button);
    for (const QPoint &each : {QPoint(2, 11), QPoint(19, 11), QPoint(11, 2), QPoint(11, 19)})
        QCOMPARE(painted(button).pixelColor(each).alpha(), qRound(0.1 * 255));
}

void tst_PanelLook::allOfASymbolsSquareCanBeClicked_data()
{
    QTest::addColumn<QPoint>("at");
    for (const QPoint &each : {QPoint(0, 0), QPoint(21, 0), QPoint(0, 21), QPoint(21, 21), QPoint(11, 11)})
        QTest::addRow("%d, %d", each.x(), each.y()) << each;
}

void tst_PanelLook::allOfASymbolsSquareCanBeClicked()
{
    QFETCH(QPoint, at);
    QWidget window;
    window.resize(60, 60);
    IconButton button(u"power"_s, u"Quit Kelp"_s, &window);
    button.move(20, 20);
    window.show();
    QVERIFY(QTest::qWaitForWindowExposed(&window));
    const QSignalSpy clicked(&button, &IconButton::clicked);
    // On the window, so that it is found out who is meant.
    QTest::mouseClick(window.windowHandle(), Qt::LeftButton, {}, button.pos() + at);
    QCOMPARE(clicked.size(), 1);
}

void tst_PanelLook::textsHaveTheirSizesAndWeights()
{
    panel->open({ada});
    panel->bring(dozen(ada), {meeting(u"Review"_s, nine + 600)});
    QCOMPARE(label(u"Kelp"_s)->font().pixelSize(), 15);
    QCOMPARE(label(u"Review"_s)->font().pixelSize(), 15);
    QCOMPARE(label(u"Review"_s)->font().weight(), QFont::DemiBold);
    QCOMPARE(label(u"Today, 09:10 – 09:40"_s)->font().weight(), QFont::Normal);
    QCOMPARE(label(u"Kelp in 10 min"_s)->font().weight(), QFont::Medium);
    QCOMPARE(label(u"Kelp in 10 min"_s)->font().pixelSize(), label(u"Today, 09:10 – 09:40"_s)->font().pixelSize());
    QCOMPARE(label(ada)->font().weight(), QFont::Medium);
    QVERIFY(label(u"8 of 12"_s)->font().pixelSize() < label(ada)->font().pixelSize());
}

void tst_PanelLook::symbolsHaveTheirSizes()
{
    panel->open({ada});
    const QAbstractButton *appearance = panel->button(u"Themes, sounds & more"_s);
    QCOMPARE(symbolSizes(*appearance), (QList<QSize>{{11, 11}, {10, 10}}));
    QCOMPARE(appearance->findChildren<SymbolView *>().first()->parentWidget()->size(), QSize(20, 20));
    QCOMPARE(symbolSizes(*panel->button(ada)), (QList<QSize>{{10, 10}}));
    // Of a button without a view of its own: what is painted lies within 12 × 12 points, and reaches their edges.
    IconButton button(u"pause-circle"_s, u"Pause Kelp"_s);
    const QImage image = painted(button);
    QRect ink;
    for (int y = 0; y < image.height(); ++y) {
        for (int x = 0; x < image.width(); ++x) {
            if (image.pixelColor(x, y).alpha() > 40)
                ink |= QRect(x, y, 1, 1);
        }
    }
    QVERIFY(QRect(5, 5, 12, 12).contains(ink));
    QVERIFY2(ink.width() >= 10 && ink.height() >= 10, qPrintable(u"%1 × %2"_s.arg(ink.width()).arg(ink.height())));
}

QTEST_MAIN(tst_PanelLook)
#include "tst_PanelLook.moc"
