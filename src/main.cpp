// The composition root: the one place that knows both the machine and the application.

#include "app/AppDelegate.h"
#include "app/AppState.h"
#include "app/CommandLine.h"
#include "app/LaunchHealth.h"
#include "app/QuilloxApp.h"
#include "kiosk/Displays.h"
#include "kiosk/KioskController.h"
#include "platform/linux/LinuxPlatform.h"
#include "platform/linux/gtk/NextFrame.h"
#include "platform/linux/service/WatchdogPing.h"
#include "platform/linux/setup/SetupWindowGtk.h"
#include "platform/linux/survey/RunDoctor.h"
#include "platform/linux/system/DefaultsStoreFile.h"
#include "platform/linux/system/Environment.h"
#include "platform/linux/system/RunCommandLine.h"
#include "platform/linux/system/RunningApplicationsSocket.h"
#include "platform/linux/system/SystemLogStderr.h"
#include "resilience/UpdateController.h"
#include "resilience/Watchdog.h"
#include "support/Lifetime.h"
#include "ui/AutoStartCountdownOverlay.h"
#include "ui/OnboardingView.h"
#include "ui/OperatorView.h"
#include "usage/UsageTracker.h"

#include <csignal>
#include <filesystem>
#include <fmt/format.h>
#include <glib-unix.h>
#include <glibmm/main.h>
#include <iostream>
#include <unistd.h>

namespace quillox {

namespace {

    /// The application on its machine, for as long as the main loop runs.
    class Program {
    public:
        Program(const Glib::RefPtr<Gtk::Application>& gtk, RunningApplicationsSocket& instances,
            SystemLog& log, const std::string& executable)
            : m_instances(instances)
            , m_defaults(defaultsPathsFromEnvironment(), log)
            , m_platform(gtk, m_runLoop, log, executable)
            , m_usage(m_runLoop, m_platform.usageFile, m_platform.calendar)
            , m_controller({ m_platform.screens, m_platform.windows, m_platform.webEngine,
                  m_platform.eventMonitors, m_platform.application, m_platform.fileSystem,
                  m_platform.siteFiles, m_platform.fileTypes, m_runLoop, m_platform.eventTaps,
                  m_platform.eventTaps, m_platform.symbolicHotKeys, m_platform.powerAssertions,
                  m_platform.sealViews, m_platform.kioskViews, m_platform.pathMonitors, m_usage,
                  log })
            , m_state({ m_runLoop, m_defaults, m_platform.fileSystem, m_platform.accessibility,
                          m_platform.dialogs, m_platform.workspace, m_platform.application },
                  m_controller,
                  [this] { return SystemKeyBlocker::canCreateTap(m_platform.eventTaps); })
            , m_watchdog(m_platform.agentServices, log)
            , m_updates(m_runLoop, m_platform.calendar, m_platform.updaters())
            , m_delegate({ m_runLoop, m_platform.accessibility, instances, m_platform.application },
                  m_state, m_updates, QuilloxApp::bundleIdentifier)
        {
            UsageTracker::setShared(&m_usage);
            KioskController::setShared(&m_controller);
            AppState::setShared(&m_state);
            UpdateController::setShared(&m_updates);
        }

        ~Program()
        {
            // Out of the way first: the end of a run brings forward what is visible.
            if (m_setup)
                m_setup->window().set_visible(false);
            m_controller.setOnScreenShown(nullptr);
            m_controller.stop();
            m_instances.setOnActivate(nullptr);
            UpdateController::setShared(nullptr);
            AppState::setShared(nullptr);
            KioskController::setShared(nullptr);
            UsageTracker::setShared(nullptr);
        }

        void launch()
        {
            if (!m_delegate.applicationDidFinishLaunching())
                return;
            m_platform.restoreAfterCrash();
            openSetupWindow();
            if (m_platform.updates)
                watchHealth();
        }

        void terminate() { m_platform.application.terminate(); }
        bool wantsRelaunch() const { return m_platform.workspace.wantsRelaunch(); }

    private:
        /// A version that was just installed has to show that it works.
        void watchHealth()
        {
            m_health.emplace(
                m_state, m_runLoop, [this] { m_platform.updates->health().handleScreenShown(); });
            m_controller.setOnScreenShown([this] { m_health->handleScreenShown(); });
        }

        void openSetupWindow()
        {
            auto& application = m_platform.application;
            m_setup = std::make_unique<SetupWindowGtk>(m_app,
                SetupWindowGtk::Views { m_onboardingView, m_operatorView, m_countdown }, m_runLoop,
                *m_platform.placement);
            auto& window = m_setup->window();
            m_platform.eventMonitors.attach(window);
            m_platform.dialogs.setParent(&window);
            m_platform.updateProgressPanels.setParent(&window);
            application.addWindow(window);
            window.signal_close_request().connect(
                [&application] {
                    if (!AppDelegate::applicationShouldTerminateAfterLastWindowClosed())
                        return false;
                    application.terminate(); // Which takes the window down with everything else.
                    return true;
                },
                false);
            m_platform.placement->present(window);
            afterNextFrame(window, m_lifetime.guard([this] { m_platform.webEngine.prepare(); }));
            m_instances.setOnActivate([this](const std::string& token) {
                if (m_delegate.applicationShouldHandleReopen())
                    m_platform.application.activateAllWindows(token);
            });
        }

        RunningApplicationsSocket& m_instances;
        RunLoopGlib m_runLoop;
        WatchdogPing m_watchdogPing { m_runLoop };
        DefaultsStoreFile m_defaults;
        LinuxPlatform m_platform;
        UsageTracker m_usage;
        KioskController m_controller;
        AppState m_state;
        Watchdog m_watchdog;
        UpdateController m_updates;
        AppDelegate m_delegate;
        QuilloxApp m_app { m_delegate, m_state };
        LaunchArmer::Machine m_gesture { m_runLoop, m_platform.eventMonitors,
            m_platform.eventTaps };
        OnboardingView m_onboardingView { m_state,
            { m_gesture, m_platform.accessibility, m_platform.workspace } };
        OperatorView m_operatorView { m_state,
            { m_gesture, { m_platform.fileSystem, m_platform.screens, m_watchdog, m_updates },
                m_usage.store(), m_platform.workspace },
            QuilloxApp::version() };
        AutoStartCountdownOverlay m_countdown { m_state };
        std::unique_ptr<SetupWindowGtk> m_setup;
        std::optional<LaunchHealth> m_health;
        Lifetime m_lifetime;
    };

    gboolean terminateOnSignal(gpointer program)
    {
        if (const auto& running = *static_cast<std::unique_ptr<Program>*>(program))
            running->terminate();
        return G_SOURCE_CONTINUE;
    }

    int runProgram(SystemLog& log, const std::string& executable, bool& wantsRelaunch)
    {
        const std::string identifier = QuilloxApp::bundleIdentifier;
        RunningApplicationsSocket instances(
            RunningApplicationsSocket::runtimeFolder(identifier), identifier, log);
        // The lock above already makes sure that there is one copy, also without a session bus.
        const auto gtk = Gtk::Application::create(identifier, Gio::Application::Flags::NON_UNIQUE);
        std::unique_ptr<Program> program;
        gtk->signal_activate().connect([&] {
            program = std::make_unique<Program>(gtk, instances, log, executable);
            program->launch();
        });
        // Not later: when the toolkit has shut down, nothing can be given back to the session.
        gtk->signal_shutdown().connect(
            [&] {
                wantsRelaunch = program && program->wantsRelaunch();
                program.reset();
            },
            false);
        const auto terminated = g_unix_signal_add(SIGTERM, terminateOnSignal, &program);
        const auto interrupted = g_unix_signal_add(SIGINT, terminateOnSignal, &program);
        const int status = gtk->run();
        g_source_remove(interrupted);
        g_source_remove(terminated);
        return status;
    }

    int listDisplays()
    {
        RunLoopGlib runLoop;
        for (const auto& display : Displays::list(ScreensGdk(runLoop)))
            std::cout << fmt::format("{}\t{}\n", display.id, display.label);
        return exitSuccess;
    }

} // namespace

} // namespace quillox

int main(int argc, char** argv)
{
    using namespace quillox;
    const auto commandLine = CommandLine::parse({ argv + 1, argv + argc });
    using Kind = CommandLine::Kind;
    const bool needsDisplay = commandLine.kind == Kind::run || commandLine.kind == Kind::displays
        || commandLine.kind == Kind::doctor;
    if (!needsDisplay)
        return runCommandLine(commandLine);

    SystemLogStderr log;
    // Taken now: an update may put another file in its place.
    std::error_code error;
    const auto executable = std::filesystem::read_symlink("/proc/self/exe", error).string();
    auto successor = AgentPlaces::ofThisProcess().program();
    const auto graphics = prepareEnvironment();
    if (commandLine.kind == Kind::doctor)
        return runDoctor(commandLine);
    if (!gtk_init_check()) {
        log.write("Quillox: there is no display to open; set DISPLAY or WAYLAND_DISPLAY.");
        return exitFailure;
    }
    if (commandLine.kind == Kind::displays)
        return listDisplays();

    log.write(graphics);
    bool wantsRelaunch = false;
    const int status = runProgram(log, executable, wantsRelaunch);
    if (wantsRelaunch) {
        argv[0] = successor.data();
        execv(successor.c_str(), argv);
        log.write(fmt::format("Quillox: could not start '{}' again.", successor));
    }
    return status;
}
