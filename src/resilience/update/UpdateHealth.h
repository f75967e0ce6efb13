#pragma once

namespace quillox {

class Installation;
class SystemLog;

/// Tells the launcher that this version works. Until then a version that was just installed is on
/// trial, and comes off it by being rolled back. Main thread only.
class UpdateHealth {
public:
    /// Both outlive this.
    UpdateHealth(Installation& installation, SystemLog& log)
        : m_installation(installation)
        , m_log(log)
    {
    }

    /// The screen that the start leads to is there: the sealed page or the notice that it cannot be
    /// reached, or, when nothing is sealed by itself, the setup. Only the first call does anything.
    void handleScreenShown();

private:
    Installation& m_installation;
    SystemLog& m_log;
    bool m_isNoted = false;
};

} // namespace quillox
