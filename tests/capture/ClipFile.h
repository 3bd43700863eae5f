#pragma once

#include <QByteArrayList>
#include <QImage>
#include <QList>
#include <QSize>
#include <QString>

#include <sys/resource.h>

namespace kelp {

/// What ffprobe and ffmpeg, which have no part in making clips, find in one.
struct ClipFile
{
    int streams = 0;
    QString codec;
    QString profile;
    QSize size;
    QString rate;    ///< "30/1"
    QString colours; ///< range, matrix, transfer, primaries
    int frames = 0;
    double seconds = 0;
    double bitsPerSecond = 0;
    QList<int> keyFrames;
    QByteArrayList boxes; ///< the outermost ones, in their order

    [[nodiscard]] static ClipFile probe(const QString &path);
    /// Frame `index`, decoded.
    [[nodiscard]] static QImage frame(const QString &path, int index);
    /// The mean of the differences of all channels, 0…255.
    [[nodiscard]] static double meanDifference(const QImage &a, const QImage &b);

    /// While it lives, what this process prints goes into a file.
    class Output
    {
    public:
        Output();
        ~Output();
        Output(const Output &) = delete;
        Output &operator=(const Output &) = delete;
        [[nodiscard]] QString text() const;

    private:
        int m_before;
        int m_file;
    };

    /// While it lives no file of this process can grow beyond a size.
    class RoomLimit
    {
    public:
        explicit RoomLimit(rlim_t bytes);
        ~RoomLimit();
        RoomLimit(const RoomLimit &) = delete;
        RoomLimit &operator=(const RoomLimit &) = delete;

    private:
        rlimit m_before{};
        void (*m_handler)(int);
    };
};

} // namespace kelp
