#include "sound/OverlaySounds.h"
#include "support/FakeClock.h"
#include "support/RecordedSounds.h"

#include <QDir>
#include <QFile>
#include <QJsonObject>
#include <QTest>

using namespace kelp;
using namespace kelp::test;
using namespace Qt::StringLiterals;

/// What happens when the overlay and the window of its options use the sounds at the same time, or the user picks a
/// file while another is still being copied.
class tst_OverlaySoundsShared : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init();

    void stopsTheTurnThatIsStillHeard();
    void leavesALaterTurnAlone();
    void theFileThatWasPickedLastStays_data();
    void theFileThatWasPickedLastStays();

private:
    [[nodiscard]] QUrl makeFile(const QString &name) const;
    [[nodiscard]] OverlaySounds &sounds() { return m_recorded->sounds(); }
    [[nodiscard]] FakeSoundPlayer &player() { return m_recorded->player; }

    FakeClock m_clock;
    std::unique_ptr<Preferences> m_preferences;
    std::unique_ptr<RecordedSounds> m_recorded;
};

void tst_OverlaySoundsShared::init()
{
    m_recorded.reset();
    m_preferences = std::make_unique<Preferences>(QJsonObject{});
    m_recorded = std::make_unique<RecordedSounds>(*m_preferences, m_clock);
}

QUrl tst_OverlaySoundsShared::makeFile(const QString &name) const
{
    const QString path = m_recorded->folder.filePath(name);
    QFile file(path);
    if (!file.open(QIODevice::WriteOnly) || file.write(name.toUtf8()) < 0)
        qFatal("the file cannot be written");
    return QUrl::fromLocalFile(path);
}

void tst_OverlaySoundsShared::stopsTheTurnThatIsStillHeard()
{
    const quint64 turn = sounds().play(u"Chime"_s);
    QVERIFY(player().isPlaying);
    sounds().stopTurn(turn);
    QVERIFY(!player().isPlaying);
}

void tst_OverlaySoundsShared::leavesALaterTurnAlone()
{
    const quint64 turn = sounds().play(u"Chime"_s);
    sounds().playForOverlay();
    sounds().stopTurn(turn);
    QVERIFY(player().isPlaying);
}

void tst_OverlaySoundsShared::theFileThatWasPickedLastStays_data()
{
    QTest::addColumn<bool>("lastSucceeds");
    QTest::newRow("a good one") << true;
    QTest::newRow("one that cannot be used") << false;
}

void tst_OverlaySoundsShared::theFileThatWasPickedLastStays()
{
    QFETCH(bool, lastSucceeds);
    QObject context;
    QStringList told;
    const auto pick = [&](const QString &name) {
        sounds().setCustom(makeFile(name), &context,
                           [&told, name](const Result<void, SoundError> &) { told.append(name); });
    };
    pick(u"long.ogg"_s);
    if (!lastSucceeds)
        player().importOutcome = Failure(SoundError{SoundError::Kind::corruptFile});
    pick(u"short.ogg"_s);
    player().finishImport(); // the first of the two
    QCOMPARE(m_preferences->get(preference::customSoundName), QString());
    player().finishImport();
    QCOMPARE(told, QStringList{u"short.ogg"_s});
    QCOMPARE(m_preferences->get(preference::customSoundName), lastSucceeds ? u"short"_s : QString());
    const QDir folder(m_recorded->folder.filePath(u"Kelp"_s));
    QCOMPARE(folder.entryList(QDir::Files | QDir::Hidden).size(), lastSucceeds ? 1 : 0); // no copy is left behind
}

QTEST_GUILESS_MAIN(tst_OverlaySoundsShared)
#include "tst_OverlaySoundsShared.moc"
