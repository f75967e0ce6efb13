#pragma once

#include "platform/linux/service/NotifySocket.h"
#include "platform/linux/system/RunLoopGlib.h"
#include "resilience/RestartPolicy.h"

#include <chrono>
#include <memory>
#include <string>
#include <vector>

namespace quillox {

class SystemLog;

/// Keeps a program alive where no service manager does: starts it, starts it again when it crashed
/// or hangs, and ends when the program ends well or when its display is gone.
class RestartingParent {
public:
    struct Timing {
        /// A program that was silent for so long hangs. It is told in WATCHDOG_USEC.
        std::chrono::milliseconds watchdog = std::chrono::seconds(30);
        /// What one second of a pause takes.
        std::chrono::milliseconds second = std::chrono::seconds(1);
    };

    /// `command` is the absolute path of the program and its arguments. The log must outlive this.
    RestartingParent(std::vector<std::string> command, SystemLog&, Timing);
    RestartingParent(std::vector<std::string> command, SystemLog&);

    /// Turns the default main context until it ends. SIGTERM, SIGINT and SIGHUP end the program for
    /// good. The exit code for this process.
    int run();

private:
    void start();
    void expectPing();
    void handleEnd(int status);
    void handleCrash(const std::string& what);
    void end();
    void quit(int exitCode);

    std::vector<std::string> m_command;
    SystemLog& m_log;
    Timing m_timing;
    RestartPolicy m_policy;
    RunLoopGlib m_runLoop;
    NotifySocket m_notify;
    std::shared_ptr<GMainLoop> m_loop;
    pid_t m_process = 0; ///< None between two lives.
    RunLoop::MonotonicTime m_start;
    Handle m_pause;
    Handle m_silence;
    bool m_isHanging = false;
    bool m_isEnding = false;
    int m_exitCode = 0;
};

} // namespace quillox
