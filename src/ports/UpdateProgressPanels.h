#pragma once

#include "support/Handle.h"

#include <functional>
#include <string>

namespace quillox {

template <typename Value> class Published;

/// A small modal panel for a download that the operator waits for. Main thread only.
class UpdateProgressPanels {
public:
    virtual ~UpdateProgressPanels() = default;

    /// Shows the message and how much is done, from 0 to 1, until the handle goes. `fraction`
    /// outlives the handle. `onCancel` comes at most once, when the user gives up; the panel may
    /// be gone by then.
    [[nodiscard]] virtual Handle show(
        const std::string& message, Published<double>& fraction, std::function<void()> onCancel)
        = 0;
};

} // namespace quillox
