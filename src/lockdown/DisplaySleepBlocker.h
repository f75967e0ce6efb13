#pragma once

#include "ports/PowerAssertions.h"

namespace quillox {

class SystemLog;

/// Keeps the display from dimming or sleeping while a run is sealed. Main thread only.
class DisplaySleepBlocker {
public:
    DisplaySleepBlocker(PowerAssertions& assertions, SystemLog& log)
        : m_assertions(assertions)
        , m_log(log)
    {
    }

    /// Harmless when active; tries again after a failure.
    void start();
    void stop();

    bool isActive() const { return m_isActive; }

private:
    PowerAssertions& m_assertions;
    SystemLog& m_log;
    PowerAssertions::Identifier m_assertionID = 0;
    bool m_isActive = false;
};

} // namespace quillox
