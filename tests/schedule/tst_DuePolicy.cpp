#include "schedule/DuePolicy.h"

#include <QTest>

using namespace kelp;
using namespace Qt::StringLiterals;

namespace {

Meeting meeting(double start, double end)
{
    return {.id = u"m"_s, .start = {start}, .end = {end}};
}

} // namespace

class tst_DuePolicy : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void showsWhereNothingIsOnScreen();
    void keepsAMeetingThatStartsNoEarlier();
    void replacesAnEarlierOneAndMentionsItWhileItRuns();
};

void tst_DuePolicy::showsWhereNothingIsOnScreen()
{
    const DueDecision decision = decideDue(meeting(100, 200), {}, {50});
    QVERIFY(decision.show);
    QVERIFY(!decision.previous);
}

void tst_DuePolicy::keepsAMeetingThatStartsNoEarlier()
{
    QVERIFY(!decideDue(meeting(100, 200), meeting(100, 300), {50}).show);
    QVERIFY(!decideDue(meeting(100, 200), meeting(101, 300), {50}).show);
}

void tst_DuePolicy::replacesAnEarlierOneAndMentionsItWhileItRuns()
{
    const Meeting running = meeting(99, 151);
    const DueDecision decision = decideDue(meeting(100, 200), running, {150});
    QVERIFY(decision.show);
    QVERIFY(decision.previous == running);
    QVERIFY(decideDue(meeting(100, 200), running, {151}).show);
    QVERIFY(!decideDue(meeting(100, 200), running, {151}).previous);
}

QTEST_GUILESS_MAIN(tst_DuePolicy)
#include "tst_DuePolicy.moc"
