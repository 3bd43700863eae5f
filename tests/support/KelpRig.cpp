#include "support/KelpRig.h"

#include <QTest>

using namespace Qt::StringLiterals;

namespace kelp::test {

namespace {

constexpr int patience = 20'000; // ms: the machine may be busy

bool failed(const QString &why)
{
    qWarning().noquote() << why;
    return false;
}

} // namespace

bool KelpRig::startDesktop()
{
    if (!desktop.start())
        return failed(desktop.problem());
    reader = std::make_unique<ScreenReader>(desktop.sessionBus());
    person = std::make_unique<Person>(desktop, *reader);
    return reader->isReady() || failed(u"there is no bus of accessibility"_s);
}

bool KelpRig::startSandbox(const QJsonObject &seed)
{
    sandbox = std::make_unique<Sandbox>();
    return sandbox->start(seed) || failed(sandbox->error());
}

bool KelpRig::startKelp()
{
    kelp = std::make_unique<KelpProcess>(desktop);
    kelp->use(*sandbox);
    kelp->set(u"QT_LINUX_ACCESSIBILITY_ALWAYS_ON"_s, u"1"_s);
    return kelp->start();
}

bool KelpRig::openPanel()
{
    KelpProcess again(desktop);
    if (!again.start() || again.exitStatus() != 0)
        return failed(u"a second start does not end as it should"_s);
    return QTest::qWaitFor([&] { return kelp->panelIsActive(); }, patience) || failed(u"the panel does not open"_s);
}

void KelpRig::endKelp()
{
    if (QTest::currentTestFailed() && kelp) {
        qInfo().noquote() << kelp->output() << reader->texts() << reader->focused() << desktop.preferences()
                          << desktop.opened();
    }
    kelp.reset();
    sandbox.reset();
}

} // namespace kelp::test
