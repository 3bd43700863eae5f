#include "platform/linux/DBusStatusItem.h"

#include "support/FakeClock.h"
#include "support/FakeTray.h"
#include "support/PrivateBus.h"

#include <QDBusArgument>
#include <QDBusMessage>
#include <QDBusPendingCallWatcher>
#include <QDBusPendingReply>
#include <QPainter>
#include <QSignalSpy>
#include <QTest>

using namespace kelp;
using namespace kelp::test;
using namespace Qt::StringLiterals;

namespace {

class FewPictures final : public StatusPictures
{
public:
    QString files = u"/pictures"_s;

    [[nodiscard]] QString folder() const override { return files; }
    [[nodiscard]] QImage image(const QString &name, int pixels) const override
    {
        QImage image(pixels, pixels, QImage::Format_ARGB32_Premultiplied);
        image.fill(name == u"plain" ? QColor(255, 0, 0, 128) : QColor(1, 2, 3));
        return image;
    }
};

const StatusLook plain{u"plain"_s, u"plain"_s, {}, u"Kelp"_s};
const StatusLook five{u"plain"_s, u"five"_s, u" 5m"_s, u"Kelp"_s};

const QString itemName = u"org.kde.StatusNotifierItem"_s;
const QString itemPath = u"/StatusNotifierItem"_s;

} // namespace

class tst_StatusItem : public QObject
{
    Q_OBJECT

public Q_SLOTS:
    void noteSignal(const QDBusMessage &message) { announced.append(message.member()); }

private Q_SLOTS:
    void initTestCase();
    void init();
    void cleanup();

    void registersWithTheTrayThatIsThere();
    void registersWhenATrayAppears();
    void registersAgainWithEveryTrayThatAppears();
    void triesAgainWhileTheTrayIsNotReady();
    void givesUpOnATrayThatNeverTakesIt();
    void registersAgainWhenAHostAppears();
    void waitsForTheHostOfANewTray();
    void doesNotWaitForAHostForEver();
    void tellsWhatItIs();
    void fitsItsIconToTheHost();
    void announcesOnlyWhatChanges();
    void everyClickActivates_data();
    void everyClickActivates();
    void handsOverATokenOnce();
    void survivesAStormOfClicks();
    void givesItsPicturesAsPixels();
    void leavesHostsThePixelsWhereThereAreNoFiles();

private:
    void makeItem();
    [[nodiscard]] QDBusMessage ask(const QDBusMessage &call);
    [[nodiscard]] QVariantMap properties();
    void click(const QString &method, const QVariantList &arguments = {1, 2});

    PrivateBus bus;
    FakeClock clock;
    std::shared_ptr<FewPictures> pictures;
    std::unique_ptr<DBusStatusItem> item;
    QStringList announced;
};

void tst_StatusItem::initTestCase()
{
    QVERIFY(bus.start());
    qputenv("DBUS_SESSION_BUS_ADDRESS", bus.address().toUtf8());
}

void tst_StatusItem::init()
{
    pictures = std::make_shared<FewPictures>();
}

void tst_StatusItem::cleanup()
{
    item.reset();
}

void tst_StatusItem::makeItem()
{
    item = std::make_unique<DBusStatusItem>(clock, pictures);
    item->show(plain);
}

QDBusMessage tst_StatusItem::ask(const QDBusMessage &call)
{
    // The item answers on this thread: no blocking.
    QDBusPendingCallWatcher watcher(bus.connection().asyncCall(call));
    QSignalSpy finished(&watcher, &QDBusPendingCallWatcher::finished);
    if (!watcher.isFinished())
        finished.wait();
    return watcher.reply();
}

QVariantMap tst_StatusItem::properties()
{
    const QString service = itemName + u"-%1-1"_s.arg(QCoreApplication::applicationPid());
    QDBusMessage call =
        QDBusMessage::createMethodCall(service, itemPath, u"org.freedesktop.DBus.Properties"_s, u"GetAll"_s);
    call << itemName;
    return qdbus_cast<QVariantMap>(ask(call).arguments().value(0));
}

void tst_StatusItem::click(const QString &method, const QVariantList &arguments)
{
    const QString service = itemName + u"-%1-1"_s.arg(QCoreApplication::applicationPid());
    QDBusMessage call = QDBusMessage::createMethodCall(service, itemPath, itemName, method);
    call.setArguments(arguments);
    QCOMPARE(ask(call).type(), QDBusMessage::ReplyMessage);
}

void tst_StatusItem::registersWithTheTrayThatIsThere()
{
    FakeTray tray(bus.address());
    QVERIFY(tray.isThere);
    makeItem();
    QTRY_COMPARE(tray.items.size(), 1);
    QCOMPARE(tray.items.first(), itemName + u"-%1-1"_s.arg(QCoreApplication::applicationPid()));
    // Other looks are announced, not registered.
    item->show(five);
    QTRY_COMPARE(properties().value(u"Title"_s), QVariant(u" 5m"_s));
    QCOMPARE(tray.items.size(), 1);
}

void tst_StatusItem::registersWhenATrayAppears()
{
    makeItem();
    QTRY_VERIFY(!properties().isEmpty());
    FakeTray tray(bus.address());
    QTRY_COMPARE(tray.items.size(), 1);
}

void tst_StatusItem::registersAgainWithEveryTrayThatAppears()
{
    makeItem();
    for (int round = 0; round < 5; ++round) {
        FakeTray tray(bus.address());
        QTRY_VERIFY(tray.isThere);
        QTRY_COMPARE(tray.items.size(), 1);
    }
}

void tst_StatusItem::triesAgainWhileTheTrayIsNotReady()
{
    FakeTray tray(bus.address());
    tray.refusals = 2;
    makeItem();
    QTRY_COMPARE(tray.refusals, 1);
    const auto afterASecond = [&](double seconds) {
        clock.advance(seconds);
        return tray.refusals;
    };
    QTRY_COMPARE(afterASecond(1), 0);
    QCOMPARE(tray.items.size(), 0);
    const auto taken = [&] {
        clock.advance(2);
        return tray.items.size();
    };
    QTRY_COMPARE(taken(), 1);
}

void tst_StatusItem::givesUpOnATrayThatNeverTakesIt()
{
    constexpr int many = 1000;
    FakeTray tray(bus.address());
    tray.refusals = many;
    makeItem();
    const auto refused = [&] {
        clock.advance(16);
        return many - tray.refusals;
    };
    QTRY_COMPARE(refused(), 6);
    const int before = clock.wakeUps();
    clock.advance(3600);
    QCOMPARE(clock.wakeUps(), before);
}

void tst_StatusItem::registersAgainWhenAHostAppears()
{
    FakeTray tray(bus.address());
    makeItem();
    QTRY_COMPARE(tray.items.size(), 1);
    Q_EMIT tray.StatusNotifierHostRegistered();
    QTRY_COMPARE(tray.items.size(), 2);
}

void tst_StatusItem::waitsForTheHostOfANewTray()
{
    FakeTray tray(bus.address(), {}, false);
    makeItem();
    QTRY_COMPARE(tray.questions, 1);
    for (int roundTrip = 0; roundTrip < 5; ++roundTrip)
        QVERIFY(!properties().isEmpty());
    QCOMPARE(tray.items.size(), 0);
    tray.hasHost = true;
    Q_EMIT tray.StatusNotifierHostRegistered();
    QTRY_COMPARE(tray.items.size(), 1);
    QVERIFY(!properties().isEmpty()); // by then it knows that it was taken
    clock.advance(60);
    QVERIFY(!properties().isEmpty());
    QCOMPARE(tray.items.size(), 1);
}

void tst_StatusItem::doesNotWaitForAHostForEver()
{
    FakeTray tray(bus.address(), {}, false);
    makeItem();
    QTRY_COMPARE(tray.questions, 1);
    const auto taken = [&] {
        clock.advance(3);
        return tray.items.size();
    };
    QTRY_COMPARE(taken(), 1);
}

void tst_StatusItem::tellsWhatItIs()
{
    FakeTray tray(bus.address());
    makeItem();
    item->show(five);
    QTRY_COMPARE(tray.items.size(), 1);
    const QVariantMap all = properties();
    QCOMPARE(all.value(u"Category"_s), QVariant(u"ApplicationStatus"_s));
    QCOMPARE(all.value(u"Id"_s), QVariant(u"app.kelp.Kelp"_s));
    QCOMPARE(all.value(u"Status"_s), QVariant(u"Active"_s));
    QCOMPARE(all.value(u"Title"_s), QVariant(u" 5m"_s));
    QCOMPARE(all.value(u"XAyatanaLabel"_s), QVariant(u" 5m"_s));
    QCOMPARE(all.value(u"XAyatanaLabelGuide"_s), QVariant(u" 60m"_s));
    QCOMPARE(all.value(u"IconAccessibleDesc"_s), QVariant(u"Kelp"_s));
    QCOMPARE(all.value(u"ItemIsMenu"_s), QVariant(false));
    QCOMPARE(all.value(u"IconThemePath"_s), QVariant(u"/pictures"_s));
    const auto toolTip = all.value(u"ToolTip"_s).value<QDBusArgument>();
    QString icon;
    QString title;
    QString text;
    toolTip.beginStructure();
    toolTip >> icon;
    toolTip.beginArray();
    QVERIFY(toolTip.atEnd());
    toolTip.endArray();
    toolTip >> title >> text;
    toolTip.endStructure();
    QCOMPARE(title, u"Kelp 5m"_s);
    QCOMPARE(text, QString());
}

void tst_StatusItem::fitsItsIconToTheHost()
{
    makeItem();
    item->show(five);
    {
        FakeTray tray(bus.address());
        QTRY_COMPARE(tray.items.size(), 1);
        QCOMPARE(properties().value(u"IconName"_s), QVariant(u"five"_s));
    }
    for (const QString &name :
         {u"org.gnome.Shell"_s, u"org.ayatana.indicator.application"_s, u"com.canonical.indicator.application"_s}) {
        FakeTray tray(bus.address(), {name});
        QTRY_COMPARE(tray.items.size(), 1);
        QCOMPARE(properties().value(u"IconName"_s), QVariant(u"plain-symbolic"_s));
    }
    {
        FakeTray tray(bus.address(), {u"org.xfce.Panel"_s});
        QTRY_COMPARE(tray.items.size(), 1);
        QCOMPARE(properties().value(u"IconName"_s), QVariant(u"five-symbolic"_s));
    }
    // One that is not the watcher itself.
    const QString shell = u"a shell"_s;
    QVERIFY(QDBusConnection::connectToBus(bus.address(), shell).registerService(u"org.kde.plasmashell"_s));
    {
        FakeTray tray(bus.address());
        QTRY_COMPARE(tray.items.size(), 1);
        QCOMPARE(properties().value(u"IconName"_s), QVariant(u"five-symbolic"_s));
    }
    QDBusConnection::disconnectFromBus(shell);
    // The shell is there, but another one has the tray.
    const QString other = u"another one"_s;
    QVERIFY(QDBusConnection::connectToBus(bus.address(), other).registerService(u"org.gnome.Shell"_s));
    FakeTray tray(bus.address());
    QTRY_COMPARE(tray.items.size(), 1);
    QTRY_COMPARE(properties().value(u"IconName"_s), QVariant(u"five"_s));
    QDBusConnection::disconnectFromBus(other);
}

void tst_StatusItem::announcesOnlyWhatChanges()
{
    FakeTray tray(bus.address());
    makeItem();
    QTRY_COMPARE(tray.items.size(), 1);
    QVERIFY(bus.connection().connect({}, itemPath, itemName, {}, this, SLOT(noteSignal(QDBusMessage))));
    // So that all that was sent before is here.
    (void)properties();
    announced.clear();
    item->show(plain);
    item->show(plain);
    (void)properties();
    QCOMPARE(announced, QStringList());
    item->show(five);
    (void)properties();
    announced.sort();
    QCOMPARE(announced, QStringList({u"NewIcon"_s, u"NewTitle"_s, u"NewToolTip"_s, u"XAyatanaNewLabel"_s}));
    announced.clear();
    StatusLook described = five;
    described.description = u"Kelp paused"_s;
    item->show(described);
    (void)properties();
    QCOMPARE(announced, QStringList({u"NewToolTip"_s}));
}

void tst_StatusItem::everyClickActivates_data()
{
    QTest::addColumn<QString>("method");
    for (const char *method : {"Activate", "SecondaryActivate", "ContextMenu"})
        QTest::newRow(method) << QString::fromLatin1(method);
}

void tst_StatusItem::everyClickActivates()
{
    QFETCH(QString, method);
    makeItem();
    QTRY_VERIFY(!properties().isEmpty());
    QSignalSpy activated(item.get(), &StatusItem::activated);
    click(method);
    QCOMPARE(activated.size(), 1);
    QCOMPARE(activated.first().first().toString(), QString());
}

void tst_StatusItem::handsOverATokenOnce()
{
    makeItem();
    QTRY_VERIFY(!properties().isEmpty());
    QSignalSpy activated(item.get(), &StatusItem::activated);
    click(u"ProvideXdgActivationToken"_s, {u"token-1"_s});
    click(u"Activate"_s);
    click(u"Activate"_s);
    click(u"ProvideXdgActivationToken"_s, {QString(100'000, u'x')});
    click(u"Activate"_s);
    QStringList tokens;
    for (const QList<QVariant> &each : activated)
        tokens.append(each.first().toString());
    QCOMPARE(tokens, QStringList({u"token-1"_s, QString(), QString()}));
    click(u"Scroll"_s, {1, u"vertical"_s});
    QCOMPARE(activated.size(), 3);
}

void tst_StatusItem::survivesAStormOfClicks()
{
    makeItem();
    QTRY_VERIFY(!properties().isEmpty());
    QSignalSpy activated(item.get(), &StatusItem::activated);
    const QString service = itemName + u"-%1-1"_s.arg(QCoreApplication::applicationPid());
    for (int i = 0; i < 1000; ++i) {
        QDBusMessage call = QDBusMessage::createMethodCall(service, itemPath, itemName, u"Activate"_s);
        call << i << -i;
        bus.connection().send(call);
    }
    QTRY_COMPARE(activated.size(), 1000);
    // Wrong arguments are an error for who sends them and nothing else.
    QDBusMessage call = QDBusMessage::createMethodCall(service, itemPath, itemName, u"Activate"_s);
    call << u"x"_s;
    QCOMPARE(ask(call).type(), QDBusMessage::ErrorMessage);
    QVERIFY(!properties().isEmpty());
}

void tst_StatusItem::givesItsPicturesAsPixels()
{
    makeItem();
    QTRY_VERIFY(!properties().isEmpty());
    const auto array = properties().value(u"IconPixmap"_s).value<QDBusArgument>();
    QList<int> sizes;
    array.beginArray();
    while (!array.atEnd()) {
        int width = 0;
        int height = 0;
        QByteArray pixels;
        array.beginStructure();
        array >> width >> height >> pixels;
        array.endStructure();
        QCOMPARE(width, height);
        QCOMPARE(pixels.size(), qsizetype(4) * width * height);
        // Alpha, red, green, blue; not premultiplied.
        QCOMPARE(pixels.first(4), QByteArray("\x80\xff\x00\x00", 4));
        sizes.append(width);
    }
    array.endArray();
    QCOMPARE(sizes, QList<int>({16, 22, 24, 32, 44, 48, 64}));
}

void tst_StatusItem::leavesHostsThePixelsWhereThereAreNoFiles()
{
    pictures->files.clear();
    FakeTray tray(bus.address());
    makeItem();
    QTRY_COMPARE(tray.items.size(), 1);
    QCOMPARE(properties().value(u"IconName"_s), QVariant(QString()));
    QCOMPARE(properties().value(u"IconThemePath"_s), QVariant(QString()));
    QVERIFY(properties().contains(u"IconPixmap"_s));
}

QTEST_MAIN(tst_StatusItem)
#include "tst_StatusItem.moc"
