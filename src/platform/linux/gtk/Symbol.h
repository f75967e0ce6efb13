#pragma once

#include "support/Geometry.h"

#include <cairomm/context.h>
#include <string_view>

namespace quillox {

/// Draws one of our symbols in semibold strokes, `size` wide and high from the context's origin on.
/// They are paths and no image files: a system without a loader for those would show empty buttons.
///
/// There are "chevron.left", "chevron.right", "arrow.clockwise" and "house"; of another name
/// nothing shows.
void drawSymbol(const Cairo::RefPtr<Cairo::Context>&, std::string_view name, double size, Color);

} // namespace quillox
