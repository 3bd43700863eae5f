#include "platform/linux/x11/X11ServerPicture.h"

#include "platform/linux/x11/X11Connection.h"

#include <xcb/render.h>
#include <xcb/xcb.h>

#include <algorithm>
#include <cstdint>
#include <cstring>
#include <memory>
#include <optional>

namespace kelp::x11 {

namespace {

/// Forgets a request's error: without the result there is no picture, and that is seen anyway.
void unheard(xcb_connection_t *connection, xcb_void_cookie_t cookie)
{
    xcb_discard_reply(connection, cookie.sequence);
}

/// The format of the root window's pixels in the eyes of the RENDER extension.
std::optional<xcb_render_pictformat_t> rootFormat(xcb_connection_t *connection)
{
    const Reply<xcb_render_query_pict_formats_reply_t> formats(
        xcb_render_query_pict_formats_reply(connection, xcb_render_query_pict_formats(connection), nullptr));
    if (!formats)
        return {};
    const xcb_visualid_t wanted = firstScreen(connection).root_visual;
    for (auto screen = xcb_render_query_pict_formats_screens_iterator(formats.get()); screen.rem > 0;
         xcb_render_pictscreen_next(&screen)) {
        for (auto depth = xcb_render_pictscreen_depths_iterator(screen.data); depth.rem > 0;
             xcb_render_pictdepth_next(&depth)) {
            for (auto visual = xcb_render_pictdepth_visuals_iterator(depth.data); visual.rem > 0;
                 xcb_render_pictvisual_next(&visual)) {
                if (visual.data->visual == wanted)
                    return visual.data->format;
            }
        }
    }
    return {};
}

/// Something in the server that is drawn from and into.
class ServerPicture
{
public:
    /// The root window with everything on it.
    ServerPicture(xcb_connection_t *connection, xcb_render_pictformat_t format)
        : m_connection(connection), m_drawable(firstScreen(connection).root)
    {
        const std::uint32_t includeInferiors = XCB_SUBWINDOW_MODE_INCLUDE_INFERIORS;
        create(format, XCB_RENDER_CP_SUBWINDOW_MODE, &includeInferiors);
    }
    /// A new picture of `size`.
    ServerPicture(xcb_connection_t *connection, xcb_render_pictformat_t format, const QSize &size)
        : m_connection(connection), m_drawable(xcb_generate_id(connection)), m_isOwn(true)
    {
        unheard(connection, xcb_create_pixmap_checked(
                                connection, depthOfPictures, m_drawable, firstScreen(connection).root,
                                static_cast<std::uint16_t>(size.width()), static_cast<std::uint16_t>(size.height())));
        create(format, 0, nullptr);
    }
    ~ServerPicture()
    {
        unheard(m_connection, xcb_render_free_picture_checked(m_connection, m_picture));
        if (m_isOwn)
            unheard(m_connection, xcb_free_pixmap_checked(m_connection, m_drawable));
    }
    ServerPicture(const ServerPicture &) = delete;
    ServerPicture &operator=(const ServerPicture &) = delete;

    /// Fills this with what `source` shows from `corner` on at half the size. Each sample lies in the middle of four
    /// pixels, so that all of them count alike.
    void takeHalf(const ServerPicture &source, const QPoint &corner, const QSize &size)
    {
        const auto fixed = [](int value) { return static_cast<xcb_render_fixed_t>(value) << 16; };
        const xcb_render_transform_t half{fixed(2), 0, fixed(corner.x()), 0, fixed(2), fixed(corner.y()),
                                          0,        0, fixed(1)};
        static constexpr char filter[] = "bilinear";
        unheard(m_connection, xcb_render_set_picture_transform_checked(m_connection, source.m_picture, half));
        unheard(m_connection, xcb_render_set_picture_filter_checked(m_connection, source.m_picture, sizeof filter - 1,
                                                                    filter, 0, nullptr));
        unheard(m_connection,
                xcb_render_composite_checked(m_connection, XCB_RENDER_PICT_OP_SRC, source.m_picture, XCB_NONE,
                                             m_picture, 0, 0, 0, 0, 0, 0, static_cast<std::uint16_t>(size.width()),
                                             static_cast<std::uint16_t>(size.height())));
    }

    [[nodiscard]] xcb_drawable_t drawable() const { return m_drawable; }

private:
    void create(xcb_render_pictformat_t format, std::uint32_t mask, const std::uint32_t *values)
    {
        m_picture = xcb_generate_id(m_connection);
        unheard(m_connection,
                xcb_render_create_picture_checked(m_connection, m_picture, m_drawable, format, mask, values));
    }

    xcb_connection_t *m_connection;
    xcb_drawable_t m_drawable;
    xcb_render_picture_t m_picture = XCB_NONE;
    bool m_isOwn = false;
};

QImage downloaded(xcb_connection_t *connection, xcb_drawable_t drawable, const QSize &size)
{
    const auto cookie =
        xcb_get_image(connection, XCB_IMAGE_FORMAT_Z_PIXMAP, drawable, 0, 0, static_cast<std::uint16_t>(size.width()),
                      static_cast<std::uint16_t>(size.height()), ~0U);
    const Reply<xcb_get_image_reply_t> reply(xcb_get_image_reply(connection, cookie, nullptr));
    const auto bytes = static_cast<qsizetype>(size.width()) * size.height() * 4;
    if (!reply || xcb_get_image_data_length(reply.get()) < bytes)
        return {};
    QImage image(size, QImage::Format_RGB32);
    std::memcpy(image.bits(), xcb_get_image_data(reply.get()), static_cast<std::size_t>(bytes));
    return image;
}

} // namespace

QImage shrunkByServer(xcb_connection_t *connection, const QRect &part, int halvings)
{
    if (part.isEmpty() || !hasExtension(connection, xcb_render_id))
        return {};
    const std::optional<xcb_render_pictformat_t> format = rootFormat(connection);
    if (!format)
        return {};
    auto from = std::make_unique<ServerPicture>(connection, *format);
    QPoint corner = part.topLeft();
    QSize size = part.size();
    for (int i = 0; i < halvings; ++i) {
        size = QSize(std::max(1, size.width() / 2), std::max(1, size.height() / 2));
        auto to = std::make_unique<ServerPicture>(connection, *format, size);
        to->takeHalf(*from, corner, size);
        from = std::move(to);
        corner = {};
    }
    return downloaded(connection, from->drawable(), size);
}

} // namespace kelp::x11
