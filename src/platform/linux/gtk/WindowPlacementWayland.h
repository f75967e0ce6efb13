#pragma once

#include "platform/linux/gtk/WindowPlacement.h"

#include <map>

namespace quillox {

/// Full screen on one output, as the compositor does it.
class WindowPlacementWayland final : public WindowPlacement {
public:
    explicit WindowPlacementWayland(ScreensGdk& screens)
        : m_screens(screens)
    {
    }

    void prepare(Gtk::Window&) override;
    void cover(Gtk::Window&, std::uint32_t displayNumber, const Rect& frame) override;
    void hide(Gtk::Window&) override;
    void takeKeyboard(Gtk::Window&) override;
    void present(Gtk::Window&) override;
    bool canCoverSeparateScreens() const override;
    bool fillsScreen() const override;

private:
    void fillScreen(Gtk::Window&);

    ScreensGdk& m_screens;
    std::map<Gtk::Window*, std::uint32_t> m_covered; ///< With the display that each is to fill.
};

/// Whether the compositor shows one window at a time over everything, and so has no shortcuts of
/// its own to leave it by.
bool isSingleWindowCompositor();

/// Whether the compositor lets a window switch its shortcuts off.
bool hasShortcutsInhibitor();

} // namespace quillox
