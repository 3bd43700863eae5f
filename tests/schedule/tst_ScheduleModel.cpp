#include "ScheduleScenario.h"

#include "schedule/NaiveSchedule.h"
#include "schedule/ScenarioGenerator.h"
#include "schedule/ScenarioShrinker.h"

#include <QHash>
#include <QJsonDocument>
#include <QSet>
#include <QTest>

using namespace kelp;
using namespace Qt::StringLiterals;

namespace {

QList<QByteArray> realLines(const QJsonObject &scenario)
{
    const Result<QList<QByteArray>, QString> lines = probe::runScheduleScenario(scenario);
    return lines ? *lines : QList<QByteArray>{"rejected: " + lines.error().toUtf8()};
}

bool differs(const QJsonObject &scenario)
{
    return realLines(scenario) != test::runNaiveSchedule(scenario);
}

QByteArray json(const QJsonObject &object)
{
    return QJsonDocument(object).toJson(QJsonDocument::Compact);
}

/// The first line that differs, and what it takes to see it again.
QByteArray describeDifference(quint64 seed, const QJsonObject &scenario)
{
    const QJsonObject small = test::shrunkScenario(scenario, differs);
    const QList<QByteArray> real = realLines(small);
    const QList<QByteArray> naive = test::runNaiveSchedule(small);
    qsizetype i = 0;
    while (i < real.size() && i < naive.size() && real[i] == naive[i])
        ++i;
    return "seed " + QByteArray::number(seed) + "\nscenario " + json(scenario) + "\nshrunk   " + json(small) +
           "\nline     " + QByteArray::number(i) + "\nreal     " + real.value(i, "(end)") + "\nnaive    " +
           naive.value(i, "(end)");
}

/// What happened in all scenarios together, to see that they were not empty.
struct Statistics
{
    QHash<QString, int> events;
    int withPrevious = 0;
    int shownAgain = 0; ///< after a snooze, a move, or because it was forgotten

    void add(const QList<QByteArray> &lines)
    {
        QSet<QString> seen;
        for (const QByteArray &line : lines) {
            const QJsonObject object = QJsonDocument::fromJson(line).object();
            const QString event = object[u"event"_s].toString();
            ++events[event];
            withPrevious += object[u"previous"_s].isString();
            shownAgain += event == u"shown"_s && seen.contains(object[u"id"_s].toString());
            if (event == u"shown"_s)
                seen.insert(object[u"id"_s].toString());
        }
    }
};

} // namespace

class tst_ScheduleModel : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void agreesWithTheNaiveModelInTenThousandRandomScenarios();
};

void tst_ScheduleModel::agreesWithTheNaiveModelInTenThousandRandomScenarios()
{
    // Other seeds, and more of them, for a longer search by hand.
    const quint64 first = qEnvironmentVariable("KELP_SCHEDULE_SEED", u"1"_s).toULongLong();
    const quint64 count = qEnvironmentVariable("KELP_SCHEDULE_COUNT", u"10000"_s).toULongLong();
    Statistics statistics;
    for (quint64 seed = first; seed < first + count; ++seed) {
        const QJsonObject scenario = test::randomScenario(seed);
        const QList<QByteArray> lines = realLines(scenario);
        if (lines != test::runNaiveSchedule(scenario))
            QFAIL(describeDifference(seed, scenario).constData());
        statistics.add(lines);
    }
    qInfo() << statistics.events << "with previous" << statistics.withPrevious << "shown again"
            << statistics.shownAgain;
    for (const QString &event : {u"shown"_s, u"refused"_s, u"swallowed"_s, u"hidden"_s})
        QVERIFY2(statistics.events[event] > 2000, qPrintable(event));
    QVERIFY(statistics.withPrevious > 1000);
    QVERIFY(statistics.shownAgain > 1000);
}

QTEST_GUILESS_MAIN(tst_ScheduleModel)
#include "tst_ScheduleModel.moc"
