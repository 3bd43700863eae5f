// Clicks for tests on a Wayland compositor: virtual-pointer WIDTH HEIGHT, the size of all its outputs together; then a
// line "X Y" on standard input for each click with the left button, which is answered with a line when the compositor
// has it.

#include "virtual-pointer-client.h"

#include <wayland-client.h>

#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <initializer_list>
#include <iostream>
#include <string>

#include <linux/input-event-codes.h>

namespace {

zwlr_virtual_pointer_manager_v1 *manager = nullptr;

void global(void *, wl_registry *registry, std::uint32_t name, const char *interface, std::uint32_t)
{
    if (std::strcmp(interface, zwlr_virtual_pointer_manager_v1_interface.name) == 0) {
        manager = static_cast<zwlr_virtual_pointer_manager_v1 *>(
            wl_registry_bind(registry, name, &zwlr_virtual_pointer_manager_v1_interface, 1));
    }
}
void globalRemove(void *, wl_registry *, std::uint32_t) {}
constexpr wl_registry_listener listener{global, globalRemove};

} // namespace

int main(int argc, char **argv)
{
    wl_display *display = argc == 3 ? wl_display_connect(nullptr) : nullptr;
    if (!display)
        return 1;
    const auto width = static_cast<std::uint32_t>(std::atoi(argv[1]));
    const auto height = static_cast<std::uint32_t>(std::atoi(argv[2]));
    wl_registry_add_listener(wl_display_get_registry(display), &listener, nullptr);
    wl_display_roundtrip(display);
    if (!manager)
        return 1;
    auto *pointer = zwlr_virtual_pointer_manager_v1_create_virtual_pointer(manager, nullptr);
    wl_display_roundtrip(display);

    std::uint32_t time = 1; // milliseconds
    const auto pointTo = [&](std::uint32_t x, std::uint32_t y) {
        zwlr_virtual_pointer_v1_motion_absolute(pointer, time += 20, x, y, width, height);
        zwlr_virtual_pointer_v1_frame(pointer);
        wl_display_roundtrip(display);
    };
    std::string word;
    while (std::cin >> word) {
        std::uint32_t x = 0;
        std::uint32_t y = 0;
        if (word == "move" && std::cin >> x >> y) {
            pointTo(x, (y + height / 2) % height); // from elsewhere, so that it enters what is there now
            pointTo(x, y);
        } else if (word == "click") {
            time += 2000; // never a double click
            for (const std::uint32_t isDown : {1U, 0U}) {
                zwlr_virtual_pointer_v1_button(pointer, time += 20, BTN_LEFT, isDown);
                zwlr_virtual_pointer_v1_frame(pointer);
                wl_display_roundtrip(display);
            }
        }
        std::cout << "done" << std::endl;
    }
    return 0;
}
