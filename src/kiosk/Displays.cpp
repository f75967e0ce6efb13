#include "kiosk/Displays.h"

#include <algorithm>
#include <cmath>
#include <fmt/format.h>

namespace quillox::Displays {

std::vector<DisplayInfo> list(const Screens& screens)
{
    std::vector<DisplayInfo> displays;
    for (const auto& screen : screens.list()) {
        displays.push_back({ screen.displayNumber,
            fmt::format("{} — {}×{}", screen.localizedName, std::lround(screen.frame.width),
                std::lround(screen.frame.height)) });
    }
    return displays;
}

std::optional<Screen> screen(const Screens& screens, std::uint32_t displayID)
{
    if (displayID == 0)
        return std::nullopt;
    const auto all = screens.list();
    const auto found = std::ranges::find(all, displayID, &Screen::displayNumber);
    return found == all.end() ? std::nullopt : std::optional(*found);
}

} // namespace quillox::Displays
