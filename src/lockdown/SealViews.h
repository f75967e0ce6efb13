#pragma once

#include "lockdown/SealOverlays.h"
#include "lockdown/SealPrompt.h"
#include "ports/View.h"

#include <memory>

namespace quillox {

/// Draws what surrounds the seal gesture. Main thread only.
class SealViews {
public:
    virtual ~SealViews() = default;

    /// The prompt on a view that covers its container. Both outlive the view; destroying the view
    /// from within a callback of the prompt is fine.
    virtual std::unique_ptr<View> makePrompt(SealPrompt&) = 0;

    /// Lets every click through to what is below. The model outlives the view.
    virtual std::unique_ptr<View> makeHoldIndicator(HoldIndicatorModel&) = 0;
};

} // namespace quillox
