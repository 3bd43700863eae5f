#include "sandbox/Grants.h"

#include <QTest>

using namespace kelp;
using namespace kelp::sandbox;
using namespace Qt::StringLiterals;

class tst_Grants : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void aCodeIsGoodForTenMinutes_data();
    void aCodeIsGoodForTenMinutes();
    void aCodeIsGoodForOneUse();
    void anAccessTokenExpires();
    void revokingEndsTheTokensOfOneAccount();
};

namespace {

constexpr Instant start{1767258000};

} // namespace

void tst_Grants::aCodeIsGoodForTenMinutes_data()
{
    QTest::addColumn<double>("age");
    QTest::addColumn<bool>("isGood");
    QTest::newRow("at once") << 0.0 << true;
    QTest::newRow("just before") << 599.9 << true;
    QTest::newRow("after") << 600.0 << false;
}

void tst_Grants::aCodeIsGoodForTenMinutes()
{
    QFETCH(double, age);
    QFETCH(bool, isGood);
    Grants grants;
    const QString code = grants.issueCode({u"a@x"_s, u"http://127.0.0.1:1"_s, u"c"_s, u"s"_s, true}, start);
    const std::optional<CodeGrant> grant = grants.takeCode(code, start + age);
    QCOMPARE(grant.has_value(), isGood);
    if (isGood)
        QCOMPARE(grant->email, u"a@x");
}

void tst_Grants::aCodeIsGoodForOneUse()
{
    Grants grants;
    const QString code = grants.issueCode({u"a@x"_s, {}, {}, {}, true}, start);
    QVERIFY(grants.takeCode(code, start));
    QVERIFY(!grants.takeCode(code, start));
}

void tst_Grants::anAccessTokenExpires()
{
    Grants grants;
    const QString token = grants.issueAccessToken(u"a@x"_s, start);
    QCOMPARE(grants.accountOfAccessToken(token, start + 3598.9), u"a@x"_s);
    QCOMPARE(grants.accountOfAccessToken(token, start + 3599), std::nullopt);
    QCOMPARE(grants.accountOfAccessToken(u"other"_s, start), std::nullopt);
}

void tst_Grants::revokingEndsTheTokensOfOneAccount()
{
    Grants grants;
    const QString first = grants.issueRefreshToken(u"a@x"_s);
    const QString second = grants.issueRefreshToken(u"b@x"_s);
    const QString access = grants.issueAccessToken(u"a@x"_s, start);
    grants.revoke(u"a@x"_s);
    QCOMPARE(grants.accountOfRefreshToken(first), std::nullopt);
    QCOMPARE(grants.accountOfAccessToken(access, start), std::nullopt);
    QCOMPARE(grants.accountOfRefreshToken(second), u"b@x"_s);
}

QTEST_GUILESS_MAIN(tst_Grants)
#include "tst_Grants.moc"
