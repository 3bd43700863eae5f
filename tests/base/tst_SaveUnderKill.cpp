#include "SavedFiller.h"

#include <QDir>
#include <QElapsedTimer>
#include <QFile>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QRandomGenerator>
#include <QTemporaryDir>
#include <QTest>

#include <algorithm>
#include <array>
#include <csignal>
#include <spawn.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

using namespace Qt::StringLiterals;

namespace {

#if defined(__has_feature)
#if __has_feature(address_sanitizer)
#define KELP_SANITIZED
#endif
#endif

// A sanitized program starts too slowly for more.
#ifdef KELP_SANITIZED
constexpr int kills = 60;
#else
constexpr int kills = 500;
#endif

/// The program that saves without end, and the numbers of the saves that it reports.
class SavingProcess
{
public:
    explicit SavingProcess(const QString &folder)
    {
        std::array<int, 2> pipe{};
        if (::pipe(pipe.data()) != 0)
            return;
        posix_spawn_file_actions_t actions;
        posix_spawn_file_actions_init(&actions);
        posix_spawn_file_actions_adddup2(&actions, pipe[1], STDOUT_FILENO);
        posix_spawn_file_actions_addclose(&actions, pipe[0]);
        QByteArray program = SAVING_FOREVER;
        QByteArray argument = QFile::encodeName(folder);
        std::array<char *, 3> arguments{program.data(), argument.data(), nullptr};
        if (::posix_spawn(&m_process, program.constData(), &actions, nullptr, arguments.data(), environ) != 0)
            m_process = -1;
        posix_spawn_file_actions_destroy(&actions);
        ::close(pipe[1]);
        m_reports = pipe[0];
    }
    ~SavingProcess()
    {
        kill();
        ::close(m_reports);
    }
    Q_DISABLE_COPY_MOVE(SavingProcess)

    /// Waits for the next save; 0 when the program has ended.
    qint64 nextSave()
    {
        qint64 number = 0;
        return ::read(m_reports, &number, sizeof number) == sizeof number ? number : 0;
    }
    void kill()
    {
        if (m_process <= 0)
            return;
        ::kill(m_process, SIGKILL);
        ::waitpid(m_process, nullptr, 0);
        m_process = -1;
    }
    /// The last save reported before the end; call it after `kill`.
    qint64 lastSave(qint64 before)
    {
        while (const qint64 number = nextSave())
            before = number;
        return before;
    }

private:
    pid_t m_process = -1;
    int m_reports = -1;
};

QByteArray contentOf(const QString &path)
{
    QFile file(path);
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
}

/// The number of the save that the preferences hold, or -1 where they are damaged.
qint64 wholePreferences(const QByteArray &content)
{
    const QJsonObject object = QJsonDocument::fromJson(content).object();
    const qint64 number = object.value(u"leadMinutes"_s).toInteger(-1);
    return object.value(u"spotifyLink"_s).toString() == savedFiller(number) ? number : -1;
}

/// The same for the account list.
qint64 wholeAccounts(const QByteArray &content)
{
    const QJsonArray accounts = QJsonDocument::fromJson(content).array();
    if (accounts.size() != 3)
        return -1;
    const qint64 number = accounts.first().toObject().value(u"email"_s).toString().toLongLong();
    const bool whole = std::all_of(accounts.begin(), accounts.end(), [number](const QJsonValue &account) {
        return account == QJsonObject{{u"email"_s, QString::number(number)}, {u"refreshToken"_s, savedFiller(number)}};
    });
    return whole ? number : -1;
}

int modeOf(const QString &path)
{
    struct stat status = {};
    return ::stat(QFile::encodeName(path).constData(), &status) == 0 ? static_cast<int>(status.st_mode & 07777) : -1;
}

} // namespace

class tst_SaveUnderKill : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void everyKilledSaveLeavesTheOldBytesOrTheNew();
};

void tst_SaveUnderKill::everyKilledSaveLeavesTheOldBytesOrTheNew()
{
    const QTemporaryDir folder;
    QVERIFY(folder.isValid());
    const QString preferences = folder.filePath(u"preferences.json"_s);
    const QString accounts = folder.filePath(u"accounts.json"_s);

    int damaged = 0;
    int midway = 0;
    for (int round = 0; round < kills; ++round) {
        SavingProcess process(folder.path());
        const qint64 first = process.nextSave();
        QVERIFY2(first > 0, "the saving program did not start");
        // The moment of the kill is what varies: up to a few saves after the first.
        const qint64 nanoseconds = QRandomGenerator::global()->bounded(6'000'000);
        QElapsedTimer timer;
        timer.start();
        while (timer.nsecsElapsed() < nanoseconds) {
        }
        process.kill();
        const qint64 reported = process.lastSave(first);

        const qint64 savedPreferences = wholePreferences(contentOf(preferences));
        const qint64 savedAccounts = wholeAccounts(contentOf(accounts));
        if (savedPreferences < reported || savedAccounts < reported)
            ++damaged;
        QCOMPARE(modeOf(preferences), 0600);
        QCOMPARE(modeOf(accounts), 0600);
        if (savedPreferences != savedAccounts || QDir(folder.path()).entryList(QDir::Files | QDir::Hidden).size() > 2)
            ++midway;
    }
    qInfo("%d kills, %d in the middle of a save, %d damaged files", kills, midway, damaged);
    QCOMPARE(damaged, 0);
    // Otherwise the kills came at the wrong moments and prove nothing.
    QVERIFY2(midway >= kills / 10, "too few saves were interrupted");
}

QTEST_GUILESS_MAIN(tst_SaveUnderKill)
#include "tst_SaveUnderKill.moc"
