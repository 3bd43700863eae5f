#pragma once

#include <xcb/xcb.h>
#include <xcb/xcbext.h>

#include <cstdlib>
#include <memory>

namespace kelp::x11 {

struct FreeReply
{
    void operator()(void *reply) const { std::free(reply); }
};

/// A reply, event or error of the X server; null where none came.
template<typename T>
using Reply = std::unique_ptr<T, FreeReply>;

template<typename T>
[[nodiscard]] Reply<T> owned(T *reply)
{
    return Reply<T>(reply);
}

/// Whether the server has an extension, "xcb_shm_id" for example.
[[nodiscard]] inline bool hasExtension(xcb_connection_t *connection, xcb_extension_t &extension)
{
    const xcb_query_extension_reply_t *found = xcb_get_extension_data(connection, &extension);
    return found && found->present;
}

/// The screen of which Qt's are monitors.
[[nodiscard]] inline const xcb_screen_t &firstScreen(xcb_connection_t *connection)
{
    return *xcb_setup_roots_iterator(xcb_get_setup(connection)).data;
}

} // namespace kelp::x11
