#include "sound/OverlaySounds.h"

#include "base/AtomicFile.h"
#include "support/FakeClock.h"
#include "support/RecordedSounds.h"

#include <QDir>
#include <QFileInfo>
#include <QTest>

#include <sys/stat.h>

using namespace kelp;
using namespace kelp::test;
using namespace Qt::StringLiterals;

namespace {

QByteArray contentOf(const QString &path)
{
    QFile file(path);
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
}

} // namespace

/// How a file of the user's becomes a sound of Kelp's.
class tst_SoundAdoption : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init();

    void adoptsAFile_data();
    void adoptsAFile();
    void adoptsAFileOnceMore();
    void anUnfinishedCopyIsSwept();
    void adoptsItsOwnCopy();
    void adoptsThoughNobodyWaits();
    void refusesWhatIsNoSound();
    void refusesWhatIsNoFile_data();
    void refusesWhatIsNoFile();
    void leavesAllAsItWasWhenTheCopyFails_data();
    void leavesAllAsItWasWhenTheCopyFails();
    void tellsWhenItsFolderCannotBeMade();
    void neverDeletesWhatIsNoCopy_data();
    void neverDeletesWhatIsNoCopy();

private:
    [[nodiscard]] QString makeFile(const QString &name, const QByteArray &content);
    [[nodiscard]] std::optional<Result<void, SoundError>> adopt(const QString &file);
    [[nodiscard]] QStringList copies() const;
    [[nodiscard]] QString stored(const PreferenceKey<QString> &key) const { return preferences->get(key); }
    [[nodiscard]] FakeSoundPlayer &player() const { return recorded->player; }
    [[nodiscard]] OverlaySounds &sounds() const { return recorded->sounds(); }

    FakeClock clock{{1761731940.9}};
    QObject context;
    std::unique_ptr<Preferences> preferences;
    std::unique_ptr<RecordedSounds> recorded;
};

void tst_SoundAdoption::init()
{
    clock.jump({1761731940.9});
    recorded.reset();
    preferences = std::make_unique<Preferences>();
    recorded = std::make_unique<RecordedSounds>(*preferences, clock);
}

QString tst_SoundAdoption::makeFile(const QString &name, const QByteArray &content)
{
    const QString path = recorded->folder.filePath(name);
    QFile file(path);
    if (!file.open(QIODevice::WriteOnly) || file.write(content) != content.size())
        qFatal("%s cannot be written", qPrintable(path));
    return path;
}

/// What the caller is told, if anything.
std::optional<Result<void, SoundError>> tst_SoundAdoption::adopt(const QString &file)
{
    std::optional<Result<void, SoundError>> outcome;
    const qsizetype imports = player().imports.size();
    sounds().setCustom(QUrl::fromLocalFile(file), &context,
                       [&](const Result<void, SoundError> &result) { outcome = result; });
    if (outcome)
        qFatal("it was told at once");
    if (player().imports.size() > imports)
        player().finishImport();
    clock.advance(0);
    return outcome;
}

QStringList tst_SoundAdoption::copies() const
{
    return QDir(recorded->folder.filePath(u"Kelp"_s)).entryList(QDir::AllEntries | QDir::Hidden | QDir::NoDotAndDotDot);
}

void tst_SoundAdoption::adoptsAFile_data()
{
    QTest::addColumn<QString>("name");
    QTest::addColumn<QString>("copy");
    QTest::addColumn<QString>("display");
    QTest::newRow("usual") << u"My song.mp3"_s << u"sound-1761731940.mp3"_s << u"My song"_s;
    QTest::newRow("two dots") << u"a.b.Ogg"_s << u"sound-1761731940.Ogg"_s << u"a.b"_s;
    QTest::newRow("no extension") << u"noise"_s << u"sound-1761731940.audio"_s << u"noise"_s;
    QTest::newRow("hidden") << u".noise"_s << u"sound-1761731940.audio"_s << u".noise"_s;
    QTest::newRow("dot at the end") << u"noise."_s << u"sound-1761731940.audio"_s << u"noise."_s;
    QTest::newRow("no extension but a dot") << u"1. Satz"_s << u"sound-1761731940.audio"_s << u"1. Satz"_s;
    QTest::newRow("not of this world") << u"ŝ♫\u202e.wav"_s << u"sound-1761731940.wav"_s << u"ŝ♫\u202e"_s;
}

void tst_SoundAdoption::adoptsAFile()
{
    QFETCH(QString, name);
    QFETCH(QString, copy);
    QFETCH(QString, display);
    const QString original = makeFile(name, "la la la");
    const auto outcome = adopt(original);
    QVERIFY(outcome && *outcome);
    const QString path = recorded->folder.filePath(u"Kelp/"_s + copy);
    QCOMPARE(stored(preference::customSoundPath), path);
    QCOMPARE(stored(preference::customSoundName), display);
    QCOMPARE(copies(), QStringList{copy});
    QCOMPARE(contentOf(path), "la la la"_ba);
    QCOMPARE(contentOf(original), "la la la"_ba);
    QCOMPARE(player().imports, QStringList{original});
}

void tst_SoundAdoption::adoptsAFileOnceMore()
{
    QVERIFY(*adopt(makeFile(u"one.mp3"_s, "1")));
    clock.advance(60);
    QVERIFY(*adopt(makeFile(u"two.ogg"_s, "2")));
    QCOMPARE(copies(), QStringList{u"sound-1761732000.ogg"_s});
    QCOMPARE(stored(preference::customSoundName), u"two"_s);
    // Within the same second the new one has the old one's name.
    QVERIFY(*adopt(makeFile(u"three.ogg"_s, "3")));
    QCOMPARE(copies(), QStringList{u"sound-1761732000.ogg"_s});
    QCOMPARE(contentOf(stored(preference::customSoundPath)), "3"_ba);
}

/// Kelp may end before the copy is complete.
void tst_SoundAdoption::anUnfinishedCopyIsSwept()
{
    sounds().setCustom(QUrl::fromLocalFile(makeFile(u"one.mp3"_s, "1")), &context, [](const auto &) {});
    QCOMPARE(copies().size(), 1);
    AtomicFile::sweep(recorded->folder.filePath(u"Kelp"_s));
    QCOMPARE(copies(), QStringList());
}

void tst_SoundAdoption::adoptsItsOwnCopy()
{
    QVERIFY(*adopt(makeFile(u"one.mp3"_s, "1")));
    clock.advance(60);
    QVERIFY(*adopt(stored(preference::customSoundPath)));
    QCOMPARE(copies(), QStringList{u"sound-1761732000.mp3"_s});
    QCOMPARE(contentOf(stored(preference::customSoundPath)), "1"_ba);
}

void tst_SoundAdoption::adoptsThoughNobodyWaits()
{
    auto view = std::make_unique<QObject>();
    sounds().setCustom(QUrl::fromLocalFile(makeFile(u"one.mp3"_s, "1")), view.get(),
                       [](const Result<void, SoundError> &) { QFAIL("nobody is there to be told"); });
    view.reset();
    player().finishImport();
    QCOMPARE(stored(preference::customSoundName), u"one"_s);
}

void tst_SoundAdoption::refusesWhatIsNoSound()
{
    QVERIFY(*adopt(makeFile(u"one.mp3"_s, "1")));
    const QJsonObject before = preferences->values();
    player().importOutcome = Failure(SoundError{SoundError::Kind::corruptFile});
    const auto outcome = adopt(makeFile(u"letter.mp3"_s, "Dear Sir"));
    QVERIFY(outcome && !*outcome);
    QCOMPARE(outcome->error().kind, SoundError::Kind::corruptFile);
    QCOMPARE(outcome->error().description(), u"The file couldn’t be opened because it isn’t in the correct format."_s);
    QCOMPARE(preferences->values(), before);
    QCOMPARE(copies(), QStringList{u"sound-1761731940.mp3"_s});
}

void tst_SoundAdoption::refusesWhatIsNoFile_data()
{
    QTest::addColumn<QUrl>("url");
    QTest::newRow("nothing") << QUrl();
    QTest::newRow("in the net") << QUrl(u"https://example.com/song.mp3"_s);
    QTest::newRow("data") << QUrl(u"data:audio/wav;base64,UklGRg=="_s);
}

void tst_SoundAdoption::refusesWhatIsNoFile()
{
    QFETCH(QUrl, url);
    std::optional<Result<void, SoundError>> outcome;
    sounds().setCustom(url, &context, [&](const Result<void, SoundError> &result) { outcome = result; });
    clock.advance(0);
    QVERIFY(outcome && !*outcome);
    QCOMPARE(outcome->error().kind, SoundError::Kind::corruptFile);
    QCOMPARE(player().imports.size(), 0);
    QVERIFY(!preferences->contains(preference::customSoundPath));
}

void tst_SoundAdoption::leavesAllAsItWasWhenTheCopyFails_data()
{
    QTest::addColumn<bool>("atTheEnd");
    QTest::newRow("while copying") << false;
    QTest::newRow("while renaming") << true;
}

void tst_SoundAdoption::leavesAllAsItWasWhenTheCopyFails()
{
    QFETCH(bool, atTheEnd);
    QVERIFY(*adopt(makeFile(u"one.mp3"_s, "1")));
    const QJsonObject before = preferences->values();
    clock.advance(60);
    if (atTheEnd)
        QVERIFY(QDir().mkdir(recorded->folder.filePath(u"Kelp/sound-1761732000.ogg"_s)));
    else
        player().importOutcome = Failure(SoundError{SoundError::Kind::copy});
    const auto outcome = adopt(makeFile(u"two.ogg"_s, "2"));
    QVERIFY(outcome && !*outcome);
    QCOMPARE(outcome->error().kind, SoundError::Kind::copy);
    QVERIFY(!outcome->error().description().isEmpty());
    QCOMPARE(preferences->values(), before);
    QCOMPARE(contentOf(stored(preference::customSoundPath)), "1"_ba);
    QVERIFY(copies().filter(u".tmp"_s).isEmpty());
}

void tst_SoundAdoption::tellsWhenItsFolderCannotBeMade()
{
    const QString original = makeFile(u"one.mp3"_s, "1");
    (void)makeFile(u"Kelp"_s, "in the way");
    const auto outcome = adopt(original);
    QVERIFY(outcome && !*outcome);
    QCOMPARE(outcome->error().kind, SoundError::Kind::folder);
    QVERIFY(!outcome->error().description().isEmpty());
    QVERIFY(!preferences->contains(preference::customSoundPath));
}

void tst_SoundAdoption::neverDeletesWhatIsNoCopy_data()
{
    QTest::addColumn<QString>("name");
    QTest::newRow("somewhere else") << u"sound-precious.mp3"_s;
    QTest::newRow("another file of ours") << u"Kelp/accounts.json"_s;
    QTest::newRow("by a detour") << u"Kelp/../sound-precious.mp3"_s;
}

void tst_SoundAdoption::neverDeletesWhatIsNoCopy()
{
    QFETCH(QString, name);
    QVERIFY(QDir().mkdir(recorded->folder.filePath(u"Kelp"_s)));
    preferences->set(preference::customSoundPath, makeFile(name, "precious"));
    QVERIFY(*adopt(makeFile(u"one.mp3"_s, "1")));
    QCOMPARE(contentOf(recorded->folder.filePath(name)), "precious"_ba);
}

QTEST_GUILESS_MAIN(tst_SoundAdoption)
#include "tst_SoundAdoption.moc"
