#include "platform/linux/x11/X11SharedPicture.h"

#include "base/Memory.h"
#include "platform/linux/x11/X11Connection.h"

#include <xcb/shm.h>
#include <xcb/xcb.h>

#include <utility>

#include <sys/ipc.h>
#include <sys/shm.h>
#include <unistd.h>

namespace kelp::x11 {

namespace {

constexpr int bytesPerPixel = 4;

std::size_t bytesOf(const QSize &size)
{
    return static_cast<std::size_t>(size.width()) * static_cast<std::size_t>(size.height()) * bytesPerPixel;
}

void detachHere(void *memory)
{
    shmdt(memory);
}

} // namespace

std::unique_ptr<SharedPicture> SharedPicture::make(xcb_connection_t *connection, const QSize &size)
{
    if (size.isEmpty() || !hasExtension(connection, xcb_shm_id))
        return {};
    const std::size_t bytes = bytesOf(size);
    const int id = shmget(IPC_PRIVATE, bytes, IPC_CREAT | 0600);
    if (id < 0)
        return {};
    std::unique_ptr<SharedPicture> picture;
    void *memory = shmat(id, nullptr, 0);
    if (memory != reinterpret_cast<void *>(-1)) {
        memory::populate(memory, bytes);
        picture.reset(new SharedPicture(connection, size, memory));
        const xcb_shm_seg_t segment = xcb_generate_id(connection);
        const xcb_void_cookie_t cookie =
            xcb_shm_attach_checked(connection, segment, static_cast<std::uint32_t>(id), false);
        const Reply<xcb_generic_error_t> error(xcb_request_check(connection, cookie));
        if (error)
            picture.reset();
        else
            picture->m_segment = segment;
    }
    shmctl(id, IPC_RMID, nullptr); // it goes with the last who is attached
    return picture;
}

SharedPicture::~SharedPicture()
{
    detachServer();
    if (m_memory)
        detachHere(m_memory);
}

bool SharedPicture::copyFrom(const QPoint &corner)
{
    const xcb_window_t root = firstScreen(m_connection).root;
    const auto cookie =
        xcb_shm_get_image(m_connection, root, static_cast<std::int16_t>(corner.x()),
                          static_cast<std::int16_t>(corner.y()), static_cast<std::uint16_t>(m_size.width()),
                          static_cast<std::uint16_t>(m_size.height()), ~0U, XCB_IMAGE_FORMAT_Z_PIXMAP, m_segment, 0);
    return Reply<xcb_shm_get_image_reply_t>(xcb_shm_get_image_reply(m_connection, cookie, nullptr)) != nullptr;
}

void SharedPicture::touch() const
{
    const auto page = static_cast<std::size_t>(::sysconf(_SC_PAGESIZE));
    for (std::size_t place = 0; place < bytesOf(m_size); place += page)
        static_cast<void>(static_cast<const volatile char *>(m_memory)[place]);
}

QImage SharedPicture::view() const
{
    return QImage(static_cast<const uchar *>(m_memory), m_size.width(), m_size.height(), m_size.width() * bytesPerPixel,
                  QImage::Format_RGB32);
}

QImage SharedPicture::toImage()
{
    detachServer();
    void *memory = std::exchange(m_memory, nullptr);
    return QImage(static_cast<uchar *>(memory), m_size.width(), m_size.height(), m_size.width() * bytesPerPixel,
                  QImage::Format_RGB32, detachHere, memory);
}

void SharedPicture::detachServer()
{
    if (m_segment)
        xcb_discard_reply(m_connection, xcb_shm_detach_checked(m_connection, m_segment).sequence);
    m_segment = 0;
}

} // namespace kelp::x11
