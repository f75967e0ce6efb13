#pragma once

#include "support/Geometry.h"
#include "support/Handle.h"

#include <cstdint>
#include <functional>
#include <optional>
#include <string>
#include <vector>

namespace quillox {

struct Screen {
    /// Stays the same for this output across reboots; 0 when the platform cannot tell.
    std::uint32_t displayNumber = 0;
    std::string localizedName;
    Rect frame; ///< In the common plane of all screens.
    double safeAreaTop = 0; ///< Points at the top that a camera housing takes.

    bool operator==(const Screen&) const = default;
};

/// The screens of this session. Main thread only.
class Screens {
public:
    virtual ~Screens() = default;

    /// In the platform's order; empty while no output is connected.
    virtual std::vector<Screen> list() const = 0;

    /// The primary screen; none while no output is connected.
    virtual std::optional<Screen> mainScreen() const = 0;

    /// Called after screens came, went, moved or changed size, when `list` is settled again.
    /// Several changes in quick succession may arrive as one.
    [[nodiscard]] virtual Handle onChange(std::function<void()>) = 0;
};

} // namespace quillox
