#pragma once

#include "base/Instant.h"

#include <QString>

namespace kelp {

/// What a person who waits at a terminal sees: one line that is written over and over. Nothing is printed elsewhere.
class Progress
{
public:
    /// For `frames` frames in all, from `now` on.
    Progress(qint64 frames, Instant now);

    /// Frame `index` of the `count` of `clip` is done.
    void step(const QString &clip, qint64 index, qint64 count, Instant now);
    /// Frames that will not come.
    void skip(qint64 frames) { m_frames -= frames; }
    /// Makes room for a line of output.
    void clear() const;

    /// "hero 120/300 · 1:05 left"
    [[nodiscard]] static QString line(const QString &clip, qint64 done, qint64 count, double secondsLeft);

private:
    bool m_isTerminal;
    qint64 m_frames;
    qint64 m_done = 0;
    Instant m_start;
    Instant m_printed{};
};

} // namespace kelp
