#pragma once

namespace kelp::pictures {

class Canvas;

/// The window's sill with books, a cup and a plant, lit by a lamp in the room and by the town behind.
void paintDesk(Canvas &canvas);

} // namespace kelp::pictures
