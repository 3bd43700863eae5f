#include "capture/FrameConverter.h"

#include <QImage>
#include <QRandomGenerator>
#include <QTest>

#include <algorithm>
#include <array>
#include <cmath>
#include <memory>
#include <optional>
#include <set>
#include <utility>
#include <vector>

#include <gst/video/video.h>

using namespace kelp;
using namespace Qt::StringLiterals;

/// Compares what a video encoder gets with BT.709 in numbers as fine as the machine has them.
class tst_FrameConverter : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void initTestCase();
    void everyColourIsTheNearest();
    void greyHasNoChroma();
    void theEndsOfTheRange();
    void chromaBelongsToTheLeftPixel();
    void rowsShareTheirChroma();
    void takesPicturesOfAnySize_data();
    void takesPicturesOfAnySize();
    void aPictureMayHavePadding();
    void framesDoNotShareMemory();
    void memoryIsUsedAgain();
    void howLongAFrameTakes();
};

namespace {

/// The nearest value is at most a half away; the rest is what factors of 16 bits may add.
constexpr double mostOff = 0.52;

struct Colour
{
    double luma;
    double blue;
    double red;
};

/// A half of the range to either side of 128 is what the chroma of pure blue and pure red get.
Colour exact(double red, double green, double blue)
{
    const double light = 0.2126 * red + 0.7152 * green + 0.0722 * blue;
    return {16 + 219 * light / 255, 128 + 224 * (blue - light) / 1.8556 / 255,
            128 + 224 * (red - light) / 1.5748 / 255};
}

Colour exact(QRgb pixel)
{
    return exact(qRed(pixel), qGreen(pixel), qBlue(pixel));
}

/// A converted picture, as the caps describe it.
class Planes
{
public:
    explicit Planes(const QImage &picture) : m_size(picture.size())
    {
        FrameConverter converter(m_size, 30);
        take(converter.convert(picture));
    }
    Planes(GstBuffer *buffer, const QSize &size) : m_size(size) { take(buffer); }

    [[nodiscard]] int luma(int x, int y) const { return at(0, x, y); }
    [[nodiscard]] int blue(int x, int y) const { return at(1, x, y); }
    [[nodiscard]] int red(int x, int y) const { return at(2, x, y); }

private:
    void take(GstBuffer *buffer)
    {
        GstCaps *caps = gst_caps_from_string(FrameConverter::caps(m_size, 30).toLatin1().constData());
        gst_video_info_from_caps(&m_information, caps);
        gst_caps_unref(caps);
        GstMapInfo map;
        gst_buffer_map(buffer, &map, GST_MAP_READ);
        m_bytes.assign(map.data, map.data + map.size);
        gst_buffer_unmap(buffer, &map);
        gst_buffer_unref(buffer);
    }

    [[nodiscard]] int at(int plane, int x, int y) const
    {
        return m_bytes.at(GST_VIDEO_INFO_PLANE_OFFSET(&m_information, plane) +
                          static_cast<std::size_t>(y * GST_VIDEO_INFO_PLANE_STRIDE(&m_information, plane) + x));
    }

    QSize m_size;
    GstVideoInfo m_information{};
    std::vector<std::uint8_t> m_bytes;
};

QRgb clampedPixel(const QImage &picture, int x, int y)
{
    return picture.pixel(std::clamp(x, 0, picture.width() - 1), std::clamp(y, 0, picture.height() - 1));
}

/// What the two chroma of column 2x and the rows 2y and 2y + 1 should be.
Colour exactChroma(const QImage &picture, int x, int y)
{
    std::array<double, 3> sum{};
    for (const int row : {2 * y, 2 * y + 1}) {
        for (const int column : {2 * x - 1, 2 * x, 2 * x, 2 * x + 1}) {
            const QRgb pixel = clampedPixel(picture, column, row);
            sum = {sum[0] + qRed(pixel), sum[1] + qGreen(pixel), sum[2] + qBlue(pixel)};
        }
    }
    return exact(sum[0] / 8, sum[1] / 8, sum[2] / 8);
}

/// Where a picture is not what it should be; empty when it is, everywhere.
QString firstFault(const QImage &picture, const Planes &planes)
{
    for (int y = 0; y < picture.height(); ++y) {
        for (int x = 0; x < picture.width(); ++x) {
            const double expected = exact(picture.pixel(x, y)).luma;
            if (std::abs(planes.luma(x, y) - expected) > mostOff)
                return u"luma at %1, %2 is %3 instead of %4"_s.arg(x).arg(y).arg(planes.luma(x, y)).arg(expected);
        }
    }
    for (int y = 0; y < (picture.height() + 1) / 2; ++y) {
        for (int x = 0; x < (picture.width() + 1) / 2; ++x) {
            const Colour expected = exactChroma(picture, x, y);
            if (std::abs(planes.blue(x, y) - expected.blue) > mostOff)
                return u"blue at %1, %2 is %3 instead of %4"_s.arg(x).arg(y).arg(planes.blue(x, y)).arg(expected.blue);
            if (std::abs(planes.red(x, y) - expected.red) > mostOff)
                return u"red at %1, %2 is %3 instead of %4"_s.arg(x).arg(y).arg(planes.red(x, y)).arg(expected.red);
        }
    }
    return {};
}

QImage noise(const QSize &size, quint32 seed)
{
    QRandomGenerator random(seed);
    QImage picture(size, QImage::Format_RGB32);
    for (int y = 0; y < size.height(); ++y) {
        for (int x = 0; x < size.width(); ++x)
            picture.setPixel(x, y, 0xFF000000U | random.generate());
    }
    return picture;
}

} // namespace

void tst_FrameConverter::initTestCase()
{
    gst_init(nullptr, nullptr);
}

void tst_FrameConverter::everyColourIsTheNearest()
{
    // Every fifth red, green and blue, in squares whose chroma comes from one colour: a column and its neighbours.
    constexpr int steps = 52;
    constexpr int side = 4;
    QImage picture(steps * side, steps * side, QImage::Format_RGB32);
    for (int red = 0; red < steps; ++red) {
        for (int y = 0; y < picture.height(); ++y) {
            auto *line = reinterpret_cast<QRgb *>(picture.scanLine(y));
            for (int x = 0; x < picture.width(); ++x)
                line[x] = qRgb(5 * red, 5 * (y / side), 5 * (x / side));
        }
        const Planes planes(picture);
        for (int green = 0; green < steps; ++green) {
            for (int blue = 0; blue < steps; ++blue) {
                const int x = blue * side + 2;
                const int y = green * side;
                const Colour expected = exact(picture.pixel(x, y));
                const bool isNearest = std::abs(planes.luma(x, y) - expected.luma) <= mostOff &&
                                       std::abs(planes.blue(x / 2, y / 2) - expected.blue) <= mostOff &&
                                       std::abs(planes.red(x / 2, y / 2) - expected.red) <= mostOff;
                QVERIFY2(isNearest,
                         qPrintable(u"%1 becomes %2 %3 %4 instead of %5 %6 %7"_s.arg(QColor(picture.pixel(x, y)).name())
                                        .arg(planes.luma(x, y))
                                        .arg(planes.blue(x / 2, y / 2))
                                        .arg(planes.red(x / 2, y / 2))
                                        .arg(expected.luma)
                                        .arg(expected.blue)
                                        .arg(expected.red)));
            }
        }
    }
}

void tst_FrameConverter::greyHasNoChroma()
{
    QImage ramp(512, 2, QImage::Format_RGB32);
    for (int x = 0; x < ramp.width(); ++x) {
        const int grey = x / 2;
        ramp.setPixel(x, 0, qRgb(grey, grey, grey));
        ramp.setPixel(x, 1, qRgb(255 - grey, 255 - grey, 255 - grey));
    }
    const Planes planes(ramp);
    for (int x = 0; x < 256; ++x) {
        QCOMPARE(planes.blue(x, 0), 128);
        QCOMPARE(planes.red(x, 0), 128);
        QCOMPARE(planes.luma(2 * x, 0), static_cast<int>(std::lround(16 + 219 * x / 255.0)));
    }
}

void tst_FrameConverter::theEndsOfTheRange()
{
    const auto whole = [](const QColor &colour) {
        QImage picture(80, 2, QImage::Format_RGB32);
        picture.fill(colour);
        const Planes planes(picture);
        return std::array{planes.luma(40, 0), planes.blue(20, 0), planes.red(20, 0)};
    };
    QCOMPARE(whole(Qt::black), (std::array{16, 128, 128}));
    QCOMPARE(whole(Qt::white), (std::array{235, 128, 128}));
    QCOMPARE(whole(Qt::red), (std::array{63, 102, 240}));
    QCOMPARE(whole(Qt::green), (std::array{173, 42, 26}));
    QCOMPARE(whole(Qt::blue), (std::array{32, 240, 118}));
}

void tst_FrameConverter::chromaBelongsToTheLeftPixel()
{
    // One red column: all of it in its own chroma where that is an even one, else half to either side.
    const auto line = [](int column) {
        QImage picture(100, 2, QImage::Format_RGB32);
        picture.fill(Qt::black);
        picture.setPixel(column, 0, 0xFFFF0000U);
        picture.setPixel(column, 1, 0xFFFF0000U);
        return Planes(picture);
    };
    for (const int column : {20, 40, 98}) {
        const Planes planes = line(column);
        QCOMPARE(planes.red(column / 2 - 1, 0), 128);
        QCOMPARE(planes.red(column / 2, 0), 128 + 56);
    }
    for (const int column : {21, 35, 97}) {
        const Planes planes = line(column);
        QCOMPARE(planes.red(column / 2, 0), 128 + 28);
        QCOMPARE(planes.red(column / 2 + 1, 0), 128 + 28);
    }
    // Beyond its edges the picture goes on.
    QCOMPARE(line(0).red(0, 0), 128 + 84);
    QCOMPARE(line(99).red(49, 0), 128 + 28);
}

void tst_FrameConverter::rowsShareTheirChroma()
{
    QImage picture(100, 4, QImage::Format_RGB32);
    picture.fill(Qt::black);
    for (int x = 0; x < picture.width(); ++x)
        picture.setPixel(x, 1, 0xFF0000FFU);
    const Planes planes(picture);
    for (int x = 0; x < 50; ++x) {
        QCOMPARE(planes.blue(x, 0), 128 + 56);
        QCOMPARE(planes.blue(x, 1), 128);
    }
}

void tst_FrameConverter::takesPicturesOfAnySize_data()
{
    QTest::addColumn<QSize>("size");
    for (const QSize &size : {QSize(1, 1), QSize(2, 2), QSize(3, 5), QSize(33, 4), QSize(34, 2), QSize(35, 3),
                              QSize(36, 2), QSize(66, 2), QSize(67, 7), QSize(98, 2), QSize(131, 6), QSize(200, 9)})
        QTest::addRow("%dx%d", size.width(), size.height()) << size;
}

void tst_FrameConverter::takesPicturesOfAnySize()
{
    QFETCH(QSize, size);
    const QImage picture = noise(size, 1);
    QCOMPARE(firstFault(picture, Planes(picture)), QString());
}

void tst_FrameConverter::aPictureMayHavePadding()
{
    // The lines of a part lie as far from one another as those of the whole.
    const QImage whole = noise({160, 12}, 2);
    const QImage part(whole.constScanLine(2) + qsizetype{4} * 11, 101, 7, whole.bytesPerLine(), QImage::Format_RGB32);
    QCOMPARE(firstFault(part, Planes(part)), QString());
}

void tst_FrameConverter::framesDoNotShareMemory()
{
    const QSize size(64, 8);
    FrameConverter converter(size, 30);
    const QImage one = noise(size, 3);
    const QImage other = noise(size, 4);
    GstBuffer *first = converter.convert(one);
    GstBuffer *second = converter.convert(other);
    QCOMPARE(firstFault(one, Planes(first, size)), QString());
    QCOMPARE(firstFault(other, Planes(second, size)), QString());
}

/// Also when what was kept to be repeated has been copied, and goes after the frame itself has gone.
void tst_FrameConverter::memoryIsUsedAgain()
{
    const QSize size(64, 48);
    QImage picture(size, QImage::Format_RGB32);
    picture.fill(Qt::white);
    std::set<const void *> places;
    std::optional<FrameConverter> converter(std::in_place, size, 30);
    std::vector<std::unique_ptr<char[]>> others;
    GstBuffer *before = nullptr;
    for (int i = 0; i < 20; ++i) {
        GstBuffer *frame = converter->convert(picture);
        GstMapInfo map;
        QVERIFY(gst_buffer_map(frame, &map, GST_MAP_READ));
        places.insert(map.data);
        gst_buffer_unmap(frame, &map);
        GstBuffer *copy = gst_buffer_copy(frame);
        gst_buffer_unref(frame);
        if (before)
            gst_buffer_unref(before);
        before = copy;
        others.push_back(std::make_unique<char[]>(map.size)); // takes the place of what was not kept
    }
    QCOMPARE(places.size(), 2U);
    // The encoder may be the last to let go.
    converter.reset();
    gst_buffer_unref(before);
}

void tst_FrameConverter::howLongAFrameTakes()
{
    const QSize size(1920, 1200);
    FrameConverter converter(size, 30);
    const QImage picture = noise(size, 5);
    QBENCHMARK
    {
        gst_buffer_unref(converter.convert(picture));
    }
}

QTEST_GUILESS_MAIN(tst_FrameConverter)
#include "tst_FrameConverter.moc"
