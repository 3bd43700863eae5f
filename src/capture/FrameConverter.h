#pragma once

#include <QSize>
#include <QString>

#include <memory>

class QImage;
typedef struct _GstBuffer GstBuffer; // NOLINT: as GStreamer declares it

namespace kelp {

/// Makes of pictures what a video encoder takes: luma and, at half the resolution, chroma, by BT.709 with the usual
/// headroom.
class FrameConverter
{
public:
    FrameConverter(const QSize &size, int framesPerSecond);
    ~FrameConverter();
    FrameConverter(const FrameConverter &) = delete;
    FrameConverter &operator=(const FrameConverter &) = delete;

    /// `picture` has the size given and Format_RGB32. The caller owns the result.
    [[nodiscard]] GstBuffer *convert(const QImage &picture);

    /// What it makes, in GStreamer's words.
    [[nodiscard]] static QString caps(const QSize &size, int framesPerSecond);

private:
    struct Parts;
    std::unique_ptr<Parts> m_parts;
};

} // namespace kelp
