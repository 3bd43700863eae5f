#include "desktop/OneAccount.h"
#include "support/ChildProcess.h"
#include "support/WaylandDesktop.h"

#include <QFile>
#include <QJsonDocument>
#include <QTest>

using namespace kelp::test;
using namespace Qt::StringLiterals;

namespace {

QByteArray content(const QString &path)
{
    QFile file(path);
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
}

} // namespace

/// A Wayland compositor that crashes takes its clients with it. What Kelp has kept outlives that.
class tst_CompositorLost : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void endsQuietlyAndRemembersWhatWasShown();
};

void tst_CompositorLost::endsQuietlyAndRemembersWhatWasShown()
{
    WaylandDesktop desktop;
    QVERIFY2(desktop.start(), qPrintable(desktop.problem()));
    Sandbox sandbox;
    const QJsonArray events{oneAccount::meeting(u"review"_s, u"Design review"_s, 20)};
    QVERIFY2(sandbox.start(oneAccount::seed(events)), qPrintable(sandbox.error()));
    QJsonObject preferences = oneAccount::preferences();
    preferences.insert(u"sound"_s, u"None"_s);
    const QByteArray accounts = R"([{"email":"robin@example.com","refreshToken":"1//robin"}])";
    QVERIFY(desktop.write(u"home/.config/Kelp/preferences.json"_s, QJsonDocument(preferences).toJson()));
    QVERIFY(desktop.write(u"home/.local/share/Kelp/accounts.json"_s, accounts));

    const QRect middle(320, 180, 640, 360);
    const QImage empty = desktop.picture(middle);
    QProcessEnvironment environment = desktop.environment();
    const QHash<QString, QString> variables = sandbox.environment();
    for (auto each = variables.begin(); each != variables.end(); ++each)
        environment.insert(each.key(), each.value());
    QProcess kelp;
    endWithTest(kelp);
    kelp.setProcessEnvironment(environment);
    kelp.setProcessChannelMode(QProcess::MergedChannels);
    kelp.start(qEnvironmentVariable("KELP_BINARY_DIR") + u"/kelp"_s, {});
    QVERIFY(kelp.waitForStarted());
    QTRY_VERIFY_WITH_TIMEOUT(desktop.picture(middle) != empty, 20'000); // the overlay is up
    desktop.crash();
    QVERIFY(kelp.waitForFinished());
    QVERIFY2(kelp.exitStatus() == QProcess::NormalExit, kelp.readAll().constData());
    QCOMPARE(content(desktop.folder(u"home/.local/share/Kelp/accounts.json"_s)), accounts);
    const QJsonObject kept =
        QJsonDocument::fromJson(content(desktop.folder(u"home/.config/Kelp/preferences.json"_s))).object();
    QCOMPARE(kept.value(u"clientID"_s), preferences.value(u"clientID"_s));
    QCOMPARE(kept.value(u"shownMeetings"_s).toObject().size(), 1);
}

QTEST_GUILESS_MAIN(tst_CompositorLost)

#include "tst_CompositorLost.moc"
