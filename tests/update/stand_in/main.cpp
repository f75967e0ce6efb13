// A small program in the place of the application, joined as that is: it passes its trial, has
// itself updated if there is something newer, and ends. One with a file named "crashes" beside it
// does that.

#include "platform/linux/system/RunLoopGlib.h"
#include "platform/linux/system/SystemLogStderr.h"
#include "platform/linux/update/UpdatesLinux.h"
#include "ports/Dialogs.h"
#include "ports/UpdateProgressPanels.h"
#include "ports/Workspace.h"

#include <csignal>
#include <filesystem>
#include <fstream>
#include <glib.h>
#include <unistd.h>

namespace quillox {

namespace {

    /// Somebody who says yes to everything, and is done when there is nothing to say.
    struct Operator final : Dialogs, UpdateProgressPanels, Workspace, Updater::Delegate {
        bool isDone = false;
        bool wantsRelaunch = false;

        void present(const Alert& alert, std::function<void(std::size_t)> onButton) override
        {
            isDone = alert.buttons.size() == 1;
            onButton(0);
        }
        void present(const OpenPanel&, std::function<void(std::optional<std::string>)>) override { }
        Handle show(const std::string&, Published<double>&, std::function<void()>) override
        {
            return Handle([] {});
        }
        void open(const std::string&) override { }
        void relaunch() override { wantsRelaunch = true; }
        bool supportsGentleScheduledUpdateReminders() const override { return true; }
        bool shouldHandleShowingScheduledUpdate() const override { return false; }
        bool willInstallUpdateOnQuit(std::function<void()>) override { return true; }
    };

} // namespace

} // namespace quillox

int main(int, char** argv)
{
    using namespace quillox;
    const auto self = std::filesystem::read_symlink("/proc/self/exe");
    std::ofstream(
        self.parent_path().parent_path().parent_path().parent_path() / "trace", std::ios::app)
        << self.parent_path().filename().string() << '\n';
    if (std::filesystem::exists(self.parent_path() / "crashes"))
        std::raise(SIGKILL); // Whatever a program could do about its end, it does not.
    RunLoopGlib runLoop;
    SystemLogStderr log;
    Operator visitor;
    const auto updates = UpdatesLinux::find(self, { runLoop, visitor, visitor, visitor, log });
    if (!updates)
        return 2;
    updates->health().handleScreenShown();
    {
        const auto updater = updates->updaters().makeUpdater(visitor);
        updater->startUpdater();
        updater->checkForUpdates();
        while (!visitor.isDone && !visitor.wantsRelaunch)
            g_main_context_iteration(nullptr, TRUE);
    }
    if (visitor.wantsRelaunch)
        execv(updates->launcher().c_str(), argv);
    return 0;
}
