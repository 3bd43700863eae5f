#include "platform/linux/PortalAppearance.h"
#include "support/PrivateBus.h"

#include <QDBusArgument>
#include <QDBusMessage>
#include <QDBusVariant>
#include <QDBusVirtualObject>
#include <QElapsedTimer>
#include <QSignalSpy>
#include <QTcpServer>
#include <QTcpSocket>
#include <QTemporaryDir>
#include <QTest>

using namespace kelp;
using namespace kelp::test;
using namespace Qt::StringLiterals;

namespace {

using Settings = QMap<QString, QVariantMap>;

/// A desktop's portal as far as it tells of settings.
class Portal final : public QDBusVirtualObject
{
public:
    explicit Portal(QDBusConnection bus) : m_bus(std::move(bus)) {}
    ~Portal() override { stop(); }

    [[nodiscard]] bool start()
    {
        return m_bus.registerVirtualObject(u"/org/freedesktop/portal/desktop"_s, this) &&
               m_bus.registerService(u"org.freedesktop.portal.Desktop"_s);
    }
    void stop()
    {
        m_bus.unregisterObject(u"/org/freedesktop/portal/desktop"_s);
        m_bus.unregisterService(u"org.freedesktop.portal.Desktop"_s);
    }
    void set(const QString &group, const QString &key, const QVariant &value)
    {
        settings[group].insert(key, value);
        QDBusMessage signal = QDBusMessage::createSignal(u"/org/freedesktop/portal/desktop"_s,
                                                         u"org.freedesktop.portal.Settings"_s, u"SettingChanged"_s);
        signal << group << key << QVariant::fromValue(QDBusVariant(value));
        QVERIFY(m_bus.send(signal));
    }

    bool handleMessage(const QDBusMessage &message, const QDBusConnection &bus) override
    {
        if (message.member() != "ReadAll"_L1)
            return false;
        ++asked;
        groups = message.arguments().value(0).toStringList();
        if (answersNonsense)
            return bus.send(message.createReply(u"dark, please"_s));
        QDBusArgument all;
        all.beginMap(QMetaType::fromType<QString>(), QMetaType::fromType<QVariantMap>());
        for (auto group = settings.begin(); group != settings.end(); ++group) {
            all.beginMapEntry();
            all << group.key() << group.value();
            all.endMapEntry();
        }
        all.endMap();
        return bus.send(message.createReply(QVariant::fromValue(all)));
    }
    QString introspect(const QString &) const override { return {}; }

    Settings settings;
    QStringList groups;
    bool answersNonsense = false;
    int asked = 0;

private:
    QDBusConnection m_bus;
};

const QString freedesktop = u"org.freedesktop.appearance"_s;
const QString gnome = u"org.gnome.desktop.interface"_s;
const QString kde = u"org.kde.kdeglobals.KDE"_s;

} // namespace

Q_DECLARE_METATYPE(Settings)

/// What Kelp learns of the desktop's appearance from a portal on a real bus and from real GSettings.
class tst_DesktopAppearance : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void initTestCase();
    void init();
    void cleanup();

    void readsThePortal_data();
    void readsThePortal();
    void followsThePortal();
    void ignoresOtherSettings();
    void survivesNonsense();
    void readsAndFollowsGSettingsWithoutAPortal();
    void readsGSettingsWhereThePortalKnowsOfNoAnimations();
    void readsGSettingsWithoutABus();
    void isThereAtOnce();

private:
    static void setInterface(const QString &key, const QString &value);

    QTemporaryDir home;
    std::unique_ptr<PrivateBus> bus;
    std::unique_ptr<Portal> portal;
    std::unique_ptr<PortalAppearance> appearance;
};

void tst_DesktopAppearance::initTestCase()
{
    // GSettings keeps the settings in a file that it watches.
    qputenv("GSETTINGS_BACKEND", "keyfile");
    qputenv("XDG_CONFIG_HOME", home.path().toUtf8());
    qputenv("HOME", home.path().toUtf8());
    setInterface(u"enable-animations"_s, u"true"_s);
}

void tst_DesktopAppearance::init()
{
    setInterface(u"enable-animations"_s, u"true"_s);
    setInterface(u"color-scheme"_s, u"default"_s);
    bus = std::make_unique<PrivateBus>();
    QVERIFY(bus->start());
    qputenv("DBUS_SESSION_BUS_ADDRESS", bus->address().toUtf8());
    portal = std::make_unique<Portal>(bus->connection());
}

void tst_DesktopAppearance::cleanup()
{
    appearance.reset();
    QDBusConnection::disconnectFromBus(u"kelp-session"_s);
    portal.reset();
    bus.reset();
}

void tst_DesktopAppearance::setInterface(const QString &key, const QString &value)
{
    QCOMPARE(QProcess::execute(u"gsettings"_s, {u"set"_s, gnome, key, value}), 0);
}

void tst_DesktopAppearance::readsThePortal_data()
{
    QTest::addColumn<Settings>("settings");
    QTest::addColumn<bool>("reducesMotion");
    QTest::addColumn<int>("isDark"); // -1 = no preference
    const auto number = [](uint value) { return QVariant(value); };
    const auto one = [](const QString &group, const QString &key, const QVariant &value) {
        return Settings{{group, {{key, value}}}};
    };
    QTest::newRow("no preference") << one(freedesktop, u"color-scheme"_s, number(0)) << false << -1;
    QTest::newRow("dark") << one(freedesktop, u"color-scheme"_s, number(1)) << false << 1;
    QTest::newRow("light") << one(freedesktop, u"color-scheme"_s, number(2)) << false << 0;
    QTest::newRow("unknown scheme") << one(freedesktop, u"color-scheme"_s, number(7)) << false << -1;
    QTest::newRow("reduced") << one(freedesktop, u"reduced-motion"_s, number(1)) << true << -1;
    QTest::newRow("not reduced") << one(freedesktop, u"reduced-motion"_s, number(0)) << false << -1;
    QTest::newRow("GNOME, still") << one(gnome, u"enable-animations"_s, false) << true << -1;
    QTest::newRow("GNOME, moving") << one(gnome, u"enable-animations"_s, true) << false << -1;
    QTest::newRow("KDE, still") << one(kde, u"AnimationDurationFactor"_s, u"0"_s) << true << -1;
    QTest::newRow("KDE, slow") << one(kde, u"AnimationDurationFactor"_s, u"2.5"_s) << false << -1;
    QTest::newRow("KDE, nonsense") << one(kde, u"AnimationDurationFactor"_s, u"fast"_s) << false << -1;
    QTest::newRow("wrapped twice") << one(freedesktop, u"color-scheme"_s, QVariant::fromValue(QDBusVariant(number(1))))
                                   << false << 1;
    QTest::newRow("a text for a number") << one(freedesktop, u"color-scheme"_s, u"dark"_s) << false << -1;
    QTest::newRow("one of them still") << Settings{{freedesktop, {{u"reduced-motion"_s, number(0)}}},
                                                   {gnome, {{u"enable-animations"_s, false}}}}
                                       << true << -1;
}

void tst_DesktopAppearance::readsThePortal()
{
    QFETCH(Settings, settings);
    portal->settings = settings;
    QVERIFY(portal->start());
    appearance = std::make_unique<PortalAppearance>();
    QFETCH(bool, reducesMotion);
    QFETCH(int, isDark);
    using State = std::pair<bool, std::optional<bool>>;
    const auto state = [&] { return State(appearance->reducesMotion(), appearance->isDark()); };
    QList<State> states{state()};
    QCOMPARE(states, QList{State(false, std::nullopt)}); // nothing is known yet
    connect(appearance.get(), &PortalAppearance::changed, this, [&] { states.append(state()); });
    QTRY_COMPARE(portal->asked, 1);
    QCOMPARE(portal->groups, (QStringList{freedesktop, gnome, kde}));
    // What comes after the answer is seen after it.
    const bool turned = isDark != 1;
    portal->set(freedesktop, u"color-scheme"_s, turned ? 1U : 2U);
    const State answered(reducesMotion, isDark < 0 ? std::nullopt : std::optional(isDark == 1));
    QTRY_COMPARE(states.constLast(), State(reducesMotion, turned));
    QList<State> expected{State(false, std::nullopt)};
    if (expected.constLast() != answered)
        expected.append(answered);
    expected.append(State(reducesMotion, turned));
    QCOMPARE(states, expected);
}

void tst_DesktopAppearance::followsThePortal()
{
    portal->settings = {{gnome, {{u"enable-animations"_s, true}}}};
    QVERIFY(portal->start());
    appearance = std::make_unique<PortalAppearance>();
    QTRY_COMPARE(portal->asked, 1);
    portal->set(freedesktop, u"reduced-motion"_s, 1U);
    QTRY_VERIFY(appearance->reducesMotion());
    portal->set(freedesktop, u"reduced-motion"_s, 0U);
    QTRY_VERIFY(!appearance->reducesMotion());
    portal->set(gnome, u"enable-animations"_s, false);
    QTRY_VERIFY(appearance->reducesMotion());
    portal->set(freedesktop, u"color-scheme"_s, 1U);
    QTRY_VERIFY(appearance->isDark().value_or(false));
}

void tst_DesktopAppearance::ignoresOtherSettings()
{
    QVERIFY(portal->start());
    appearance = std::make_unique<PortalAppearance>();
    QTRY_COMPARE(portal->asked, 1);
    QSignalSpy changed(appearance.get(), &PortalAppearance::changed);
    portal->set(u"org.example"_s, u"reduced-motion"_s, 1U);
    portal->set(freedesktop, u"contrast"_s, 1U);
    portal->set(freedesktop, u"color-scheme"_s, 0U);
    portal->set(freedesktop, u"reduced-motion"_s, 1U);
    QTRY_VERIFY(appearance->reducesMotion());
    QCOMPARE(changed.size(), 1);
}

void tst_DesktopAppearance::survivesNonsense()
{
    portal->answersNonsense = true;
    QVERIFY(portal->start());
    setInterface(u"color-scheme"_s, u"prefer-dark"_s);
    appearance = std::make_unique<PortalAppearance>();
    QTRY_VERIFY(appearance->isDark().value_or(false));
    portal->set(freedesktop, u"reduced-motion"_s, QVariantMap{{u"a"_s, 1}});
    portal->set(freedesktop, u"color-scheme"_s, QStringList{u"1"_s});
    QTRY_VERIFY(!appearance->isDark().value_or(false));
    QVERIFY(!appearance->reducesMotion());
}

void tst_DesktopAppearance::readsAndFollowsGSettingsWithoutAPortal()
{
    setInterface(u"enable-animations"_s, u"false"_s);
    setInterface(u"color-scheme"_s, u"prefer-dark"_s);
    appearance = std::make_unique<PortalAppearance>();
    QTRY_VERIFY(appearance->reducesMotion());
    QVERIFY(appearance->isDark().value_or(false));
    setInterface(u"enable-animations"_s, u"true"_s);
    QTRY_VERIFY(!appearance->reducesMotion());
    setInterface(u"color-scheme"_s, u"prefer-light"_s);
    QTRY_VERIFY(!appearance->isDark().value_or(false));
}

void tst_DesktopAppearance::readsGSettingsWhereThePortalKnowsOfNoAnimations()
{
    setInterface(u"enable-animations"_s, u"false"_s);
    setInterface(u"color-scheme"_s, u"prefer-dark"_s);
    portal->settings = {{freedesktop, {{u"color-scheme"_s, 2U}}}};
    QVERIFY(portal->start());
    appearance = std::make_unique<PortalAppearance>();
    QTRY_VERIFY(appearance->reducesMotion());
    QVERIFY(!appearance->isDark().value_or(false)); // of that the portal knows
}

void tst_DesktopAppearance::readsGSettingsWithoutABus()
{
    qputenv("DBUS_SESSION_BUS_ADDRESS", "unix:path=/nonexistent");
    setInterface(u"enable-animations"_s, u"false"_s);
    appearance = std::make_unique<PortalAppearance>();
    QTRY_VERIFY(appearance->reducesMotion());
}

/// A bus that accepts connections and never answers keeps nobody waiting.
void tst_DesktopAppearance::isThereAtOnce()
{
    QTcpServer silent;
    QVERIFY(silent.listen(QHostAddress::LocalHost));
    qputenv("DBUS_SESSION_BUS_ADDRESS", u"tcp:host=127.0.0.1,port=%1"_s.arg(silent.serverPort()).toUtf8());
    QElapsedTimer timer;
    timer.start();
    appearance = std::make_unique<PortalAppearance>();
    QVERIFY(timer.elapsed() < 100);
    QTRY_VERIFY(silent.hasPendingConnections());
    appearance.reset();
    QVERIFY(timer.elapsed() < 3000);
    silent.close();
    delete silent.nextPendingConnection(); // now the connecting ends
}

QTEST_GUILESS_MAIN(tst_DesktopAppearance)
#include "tst_DesktopAppearance.moc"
