#pragma once

namespace quillox {

/// In points; the origin of a plane is at its bottom left, y grows upwards.
struct Rect {
    double x = 0;
    double y = 0;
    double width = 0;
    double height = 0;

    bool operator==(const Rect&) const = default;
};

/// Components from 0 to 1, in sRGB.
struct Color {
    double red = 0;
    double green = 0;
    double blue = 0;
    double alpha = 1;

    bool operator==(const Color&) const = default;

    static constexpr Color black() { return {}; }
};

} // namespace quillox
