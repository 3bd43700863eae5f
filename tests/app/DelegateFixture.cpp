#include "app/DelegateFixture.h"

#include "base/Folders.h"
#include "desktop/OneAccount.h"
#include "settings/SettingsView.h"

#include <QAbstractButton>
#include <QApplication>
#include <QDir>
#include <QFile>
#include <QJsonArray>
#include <QJsonDocument>
#include <QLabel>
#include <QTest>

using namespace Qt::StringLiterals;

namespace kelp::test {

namespace {

constexpr qint64 nine = 1767258000;

bool write(const QString &folder, const QString &name, const QJsonDocument &content)
{
    QFile file(folder + u'/' + name);
    return QDir().mkpath(folder) && file.open(QIODevice::WriteOnly) && file.write(content.toJson()) > 0;
}

} // namespace

DelegateFixture::DelegateFixture()
{
    qputenv("XDG_CONFIG_HOME", QFile::encodeName(m_home.filePath(u"config"_s)));
    qputenv("XDG_DATA_HOME", QFile::encodeName(m_home.filePath(u"data"_s)));
}

DelegateFixture::~DelegateFixture()
{
    delegate.reset();
}

bool DelegateFixture::startSandbox(const QJsonArray &events)
{
    QJsonObject seed = oneAccount::seed(events);
    QJsonArray accounts = seed[u"accounts"_s].toArray();
    accounts.append(QJsonObject{{u"email"_s, furtherAccount}});
    seed[u"accounts"_s] = accounts;
    if (!sandbox.start(seed))
        return false;
    const QHash<QString, QString> variables = sandbox.environment();
    for (auto each = variables.begin(); each != variables.end(); ++each)
        qputenv(each.key().toLatin1().constData(), each.value().toUtf8());
    return true;
}

bool DelegateFixture::writePreferences(const QJsonObject &preferences)
{
    return write(folders::configuration(), u"preferences.json"_s, QJsonDocument(preferences));
}

bool DelegateFixture::signIn(const QJsonObject &morePreferences)
{
    QJsonObject preferences = oneAccount::preferences();
    preferences.insert(u"sound"_s, u"None"_s);
    for (auto each = morePreferences.begin(); each != morePreferences.end(); ++each)
        preferences.insert(each.key(), each.value());
    const QJsonObject account{{u"email"_s, oneAccount::email}, {u"refreshToken"_s, oneAccount::refreshToken}};
    return writePreferences(preferences) &&
           write(folders::data(), u"accounts.json"_s, QJsonDocument(QJsonArray{account}));
}

bool DelegateFixture::launch()
{
    delegate = std::make_unique<AppDelegate>(clock, platform);
    delegate->finishLaunching();
    const bool isSignedIn = QFile::exists(folders::data() + u"/accounts.json"_s);
    // The first picture of the item is there before anything is known; each refresh brings another.
    return !isSignedIn || until([this] { return platform.item->looks.size() > 2; });
}

SettingsView *DelegateFixture::findPanel() const
{
    for (QWidget *each : QApplication::topLevelWidgets()) {
        if (auto *panel = qobject_cast<SettingsView *>(each))
            return panel;
    }
    return nullptr;
}

SettingsView &DelegateFixture::panel() const
{
    SettingsView *panel = findPanel();
    if (!panel)
        qFatal("there is no panel");
    return *panel;
}

bool DelegateFixture::isPanelVisible() const
{
    const SettingsView *panel = findPanel();
    return panel && panel->isVisible();
}

QStringList DelegateFixture::texts() const
{
    QStringList result;
    if (!isOverlayShown())
        return result;
    for (const QLabel *label : platform.cover->visible().first()->findChildren<QLabel *>())
        result.append(label->text());
    return result;
}

void DelegateFixture::press(const QString &button) const
{
    QVERIFY(isOverlayShown());
    for (QAbstractButton *each : platform.cover->visible().first()->findChildren<QAbstractButton *>()) {
        if (each->accessibleName() == button) {
            each->click();
            return;
        }
    }
    QFAIL(qPrintable(button));
}

void DelegateFixture::pressReturn() const
{
    QTRY_VERIFY(QApplication::activeWindow());
    QTest::keyClick(QApplication::activeWindow(), Qt::Key_Return);
}

void DelegateFixture::pressSlashes()
{
    m_keyTime += 60; // long after any other key
    for (const double time : {m_keyTime, m_keyTime + 0.1})
        Q_EMIT platform.keys->pressed({.time = time, .text = u"/"_s});
}

QJsonObject DelegateFixture::preferences() const
{
    QFile file(folders::configuration() + u"/preferences.json"_s);
    return file.open(QIODevice::ReadOnly) ? QJsonDocument::fromJson(file.readAll()).object() : QJsonObject();
}

QJsonObject meetingIn(int seconds, const QString &title)
{
    return oneAccount::meeting(title, title, QDateTime::fromSecsSinceEpoch(nine + seconds, Qt::UTC));
}

} // namespace kelp::test
