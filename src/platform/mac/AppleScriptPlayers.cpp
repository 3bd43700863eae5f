#include "platform/mac/AppleScriptPlayers.h"

#include "platform/mac/ApplicationRegistry.h"
#include "platform/mac/BundleIdentifiers.h"

#include <QProcess>

using namespace Qt::StringLiterals;

namespace kelp {

namespace {

QString pauseScript(const QString &bundle)
{
    return u"tell application id \""_s + bundle + u"\" to pause"_s;
}

QString playScript(const QString &uri)
{
    return u"if application id \""_s + bundle::spotify + u"\" is not running then\n    tell application id \""_s +
           bundle::spotify + u"\" to launch\n    delay 2\nend if\ntell application id \""_s + bundle::spotify +
           u"\" to play track \""_s + uri + u'"';
}

} // namespace

const QString AppleScriptPlayers::systemRunner = u"/usr/bin/osascript"_s;

AppleScriptPlayers::AppleScriptPlayers(std::unique_ptr<ApplicationRegistry> applications, const QString &runner)
    : m_applications(std::move(applications)), m_runner(runner)
{
}

AppleScriptPlayers::~AppleScriptPlayers() = default;

void AppleScriptPlayers::pauseSpotify()
{
    pauseIfRunning(bundle::spotify);
}

void AppleScriptPlayers::pauseOthers()
{
    pauseIfRunning(bundle::appleMusic);
}

bool AppleScriptPlayers::spotifyInstalled() const
{
    return m_applications->isInstalled(bundle::spotify);
}

void AppleScriptPlayers::play(const QString &uri)
{
    run(playScript(uri));
}

/// A script that speaks to an application starts it where it does not run.
void AppleScriptPlayers::pauseIfRunning(const QString &bundle)
{
    m_applications->ifRunning(bundle, &m_context, [this, bundle] { run(pauseScript(bundle)); });
}

void AppleScriptPlayers::run(const QString &script)
{
    QProcess process;
    process.setProgram(m_runner);
    process.setArguments({u"-e"_s, script});
    process.setStandardInputFile(QProcess::nullDevice());
    process.setStandardOutputFile(QProcess::nullDevice());
    process.setStandardErrorFile(QProcess::nullDevice());
    process.startDetached();
}

} // namespace kelp
