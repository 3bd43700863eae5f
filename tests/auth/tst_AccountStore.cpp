#include "auth/AccountStore.h"

#include "preferences/Preferences.h"

#include <QDir>
#include <QFile>
#include <QTemporaryDir>
#include <QTest>

#include <sys/stat.h>

using namespace kelp;
using namespace Qt::StringLiterals;

class tst_AccountStore : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init();
    void findsNothingAndCreatesNothingOnAFreshInstall();
    void savesPrivately();
    void removesTheFileWithTheLastAccount();
    void takesOverTheOlderLayoutOnce();
    void namesAnOlderAccountWithoutAnAddress();
    void keepsTheOlderFileWhenTheNewOneCannotBeWritten();
    void treatsADamagedFileAsAbsent_data();
    void treatsADamagedFileAsAbsent();
    void readsAnEmptyList();

private:
    void write(const QString &name, const QByteArray &content);
    [[nodiscard]] QString path(const QString &name) const { return folder->path() + u"/Kelp/"_s + name; }
    [[nodiscard]] static int mode(const QString &path)
    {
        struct stat status = {};
        return ::stat(QFile::encodeName(path).constData(), &status) == 0 ? static_cast<int>(status.st_mode & 07777)
                                                                         : -1;
    }

    std::unique_ptr<QTemporaryDir> folder;
    std::unique_ptr<Preferences> preferences;
    std::unique_ptr<AccountStore> store;
};

void tst_AccountStore::init()
{
    folder = std::make_unique<QTemporaryDir>();
    preferences = std::make_unique<Preferences>();
    store = std::make_unique<AccountStore>(folder->path() + u"/Kelp"_s, *preferences);
}

void tst_AccountStore::write(const QString &name, const QByteArray &content)
{
    QDir().mkpath(folder->path() + u"/Kelp"_s);
    QFile file(path(name));
    QVERIFY(file.open(QIODevice::WriteOnly));
    file.write(content);
}

void tst_AccountStore::findsNothingAndCreatesNothingOnAFreshInstall()
{
    QVERIFY(store->load().isEmpty());
    QVERIFY(!QFile::exists(folder->path() + u"/Kelp"_s));
}

void tst_AccountStore::savesPrivately()
{
    const QList<Account> accounts{{u"a@x"_s, u"1"_s}, {u"é\"\\"_s, u"2"_s}};
    store->save(accounts);
    QCOMPARE(mode(folder->path() + u"/Kelp"_s), 0700);
    QCOMPARE(mode(path(u"accounts.json"_s)), 0600);
    QVERIFY(store->load() == accounts);
}

void tst_AccountStore::removesTheFileWithTheLastAccount()
{
    store->save({{u"a@x"_s, u"1"_s}});
    store->save({});
    QVERIFY(!QFile::exists(path(u"accounts.json"_s)));
    store->save({});
    QVERIFY(store->load().isEmpty());
}

void tst_AccountStore::takesOverTheOlderLayoutOnce()
{
    preferences->set(preference::googleEmail, u"ada@x"_s);
    write(u"refresh_token"_s, "old-token");
    const QList<Account> expected{{u"ada@x"_s, u"old-token"_s}};
    QVERIFY(store->load() == expected);
    QVERIFY(!QFile::exists(path(u"refresh_token"_s)));
    QCOMPARE(mode(path(u"accounts.json"_s)), 0600);
    QCOMPARE(preferences->get(preference::googleEmail), u"ada@x"_s);
    preferences->set(preference::googleEmail, u"other@x"_s);
    QVERIFY(store->load() == expected);
}

void tst_AccountStore::namesAnOlderAccountWithoutAnAddress()
{
    write(u"refresh_token"_s, "old-token");
    QCOMPARE(store->load().first().email, u"Google account"_s);
}

void tst_AccountStore::keepsTheOlderFileWhenTheNewOneCannotBeWritten()
{
    write(u"refresh_token"_s, "old-token");
    QVERIFY(QDir().mkpath(path(u"accounts.json/in-the-way"_s)));
    QCOMPARE(store->load().size(), 1);
    QVERIFY(QFile::exists(path(u"refresh_token"_s)));
}

void tst_AccountStore::treatsADamagedFileAsAbsent_data()
{
    QTest::addColumn<QByteArray>("content");
    const auto row = [](const char *content) { QTest::newRow(*content ? content : "(empty)") << QByteArray(content); };
    row("");
    row("{}");
    row("[");
    row("[{\"email\": \"a@x\"}]");
    row("[{\"email\": \"a@x\", \"refreshToken\": 7}]");
    row("[{\"email\": \"a@x\", \"refreshToken\": \"1\"}, null]");
    row("[{\"email\": \"a@x\", \"refreshToken\": \"\xff\"}]");
    row("null");
}

void tst_AccountStore::treatsADamagedFileAsAbsent()
{
    QFETCH(QByteArray, content);
    write(u"accounts.json"_s, content);
    QVERIFY(store->load().isEmpty());
    write(u"refresh_token"_s, "older");
    QCOMPARE(store->load().first().refreshToken, u"older"_s);
}

void tst_AccountStore::readsAnEmptyList()
{
    write(u"accounts.json"_s, "[]");
    write(u"refresh_token"_s, "older");
    QVERIFY(store->load().isEmpty());
    QVERIFY(QFile::exists(path(u"refresh_token"_s)));
}

QTEST_GUILESS_MAIN(tst_AccountStore)
#include "tst_AccountStore.moc"
