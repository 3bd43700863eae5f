#include "schedule/NaiveSchedule.h"
#include "schedule/ScenarioGenerator.h"
#include "schedule/ScenarioShrinker.h"

#include <QJsonArray>
#include <QJsonDocument>
#include <QSet>
#include <QTest>

using namespace kelp::test;
using namespace Qt::StringLiterals;

namespace {

/// A meeting of the only calendar.
QByteArray meeting(const char *id, int start, int end)
{
    return QByteArray("{'id':'") + id + "','title':'M','start':" + QByteArray::number(start) +
           ",'end':" + QByteArray::number(end) + ",'joinURL':null,'calendarID':'a@x|c'}";
}

QJsonObject scenario(const QByteArray &preferences, const QByteArray &meetings, const QByteArray &actions,
                     int to = 100000)
{
    QByteArray text = "{'from':10000,'to':" + QByteArray::number(to) +
                      ",'step':5,'calendars':[{'googleID':'c','accountEmail':'a@x','name':'C','isPrimary':true,"
                      "'googleSelected':true}],'preferences':{" +
                      preferences + "},'meetings':[" + meetings + "],'actions':[" + actions + "]}";
    return QJsonDocument::fromJson(text.replace('\'', '"')).object();
}

} // namespace

/// The expected lines were worked out by hand.
class tst_NaiveSchedule : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void givesTheLinesWorkedOutByHand_data();
    void givesTheLinesWorkedOutByHand();
    void randomScenariosRepeatWithTheirSeed();
    void randomScenariosHoldEveryKindOfAction();
    void shrinkingKeepsOnlyWhatMatters();
};

void tst_NaiveSchedule::givesTheLinesWorkedOutByHand_data()
{
    QTest::addColumn<QJsonObject>("input");
    QTest::addColumn<QList<QByteArray>>("lines");

    QTest::newRow("one minute before the start")
        << scenario("", meeting("m", 10200, 12000), "")
        << QList<QByteArray>{R"({"at":10140,"event":"shown","id":"m","previous":null})"};
    QTest::newRow("six minutes late: never") << scenario("", meeting("m", 9640, 12000), "") << QList<QByteArray>{};
    QTest::newRow("four minutes late: at once")
        << scenario("", meeting("m", 9760, 12000), "")
        << QList<QByteArray>{R"({"at":10000,"event":"shown","id":"m","previous":null})"};
    QTest::newRow("the cut-off itself counts")
        << scenario("", meeting("m", 9700, 12000), "")
        << QList<QByteArray>{R"({"at":10000,"event":"shown","id":"m","previous":null})"};
    QTest::newRow("without lead within five seconds after the start")
        << scenario("'leadMinutes':0", meeting("m", 10201, 12000), "")
        << QList<QByteArray>{R"({"at":10205,"event":"shown","id":"m","previous":null})"};
    QTest::newRow("a snooze reaches past the cut-off")
        << scenario("'snoozeMinutes':5", meeting("m", 10200, 12000), "{'at':10440,'do':'snooze'}")
        << QList<QByteArray>{R"({"at":10140,"event":"shown","id":"m","previous":null})",
                             R"({"at":10440,"event":"hidden","id":"m"})",
                             R"({"at":10740,"event":"shown","id":"m","previous":null})"};
    QTest::newRow("a snooze past the end stays away")
        << scenario("'snoozeMinutes':5", meeting("m", 10200, 10740), "{'at':10440,'do':'snooze'}")
        << QList<QByteArray>{R"({"at":10140,"event":"shown","id":"m","previous":null})",
                             R"({"at":10440,"event":"hidden","id":"m"})"};
    QTest::newRow("the same start is refused until the first is gone")
        << scenario("", meeting("m", 10200, 12000) + "," + meeting("n", 10200, 12000), "{'at':10151,'do':'dismiss'}")
        << QList<QByteArray>{R"({"at":10140,"event":"shown","id":"m","previous":null})",
                             R"({"at":10145,"event":"refused","id":"n"})", R"({"at":10150,"event":"refused","id":"n"})",
                             R"({"at":10155,"event":"hidden","id":"m"})",
                             R"({"at":10155,"event":"shown","id":"n","previous":null})"};
    QTest::newRow("a later start replaces one that still runs")
        << scenario("", meeting("m", 10200, 10301) + "," + meeting("n", 10360, 12000), "")
        << QList<QByteArray>{R"({"at":10140,"event":"shown","id":"m","previous":null})",
                             R"({"at":10300,"event":"shown","id":"n","previous":"m"})"};
    QTest::newRow("one that has ended is no previous one")
        << scenario("", meeting("m", 10200, 10300) + "," + meeting("n", 10360, 12000), "")
        << QList<QByteArray>{R"({"at":10140,"event":"shown","id":"m","previous":null})",
                             R"({"at":10300,"event":"shown","id":"n","previous":null})"};
    QTest::newRow("a pause swallows all that comes due")
        << scenario("",
                    meeting("m", 10200, 12000) + "," + meeting("n", 10200, 12000) + "," + meeting("o", 10260, 12000),
                    "{'at':10000,'do':'pause','until':10200}")
        << QList<QByteArray>{R"({"at":10140,"event":"swallowed","id":"m"})",
                             R"({"at":10140,"event":"swallowed","id":"n"})",
                             R"({"at":10200,"event":"shown","id":"o","previous":null})"};
    QTest::newRow("joining needs a link")
        << scenario(
               "", meeting("m", 10200, 12000).replace("null", "'https://a.example'") + "," + meeting("n", 10400, 12000),
               "{'at':10200,'do':'join'},{'at':10400,'do':'join'}")
        << QList<QByteArray>{R"({"at":10140,"event":"shown","id":"m","previous":null})",
                             R"({"at":10200,"event":"hidden","id":"m"})",
                             R"({"at":10340,"event":"shown","id":"n","previous":null})"};
    QTest::newRow("a restart closes the overlay and keeps what was shown")
        << scenario("", meeting("m", 10200, 12000), "{'at':10200,'do':'restart'},{'at':10210,'do':'dismiss'}")
        << QList<QByteArray>{R"({"at":10140,"event":"shown","id":"m","previous":null})"};
    QTest::newRow("a moved meeting shows again")
        << scenario("", meeting("m", 10200, 12000),
                    "{'at':10200,'do':'meetings','meetings':[" + meeting("m", 10500, 12000) + "]}")
        << QList<QByteArray>{R"({"at":10140,"event":"shown","id":"m","previous":null})",
                             R"({"at":10440,"event":"shown","id":"m","previous":"m"})"};
    QTest::newRow("a jump past the cut-off loses the meeting")
        << scenario("", meeting("m", 10200, 20000), "{'at':10100,'do':'jump','to':10501}") << QList<QByteArray>{};
    QTest::newRow("a jump to the cut-off does not")
        << scenario("", meeting("m", 10200, 20000), "{'at':10100,'do':'jump','to':10500}")
        << QList<QByteArray>{R"({"at":10500,"event":"shown","id":"m","previous":null})"};
    QTest::newRow("forgotten a day after the end, and not before")
        << scenario("'shownMeetings':{'m@10200':{'date':'1969-12-31T02:46:40.000Z'},"
                    "'n@10300':{'date':'1969-12-31T02:46:40.001Z'}}",
                    meeting("m", 10200, 12000) + "," + meeting("n", 10300, 12000), "")
        << QList<QByteArray>{R"({"at":10140,"event":"shown","id":"m","previous":null})"};
    QTest::newRow("a choice for the calendar overrules one for its identifier")
        << scenario("'calendarChoices':{'a@x|c':true,'c':false}", meeting("m", 10200, 12000), "")
        << QList<QByteArray>{R"({"at":10140,"event":"shown","id":"m","previous":null})"};
    QTest::newRow("a choice for the identifier overrules the default")
        << scenario("'calendarChoices':{'c':false}", meeting("m", 10200, 12000), "") << QList<QByteArray>{};
    QTest::newRow("only with a link") << scenario("'onlyWithVideo':true", meeting("m", 10200, 12000), "")
                                      << QList<QByteArray>{};
    QTest::newRow("the run ends with the last tick not after its end")
        << scenario("", meeting("m", 10200, 12000), "", 10139) << QList<QByteArray>{};
}

void tst_NaiveSchedule::givesTheLinesWorkedOutByHand()
{
    QFETCH(QJsonObject, input);
    QFETCH(QList<QByteArray>, lines);
    QVERIFY(!input.isEmpty());
    QCOMPARE(runNaiveSchedule(input), lines);
}

void tst_NaiveSchedule::randomScenariosRepeatWithTheirSeed()
{
    QCOMPARE(randomScenario(7), randomScenario(7));
    QVERIFY(randomScenario(7) != randomScenario(8));
}

void tst_NaiveSchedule::randomScenariosHoldEveryKindOfAction()
{
    QSet<QString> kinds;
    int meetings = 0;
    for (quint64 seed = 1; seed <= 200; ++seed) {
        const QJsonObject scenario = randomScenario(seed);
        meetings += static_cast<int>(scenario[u"meetings"_s].toArray().size());
        for (const QJsonValue &action : scenario[u"actions"_s].toArray())
            kinds.insert(action[u"do"_s].toString());
    }
    QCOMPARE(kinds, (QSet<QString>{u"join"_s, u"snooze"_s, u"dismiss"_s, u"pause"_s, u"resume"_s, u"restart"_s,
                                   u"jump"_s, u"meetings"_s}));
    QVERIFY(meetings > 500);
}

void tst_NaiveSchedule::shrinkingKeepsOnlyWhatMatters()
{
    const QJsonObject large =
        scenario("'leadMinutes':1,'snoozeMinutes':5", meeting("m", 10200, 12000) + "," + meeting("n", 10400, 12000),
                 "{'at':10180,'do':'snooze'},{'at':10190,'do':'resume'}");
    const QJsonObject small = shrunkScenario(large, [](const QJsonObject &each) {
        return runNaiveSchedule(each).join().contains("\"hidden\",\"id\":\"m\"");
    });
    QCOMPARE(small[u"actions"_s].toArray().size(), 1);
    QCOMPARE(small[u"meetings"_s].toArray().size(), 1);
    QVERIFY(small[u"preferences"_s].toObject().isEmpty());
    QVERIFY(small[u"to"_s].toDouble() < 11000);
}

QTEST_GUILESS_MAIN(tst_NaiveSchedule)
#include "tst_NaiveSchedule.moc"
