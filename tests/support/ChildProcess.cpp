#include "support/ChildProcess.h"

#include <sys/prctl.h>

#include <csignal>

namespace kelp::test {

void endWithTest(QProcess &process)
{
    process.setChildProcessModifier([] { ::prctl(PR_SET_PDEATHSIG, SIGKILL); });
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
