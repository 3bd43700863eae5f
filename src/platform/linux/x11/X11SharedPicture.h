#pragma once

#include <QImage>
#include <QPoint>
#include <QSize>

#include <cstdint>
#include <memory>

struct xcb_connection_t;

namespace kelp::x11 {

/// Memory shared with the X server, into which the server copies what a part of its first screen shows.
///
/// The first copy is the dear one: page by page, the server asks the kernel for the memory it writes to. Every further
/// one only copies.
class SharedPicture
{
public:
    /// Null where memory cannot be shared: the server is on another machine, or there is none left.
    [[nodiscard]] static std::unique_ptr<SharedPicture> make(xcb_connection_t *connection, const QSize &size);
    ~SharedPicture();
    SharedPicture(const SharedPicture &) = delete;
    SharedPicture &operator=(const SharedPicture &) = delete;

    [[nodiscard]] QSize size() const { return m_size; }
    /// Copies what lies under this picture with its corner at `corner`, all windows included. All of it must be on the
    /// screen, whose pixels must be what QImage::Format_RGB32 says. False where the server refused.
    [[nodiscard]] bool copyFrom(const QPoint &corner);
    /// Reads from every page, so that whoever reads the picture next does not wait for the kernel either.
    void touch() const;
    /// The picture where it is.
    [[nodiscard]] QImage view() const;
    /// Hands the memory over to an image; afterwards there is nothing left here.
    [[nodiscard]] QImage toImage();

private:
    SharedPicture(xcb_connection_t *connection, const QSize &size, void *memory)
        : m_connection(connection), m_size(size), m_memory(memory)
    {
    }
    void detachServer();

    xcb_connection_t *m_connection;
    QSize m_size;
    void *m_memory;
    std::uint32_t m_segment = 0; ///< the server's name for the memory; 0 while it has none
};

} // namespace kelp::x11
