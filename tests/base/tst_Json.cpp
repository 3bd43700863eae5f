#include "base/Json.h"

#include <QTest>

using namespace kelp;
using namespace Qt::StringLiterals;

class tst_Json : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void readsAnyKindOfValue();
    void refusesWhatIsNotOneValue_data();
    void refusesWhatIsNotOneValue();
};

void tst_Json::readsAnyKindOfValue()
{
    QVERIFY(parseJson("{}")->isObject());
    QVERIFY(parseJson(" [1] ")->isArray());
    QCOMPARE(parseJson("\"x\"")->toString(), u"x"_s);
    QCOMPARE(parseJson("-1.5e1")->toDouble(), -15);
    QVERIFY(parseJson("true")->toBool());
    QVERIFY(parseJson("null")->isNull());
}

void tst_Json::refusesWhatIsNotOneValue_data()
{
    QTest::addColumn<QByteArray>("text");
    for (const char *text :
         {"", " ", "1,2", "1],[2", "]", "[", "{", "{} {}", "<html>", "nul", "\"\xff\"", "{\"a\":}", "'a'", "// x"})
        QTest::newRow(*text ? text : "(empty)") << QByteArray(text);
    QTest::newRow("deep") << QByteArray(100'000, '[');
}

void tst_Json::refusesWhatIsNotOneValue()
{
    QFETCH(QByteArray, text);
    QVERIFY(!parseJson(text));
    QVERIFY(!parseJson(text).error().description().isEmpty());
}

QTEST_GUILESS_MAIN(tst_Json)
#include "tst_Json.moc"
