#pragma once

#include <QSize>
#include <QString>

#include <memory>

class QImage;
// As GStreamer declares them.
typedef struct _GstBuffer GstBuffer;       // NOLINT
typedef struct _GstVideoInfo GstVideoInfo; // NOLINT

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
    class Stock;
    std::unique_ptr<GstVideoInfo> m_made;
    std::shared_ptr<Stock> m_stock;
};

} // namespace kelp
