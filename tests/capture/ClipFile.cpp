#include "capture/ClipFile.h"

#include <QFile>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QProcess>
#include <QtEndian>

#include <algorithm>
#include <cmath>
#include <csignal>
#include <cstdio>
#include <sys/mman.h>
#include <unistd.h>

using namespace Qt::StringLiterals;

namespace kelp {

namespace {

QByteArray outputOf(const QString &program, const QStringList &arguments)
{
    QProcess process;
    process.start(program, arguments);
    return process.waitForFinished(-1) ? process.readAllStandardOutput() : QByteArray();
}

/// The four-letter names of the outermost boxes of an MPEG-4 file.
QByteArrayList boxesOf(const QString &path)
{
    QFile file(path);
    QByteArrayList names;
    if (!file.open(QIODevice::ReadOnly))
        return names;
    while (!file.atEnd()) {
        const QByteArray head = file.read(8);
        if (head.size() < 8)
            break;
        const auto size = qFromBigEndian<quint32>(head.constData());
        names.append(head.mid(4));
        if (size < 8 || !file.seek(file.pos() - 8 + size))
            break;
    }
    return names;
}

} // namespace

ClipFile ClipFile::probe(const QString &path)
{
    const QJsonObject found =
        QJsonDocument::fromJson(outputOf(u"ffprobe"_s, {u"-v"_s, u"error"_s, u"-of"_s, u"json"_s, u"-show_streams"_s,
                                                        u"-show_format"_s, u"-show_packets"_s, path}))
            .object();
    const QJsonArray streams = found[u"streams"_s].toArray();
    const QJsonObject video = streams.at(0).toObject();
    ClipFile clip;
    clip.streams = static_cast<int>(streams.size());
    clip.codec = video[u"codec_name"_s].toString();
    clip.profile = video[u"profile"_s].toString();
    clip.size = {video[u"width"_s].toInt(), video[u"height"_s].toInt()};
    clip.rate = video[u"r_frame_rate"_s].toString();
    clip.colours = QStringList{video[u"color_range"_s].toString(), video[u"color_space"_s].toString(),
                               video[u"color_transfer"_s].toString(), video[u"color_primaries"_s].toString()}
                       .join(u' ');
    clip.seconds = found[u"format"_s].toObject()[u"duration"_s].toString().toDouble();
    clip.bitsPerSecond = found[u"format"_s].toObject()[u"bit_rate"_s].toString().toDouble();
    for (const QJsonValue &packet : found[u"packets"_s].toArray()) {
        if (packet.toObject()[u"flags"_s].toString().startsWith(u'K'))
            clip.keyFrames.append(clip.frames);
        ++clip.frames;
    }
    clip.boxes = boxesOf(path);
    return clip;
}

QImage ClipFile::frame(const QString &path, int index)
{
    // Unless told otherwise ffmpeg cuts fractions off.
    return QImage::fromData(
        outputOf(u"ffmpeg"_s, {u"-v"_s, u"error"_s, u"-i"_s, path, u"-vf"_s, u"select=eq(n\\,%1)"_s.arg(index),
                               u"-sws_flags"_s, u"accurate_rnd+full_chroma_int"_s, u"-frames:v"_s, u"1"_s, u"-f"_s,
                               u"image2pipe"_s, u"-c:v"_s, u"png"_s, u"-"_s}));
}

double ClipFile::meanDifference(const QImage &a, const QImage &b)
{
    if (a.size() != b.size() || a.isNull())
        return 255;
    double sum = 0;
    for (int y = 0; y < a.height(); ++y) {
        for (int x = 0; x < a.width(); ++x) {
            const QRgb one = a.pixel(x, y);
            const QRgb other = b.pixel(x, y);
            sum += std::abs(qRed(one) - qRed(other)) + std::abs(qGreen(one) - qGreen(other)) +
                   std::abs(qBlue(one) - qBlue(other));
        }
    }
    return sum / 3 / a.width() / a.height();
}

ClipFile::Output::Output() : m_before(::dup(STDOUT_FILENO)), m_file(::memfd_create("output", MFD_CLOEXEC))
{
    std::fflush(stdout);
    ::dup2(m_file, STDOUT_FILENO);
}

ClipFile::Output::~Output()
{
    std::fflush(stdout);
    ::dup2(m_before, STDOUT_FILENO);
    ::close(m_before);
    ::close(m_file);
}

QString ClipFile::Output::text() const
{
    std::fflush(stdout);
    QByteArray bytes(4096, '\0');
    const ssize_t length = ::pread(m_file, bytes.data(), static_cast<std::size_t>(bytes.size()), 0);
    return QString::fromUtf8(bytes.first(std::max<ssize_t>(0, length)));
}

ClipFile::RoomLimit::RoomLimit(rlim_t bytes) : m_handler(std::signal(SIGXFSZ, SIG_IGN))
{
    ::getrlimit(RLIMIT_FSIZE, &m_before);
    const rlimit limit{bytes, m_before.rlim_max};
    ::setrlimit(RLIMIT_FSIZE, &limit);
}

ClipFile::RoomLimit::~RoomLimit()
{
    ::setrlimit(RLIMIT_FSIZE, &m_before);
    std::signal(SIGXFSZ, m_handler);
}

} // namespace kelp
