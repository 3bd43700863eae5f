#include "capture/FrameConverter.h"

#include "base/Memory.h"
#include "capture/LumaChroma.h"

#include <QImage>

#include <cstdint>
#include <mutex>
#include <utility>
#include <vector>

#include <gst/video/video.h>

using namespace Qt::StringLiterals;

namespace kelp {

namespace {

QString description(const QString &format, const QSize &size, int framesPerSecond)
{
    return u"video/x-raw,%1,width=%2,height=%3,framerate=%4/1"_s.arg(format)
        .arg(size.width())
        .arg(size.height())
        .arg(framesPerSecond);
}

GstVideoInfo informationOf(const QString &description)
{
    GstVideoInfo information;
    GstCaps *caps = gst_caps_from_string(description.toUtf8().constData());
    gst_video_info_from_caps(&information, caps);
    gst_caps_unref(caps);
    return information;
}

} // namespace

/// Memory for frames, which is used again once the encoder has let go of it: fresh memory would cost more than the
/// conversion. Not a GstBufferPool: that gives up whatever a copy of a buffer still points to, and the encoder copies
/// buffers that are kept to be repeated.
class FrameConverter::Stock : public std::enable_shared_from_this<Stock>
{
public:
    explicit Stock(std::size_t bytes) : m_bytes(bytes) {}

    [[nodiscard]] GstBuffer *take()
    {
        std::unique_ptr<std::uint8_t[]> place;
        {
            const std::lock_guard lock(m_mutex);
            if (!m_free.empty()) {
                place = std::move(m_free.back());
                m_free.pop_back();
            }
        }
        if (!place) {
            place = std::make_unique_for_overwrite<std::uint8_t[]>(m_bytes);
            memory::populate(place.get(), m_bytes);
        }
        auto *lent = new Lent{shared_from_this(), std::move(place)};
        return gst_buffer_new_wrapped_full(GstMemoryFlags{}, lent->place.get(), m_bytes, 0, m_bytes, lent, giveBack);
    }

private:
    struct Lent
    {
        std::shared_ptr<Stock> stock;
        std::unique_ptr<std::uint8_t[]> place;
    };

    /// On whatever thread the last user of the memory has.
    static void giveBack(void *data)
    {
        const std::unique_ptr<Lent> lent(static_cast<Lent *>(data));
        const std::lock_guard lock(lent->stock->m_mutex);
        lent->stock->m_free.push_back(std::move(lent->place));
    }

    std::size_t m_bytes; ///< of a frame
    std::mutex m_mutex;
    std::vector<std::unique_ptr<std::uint8_t[]>> m_free;
};

FrameConverter::FrameConverter(const QSize &size, int framesPerSecond)
    : m_made(std::make_unique<GstVideoInfo>(informationOf(caps(size, framesPerSecond)))),
      m_stock(std::make_shared<Stock>(GST_VIDEO_INFO_SIZE(m_made.get())))
{
}

FrameConverter::~FrameConverter() = default;

GstBuffer *FrameConverter::convert(const QImage &picture)
{
    GstBuffer *buffer = m_stock->take();
    GstVideoFrame frame;
    gst_video_frame_map(&frame, m_made.get(), buffer, GST_MAP_WRITE);
    const auto plane = [&](guint index) {
        return Plane{static_cast<std::uint8_t *>(GST_VIDEO_FRAME_PLANE_DATA(&frame, index)),
                     GST_VIDEO_FRAME_PLANE_STRIDE(&frame, index)};
    };
    LumaChroma{plane(0), plane(1), plane(2)}.fill(picture);
    gst_video_frame_unmap(&frame);
    return buffer;
}

QString FrameConverter::caps(const QSize &size, int framesPerSecond)
{
    return description(u"format=I420,colorimetry=bt709,chroma-site=mpeg2"_s, size, framesPerSecond);
}

} // namespace kelp
