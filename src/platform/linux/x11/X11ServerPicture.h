#pragma once

#include <QImage>
#include <QRect>

#include <cstdint>

struct xcb_connection_t;

namespace kelp::x11 {

/// The only depth of screens that pictures are taken of: bits of colour.
inline constexpr std::uint8_t depthOfPictures = 24;

/// What a part of the first screen shows, at half the size `halvings` times over, made in the server by its RENDER
/// extension: only the result is handed over. Null without that extension, and where there is nothing to see. `part` is
/// in the server's pixels and lies on the screen, whose pixels are as in QImage::Format_RGB32.
[[nodiscard]] QImage shrunkByServer(xcb_connection_t *connection, const QRect &part, int halvings);

} // namespace kelp::x11
