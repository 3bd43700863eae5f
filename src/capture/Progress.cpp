#include "capture/Progress.h"

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <unistd.h>

using namespace Qt::StringLiterals;

namespace kelp {

namespace {

constexpr double interval = 0.1; // seconds
constexpr auto eraseLine = "\r\033[K";

} // namespace

Progress::Progress(qint64 frames, Instant now)
    : m_isTerminal(::isatty(STDERR_FILENO) != 0), m_frames(frames), m_start(now)
{
}

void Progress::step(const QString &clip, qint64 index, qint64 count, Instant now)
{
    ++m_done;
    if (!m_isTerminal || (now - m_printed < interval && index + 1 < count))
        return;
    m_printed = now;
    const double perFrame = (now - m_start) / static_cast<double>(m_done);
    const double left = perFrame * static_cast<double>(std::max<qint64>(0, m_frames - m_done));
    std::fprintf(stderr, "%s%s", eraseLine, line(clip, index + 1, count, left).toLocal8Bit().constData());
    std::fflush(stderr);
}

void Progress::clear() const
{
    if (m_isTerminal)
        std::fputs(eraseLine, stderr);
}

QString Progress::line(const QString &clip, qint64 done, qint64 count, double secondsLeft)
{
    const auto seconds = static_cast<qint64>(std::ceil(std::max(0.0, secondsLeft)));
    return u"%1 %2/%3 · %4:%5 left"_s.arg(clip)
        .arg(done)
        .arg(count)
        .arg(seconds / 60)
        .arg(seconds % 60, 2, 10, QChar(u'0'));
}

} // namespace kelp
