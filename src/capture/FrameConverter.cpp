#include "capture/FrameConverter.h"

#include "capture/LumaChroma.h"

#include <QImage>

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

struct FrameConverter::Parts
{
    GstVideoInfo made;
    GstBufferPool *pool;
};

FrameConverter::FrameConverter(const QSize &size, int framesPerSecond)
    : m_parts(new Parts{informationOf(caps(size, framesPerSecond)), gst_video_buffer_pool_new()})
{
    GstStructure *settings = gst_buffer_pool_get_config(m_parts->pool);
    GstCaps *made = gst_video_info_to_caps(&m_parts->made);
    gst_buffer_pool_config_set_params(settings, made, static_cast<guint>(GST_VIDEO_INFO_SIZE(&m_parts->made)), 0, 0);
    gst_caps_unref(made);
    gst_buffer_pool_set_config(m_parts->pool, settings);
    gst_buffer_pool_set_active(m_parts->pool, TRUE);
}

FrameConverter::~FrameConverter()
{
    gst_buffer_pool_set_active(m_parts->pool, FALSE);
    gst_object_unref(m_parts->pool);
}

GstBuffer *FrameConverter::convert(const QImage &picture)
{
    GstBuffer *buffer = nullptr;
    gst_buffer_pool_acquire_buffer(m_parts->pool, &buffer, nullptr);
    GstVideoFrame frame;
    gst_video_frame_map(&frame, &m_parts->made, buffer, GST_MAP_WRITE);
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
