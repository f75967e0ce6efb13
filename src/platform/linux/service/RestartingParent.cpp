#include "platform/linux/service/RestartingParent.h"

#include "platform/linux/service/DisplayPresence.h"
#include "platform/linux/system/GlibOwner.h"
#include "ports/SystemLog.h"

#include <fmt/format.h>
#include <glib-unix.h>

#include <algorithm>
#include <array>
#include <csignal>
#include <sys/wait.h>
#include <unistd.h>
#include <utility>

namespace quillox {

namespace {

    struct TextsFree {
        void operator()(char** texts) const { g_strfreev(texts); }
    };
    using TextsOwner = std::unique_ptr<char*, TextsFree>;

    /// One that belongs to this process, for as long as the handle lives.
    Handle sourceHandle(guint source)
    {
        return Handle([source] { g_source_remove(source); });
    }

    Handle onSignal(int number, std::function<void()> handler)
    {
        return sourceHandle(g_unix_signal_add_full(
            G_PRIORITY_DEFAULT, number,
            [](gpointer data) -> gboolean {
                (*static_cast<std::function<void()>*>(data))();
                return G_SOURCE_CONTINUE;
            },
            new std::function<void()>(std::move(handler)),
            [](gpointer data) { delete static_cast<std::function<void()>*>(data); }));
    }

    TextsOwner environmentOf(const std::string& notifySocket, std::chrono::microseconds watchdog)
    {
        auto** variables = g_environ_unsetenv(g_get_environ(), "WATCHDOG_PID");
        constexpr gboolean replaces = TRUE;
        variables = g_environ_setenv(variables, "NOTIFY_SOCKET", notifySocket.c_str(), replaces);
        variables = g_environ_setenv(
            variables, "WATCHDOG_USEC", std::to_string(watchdog.count()).c_str(), replaces);
        return TextsOwner(variables);
    }

    /// As service managers see it: these signals are how a program is asked to end.
    bool endedWell(int status)
    {
        constexpr std::array wellMeant { SIGTERM, SIGINT, SIGHUP, SIGPIPE };
        return WIFSIGNALED(status) ? std::ranges::count(wellMeant, WTERMSIG(status)) > 0
                                   : WEXITSTATUS(status) == 0;
    }

    std::string describe(int status)
    {
        return WIFSIGNALED(status) ? fmt::format("ended by signal {}", WTERMSIG(status))
                                   : fmt::format("ended with code {}", WEXITSTATUS(status));
    }

} // namespace

RestartingParent::RestartingParent(std::vector<std::string> command, SystemLog& log)
    : RestartingParent(std::move(command), log, Timing())
{
}

RestartingParent::RestartingParent(std::vector<std::string> command, SystemLog& log, Timing timing)
    : m_command(std::move(command))
    , m_log(log)
    , m_timing(timing)
    , m_loop(g_main_loop_new(nullptr, FALSE), g_main_loop_unref)
{
}

int RestartingParent::run()
{
    const std::array signals { onSignal(SIGTERM, [this] { end(); }),
        onSignal(SIGINT, [this] { end(); }), onSignal(SIGHUP, [this] { end(); }) };
    const auto pings = sourceHandle(g_unix_fd_add(
        m_notify.descriptor(), G_IO_IN,
        [](int, GIOCondition, gpointer data) -> gboolean {
            auto& self = *static_cast<RestartingParent*>(data);
            if (self.m_notify.takePing(self.m_process))
                self.expectPing();
            return G_SOURCE_CONTINUE;
        },
        this));
    m_runLoop.post([this] { start(); });
    g_main_loop_run(m_loop.get());
    return m_exitCode;
}

void RestartingParent::start()
{
    std::vector<char*> arguments;
    for (auto& argument : m_command)
        arguments.push_back(argument.data());
    arguments.push_back(nullptr);
    const auto environment = environmentOf(m_notify.name(), m_timing.watchdog);
    constexpr auto flags
        = static_cast<GSpawnFlags>(G_SPAWN_DO_NOT_REAP_CHILD | G_SPAWN_CHILD_INHERITS_STDIN);
    GError* error = nullptr;
    m_start = m_runLoop.monotonicNow();
    // In a group of its own, so that what it has started can be ended with it.
    const auto makeGroup = [](gpointer) { ::setpgid(0, 0); };
    if (!g_spawn_async(nullptr, arguments.data(), environment.get(), flags, makeGroup, nullptr,
            &m_process, &error)) {
        const GErrorOwner held(error);
        m_process = 0;
        return handleCrash(fmt::format("not started ({})", error->message));
    }
    g_child_watch_add(
        m_process,
        [](GPid, int status, gpointer self) {
            static_cast<RestartingParent*>(self)->handleEnd(status);
        },
        this);
    expectPing();
}

void RestartingParent::expectPing()
{
    m_silence = m_runLoop.after(m_timing.watchdog, [this] {
        m_isHanging = true;
        ::kill(-m_process, SIGKILL);
    });
}

void RestartingParent::handleEnd(int status)
{
    m_process = 0;
    m_silence.reset();
    const bool wasHanging = std::exchange(m_isHanging, false);
    if (m_isEnding || endedWell(status))
        return quit(endedWell(status) || wasHanging ? 0 : 1);
    handleCrash(wasHanging ? "ended because it hung" : describe(status));
}

void RestartingParent::handleCrash(const std::string& what)
{
    const auto pause = m_policy.pauseAfterCrash(m_runLoop.monotonicNow() - m_start);
    m_log.write(
        fmt::format("Quillox: the program was {}; it starts again in {} s.", what, pause.count()));
    m_pause = m_runLoop.after(pause.count() * m_timing.second, [this] {
        // The session has ended; the next one starts a parent of its own.
        if (!isDisplayPresent())
            return quit(1);
        start();
    });
}

void RestartingParent::end()
{
    m_isEnding = true;
    if (m_process == 0)
        return quit(0);
    ::kill(m_process, SIGTERM);
}

void RestartingParent::quit(int exitCode)
{
    m_pause.reset();
    m_exitCode = exitCode;
    g_main_loop_quit(m_loop.get());
}

} // namespace quillox
