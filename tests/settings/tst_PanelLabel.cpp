#include "settings/CalendarRow.h"
#include "settings/PanelLabel.h"

#include <QAccessible>
#include <QHelpEvent>
#include <QSignalSpy>
#include <QTest>
#include <QToolTip>

using namespace kelp;
using namespace Qt::StringLiterals;

class tst_PanelLabel : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void cleanup() { QToolTip::hideText(); }
    void neverAsksForMoreRoomThanThereIs_data();
    void neverAsksForMoreRoomThanThereIs();
    void takesAsManyLinesAsItMay();
    void isReadInFull();
    void showsWhatIsCutInAPlainTip();
    void aCalendarRowTogglesAnywhere();
    void aCalendarRowShowsALongNameInATip();
};

namespace {

const QString longText = u"One two three four five six seven eight nine ten eleven twelve thirteen fourteen"_s;

void hover(QWidget &widget, const QPoint &position)
{
    QHelpEvent event(QEvent::ToolTip, position, widget.mapToGlobal(position));
    QCoreApplication::sendEvent(&widget, &event);
}

} // namespace

void tst_PanelLabel::neverAsksForMoreRoomThanThereIs_data()
{
    QTest::addColumn<QString>("text");
    QTest::newRow("200 characters") << QString(200, u'W');
    QTest::newRow("100,000 characters") << QString(100'000, u'W');
    QTest::newRow("emoji") << u"👩‍👩‍👧‍👦"_s.repeated(60);
    QTest::newRow("right to left") << u"مراجعة التصميم "_s.repeated(20);
    QTest::newRow("lines") << u"a\nb\n"_s.repeated(50);
    QTest::newRow("nothing") << QString();
}

void tst_PanelLabel::neverAsksForMoreRoomThanThereIs()
{
    QFETCH(QString, text);
    PanelLabel label(13);
    label.setText(text);
    QVERIFY(label.minimumSizeHint().width() <= 24);
    QVERIFY(label.sizeHint().width() <= 4000);
    label.resize(120, label.sizeHint().height());
    QCOMPARE(label.sizeHint().height(), label.fontMetrics().lineSpacing());
    QCOMPARE(label.isCut(), !text.isEmpty());
    QVERIFY(!label.grab().isNull());
}

void tst_PanelLabel::takesAsManyLinesAsItMay()
{
    PanelLabel label(13);
    label.setText(longText);
    const int line = label.fontMetrics().lineSpacing();
    label.resize(160, line);
    QVERIFY(label.isCut());
    label.setMaximumLines(2);
    QCOMPARE(label.heightForWidth(160), 2 * line);
    QVERIFY(label.isCut());
    label.setMaximumLines(0);
    QVERIFY(label.heightForWidth(160) > 3 * line);
    QVERIFY(!label.isCut());
    label.setText(u"first\nsecond"_s);
    QCOMPARE(label.heightForWidth(160), 2 * line);
    // A word without an end is broken, too.
    label.setText(QString(300, u'W'));
    QVERIFY(label.heightForWidth(160) > 10 * line);
    QVERIFY(!label.isCut());
}

void tst_PanelLabel::isReadInFull()
{
    PanelLabel label(13);
    label.setText(u"<b>&Bold</b> "_s + longText);
    label.resize(60, 16);
    QAccessibleInterface *accessible = QAccessible::queryAccessibleInterface(&label);
    QCOMPARE(accessible->text(QAccessible::Name), u"<b>&Bold</b> "_s + longText);
    QCOMPARE(accessible->role(), QAccessible::StaticText);
    QCOMPARE(label.textFormat(), Qt::PlainText);
}

void tst_PanelLabel::showsWhatIsCutInAPlainTip()
{
    PanelLabel label(13);
    label.setText(u"<b>Bold</b> & "_s + longText);
    label.resize(100, 16);
    label.show();
    hover(label, {5, 5});
    QCOMPARE(QToolTip::text(), u"<p>&lt;b&gt;Bold&lt;/b&gt; &amp; %1</p>"_s.arg(longText));
    QToolTip::hideText();
    QTRY_VERIFY(!QToolTip::isVisible());
    label.setText(u"short"_s);
    hover(label, {5, 5});
    QVERIFY(!QToolTip::isVisible());
}

void tst_PanelLabel::aCalendarRowTogglesAnywhere()
{
    CalendarRow row(u"R&D <i>"_s, Qt::red);
    row.resize(280, 28);
    row.show();
    QAccessibleInterface *accessible = QAccessible::queryAccessibleInterface(&row);
    QCOMPARE(accessible->role(), QAccessible::CheckBox);
    QCOMPARE(accessible->text(QAccessible::Name), u"R&D <i>"_s);
    QSignalSpy toggled(&row, &QCheckBox::toggled);
    for (const QPoint &place : {QPoint(2, 2), QPoint(277, 25), QPoint(140, 14)})
        QTest::mouseClick(&row, Qt::LeftButton, {}, place);
    QTest::keyClick(&row, Qt::Key_Space);
    QTest::keyClick(&row, Qt::Key_Return);
    QCOMPARE(toggled.size(), 5);
    QVERIFY(row.isChecked() && accessible->state().checked);
    row.reflect(false); // from outside: nobody is told
    QCOMPARE(toggled.size(), 5);
    QVERIFY(!row.isChecked());
}

void tst_PanelLabel::aCalendarRowShowsALongNameInATip()
{
    CalendarRow row(u"<u>"_s + QString(200, u'N'), {});
    QVERIFY(row.minimumSizeHint().width() <= 60);
    row.resize(280, 28);
    row.show();
    hover(row, {100, 10});
    QCOMPARE(QToolTip::text(), u"<p>&lt;u&gt;%1</p>"_s.arg(QString(200, u'N')));
    CalendarRow brief(u"Work"_s, Qt::red);
    brief.resize(280, 28);
    brief.show();
    QToolTip::hideText();
    QTRY_VERIFY(!QToolTip::isVisible());
    hover(brief, {100, 10});
    QVERIFY(!QToolTip::isVisible());
}

QTEST_MAIN(tst_PanelLabel)
#include "tst_PanelLabel.moc"
