#pragma once

#include "base/Result.h"

#include <QImage>
#include <QString>

#include <memory>

namespace kelp {

/// Writes one clip: MPEG-4 that plays from its first byte, with H.264 (High, 4.5 Mbit/s, a key frame every two
/// seconds, BT.709) and nothing else. It is encoded on threads of its own while the next frames are drawn.
///
///     append() ─ convert ─> x264 ─> MPEG-4 in memory ── finish() ──> the file
///
/// The file appears as a whole at the end, or not at all. One that is never finished leaves nothing.
class VideoWriter
{
public:
    /// What encoding needs and this machine has not, with the packages to install: a line for people. Empty when all is
    /// there.
    [[nodiscard]] static QString missing();

    /// The encoder and its settings, as gst-launch would write them.
    [[nodiscard]] static QString encoder(int framesPerSecond);

    /// What the encoder gets.
    [[nodiscard]] static QString caps(const QSize &size, int framesPerSecond);

    /// Tries whether a file can be made at `path`, whose folder is made where it is missing, and whether there is an
    /// encoder. The error says why not.
    [[nodiscard]] static Result<std::unique_ptr<VideoWriter>, QString> open(const QString &path, const QSize &size,
                                                                            int framesPerSecond);
    ~VideoWriter();

    /// Takes the next frame: a picture of the clip's size in Format_RGB32. Waits while the encoder is behind. False
    /// when the encoder has failed: there is no point in drawing more.
    bool append(const QImage &frame);
    /// Shows the last frame once more; cheaper than appending it again.
    bool repeat();
    /// Encodes what is left and writes the file. The error says why there is none.
    [[nodiscard]] Result<void, QString> finish();

private:
    class Pipeline;
    explicit VideoWriter(QString path);

    QString m_path;
    std::unique_ptr<Pipeline> m_pipeline;
};

} // namespace kelp
