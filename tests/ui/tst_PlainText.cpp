#include "ui/PlainText.h"

#include <QTest>

using namespace kelp;
using namespace Qt::StringLiterals;

class tst_PlainText : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void flattens_data();
    void flattens();
    void cutsEndlessTextsBetweenCharacters();
    void isolatesOnce();
};

void tst_PlainText::flattens_data()
{
    QTest::addColumn<QString>("text");
    QTest::addColumn<QString>("flat");
    QTest::newRow("plain") << u"Weekly <b>review</b> & more"_s << u"Weekly <b>review</b> & more"_s;
    QTest::newRow("line ends") << u"a\r\nb\nc\td"_s << u"a b c d"_s;
    QTest::newRow("separators") << u"a\u2028b\u2029c"_s << u"a b c"_s;
    QTest::newRow("controls") << u"a\u0007b\u0085c"_s << u"a b c"_s;
    QTest::newRow("null") << QString(u"a\0b"_s) << u"a b"_s;
    QTest::newRow("spaces stay") << u"a  ·  b"_s << u"a  ·  b"_s;
    QTest::newRow("overrides") << u"gpj\u202Eexe\u202C.a\u202A\u202B\u202D"_s << u"gpjexe.a"_s;
    QTest::newRow("ends") << u" \n a \n "_s << u"a"_s;
    QTest::newRow("empty") << QString() << QString();
}

void tst_PlainText::flattens()
{
    QFETCH(QString, text);
    QFETCH(QString, flat);
    QCOMPARE(flattened(text), flat);
}

void tst_PlainText::cutsEndlessTextsBetweenCharacters()
{
    QCOMPARE(flattened(QString(5'000'000, u'x')).size(), 1000);
    const QString pairs = flattened(u"x"_s + u"🎉"_s.repeated(5000));
    QVERIFY(pairs.size() <= 1001);
    QVERIFY(pairs.back().isLowSurrogate());
}

void tst_PlainText::isolatesOnce()
{
    QCOMPARE(isolated(u"عمل"_s), u"\u2068عمل\u2069"_s);
    QCOMPARE(isolated(u"a\u2069b\u2067"_s), u"\u2068ab\u2069"_s); // no way out of the isolation
    QCOMPARE(withoutIsolates(isolated(u"عمل"_s)), u"عمل"_s);
}

QTEST_GUILESS_MAIN(tst_PlainText)
#include "tst_PlainText.moc"
