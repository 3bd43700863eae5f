// kelp-bench-capture [CLIP...]: how fast `kelp --record` is, beside x264 alone on the same frames with the same
// settings, and what drawing and converting a frame costs. Everything is measured in one run, clip by clip and in
// turns, so that both see the same machine, and in the end once more with one start of Kelp for all of them. Where
// other work goes on meanwhile, the ratio of CPU times tells more than that of frame rates: the encoder alone keeps
// every core busy, so what else needs a core takes it from the encoder.

#include "capture/DesktopScene.h"
#include "capture/FrameConverter.h"
#include "capture/Recorder.h"
#include "capture/VideoWriter.h"
#include "themes/KelpClock.h"

#include <QCoreApplication>
#include <QFile>
#include <QFileInfo>
#include <QGuiApplication>
#include <QPainter>
#include <QTemporaryDir>

#include <algorithm>
#include <cstdio>
#include <ctime>
#include <vector>

#include <gst/app/gstappsrc.h>
#include <gst/gst.h>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

using namespace kelp;
using namespace Qt::StringLiterals;

namespace {

struct Figures
{
    double frames = 0;
    double kelpSeconds = 0;
    double kelpCpu = 0;
    double encoderSeconds = 0;
    double encoderCpu = 0;
    double drawing = 0;    ///< CPU seconds
    double converting = 0; ///< CPU seconds
    double peak = 0;       ///< MB

    Figures &operator+=(const Figures &other)
    {
        frames += other.frames;
        kelpSeconds += other.kelpSeconds;
        kelpCpu += other.kelpCpu;
        encoderSeconds += other.encoderSeconds;
        encoderCpu += other.encoderCpu;
        drawing += other.drawing;
        converting += other.converting;
        peak = std::max(peak, other.peak);
        return *this;
    }

    void print(const char *name) const
    {
        std::printf("%-10s %6.0f %7.1f %7.1f %6.2f %8.1f %8.1f %6.2f %8.1f %8.1f %8.0f\n", name, frames,
                    frames / kelpSeconds, frames / encoderSeconds, encoderSeconds / kelpSeconds,
                    1000 * kelpCpu / frames, 1000 * encoderCpu / frames, encoderCpu / kelpCpu, 1000 * drawing / frames,
                    1000 * converting / frames, peak);
        std::fflush(stdout);
    }
};

double seconds(clockid_t clock)
{
    timespec time{};
    ::clock_gettime(clock, &time);
    return static_cast<double>(time.tv_sec) + 1e-9 * static_cast<double>(time.tv_nsec);
}

double seconds(const timeval &time)
{
    return static_cast<double>(time.tv_sec) + 1e-6 * static_cast<double>(time.tv_usec);
}

/// MB of memory that the process has had at most.
double peakOf(pid_t process)
{
    QFile file(u"/proc/%1/status"_s.arg(process));
    if (!file.open(QIODevice::ReadOnly))
        return 0;
    const QByteArray status = file.readAll();
    const qsizetype at = status.indexOf("VmHWM:");
    // Until it is the program, it is a copy of this process.
    if (at < 0 || !status.startsWith("Name:\tkelp\n"))
        return 0;
    return status.mid(at + 6, status.indexOf("kB", at) - at - 6).trimmed().toDouble() / 1024;
}

/// Records the clips with the program itself.
void runKelp(const QStringList &clips, const QString &folder, Figures &figures)
{
    std::vector<QByteArray> words{"kelp", "--record", QFile::encodeName(folder)};
    for (const QString &clip : clips)
        words.push_back(clip.toLatin1());
    std::vector<char *> arguments;
    for (QByteArray &word : words)
        arguments.push_back(word.data());
    arguments.push_back(nullptr);
    const QByteArray program = QFile::encodeName(QCoreApplication::applicationDirPath() + u"/kelp"_s);
    const double begin = seconds(CLOCK_MONOTONIC);
    const pid_t child = ::fork();
    if (child == 0) {
        ::dup2(STDERR_FILENO, STDOUT_FILENO);
        ::execv(program.constData(), arguments.data());
        ::_exit(127);
    }
    int status = 0;
    rusage usage{};
    // Its own peak: the one in rusage begins with that of this process.
    while (::wait4(child, &status, WNOHANG, &usage) == 0) {
        figures.peak = std::max(figures.peak, peakOf(child));
        ::usleep(10'000);
    }
    figures.kelpSeconds = seconds(CLOCK_MONOTONIC) - begin;
    figures.kelpCpu = seconds(usage.ru_utime) + seconds(usage.ru_stime);
    for (const QString &clip : clips) {
        if (!QFile::remove(folder + u'/' + clip + u".mp4"_s))
            qFatal("kelp has recorded no %s", qPrintable(clip));
    }
}

GstElement *part(GstElement *line, const char *name)
{
    return gst_bin_get_by_name(GST_BIN(line), name);
}

GstElement *launch(const QString &description)
{
    GError *error = nullptr;
    GstElement *line = gst_parse_launch(description.toUtf8().constData(), &error);
    if (!line || error)
        qFatal("%s", error ? error->message : "no pipeline");
    gst_element_set_state(line, GST_STATE_PLAYING);
    return line;
}

/// Draws and converts every frame of the clip; the converted ones are what the encoder gets.
std::vector<GstBuffer *> drawnFrames(const Recorder::Clip &clip, Figures &figures)
{
    std::vector<GstBuffer *> result;
    FrameConverter converter(Recorder::pixels, Recorder::framesPerSecond);
    double begin = seconds(CLOCK_THREAD_CPUTIME_ID);
    const Recorder::Frame frame = clip.frames();
    QImage image(Recorder::pixels, QImage::Format_RGB32);
    image.setDevicePixelRatio(Recorder::density);
    for (qint64 i = 0; i < clip.frameCount(); ++i) {
        QPainter painter(&image);
        const bool changed = frame(painter, static_cast<double>(i) / Recorder::framesPerSecond);
        painter.end();
        const double drawn = seconds(CLOCK_THREAD_CPUTIME_ID);
        figures.drawing += drawn - begin;
        GstBuffer *buffer = nullptr;
        if (changed) {
            GstBuffer *converted = converter.convert(image);
            figures.converting += seconds(CLOCK_THREAD_CPUTIME_ID) - drawn;
            // The converter uses its memory again and again, as it does while recording.
            buffer = gst_buffer_copy_deep(converted);
            gst_buffer_unref(converted);
        } else {
            buffer = gst_buffer_copy(result.back());
        }
        begin = seconds(CLOCK_THREAD_CPUTIME_ID);
        GST_BUFFER_PTS(buffer) = gst_util_uint64_scale(static_cast<guint64>(i), GST_SECOND, Recorder::framesPerSecond);
        result.push_back(buffer);
    }
    return result;
}

/// The frames are gone afterwards.
void encode(const std::vector<GstBuffer *> &frames, Figures &figures)
{
    GstElement *line = launch(u"appsrc name=source format=time max-bytes=0 caps=\"%1\" ! %2"
                              " ! video/x-h264,profile=high ! fakesink sync=false"_s.arg(
                                  VideoWriter::caps(Recorder::pixels, Recorder::framesPerSecond),
                                  VideoWriter::encoder(Recorder::framesPerSecond)));
    GstElement *source = part(line, "source");
    const double begin = seconds(CLOCK_MONOTONIC);
    const double cpu = seconds(CLOCK_PROCESS_CPUTIME_ID);
    for (GstBuffer *frame : frames)
        gst_app_src_push_buffer(GST_APP_SRC(source), frame);
    gst_app_src_end_of_stream(GST_APP_SRC(source));
    GstBus *bus = gst_element_get_bus(line);
    GstMessage *message = gst_bus_timed_pop_filtered(bus, GST_CLOCK_TIME_NONE,
                                                     static_cast<GstMessageType>(GST_MESSAGE_EOS | GST_MESSAGE_ERROR));
    figures.encoderSeconds = seconds(CLOCK_MONOTONIC) - begin;
    figures.encoderCpu = seconds(CLOCK_PROCESS_CPUTIME_ID) - cpu;
    gst_message_unref(message);
    gst_object_unref(bus);
    gst_element_set_state(line, GST_STATE_NULL);
    gst_object_unref(source);
    gst_object_unref(line);
}

} // namespace

int main(int argc, char **argv)
{
    qputenv("QT_QPA_PLATFORM", "offscreen");
    const QGuiApplication application(argc, argv);
    const QStringList only = QCoreApplication::arguments().mid(1);
    if (const QString missing = VideoWriter::missing(); !missing.isEmpty())
        qFatal("%s", qPrintable(missing));
    const QTemporaryDir folder;
    KelpClock::backdrop = DesktopScene().picture(Recorder::density);
    std::puts("                  frames a second             CPU, ms per frame");
    std::puts("clip       frames    kelp    x264  ratio     kelp     x264  ratio  drawing  convert  peak MB");
    Figures all;
    QStringList names;
    bool isKelpFirst = true;
    for (const Recorder::Clip &clip : Recorder::clips({})) {
        if (!only.isEmpty() && !only.contains(clip.name))
            continue;
        Figures figures;
        figures.frames = static_cast<double>(clip.frameCount());
        const std::vector<GstBuffer *> frames = drawnFrames(clip, figures);
        // Neither is always the one that has a rested machine.
        if (isKelpFirst)
            runKelp({clip.name}, folder.path(), figures);
        encode(frames, figures);
        if (!isKelpFirst)
            runKelp({clip.name}, folder.path(), figures);
        isKelpFirst = !isKelpFirst;
        figures.print(qPrintable(clip.name));
        all += figures;
        names.append(clip.name);
    }
    all.print("all");
    // As one does it: one start of the program for the whole set.
    if (names.size() > 1) {
        runKelp(names, folder.path(), all);
        all.print("in one go");
    }
    return 0;
}
