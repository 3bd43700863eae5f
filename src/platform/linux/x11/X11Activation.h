#pragma once

class QWidget;

namespace kelp {

/// Asks the window manager to give the keyboard to `window`, in the name of the user.
void activateX11Window(const QWidget &window);

} // namespace kelp
