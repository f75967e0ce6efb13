#pragma once

#include "app/AppState.h"

#include <string>

namespace quillox {

/// The seconds before the application seals itself, with every way to stay in setup. Main thread
/// only.
class AutoStartCountdownOverlay {
public:
    explicit AutoStartCountdownOverlay(AppState& state)
        : m_state(state)
    {
    }

    static constexpr auto hint = "PRESS ESC — OR CLICK — TO STAY IN SETUP";
    static constexpr auto cancelTitle = "CANCEL";

    bool isShown() const { return m_state.autoStartCountdown.get().has_value(); }

    /// For example "SEALING IN 5s"; empty while the overlay is not shown.
    std::string title() const
    {
        const auto seconds = m_state.autoStartCountdown.get();
        return seconds ? "SEALING IN " + std::to_string(*seconds) + "s" : std::string();
    }

    void cancel() { m_state.cancelAutoStart(); }

private:
    AppState& m_state;
};

} // namespace quillox
