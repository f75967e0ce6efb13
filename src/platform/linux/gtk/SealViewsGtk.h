#pragma once

#include "lockdown/SealViews.h"

namespace quillox {

class SealViewsGtk final : public SealViews {
public:
    explicit SealViewsGtk(RunLoop& runLoop)
        : m_runLoop(runLoop)
    {
    }

    std::unique_ptr<View> makePrompt(SealPrompt&) override;
    std::unique_ptr<View> makeHoldIndicator(HoldIndicatorModel&) override;

private:
    RunLoop& m_runLoop;
};

} // namespace quillox
