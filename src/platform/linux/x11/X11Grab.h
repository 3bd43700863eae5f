#pragma once

#include <QImage>
#include <QRect>

#include <memory>
#include <vector>

struct xcb_connection_t;

namespace kelp::x11 {

class SharedPicture;

/// Takes pictures of what a part of the first X screen shows, all windows included; parts are in the server's pixels.
/// They are null where nothing can be seen: outside of the screen, or with a server that has no true colours or stores
/// them in another order of bytes.
class Grabber
{
public:
    explicit Grabber(xcb_connection_t *connection);
    ~Grabber();

    /// Makes memory ready for one `grab` of a part of this size, which is then several times as fast, and for what is
    /// grabbed at an eighth before.
    void expect(const QRect &part);
    /// Gives back what was made ready.
    void forget();
    /// Pixel by pixel, in memory shared with the server. Null also when the server is on another machine.
    [[nodiscard]] QImage grab(const QRect &part);

    /// An eighth as wide and high, each pixel the mean of 64. Unless a picture of this size is expected, the server
    /// does the work and hands over only the result.
    [[nodiscard]] QImage grabEighth(const QRect &part);

private:
    using Pictures = std::vector<std::unique_ptr<SharedPicture>>;

    [[nodiscard]] Pictures::iterator findExpected(const QSize &size);

    xcb_connection_t *m_connection;
    Pictures m_expected;
};

} // namespace kelp::x11
