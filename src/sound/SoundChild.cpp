#include "sound/SoundChild.h"

#include "base/Clock.h"
#include "base/Logging.h"

#include <QCoreApplication>
#include <QProcess>
#include <QSet>

using namespace Qt::StringLiterals;

namespace kelp {

namespace {

constexpr qsizetype longestReport = 64;

std::optional<ChildStatus> statusOf(int code, QProcess::ExitStatus how)
{
    if (how != QProcess::NormalExit || code < 0 || code > static_cast<int>(ChildStatus::notCopied))
        return {};
    return static_cast<ChildStatus>(code);
}

/// Nobody waits for the end of it, neither now nor when Kelp ends: a process that is stuck in the kernel ends when that
/// lets it go. Deleting a QProcess would wait.
void killAndForget(QProcess *process)
{
    static auto &ending = *new QSet<QProcess *>; // not deleted at the end either
    ending.insert(process);
    QObject::connect(process, &QProcess::finished, process, [process] {
        ending.remove(process);
        process->deleteLater();
    });
    process->kill();
}

} // namespace

SoundChild::SoundChild(Clock &clock, const QString &program, QStringList arguments, const QString &input,
                       Patience patience, QObject *parent)
    : QObject(parent), m_clock(clock), m_patience(patience), m_process(new QProcess)
{
    // What fails at once is told later, like everything else.
    connect(
        m_process, &QProcess::errorOccurred, this,
        [this](QProcess::ProcessError error) {
            if (error == QProcess::FailedToStart)
                finish({});
        },
        Qt::QueuedConnection);
    connect(m_process, &QProcess::finished, this, [this](int code, QProcess::ExitStatus how) {
        read();
        finish(statusOf(code, how));
    });
    connect(m_process, &QProcess::readyReadStandardOutput, this, &SoundChild::read);
    arguments += {u"--parent"_s, QString::number(QCoreApplication::applicationPid())};
    m_process->setStandardInputFile(input.isEmpty() ? QProcess::nullDevice() : input);
    m_process->setStandardErrorFile(QProcess::nullDevice());
    m_process->start(program, arguments, QIODevice::ReadOnly);
    limit(m_patience.untilReport);
}

SoundChild::~SoundChild()
{
    m_process->disconnect(this);
    if (m_process->state() == QProcess::NotRunning)
        m_process->deleteLater();
    else
        killAndForget(m_process);
}

void SoundChild::read()
{
    m_output += m_process->readAllStandardOutput().left(longestReport - m_output.size());
    const bool isReport = m_output.startsWith(childReport);
    // It has nothing else to say, and whatever it says is not kept.
    if (isReport || m_output.size() >= longestReport)
        m_process->closeReadChannel(QProcess::StandardOutput);
    if (m_isReady || !isReport)
        return;
    m_isReady = true;
    limit(m_patience.afterReport);
    Q_EMIT ready();
}

void SoundChild::limit(double seconds)
{
    m_limit.reset();
    if (seconds <= 0)
        return;
    m_limit = std::make_unique<QObject>();
    m_clock.after(seconds, m_limit.get(), [this] {
        qCWarning(logSound) << "the process that plays sounds hangs";
        finish({});
    });
}

void SoundChild::finish(std::optional<ChildStatus> status)
{
    m_process->disconnect(this);
    m_process->kill();
    m_limit.reset();
    Q_EMIT ended(status);
}

} // namespace kelp
