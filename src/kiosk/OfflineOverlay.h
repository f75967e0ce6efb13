#pragma once

#include "support/Geometry.h"
#include "support/Published.h"

namespace quillox {

/// Whether the notice of a lost connection is to be shown.
struct OfflineModel {
    Published<bool> offline { false };
};

/// The notice over the whole page: two lines in a stack in its middle. It has no buttons, and
/// nobody can dismiss it.
struct OfflineOverlay {
    struct Line {
        const char* text; ///< Shown in upper case.
        double fontSize; ///< Points; the system font in bold.
        double opacity;
    };

    static constexpr double whiteLevel = 0.92;
    static constexpr Color background { whiteLevel, whiteLevel, whiteLevel, 1 };
    static constexpr Color textColor = Color::black();
    static constexpr double spacing = 10; ///< Points between the lines.
    static constexpr Line title { "NO INTERNET CONNECTION", 20, 1 };
    static constexpr Line message { "Waiting for connection…", 12, 0.48 };
};

} // namespace quillox
