#include "support/ChildProcess.h"

#include <QFile>

#include <grp.h>
#include <sys/prctl.h>
#include <unistd.h>

#include <csignal>

namespace kelp::test {

namespace {

constexpr uid_t nobody = 65534; // in every distribution

} // namespace

void endWithTest(QProcess &process, Rights rights)
{
    const bool drops = rights == Rights::NotRoots && ::geteuid() == 0;
    process.setChildProcessModifier([drops] {
        if (drops && (::setgroups(0, nullptr) != 0 || ::setgid(nobody) != 0 || ::setuid(nobody) != 0))
            ::_exit(126);
        // After that, because who changes the user loses it.
        ::prctl(PR_SET_PDEATHSIG, SIGKILL);
    });
}

bool giveAway(const QString &path)
{
    return ::geteuid() != 0 || ::chown(QFile::encodeName(path).constData(), nobody, nobody) == 0;
}

void end(QProcess &process)
{
    if (process.state() == QProcess::NotRunning)
        return;
    process.terminate();
    if (!process.waitForFinished(5000)) {
        process.kill();
        process.waitForFinished();
    }
}

QByteArray nextLine(QProcess &process)
{
    while (!process.canReadLine() && process.waitForReadyRead(20'000)) {
    }
    return process.readLine().trimmed();
}

} // namespace kelp::test
