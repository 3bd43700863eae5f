#include "platform/linux/x11/X11Grab.h"

#include "platform/linux/x11/X11Connection.h"
#include "platform/linux/x11/X11ServerPicture.h"
#include "platform/linux/x11/X11SharedPicture.h"

#include <QSysInfo>

#include <xcb/xcb.h>

#include <algorithm>
#include <cstdint>
#include <memory>
#include <utility>

namespace kelp::x11 {

namespace {

constexpr int halvings = 3;
constexpr int shrinking = 1 << halvings;

/// `part` as far as there is something to see; empty where pixels are not what QImage::Format_RGB32 says.
QRect visible(xcb_connection_t *connection, const QRect &part)
{
    const xcb_setup_t &setup = *xcb_get_setup(connection);
    const auto ours =
        QSysInfo::ByteOrder == QSysInfo::LittleEndian ? XCB_IMAGE_ORDER_LSB_FIRST : XCB_IMAGE_ORDER_MSB_FIRST;
    const xcb_screen_t &screen = firstScreen(connection);
    if (setup.image_byte_order != ours || screen.root_depth != depthOfPictures)
        return {};
    return part & QRect(0, 0, screen.width_in_pixels, screen.height_in_pixels);
}

/// An eighth as wide and high: each pixel is the mean of a square of 64. What fills no square is left out.
QImage eighth(const QImage &picture)
{
    constexpr int channels = 4;
    QImage result(picture.width() / shrinking, picture.height() / shrinking, QImage::Format_RGB32);
    const auto bytes = static_cast<std::size_t>(result.width()) * shrinking * channels;
    std::vector<std::uint16_t> columns(bytes); // sums of eight pixels one below the other
    for (int y = 0; y < result.height(); ++y) {
        std::fill(columns.begin(), columns.end(), std::uint16_t{0});
        for (int row = 0; row < shrinking; ++row) {
            const uchar *from = picture.constScanLine(y * shrinking + row);
            for (std::size_t i = 0; i < bytes; ++i)
                columns[i] = static_cast<std::uint16_t>(columns[i] + from[i]);
        }
        uchar *to = result.scanLine(y);
        const std::uint16_t *column = columns.data();
        for (int x = 0; x < result.width(); ++x, column += shrinking * channels) {
            for (int channel = 0; channel < channels; ++channel) {
                int sum = 0;
                for (int i = 0; i < shrinking; ++i)
                    sum += column[i * channels + channel];
                *to++ = static_cast<uchar>((sum + shrinking * shrinking / 2) / (shrinking * shrinking));
            }
        }
    }
    return result;
}

} // namespace

Grabber::Grabber(xcb_connection_t *connection) : m_connection(connection) {}

Grabber::~Grabber() = default;

void Grabber::expect(const QRect &part)
{
    const QRect seen = visible(m_connection, part);
    std::unique_ptr<SharedPicture> picture = SharedPicture::make(m_connection, seen.size());
    if (picture && picture->copyFrom(seen.topLeft())) {
        picture->touch();
        m_expected.push_back(std::move(picture));
    }
}

void Grabber::forget()
{
    m_expected.clear();
}

QImage Grabber::grab(const QRect &part)
{
    const QRect seen = visible(m_connection, part);
    const auto expected = findExpected(seen.size());
    std::unique_ptr<SharedPicture> picture;
    if (expected != m_expected.end()) {
        picture = std::move(*expected);
        m_expected.erase(expected);
    } else {
        picture = SharedPicture::make(m_connection, seen.size());
    }
    return picture && picture->copyFrom(seen.topLeft()) ? picture->toImage() : QImage();
}

Grabber::Pictures::iterator Grabber::findExpected(const QSize &size)
{
    return std::find_if(m_expected.begin(), m_expected.end(),
                        [&](const auto &picture) { return picture->size() == size; });
}

QImage Grabber::grabEighth(const QRect &part)
{
    const QRect seen = visible(m_connection, part);
    // With memory at hand, copying all of it and shrinking it here is sooner done than asking the server for that.
    const auto expected = findExpected(seen.size());
    if (expected != m_expected.end() && std::min(seen.width(), seen.height()) >= shrinking &&
        (*expected)->copyFrom(seen.topLeft()))
        return eighth((*expected)->view());
    return shrunkByServer(m_connection, seen, halvings);
}

} // namespace kelp::x11
