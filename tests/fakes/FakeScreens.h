#pragma once

#include "ports/Screens.h"
#include "support/Published.h"

#include <algorithm>

namespace quillox {

/// Screens that the test plugs in and out; the first one is the main screen.
class FakeScreens final : public Screens {
public:
    /// Replaces a screen of the same number.
    void plugIn(Screen screen)
    {
        auto present = std::ranges::find(m_screens, screen.displayNumber, &Screen::displayNumber);
        if (present != m_screens.end())
            *present = std::move(screen);
        else
            m_screens.push_back(std::move(screen));
        m_changes.set(m_changes.get() + 1);
    }

    void unplug(std::uint32_t displayNumber)
    {
        std::erase_if(
            m_screens, [=](const Screen& screen) { return screen.displayNumber == displayNumber; });
        m_changes.set(m_changes.get() + 1);
    }

    std::vector<Screen> list() const override { return m_screens; }

    std::optional<Screen> mainScreen() const override
    {
        return m_screens.empty() ? std::nullopt : std::optional(m_screens.front());
    }

    Handle onChange(std::function<void()> callback) override
    {
        return m_changes.observe([callback = std::move(callback)](int) { callback(); });
    }

private:
    std::vector<Screen> m_screens;
    Published<int> m_changes { 0 };
};

} // namespace quillox
