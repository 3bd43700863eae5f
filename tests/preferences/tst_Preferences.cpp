#include "base/AtomicFile.h"
#include "preferences/Preferences.h"
#include "support/FaultyFileOperations.h"

#include <QDir>
#include <QFile>
#include <QJsonArray>
#include <QJsonDocument>
#include <QSignalSpy>
#include <QTemporaryDir>
#include <QTest>

#include <cerrno>
#include <limits>
#include <memory>

using namespace kelp;
using namespace Qt::StringLiterals;
using kelp::test::FaultyFileOperations;
using Call = FaultyFileOperations::Call;

namespace {

QJsonValue json(const char *text)
{
    const QByteArray wrapped = QByteArray("{\"value\":") + text + '}';
    return QJsonDocument::fromJson(wrapped).object().value(u"value"_s);
}

QByteArray contentOf(const QString &path)
{
    QFile file(path);
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray("(unreadable)");
}

void put(const QString &path, const QByteArray &content)
{
    QFile file(path);
    QVERIFY(file.open(QIODevice::WriteOnly));
    QCOMPARE(file.write(content), content.size());
}

} // namespace

class tst_Preferences : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init();

    void aFreshInstallationReadsTheDefaults();
    void aFreshInstallationStoresNothing();
    void everyKeyHasItsDocumentedName();
    void aStoredIntegerReads_data();
    void aStoredIntegerReads();
    void aStoredBooleanReads_data();
    void aStoredBooleanReads();
    void aStoredNumberReads_data();
    void aStoredNumberReads();
    void aStoredTextReads_data();
    void aStoredTextReads();
    void aStoredDateReads_data();
    void aStoredDateReads();
    void storedDatesByNameRead_data();
    void storedDatesByNameRead();
    void storedChoicesRead_data();
    void storedChoicesRead();
    void everyValueReadsBackFromTheFile();
    void theFileIsTypedFlatJson();
    void whatKelpDoesNotKnowIsKept();
    void removingBringsTheDefaultBack();
    void noDateRemovesTheKey();
    void tellsStoredFromDefault();
    void tellsAStoredBooleanFromEverythingElse();
    void aChangeIsOnDiskAtOnce();
    void theSameValueWritesNothing();
    void anUpdateWritesOnce();
    void nestedUpdatesWriteOnceAtTheEnd();
    void observersHearOfTheirKeyOnly();
    void observersHearOfRemovals();
    void observersReadTheNewValue();
    void anObserverMayChangeAnotherKey();
    void aDestroyedObserverIsNotCalled();
    void aDamagedFileIsPutAsideBeforeItIsReplaced_data();
    void aDamagedFileIsPutAsideBeforeItIsReplaced();
    void aFolderInPlaceOfTheFileIsPutAside();
    void aDamagedFileThatCannotBePutAsideStays();
    void aRefusingDiskKeepsTheOldFileAndTheNewValues();
    void aFolderThatCannotBeWrittenIsNoObstacle();
    void inMemoryNothingIsWritten();

private:
    [[nodiscard]] QString filePath() const { return m_folder->filePath(u"Kelp/preferences.json"_s); }

    std::unique_ptr<QTemporaryDir> m_folder;
};

void tst_Preferences::init()
{
    m_folder = std::make_unique<QTemporaryDir>();
    QVERIFY(m_folder->isValid());
}

void tst_Preferences::aFreshInstallationReadsTheDefaults()
{
    AtomicFile file(filePath());
    const Preferences preferences(file);
    using namespace preference;
    QCOMPARE(preferences.get(leadMinutes), 1);
    QCOMPARE(preferences.get(theme), u"midnight");
    QCOMPARE(preferences.get(sound), u"Glass");
    QCOMPARE(preferences.get(snoozeMinutes), 1);
    QCOMPARE(preferences.get(countdownStyle), u"pill");
    QCOMPARE(preferences.get(showAttendees), true);
    QCOMPARE(preferences.get(showCalendar), true);
    QCOMPARE(preferences.get(displays), u"all");
    QCOMPARE(preferences.get(customDim), 0.45);
    QCOMPARE(preferences.get(soundVolume), 0.8);
    QCOMPARE(preferences.get(pauseMusic), false);
    QCOMPARE(preferences.get(doubleSlash), true);

    QCOMPARE(preferences.get(onlyWithVideo), false);
    for (const auto *key :
         {&clientID, &clientSecret, &spotifyLink, &customSoundName, &customSoundPath, &customImagePath, &googleEmail})
        QCOMPARE(preferences.get(*key), QString());

    QVERIFY(preferences.get(shownMeetings).isEmpty());
    QVERIFY(preferences.get(snoozedMeetings).isEmpty());
    QVERIFY(!preferences.get(pausedUntil));
    QVERIFY(preferences.get(calendarChoices).isEmpty());
}

void tst_Preferences::aFreshInstallationStoresNothing()
{
    AtomicFile file(filePath());
    const Preferences preferences(file);
    QVERIFY(preferences.values().isEmpty());
    QVERIFY(!preferences.contains(preference::leadMinutes));
    QVERIFY(!preferences.contains(preference::sound));
    QVERIFY(!QFile::exists(filePath()));
    QVERIFY(!QFile::exists(m_folder->filePath(u"Kelp"_s)));
}

void tst_Preferences::everyKeyHasItsDocumentedName()
{
    using namespace preference;
    const QStringList names{QLatin1StringView(leadMinutes.name),     QLatin1StringView(theme.name),
                            QLatin1StringView(sound.name),           QLatin1StringView(snoozeMinutes.name),
                            QLatin1StringView(countdownStyle.name),  QLatin1StringView(showAttendees.name),
                            QLatin1StringView(showCalendar.name),    QLatin1StringView(displays.name),
                            QLatin1StringView(customDim.name),       QLatin1StringView(soundVolume.name),
                            QLatin1StringView(pauseMusic.name),      QLatin1StringView(doubleSlash.name),
                            QLatin1StringView(onlyWithVideo.name),   QLatin1StringView(clientID.name),
                            QLatin1StringView(clientSecret.name),    QLatin1StringView(spotifyLink.name),
                            QLatin1StringView(customSoundName.name), QLatin1StringView(customSoundPath.name),
                            QLatin1StringView(customImagePath.name), QLatin1StringView(shownMeetings.name),
                            QLatin1StringView(snoozedMeetings.name), QLatin1StringView(pausedUntil.name),
                            QLatin1StringView(calendarChoices.name), QLatin1StringView(playSound.name),
                            QLatin1StringView(googleEmail.name)};
    QCOMPARE(names, u"leadMinutes theme sound snoozeMinutes countdownStyle showAttendees showCalendar displays "
                    "customDim soundVolume pauseMusic doubleSlash onlyWithVideo clientID clientSecret spotifyLink "
                    "customSoundName customSoundPath customImagePath shownMeetings snoozedMeetings pausedUntil "
                    "calendarChoices playSound googleEmail"_s.split(u' '));
}

void tst_Preferences::aStoredIntegerReads_data()
{
    QTest::addColumn<QJsonValue>("stored");
    QTest::addColumn<qint64>("value");
    QTest::newRow("integer") << json("5") << qint64(5);
    QTest::newRow("zero") << json("0") << qint64(0);
    QTest::newRow("negative") << json("-3") << qint64(-3);
    QTest::newRow("fraction") << json("2.9") << qint64(2);
    QTest::newRow("negative fraction") << json("-2.9") << qint64(-2);
    QTest::newRow("exponent") << json("1e3") << qint64(1000);
    QTest::newRow("more than 53 bits") << json("9007199254740993") << qint64(9007199254740993);
    QTest::newRow("largest") << json("9223372036854775807") << std::numeric_limits<qint64>::max();
    QTest::newRow("beyond all integers") << json("1e300") << qint64(9223372036854774784);
    QTest::newRow("below all integers") << json("-1e300") << qint64(-9223372036854774784);
    QTest::newRow("text") << json("\"5\"") << qint64(0);
    QTest::newRow("boolean") << json("true") << qint64(0);
    QTest::newRow("list") << json("[5]") << qint64(0);
    QTest::newRow("object") << json("{\"a\":5}") << qint64(0);
    QTest::newRow("null") << json("null") << qint64(1);
}

void tst_Preferences::aStoredIntegerReads()
{
    QFETCH(QJsonValue, stored);
    QFETCH(qint64, value);
    const Preferences preferences({{u"leadMinutes"_s, stored}});
    QCOMPARE(preferences.get(preference::leadMinutes), value);
}

void tst_Preferences::aStoredBooleanReads_data()
{
    QTest::addColumn<QJsonValue>("stored");
    QTest::addColumn<bool>("value");
    QTest::newRow("true") << json("true") << true;
    QTest::newRow("false") << json("false") << false;
    QTest::newRow("number") << json("1") << false;
    QTest::newRow("text") << json("\"true\"") << false;
    QTest::newRow("object") << json("{}") << false;
    QTest::newRow("null") << json("null") << true;
}

void tst_Preferences::aStoredBooleanReads()
{
    QFETCH(QJsonValue, stored);
    QFETCH(bool, value);
    const Preferences preferences({{u"doubleSlash"_s, stored}});
    QCOMPARE(preferences.get(preference::doubleSlash), value);
}

void tst_Preferences::aStoredNumberReads_data()
{
    QTest::addColumn<QJsonValue>("stored");
    QTest::addColumn<double>("value");
    QTest::newRow("fraction") << json("0.25") << 0.25;
    QTest::newRow("integer") << json("1") << 1.0;
    QTest::newRow("zero") << json("0") << 0.0;
    QTest::newRow("text") << json("\"0.25\"") << 0.0;
    QTest::newRow("boolean") << json("true") << 0.0;
    QTest::newRow("list") << json("[0.25]") << 0.0;
    QTest::newRow("null") << json("null") << 0.8;
}

void tst_Preferences::aStoredNumberReads()
{
    QFETCH(QJsonValue, stored);
    QFETCH(double, value);
    const Preferences preferences({{u"soundVolume"_s, stored}});
    QCOMPARE(preferences.get(preference::soundVolume), value);
}

void tst_Preferences::aStoredTextReads_data()
{
    QTest::addColumn<QJsonValue>("stored");
    QTest::addColumn<QString>("value");
    QTest::newRow("text") << json("\"None\"") << u"None"_s;
    QTest::newRow("empty text") << json("\"\"") << QString();
    QTest::newRow("beyond ASCII") << json("\"Größe 🔔\"") << u"Größe 🔔"_s;
    QTest::newRow("number") << json("5") << QString();
    QTest::newRow("boolean") << json("true") << QString();
    QTest::newRow("object") << json("{\"date\":\"2026-01-01T09:00:00.000Z\"}") << QString();
    QTest::newRow("null") << json("null") << u"Glass"_s;
}

void tst_Preferences::aStoredTextReads()
{
    QFETCH(QJsonValue, stored);
    QFETCH(QString, value);
    const Preferences preferences({{u"sound"_s, stored}});
    QCOMPARE(preferences.get(preference::sound), value);
}

void tst_Preferences::aStoredDateReads_data()
{
    QTest::addColumn<QJsonValue>("stored");
    QTest::addColumn<std::optional<Instant>>("value");
    const std::optional<Instant> none;
    const auto at = [](double seconds) { return std::optional<Instant>(Instant{seconds}); };
    QTest::newRow("date") << json(R"({"date":"2026-01-01T09:00:00.000Z"})") << at(1767258000);
    QTest::newRow("milliseconds") << json(R"({"date":"2026-01-01T09:00:00.250Z"})") << at(1767258000.25);
    QTest::newRow("another zone") << json(R"({"date":"2026-01-01T10:00:00+01:00"})") << at(1767258000);
    QTest::newRow("no zone") << json(R"({"date":"2026-01-01T09:00:00"})") << none;
    QTest::newRow("day that does not exist") << json(R"({"date":"2026-02-30T09:00:00.000Z"})") << none;
    QTest::newRow("date as a number") << json(R"({"date":1767258000})") << none;
    QTest::newRow("bare text") << json(R"("2026-01-01T09:00:00.000Z")") << none;
    QTest::newRow("bare number") << json("1767258000") << none;
    QTest::newRow("boolean") << json("true") << none;
    QTest::newRow("empty object") << json("{}") << none;
    QTest::newRow("another member too") << json(R"({"date":"2026-01-01T09:00:00.000Z","a":1})") << none;
    QTest::newRow("null") << json("null") << none;
}

void tst_Preferences::aStoredDateReads()
{
    QFETCH(QJsonValue, stored);
    QFETCH(std::optional<Instant>, value);
    const Preferences preferences({{u"pausedUntil"_s, stored}});
    QCOMPARE(preferences.get(preference::pausedUntil), value);
}

void tst_Preferences::storedDatesByNameRead_data()
{
    QTest::addColumn<QJsonValue>("stored");
    QTest::addColumn<DateDictionary>("value");
    const DateDictionary none;
    QTest::newRow("two dates") << json(R"({"m@1":{"date":"2026-01-01T09:00:00.000Z"},
                                          "m@2":{"date":"2026-01-01T09:00:00.500Z"}})")
                               << DateDictionary{{u"m@1"_s, {1767258000}}, {u"m@2"_s, {1767258000.5}}};
    QTest::newRow("empty") << json("{}") << none;
    QTest::newRow("one is a text") << json(R"({"m@1":{"date":"2026-01-01T09:00:00.000Z"},"m@2":"soon"})") << none;
    QTest::newRow("one is no date") << json(R"({"m@1":{"date":"2026-01-01T09:00:00.000Z"},"m@2":{"date":"soon"}})")
                                    << none;
    QTest::newRow("a date itself") << json(R"({"date":"2026-01-01T09:00:00.000Z"})") << none;
    QTest::newRow("list") << json("[]") << none;
    QTest::newRow("text") << json("\"m@1\"") << none;
    QTest::newRow("null") << json("null") << none;
}

void tst_Preferences::storedDatesByNameRead()
{
    QFETCH(QJsonValue, stored);
    QFETCH(DateDictionary, value);
    const Preferences preferences({{u"shownMeetings"_s, stored}});
    QCOMPARE(preferences.get(preference::shownMeetings), value);
}

void tst_Preferences::storedChoicesRead_data()
{
    QTest::addColumn<QJsonValue>("stored");
    QTest::addColumn<ChoiceDictionary>("value");
    const ChoiceDictionary none;
    QTest::newRow("on and off") << json(R"({"a@x|c":true,"a@x|d":false})")
                                << ChoiceDictionary{{u"a@x|c"_s, true}, {u"a@x|d"_s, false}};
    QTest::newRow("one is a number") << json(R"({"a@x|c":true,"a@x|d":0})") << none;
    QTest::newRow("one is null") << json(R"({"a@x|c":true,"a@x|d":null})") << none;
    QTest::newRow("list") << json("[true]") << none;
    QTest::newRow("boolean") << json("true") << none;
    QTest::newRow("null") << json("null") << none;
}

void tst_Preferences::storedChoicesRead()
{
    QFETCH(QJsonValue, stored);
    QFETCH(ChoiceDictionary, value);
    const Preferences preferences({{u"calendarChoices"_s, stored}});
    QCOMPARE(preferences.get(preference::calendarChoices), value);
}

void tst_Preferences::everyValueReadsBackFromTheFile()
{
    AtomicFile file(filePath());
    const DateDictionary shown{{u"abc@1767258000"_s, {1767259800}}, {u"d|1767258000.0@1767258000"_s, {1767258000.125}}};
    const ChoiceDictionary choices{{u"k@example.org|primary"_s, true}, {u"bare"_s, false}};
    {
        Preferences preferences(file);
        preferences.set(preference::leadMinutes, 10);
        preferences.set(preference::onlyWithVideo, true);
        preferences.set(preference::doubleSlash, false);
        preferences.set(preference::soundVolume, 0.3);
        preferences.set(preference::customSoundName, u"Klänge \"live\".ogg"_s);
        preferences.set(preference::pausedUntil, Instant{1767258000.75});
        preferences.set(preference::shownMeetings, shown);
        preferences.set(preference::calendarChoices, choices);
    }
    const Preferences preferences(file);
    QCOMPARE(preferences.get(preference::leadMinutes), 10);
    QCOMPARE(preferences.get(preference::onlyWithVideo), true);
    QCOMPARE(preferences.get(preference::doubleSlash), false);
    QCOMPARE(preferences.get(preference::soundVolume), 0.3);
    QCOMPARE(preferences.get(preference::customSoundName), u"Klänge \"live\".ogg");
    QCOMPARE(preferences.get(preference::pausedUntil), std::optional(Instant{1767258000.75}));
    QCOMPARE(preferences.get(preference::shownMeetings), shown);
    QCOMPARE(preferences.get(preference::calendarChoices), choices);
}

void tst_Preferences::theFileIsTypedFlatJson()
{
    AtomicFile file(filePath());
    Preferences preferences(file);
    preferences.set(preference::leadMinutes, 5);
    preferences.set(preference::soundVolume, 0.5);
    preferences.set(preference::sound, u"None"_s);
    preferences.set(preference::pauseMusic, true);
    preferences.set(preference::pausedUntil, Instant{1767258000});
    preferences.set(preference::shownMeetings, {{u"abc@1767258000"_s, {1767259800.5}}});
    preferences.set(preference::calendarChoices, {{u"k@example.org|c"_s, false}});
    QCOMPARE(contentOf(filePath()), R"({
    "calendarChoices": {
        "k@example.org|c": false
    },
    "leadMinutes": 5,
    "pauseMusic": true,
    "pausedUntil": {
        "date": "2026-01-01T09:00:00.000Z"
    },
    "shownMeetings": {
        "abc@1767258000": {
            "date": "2026-01-01T09:30:00.500Z"
        }
    },
    "sound": "None",
    "soundVolume": 0.5
}
)");
    QCOMPARE(QFile::permissions(filePath()) & ~QFile::Permissions(QFile::ReadUser | QFile::WriteUser),
             QFile::ReadOwner | QFile::WriteOwner);
}

void tst_Preferences::whatKelpDoesNotKnowIsKept()
{
    QVERIFY(QDir().mkpath(m_folder->filePath(u"Kelp"_s)));
    put(filePath(), R"({"fromANewerKelp": [1, {"a": null}], "leadMinutes": "five"})");
    AtomicFile file(filePath());
    Preferences(file).set(preference::sound, u"None"_s);
    const QJsonObject stored = QJsonDocument::fromJson(contentOf(filePath())).object();
    QCOMPARE(stored, (QJsonObject{{u"fromANewerKelp"_s, json(R"([1, {"a": null}])")},
                                  {u"leadMinutes"_s, u"five"_s},
                                  {u"sound"_s, u"None"_s}}));
}

void tst_Preferences::removingBringsTheDefaultBack()
{
    AtomicFile file(filePath());
    Preferences preferences(file);
    preferences.set(preference::leadMinutes, 5);
    preferences.set(preference::calendarChoices, {{u"a|b"_s, false}});
    preferences.remove(preference::leadMinutes);
    preferences.remove(preference::calendarChoices);
    QCOMPARE(preferences.get(preference::leadMinutes), 1);
    QVERIFY(preferences.get(preference::calendarChoices).isEmpty());
    QCOMPARE(contentOf(filePath()), "{\n}\n");
}

void tst_Preferences::noDateRemovesTheKey()
{
    Preferences preferences;
    preferences.set(preference::pausedUntil, Instant{1767258000});
    QVERIFY(preferences.contains(preference::pausedUntil));
    preferences.set(preference::pausedUntil, std::nullopt);
    QVERIFY(!preferences.contains(preference::pausedUntil));
    QVERIFY(!preferences.get(preference::pausedUntil));
    QVERIFY(preferences.values().isEmpty());
}

void tst_Preferences::tellsStoredFromDefault()
{
    const Preferences preferences(
        {{u"sound"_s, u"Glass"_s}, {u"leadMinutes"_s, u"wrong type"_s}, {u"theme"_s, QJsonValue()}});
    QVERIFY(preferences.contains(preference::sound));
    QVERIFY(preferences.contains(preference::leadMinutes));
    QVERIFY(!preferences.contains(preference::theme));
    QVERIFY(!preferences.contains(preference::doubleSlash));
}

void tst_Preferences::tellsAStoredBooleanFromEverythingElse()
{
    const auto holdsFalse = [](const QJsonObject &stored) {
        return Preferences(stored).holds(preference::playSound, false);
    };
    QVERIFY(holdsFalse({{u"playSound"_s, false}}));
    QVERIFY(!holdsFalse({{u"playSound"_s, true}}));
    QVERIFY(!holdsFalse({{u"playSound"_s, 0}}));
    QVERIFY(!holdsFalse({{u"playSound"_s, u"false"_s}}));
    QVERIFY(!holdsFalse({}));
}

void tst_Preferences::aChangeIsOnDiskAtOnce()
{
    AtomicFile file(filePath());
    Preferences preferences(file);
    for (const int minutes : {2, 3, 4}) {
        preferences.set(preference::leadMinutes, minutes);
        AtomicFile again(filePath());
        QCOMPARE(Preferences(again).get(preference::leadMinutes), minutes);
    }
}

void tst_Preferences::theSameValueWritesNothing()
{
    FaultyFileOperations operations;
    int writes = 0;
    operations.writing = [&writes](int) { ++writes; };
    AtomicFile file(filePath(), operations);
    Preferences preferences(file);
    QSignalSpy changes(&preferences, &Preferences::changed);
    preferences.set(preference::leadMinutes, 5);
    preferences.set(preference::leadMinutes, 5);
    preferences.remove(preference::sound);
    preferences.update([] {});
    QCOMPARE(writes, 1);
    QCOMPARE(changes.size(), 1);
    // Choosing what is the default already is a choice all the same.
    preferences.set(preference::sound, u"Glass"_s);
    QCOMPARE(writes, 2);
    QVERIFY(preferences.contains(preference::sound));
}

void tst_Preferences::anUpdateWritesOnce()
{
    FaultyFileOperations operations;
    int writes = 0;
    operations.writing = [&writes](int) { ++writes; };
    AtomicFile file(filePath(), operations);
    Preferences preferences(file);
    preferences.update([&] {
        preferences.set(preference::leadMinutes, 5);
        preferences.set(preference::sound, u"None"_s);
        preferences.set(preference::pausedUntil, Instant{1767258000});
        QCOMPARE(writes, 0);
        QCOMPARE(preferences.get(preference::leadMinutes), 5);
    });
    QCOMPARE(writes, 1);
    AtomicFile again(filePath());
    QCOMPARE(Preferences(again).values(), preferences.values());
}

void tst_Preferences::nestedUpdatesWriteOnceAtTheEnd()
{
    FaultyFileOperations operations;
    int writes = 0;
    operations.writing = [&writes](int) { ++writes; };
    AtomicFile file(filePath(), operations);
    Preferences preferences(file);
    preferences.update([&] {
        preferences.update([&] { preferences.set(preference::leadMinutes, 5); });
        QCOMPARE(writes, 0);
        preferences.set(preference::leadMinutes, 6);
    });
    QCOMPARE(writes, 1);
    AtomicFile again(filePath());
    QCOMPARE(Preferences(again).get(preference::leadMinutes), 6);
}

void tst_Preferences::observersHearOfTheirKeyOnly()
{
    Preferences preferences;
    int theme = 0;
    int displays = 0;
    preferences.observe(preference::theme, this, [&theme] { ++theme; });
    preferences.observe(preference::displays, this, [&displays] { ++displays; });
    preferences.set(preference::theme, u"zen"_s);
    preferences.set(preference::theme, u"zen"_s);
    preferences.set(preference::sound, u"None"_s);
    QCOMPARE(theme, 1);
    QCOMPARE(displays, 0);
    preferences.update([&] { preferences.set(preference::displays, u"primary"_s); });
    QCOMPARE(displays, 1);
    QCOMPARE(theme, 1);
}

void tst_Preferences::observersHearOfRemovals()
{
    Preferences preferences({{u"pausedUntil"_s, json(R"({"date":"2026-01-01T09:00:00.000Z"})")}});
    int heard = 0;
    QObject context;
    preferences.observe(preference::pausedUntil, &context, [&heard] { ++heard; });
    preferences.set(preference::pausedUntil, std::nullopt);
    QCOMPARE(heard, 1);
    preferences.remove(preference::pausedUntil);
    QCOMPARE(heard, 1);
}

void tst_Preferences::observersReadTheNewValue()
{
    Preferences preferences;
    qint64 seen = 0;
    QObject context;
    preferences.observe(preference::leadMinutes, &context, [&] { seen = preferences.get(preference::leadMinutes); });
    preferences.set(preference::leadMinutes, 7);
    QCOMPARE(seen, 7);
}

void tst_Preferences::anObserverMayChangeAnotherKey()
{
    AtomicFile file(filePath());
    Preferences preferences(file);
    QObject context;
    preferences.observe(preference::theme, &context, [&] { preferences.set(preference::customImagePath, QString()); });
    preferences.set(preference::theme, u"zen"_s);
    AtomicFile again(filePath());
    QCOMPARE(Preferences(again).values(), (QJsonObject{{u"theme"_s, u"zen"_s}, {u"customImagePath"_s, QString()}}));
}

void tst_Preferences::aDestroyedObserverIsNotCalled()
{
    Preferences preferences;
    int heard = 0;
    auto context = std::make_unique<QObject>();
    preferences.observe(preference::theme, context.get(), [&heard] { ++heard; });
    context.reset();
    preferences.set(preference::theme, u"zen"_s);
    QCOMPARE(heard, 0);
}

void tst_Preferences::aDamagedFileIsPutAsideBeforeItIsReplaced_data()
{
    QTest::addColumn<QByteArray>("content");
    QTest::newRow("empty") << QByteArray();
    QTest::newRow("cut off") << QByteArray(R"({"leadMinutes": 5, "sou)");
    QTest::newRow("list") << QByteArray("[1]");
    QTest::newRow("no JSON") << QByteArray("leadMinutes=5\n");
    QTest::newRow("a comma too many") << QByteArray(R"({"leadMinutes": 5,})");
    QTest::newRow("bytes") << QByteArray("\0\1\2", 3);
}

void tst_Preferences::aDamagedFileIsPutAsideBeforeItIsReplaced()
{
    QFETCH(QByteArray, content);
    QVERIFY(QDir().mkpath(m_folder->filePath(u"Kelp"_s)));
    put(filePath(), content);
    AtomicFile file(filePath());
    Preferences preferences(file);
    QCOMPARE(preferences.get(preference::leadMinutes), 1);
    QVERIFY(preferences.values().isEmpty());
    // Reading alone touches nothing.
    QCOMPARE(contentOf(filePath()), content);
    QVERIFY(!QFile::exists(filePath() + u".damaged"_s));

    preferences.set(preference::leadMinutes, 3);
    QCOMPARE(contentOf(filePath() + u".damaged"_s), content);
    QCOMPARE(contentOf(filePath()), "{\n    \"leadMinutes\": 3\n}\n");
    // Only what was damaged is put aside, not what replaced it.
    preferences.set(preference::leadMinutes, 4);
    QCOMPARE(contentOf(filePath() + u".damaged"_s), content);
}

void tst_Preferences::aFolderInPlaceOfTheFileIsPutAside()
{
    QVERIFY(QDir().mkpath(filePath()));
    AtomicFile file(filePath());
    Preferences preferences(file);
    QCOMPARE(preferences.get(preference::leadMinutes), 1);
    preferences.set(preference::leadMinutes, 3);
    QVERIFY(QFileInfo(filePath() + u".damaged"_s).isDir());
    QCOMPARE(contentOf(filePath()), "{\n    \"leadMinutes\": 3\n}\n");
}

void tst_Preferences::aDamagedFileThatCannotBePutAsideStays()
{
    QVERIFY(QDir().mkpath(m_folder->filePath(u"Kelp"_s)));
    put(filePath(), "by hand, with a typing error");
    FaultyFileOperations operations;
    AtomicFile file(filePath(), operations);
    Preferences preferences(file);
    operations.failOn(Call::Rename, EACCES);
    preferences.set(preference::leadMinutes, 3);
    QVERIFY(operations.hasFailed());
    QCOMPARE(preferences.get(preference::leadMinutes), 3);
    QCOMPARE(contentOf(filePath()), "by hand, with a typing error");

    preferences.set(preference::sound, u"None"_s);
    QCOMPARE(contentOf(filePath() + u".damaged"_s), "by hand, with a typing error");
    QCOMPARE(contentOf(filePath()), "{\n    \"leadMinutes\": 3,\n    \"sound\": \"None\"\n}\n");
}

void tst_Preferences::aRefusingDiskKeepsTheOldFileAndTheNewValues()
{
    FaultyFileOperations operations;
    AtomicFile file(filePath(), operations);
    Preferences preferences(file);
    preferences.set(preference::leadMinutes, 2);
    const QByteArray before = contentOf(filePath());
    for (const Call call : {Call::Open, Call::Write, Call::Sync, Call::Close, Call::Rename}) {
        operations.failOn(call, ENOSPC);
        preferences.set(preference::leadMinutes, preferences.get(preference::leadMinutes) + 1);
        QVERIFY(operations.hasFailed());
        QCOMPARE(contentOf(filePath()), before);
    }
    QCOMPARE(preferences.get(preference::leadMinutes), 7);
    // The next change brings everything to the disk.
    preferences.set(preference::sound, u"None"_s);
    QCOMPARE(contentOf(filePath()), "{\n    \"leadMinutes\": 7,\n    \"sound\": \"None\"\n}\n");
}

void tst_Preferences::aFolderThatCannotBeWrittenIsNoObstacle()
{
    put(m_folder->filePath(u"Kelp"_s), "a file where the folder should be");
    AtomicFile file(filePath());
    Preferences preferences(file);
    QSignalSpy changes(&preferences, &Preferences::changed);
    preferences.set(preference::leadMinutes, 4);
    preferences.set(preference::sound, u"None"_s);
    QCOMPARE(changes.size(), 2);
    QCOMPARE(preferences.get(preference::leadMinutes), 4);
    QCOMPARE(preferences.get(preference::sound), u"None");
    QCOMPARE(contentOf(m_folder->filePath(u"Kelp"_s)), "a file where the folder should be");
}

void tst_Preferences::inMemoryNothingIsWritten()
{
    Preferences preferences({{u"leadMinutes"_s, 3}});
    QCOMPARE(preferences.get(preference::leadMinutes), 3);
    preferences.set(preference::leadMinutes, 4);
    QCOMPARE(preferences.get(preference::leadMinutes), 4);
    QVERIFY(QDir(m_folder->path()).isEmpty());
}

QTEST_GUILESS_MAIN(tst_Preferences)
#include "tst_Preferences.moc"
