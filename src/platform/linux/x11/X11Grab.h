#pragma once

#include <QImage>
#include <QRect>

struct xcb_connection_t;

namespace kelp::x11 {

/// What a part of the first X screen shows, all windows included; `part` is in the server's pixels. Null where it
/// cannot be seen: outside of the screen, or with a server that has no true colours or stores them in another order of
/// bytes.

/// Pixel by pixel, in memory shared with the server. Null also when the server is on another machine.
[[nodiscard]] QImage grab(xcb_connection_t *connection, const QRect &part);

/// An eighth as wide and high, each pixel the mean of 64. The server does the work and hands over only the result.
[[nodiscard]] QImage grabEighth(xcb_connection_t *connection, const QRect &part);

} // namespace kelp::x11
