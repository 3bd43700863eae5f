#include "platform/linux/TokenWindowActivator.h"
#include "settings/IconButton.h"
#include "settings/PanelFixture.h"
#include "ui/KelpStyle.h"

#include <QAbstractButton>
#include <QApplication>
#include <QLabel>
#include <QLineEdit>
#include <QMenu>
#include <QScrollArea>
#include <QScrollBar>
#include <QTest>

using namespace kelp;
using namespace kelp::test;
using namespace Qt::StringLiterals;

/// What goes with the panel when it closes, and what stays when it is only brought to the front.
class tst_SettingsClosing : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void initTestCase() { QApplication::setStyle(new KelpStyle); }
    void init() { panel = std::make_unique<PanelFixture>(); }
    void cleanup() { panel.reset(); }

    void itsMenusGoWithIt_data();
    void itsMenusGoWithIt();
    void theMenuOfAFieldGoesWithIt();
    void anErrorThatWasReadIsForgotten();
    void anErrorThatCameWhileItWasClosedIsShown();
    void launchAtLoginTakesBackOnlyItsOwnErrors();
    void beingBroughtToTheFrontIsNoClosing();

private:
    [[nodiscard]] QString error() const
    {
        const auto *label = panel->view->findChild<QLabel *>(u"error"_s);
        return label->isVisible() ? label->text() : QString();
    }

    std::unique_ptr<PanelFixture> panel;
};

namespace {

const QString launchAtLogin = u"Launch at login"_s;
const QString signInError = u"Google sign-in failed: access_denied"_s;

} // namespace

void tst_SettingsClosing::itsMenusGoWithIt_data()
{
    QTest::addColumn<QString>("button");
    QTest::newRow("pause") << u"Pause Kelp"_s;
    QTest::newRow("account") << u"Options for "_s + ada;
}

void tst_SettingsClosing::itsMenusGoWithIt()
{
    QFETCH(QString, button);
    panel->open({ada});
    panel->click(button);
    const QMenu *menu = qobject_cast<IconButton *>(panel->button(button))->opened();
    QTRY_VERIFY(menu->isVisible());
    panel->view->hide();
    QVERIFY(!menu->isVisible());
    QVERIFY(!QApplication::activePopupWidget());
    panel->view->show();
    QVERIFY(!menu->isVisible());
}

void tst_SettingsClosing::theMenuOfAFieldGoesWithIt()
{
    panel->open();
    auto *field = panel->view->findChild<QLineEdit *>();
    QContextMenuEvent event(QContextMenuEvent::Mouse, {5, 5}, field->mapToGlobal(QPoint(5, 5)));
    QCoreApplication::sendEvent(field, &event);
    QTRY_VERIFY(QApplication::activePopupWidget());
    panel->view->hide();
    QVERIFY(!QApplication::activePopupWidget());
}

void tst_SettingsClosing::anErrorThatWasReadIsForgotten()
{
    panel->open({ada});
    panel->view->setError(signInError);
    QCOMPARE(error(), signInError);
    panel->view->close();
    panel->view->prepare();
    panel->view->show();
    QCOMPARE(error(), QString());
    // It would hide what goes wrong later.
    panel->bring({}, {}, {u"ada@example.com: refused"_s});
    QCOMPARE(error(), u"ada@example.com: refused"_s);
}

void tst_SettingsClosing::anErrorThatCameWhileItWasClosedIsShown()
{
    panel->open({ada});
    panel->view->close();
    panel->view->setError(signInError);
    panel->view->prepare();
    panel->view->show();
    QCOMPARE(error(), signInError);
}

void tst_SettingsClosing::launchAtLoginTakesBackOnlyItsOwnErrors()
{
    panel->open({ada});
    panel->view->setError(signInError);
    panel->click(launchAtLogin);
    QVERIFY(panel->loginItem.enabled);
    QCOMPARE(error(), signInError);
    panel->loginItem.error = u"Permission denied"_s;
    panel->click(launchAtLogin);
    QCOMPARE(error(), u"Launch at login: Permission denied"_s);
    panel->loginItem.error.clear();
    panel->click(launchAtLogin);
    QCOMPARE(error(), QString());
}

/// Where a window cannot raise itself, it is hidden and shown for that.
void tst_SettingsClosing::beingBroughtToTheFrontIsNoClosing()
{
    panel->open({ada});
    panel->bring(dozen(ada));
    panel->click(ada);
    panel->choose(u"Options for "_s + ada, u"Remove account…"_s);
    panel->view->setError(signInError);
    QScrollBar *bar = panel->view->findChild<QScrollArea *>()->verticalScrollBar();
    QVERIFY(bar->maximum() > 0);
    bar->setValue(bar->maximum() / 2);
    const int scrolled = bar->value();
    const QWidget *focused = QApplication::focusWidget();
    QCOMPARE(focused, panel->button(u"Cancel"_s));

    QWidget other;
    TokenWindowActivator activator;
    activator.activate(other, {});
    QTRY_VERIFY(activator.isActive(other));
    activator.activate(*panel->view, {});
    QTRY_VERIFY(activator.isActive(*panel->view));
    QVERIFY(panel->button(work));
    QVERIFY(panel->reads(u"Remove ada@example.com"_s));
    QCOMPARE(bar->value(), scrolled);
    QCOMPARE(error(), signInError);
    QTRY_COMPARE(QApplication::focusWidget(), focused);

    panel->view->close();
    panel->view->prepare();
    panel->view->show();
    QVERIFY(!panel->button(work));
    QVERIFY(!panel->reads(u"Remove ada@example.com"_s));
    QCOMPARE(bar->value(), 0);
    QTRY_COMPARE(QApplication::focusWidget(), panel->view.get());
}

QTEST_MAIN(tst_SettingsClosing)
#include "tst_SettingsClosing.moc"
