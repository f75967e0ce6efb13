#pragma once

#include "config/SettingsEnumerations.h"
#include "ports/View.h"
#include "support/Geometry.h"
#include "support/Published.h"

#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace quillox {

/// The floating bar of buttons with which visitors find their way through the page. Main thread
/// only.
class KioskNavBar {
public:
    static constexpr Color background { 0, 0, 0, 0.72 };
    static constexpr Color contentTint { 1, 1, 1, 1 };
    static constexpr double cornerRadius = 12; ///< Points, as everything below.
    static constexpr double spacing = 6;
    static constexpr double verticalInset = 2;
    static constexpr double horizontalInset = 8;
    static constexpr double buttonSize = 48;
    static constexpr double symbolSize = 18; ///< Drawn in semibold weight.

    /// What a button shows at a moment.
    struct State {
        bool isEnabled = true;

        double alpha() const { return isEnabled ? 1.0 : 0.3; }
        bool operator==(const State&) const = default;
    };

    struct Button {
        const char* symbol;
        const char* accessibleName;
        void (KioskNavBar::*tapped)(); ///< What a click or a tap calls.
        Published<State> state {};
    };

    KioskNavBar(bool showBack, bool showForward, bool showRefresh, bool showHome);

    std::function<void()> onBack;
    std::function<void()> onForward;
    std::function<void()> onRefresh;
    std::function<void()> onHome;

    Button& backButton() { return m_backButton; }
    Button& forwardButton() { return m_forwardButton; }

    /// The buttons that are shown, from the leading edge on; never empty in a bar that is
    /// installed.
    const std::vector<Button*>& stack() const { return m_stack; }

    void backTapped() { call(onBack); }
    void forwardTapped() { call(onForward); }
    void refreshTapped() { call(onRefresh); }
    void homeTapped() { call(onHome); }

    /// The whole bar, as an area at the origin.
    Rect size() const;

    /// Where the bar stands in a container of this size. `topInset` is the band that the page
    /// leaves free at the top, `notchTop` the height of the camera housing there.
    Rect frame(const Rect& container, NavPosition, double topInset, double notchTop) const;

    /// How the bar follows its container's size.
    static Autoresizing autoresizing(NavPosition);

private:
    static void call(const std::function<void()>& callback)
    {
        if (callback)
            callback();
    }

    Button m_backButton { "chevron.left", "Back", &KioskNavBar::backTapped };
    Button m_forwardButton { "chevron.right", "Forward", &KioskNavBar::forwardTapped };
    Button m_refreshButton { "arrow.clockwise", "Reload", &KioskNavBar::refreshTapped };
    Button m_homeButton { "house", "Home", &KioskNavBar::homeTapped };
    std::vector<Button*> m_stack;
};

} // namespace quillox
