#pragma once

#include "support/Published.h"

#include <algorithm>
#include <string>

namespace quillox {

/// How far the gesture that ends a run is held, for whoever shows it.
struct HoldIndicatorModel {
    Published<double> progress { 0.0 }; ///< 0 to 1.
};

/// What is shown while the gesture is held: a title, a bar that fills from the leading edge, and
/// the keys.
struct SealHoldOverlay {
    static constexpr double spacing = 12; ///< Points between the title, the bar and the hint.
    static constexpr double barWidth = 220; ///< Points.
    static constexpr double shownAbove = 0.001;
    static constexpr auto hint = "HOLD ⌘⇧S";

    std::string title;
    double progress = 0;

    bool isShown() const { return progress > shownAbove; }
    double filledWidth() const { return barWidth * std::clamp(progress, 0.0, 1.0); }
};

/// The overlay of a sealed run.
class SealHoldIndicator {
public:
    explicit SealHoldIndicator(HoldIndicatorModel& model)
        : m_model(model)
    {
    }

    SealHoldOverlay body() const { return { "BREAKING SEAL IN PROGRESS", m_model.progress.get() }; }

private:
    HoldIndicatorModel& m_model;
};

/// Shown in setup after the gesture, for as long as its keys are still held.
struct SealReleaseOverlay {
    static constexpr auto title = "WEBSITE SEALED";
    static constexpr auto hint = "RELEASE ⌘⇧S";
};

/// One line of advice about the gesture.
struct SealHintOverlay {
    std::string hint;
    bool isVisible = false;

    bool operator==(const SealHintOverlay&) const = default;
};

} // namespace quillox
