#include "capture/VideoWriter.h"

#include "base/AtomicFile.h"
#include "capture/FrameConverter.h"

#include <QDir>
#include <QFileInfo>
#include <QTemporaryFile>

#include <array>
#include <chrono>
#include <condition_variable>
#include <mutex>
#include <utility>

#include <gst/app/gstappsink.h>
#include <gst/app/gstappsrc.h>
#include <gst/gst.h>
#include <sys/mman.h>
#include <unistd.h>

using namespace Qt::StringLiterals;

namespace kelp {

namespace {

constexpr int kilobitsPerSecond = 4500;
constexpr int secondsPerKeyFrame = 2;
/// Milliseconds of video that a peak may borrow from: key frames and sudden movement stay clear.
constexpr int rateBuffer = 2000;
/// Frames between the painter and the encoder.
constexpr int mostFrames = 4;

struct Part
{
    const char *element;
    const char *package;
};

constexpr std::array<Part, 5> parts{{{"appsrc", "gstreamer1.0-plugins-base"},
                                     {"x264enc", "gstreamer1.0-plugins-ugly"},
                                     {"h264parse", "gstreamer1.0-plugins-bad"},
                                     {"mp4mux", "gstreamer1.0-plugins-good"},
                                     {"appsink", "gstreamer1.0-plugins-base"}}};

/// The whole line, as gst-launch would write it.
QByteArray description(const QSize &size, int framesPerSecond, const QByteArray &scratch)
{
    return (u"appsrc name=source format=time max-bytes=0 caps=\"%1\" ! "_s.arg(
                VideoWriter::caps(size, framesPerSecond)) +
            VideoWriter::encoder(framesPerSecond) +
            u" ! video/x-h264,profile=high ! h264parse ! mp4mux faststart=true faststart-file=\"%1\""
            " ! appsink name=sink sync=false wait-on-eos=false"_s.arg(QString::fromLatin1(scratch)))
        .toUtf8();
}

void startLibrary()
{
    static const bool started = [] {
        gst_init(nullptr, nullptr);
        return true;
    }();
    Q_UNUSED(started);
}

QString textOf(GstMessage *message)
{
    GError *error = nullptr;
    gst_message_parse_error(message, &error, nullptr);
    const QString text = error ? QString::fromUtf8(error->message) : u"unknown"_s;
    g_clear_error(&error);
    return text;
}

} // namespace

/// The encoder and what belongs to it.
class VideoWriter::Pipeline
{
public:
    Pipeline(const QSize &size, int framesPerSecond)
        : m_framesPerSecond(framesPerSecond),
          m_scratch(::memfd_create("kelp-clip", MFD_CLOEXEC)),
          m_converter(size, framesPerSecond)
    {
        const QByteArray scratch = "/proc/self/fd/" + QByteArray::number(m_scratch);
        m_line.reset(gst_parse_launch(description(size, framesPerSecond, scratch).constData(), nullptr));
        m_source.reset(gst_bin_get_by_name(GST_BIN(m_line.get()), "source"));
        m_sink.reset(gst_bin_get_by_name(GST_BIN(m_line.get()), "sink"));
        m_bus.reset(gst_element_get_bus(m_line.get()));
        GstPad *exit = gst_element_get_static_pad(m_source.get(), "src");
        gst_pad_add_probe(exit, GST_PAD_PROBE_TYPE_BUFFER, frameLeft, this, nullptr);
        gst_object_unref(exit);
        gst_element_set_state(m_line.get(), GST_STATE_PLAYING);
    }
    Pipeline(const Pipeline &) = delete;
    Pipeline &operator=(const Pipeline &) = delete;
    ~Pipeline()
    {
        gst_element_set_state(m_line.get(), GST_STATE_NULL);
        ::close(m_scratch);
    }

    bool append(const QImage &frame)
    {
        if (!awaitRoom())
            return false;
        m_last.reset(m_converter.convert(frame));
        return push(gst_buffer_ref(m_last.get()));
    }

    bool repeat()
    {
        // The same picture at another time; the memory is shared.
        return awaitRoom() && push(gst_buffer_copy(m_last.get()));
    }

    /// Waits for the end; the error, if it came to one.
    [[nodiscard]] Result<void, QString> drain()
    {
        if (!hasFailed()) {
            gst_app_src_end_of_stream(source());
            m_end.reset(gst_bus_timed_pop_filtered(m_bus.get(), GST_CLOCK_TIME_NONE,
                                                   static_cast<GstMessageType>(GST_MESSAGE_EOS | GST_MESSAGE_ERROR)));
        }
        if (GST_MESSAGE_TYPE(m_end.get()) == GST_MESSAGE_ERROR)
            return Failure(textOf(m_end.get()));
        return {};
    }

    [[nodiscard]] QByteArray bytes() const
    {
        QByteArray result;
        while (GstSample *sample = gst_app_sink_try_pull_sample(GST_APP_SINK(m_sink.get()), 0)) {
            GstMapInfo map;
            GstBuffer *buffer = gst_sample_get_buffer(sample);
            if (gst_buffer_map(buffer, &map, GST_MAP_READ)) {
                result.append(reinterpret_cast<const char *>(map.data), static_cast<qsizetype>(map.size));
                gst_buffer_unmap(buffer, &map);
            }
            gst_sample_unref(sample);
        }
        return result;
    }

private:
    template<typename T>
    struct Unref
    {
        void operator()(T *object) const { gst_object_unref(object); }
    };
    struct UnrefMini
    {
        void operator()(GstBuffer *buffer) const { gst_buffer_unref(buffer); }
        void operator()(GstMessage *message) const { gst_message_unref(message); }
    };

    /// How often an encoder that takes no more frames is asked whether it has failed.
    static constexpr auto patience = std::chrono::milliseconds(100);

    /// On the encoder's thread.
    static GstPadProbeReturn frameLeft(GstPad *, GstPadProbeInfo *, void *self)
    {
        auto &pipeline = *static_cast<Pipeline *>(self);
        {
            const std::lock_guard lock(pipeline.m_mutex);
            --pipeline.m_waiting;
        }
        pipeline.m_room.notify_one();
        return GST_PAD_PROBE_OK;
    }

    [[nodiscard]] GstAppSrc *source() const { return GST_APP_SRC(m_source.get()); }

    [[nodiscard]] bool hasFailed()
    {
        if (!m_end)
            m_end.reset(gst_bus_pop_filtered(m_bus.get(), GST_MESSAGE_ERROR));
        return m_end != nullptr;
    }

    /// False when the encoder has failed.
    [[nodiscard]] bool awaitRoom()
    {
        bool hasRoom = false;
        while (!hasRoom && !hasFailed()) {
            std::unique_lock lock(m_mutex);
            hasRoom = m_room.wait_for(lock, patience, [this] { return m_waiting < mostFrames; });
        }
        return !hasFailed();
    }

    bool push(GstBuffer *buffer)
    {
        GST_BUFFER_PTS(buffer) = timeOf(m_count);
        GST_BUFFER_DURATION(buffer) = timeOf(m_count + 1) - timeOf(m_count);
        ++m_count;
        {
            const std::lock_guard lock(m_mutex);
            ++m_waiting;
        }
        return gst_app_src_push_buffer(source(), buffer) == GST_FLOW_OK;
    }

    [[nodiscard]] GstClockTime timeOf(quint64 frame) const
    {
        return gst_util_uint64_scale(frame, GST_SECOND, static_cast<guint64>(m_framesPerSecond));
    }

    int m_framesPerSecond;
    int m_scratch; ///< memory where the multiplexer keeps the frames until it can write the index before them
    FrameConverter m_converter;
    std::unique_ptr<GstElement, Unref<GstElement>> m_line;
    std::unique_ptr<GstElement, Unref<GstElement>> m_source;
    std::unique_ptr<GstElement, Unref<GstElement>> m_sink;
    std::unique_ptr<GstBus, Unref<GstBus>> m_bus;
    std::unique_ptr<GstMessage, UnrefMini> m_end;
    std::unique_ptr<GstBuffer, UnrefMini> m_last;
    quint64 m_count = 0;

    std::mutex m_mutex;
    std::condition_variable m_room;
    int m_waiting = 0; ///< frames that the encoder has not taken yet
};

QString VideoWriter::missing()
{
    startLibrary();
    QStringList packages;
    for (const Part &part : parts) {
        GstElementFactory *factory = gst_element_factory_find(part.element);
        if (factory)
            gst_object_unref(factory);
        else if (!packages.contains(QLatin1StringView(part.package)))
            packages.append(QString::fromLatin1(part.package));
    }
    return packages.isEmpty() ? QString() : u"clips need GStreamer's plugins; install "_s + packages.join(u" and "_s);
}

QString VideoWriter::encoder(int framesPerSecond)
{
    // Without scene-cut detection key frames stand exactly where they are expected.
    return u"x264enc speed-preset=medium bitrate=%1 vbv-buf-capacity=%2 key-int-max=%3 option-string=scenecut=0"_s
        .arg(kilobitsPerSecond)
        .arg(rateBuffer)
        .arg(secondsPerKeyFrame * framesPerSecond);
}

QString VideoWriter::caps(const QSize &size, int framesPerSecond)
{
    return FrameConverter::caps(size, framesPerSecond);
}

VideoWriter::VideoWriter(QString path) : m_path(std::move(path)) {}

VideoWriter::~VideoWriter() = default;

Result<std::unique_ptr<VideoWriter>, QString> VideoWriter::open(const QString &path, const QSize &size,
                                                                int framesPerSecond)
{
    if (const QString packages = missing(); !packages.isEmpty())
        return Failure(packages);
    const QString folder = QFileInfo(path).path();
    QTemporaryFile trial(folder + u"/.kelp-XXXXXX.tmp"_s);
    if (!QDir().mkpath(folder) || QFileInfo(path).isDir() || !trial.open())
        return Failure(u"cannot write in "_s + folder);
    std::unique_ptr<VideoWriter> writer(new VideoWriter(path));
    writer->m_pipeline = std::make_unique<Pipeline>(size, framesPerSecond);
    return writer;
}

bool VideoWriter::append(const QImage &frame)
{
    return m_pipeline->append(frame);
}

bool VideoWriter::repeat()
{
    return m_pipeline->repeat();
}

Result<void, QString> VideoWriter::finish()
{
    if (auto drained = m_pipeline->drain(); !drained)
        return drained;
    const auto written =
        AtomicFile(m_path, FileOperations::system(), AtomicFile::Access::usual).write(m_pipeline->bytes());
    if (!written)
        return Failure(written.error().description());
    return {};
}

} // namespace kelp
