#include "base/Uri.h"

#include <QTest>

using namespace kelp;
using namespace Qt::StringLiterals;

class tst_Uri : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void takesReferencesApart_data();
    void takesReferencesApart();
    void refusesWhatIsNoReference_data();
    void refusesWhatIsNoReference();
    void listsPathComponents_data();
    void listsPathComponents();
    void readsQueryItems();
    void encodesAllButTheUnreserved();
};

void tst_Uri::takesReferencesApart_data()
{
    QTest::addColumn<QString>("text");
    QTest::addColumn<QString>("scheme");
    QTest::addColumn<QString>("host");
    QTest::addColumn<QString>("path");
    QTest::addColumn<QString>("query");
    const QString none;
    QTest::newRow("all") << u"HTTPS://u:p@Ex.org:8/A/b?q=1?#f/?"_s << u"HTTPS"_s << u"Ex.org"_s << u"/A/b"_s
                         << u"q=1?"_s;
    QTest::newRow("only a path") << u"a/b:c"_s << none << none << u"a/b:c"_s << none;
    QTest::newRow("only a query") << u"?a"_s << none << none << u""_s << u"a"_s;
    QTest::newRow("empty query") << u"a?"_s << none << none << u"a"_s << u""_s;
    QTest::newRow("no host, but slashes") << u"file:///x"_s << u"file"_s << u""_s << u"/x"_s << none;
    QTest::newRow("no slashes") << u"tel:1"_s << u"tel"_s << none << u"1"_s << none;
    QTest::newRow("address of six") << u"http://[::1]:80"_s << u"http"_s << u"[::1]"_s << u""_s << none;
    QTest::newRow("empty port") << u"http://h:/x"_s << u"http"_s << u"h"_s << u"/x"_s << none;
    QTest::newRow("an at sign in the path") << u"http://h/@x"_s << u"http"_s << u"h"_s << u"/@x"_s << none;
    QTest::newRow("empty") << u""_s << none << none << u""_s << none;
}

void tst_Uri::takesReferencesApart()
{
    QFETCH(QString, text);
    QFETCH(QString, scheme);
    QFETCH(QString, host);
    QFETCH(QString, path);
    QFETCH(QString, query);
    const std::optional<Uri> uri = Uri::parse(text);
    QVERIFY(uri);
    QCOMPARE(uri->scheme.value_or(QString()), scheme);
    QCOMPARE(uri->host.has_value(), !host.isNull());
    QCOMPARE(uri->host.value_or(QString()), host);
    QCOMPARE(uri->path, path);
    QCOMPARE(uri->query.has_value(), !query.isNull());
    QCOMPARE(uri->query.value_or(QString()), query);
}

void tst_Uri::refusesWhatIsNoReference_data()
{
    QTest::addColumn<QString>("text");
    for (const char *text : {"a b", "a\tb", "http://h/\"", "http://h/<", "http://h/%", "http://h/%4", "http://h/%4g",
                             "http://h/^", "http://h/`", "http://h/|", "http://h/[", "http://h:x/", "http://[::1",
                             "http://a@b@c/", "1a:b", ":a", "a#b#c", "http://h/é", "http://h\\x"})
        QTest::newRow(text) << QString::fromUtf8(text);
}

void tst_Uri::refusesWhatIsNoReference()
{
    QFETCH(QString, text);
    QVERIFY(!Uri::parse(text));
}

void tst_Uri::listsPathComponents_data()
{
    QTest::addColumn<QString>("text");
    QTest::addColumn<QStringList>("components");
    QTest::newRow("absolute") << u"http://h/a/b"_s << QStringList{u"/"_s, u"a"_s, u"b"_s};
    QTest::newRow("slashes") << u"http://h//a///b/"_s << QStringList{u"/"_s, u"a"_s, u"b"_s};
    QTest::newRow("escapes") << u"/%41%20"_s << QStringList{u"/"_s, u"A "_s};
    QTest::newRow("relative") << u"a/b"_s << QStringList{u"a"_s, u"b"_s};
    QTest::newRow("none") << u"http://h"_s << QStringList{};
}

void tst_Uri::listsPathComponents()
{
    QFETCH(QString, text);
    QFETCH(QStringList, components);
    QCOMPARE(Uri::parse(text)->pathComponents(), components);
}

void tst_Uri::readsQueryItems()
{
    const Uri uri = *Uri::parse(u"?a=1&b&c=&a=2&=x&d=%C3%A9+&e=%ff&f=1=2"_s);
    QCOMPARE(uri.queryItems().size(), 8);
    QCOMPARE(uri.queryValue(u"a"), u"1"_s);
    QVERIFY(!uri.queryValue(u"b"));
    QCOMPARE(uri.queryValue(u"c"), u""_s);
    QCOMPARE(uri.queryValue(u""), u"x"_s);
    QCOMPARE(uri.queryValue(u"d"), u"é+"_s);
    QVERIFY(!uri.queryValue(u"e"));
    QCOMPARE(uri.queryValue(u"f"), u"1=2"_s);
    QVERIFY(!uri.queryValue(u"g"));
    QVERIFY(Uri::parse(u"x"_s)->queryItems().isEmpty());
}

void tst_Uri::encodesAllButTheUnreserved()
{
    QCOMPARE(percentEncoded(u"aZ09-._~ /@é+&="_s), "aZ09-._~%20%2F%40%C3%A9%2B%26%3D");
    QCOMPARE(percentEncoded(u"a@b#"_s, "@"), "a@b%23");
}

QTEST_GUILESS_MAIN(tst_Uri)
#include "tst_Uri.moc"
