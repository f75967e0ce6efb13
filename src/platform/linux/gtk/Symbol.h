#pragma once

#include "support/Geometry.h"

#include <cairomm/context.h>
#include <string_view>

namespace quillox {

/// Draws one of our symbols, `size` wide and high from the context's origin on. They are read by
/// the SVG library itself: a system without a loader for images would show empty buttons.
///
/// The names are those of the files in resources/symbols; of another one nothing shows. What those
/// files draw with has to stay sharp on screens with more than one pixel to a point: paths and
/// clips, no masks, filters or groups with an opacity. Main thread only.
void drawSymbol(const Cairo::RefPtr<Cairo::Context>&, std::string_view name, double size, Color);

/// Draws the product's logo, `height` high from the context's origin on.
void drawLogo(const Cairo::RefPtr<Cairo::Context>&, double height, Color);

/// How wide the logo is at that height.
double logoWidth(double height);

} // namespace quillox
