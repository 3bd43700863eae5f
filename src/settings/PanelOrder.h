#pragma once

class QWidget;

namespace kelp {

/// Lays out everything below `widget` that has changed, from the inside to the outside. Left to itself each level would
/// wait for the event loop, and the panel would be seen in between.
void arrange(const QWidget &widget);

/// Makes Tab go through `window` in the order in which its layouts show its widgets, whenever these were made, and lets
/// only the keyboard give buttons the focus, so that a click leaves no ring behind.
void orderFocus(const QWidget &window);

} // namespace kelp
