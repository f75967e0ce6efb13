#pragma once

#include "platform/linux/system/GlibOwner.h"
#include "ports/SystemLog.h"
#include "ports/Workspace.h"
#include "support/Lifetime.h"

#include <functional>
#include <gio/gio.h>
#include <gtkmm/window.h>
#include <memory>
#include <string>

namespace quillox {

class ApplicationGtk;
class HelpWindow;
class WindowPlacement;

/// Opens addresses with the desktop's default programs. The setup guide, at which the address of
/// the keyboard lock's permission leads, too, comes with the program: the default browser shows it,
/// or a window of our own where there is none. Nothing is opened while a page is sealed.
class WorkspaceGtk final : public Workspace {
public:
    /// Makes a window for the guide before its parent, which may be null; none when it cannot.
    using MakeHelpWindow = std::function<std::unique_ptr<HelpWindow>(Gtk::Window* parent)>;

    WorkspaceGtk(ApplicationGtk&, WindowPlacement&, MakeHelpWindow, SystemLog&);
    ~WorkspaceGtk() override;

    void open(const std::string& url) override;
    /// The new instance takes this one's place in the same process, once the main loop has ended.
    void relaunch() override;
    bool wantsRelaunch() const { return m_wantsRelaunch; }

private:
    struct Attempt;

    bool isSealed() const;
    void openGuide(const std::string& anchor);
    void showGuide(const std::string& anchor);
    void handleGuideClosed();
    void logFailure(const GError*);

    ApplicationGtk& m_application;
    WindowPlacement& m_placement;
    MakeHelpWindow m_makeHelpWindow;
    SystemLog& m_log;
    GObjectOwner<GCancellable> m_cancellable;
    std::unique_ptr<HelpWindow> m_guide;
    bool m_wantsRelaunch = false;
    Lifetime m_lifetime;
};

} // namespace quillox
