#include "platform/linux/gtk/WorkspaceGtk.h"

#include "app/AppState.h"
#include "platform/linux/gtk/ApplicationGtk.h"
#include "platform/linux/gtk/HelpWindow.h"
#include "platform/linux/system/OwnFiles.h"
#include "ui/HelpPages.h"

#include <fmt/format.h>
#include <glibmm/main.h>
#include <optional>
#include <unistd.h>

namespace quillox {

namespace {

    /// Where the guide lies for other programs to read.
    std::optional<std::string> findGuide()
    {
        return findOwnFile("setup-guide/index.html", "../share/quillox/setup-guide/index.html");
    }

    std::string fileAddress(const std::string& path, const std::string& anchor)
    {
        const GTextOwner address(g_filename_to_uri(path.c_str(), nullptr, nullptr));
        return address.get() + (anchor.empty() ? "" : "#" + anchor);
    }

    /// What shows web pages, which is not always what files of this type are opened with. None for
    /// root: browsers refuse to run for it, and some do so without a word.
    GObjectOwner<GAppInfo> findBrowser()
    {
        if (geteuid() == 0)
            return nullptr;
        return GObjectOwner<GAppInfo>(g_app_info_get_default_for_uri_scheme("https"));
    }

    /// Lets what is opened come to the front.
    GObjectOwner<GAppLaunchContext> launchContext()
    {
        return GObjectOwner<GAppLaunchContext>(
            G_APP_LAUNCH_CONTEXT(gdk_display_get_app_launch_context(gdk_display_get_default())));
    }

} // namespace

/// What an answer of the desktop needs; it may come after the workspace is gone.
struct WorkspaceGtk::Attempt {
    WorkspaceGtk& workspace;
    GObjectOwner<GCancellable> cancellable;
    std::string anchor; ///< Of the guide.

    Attempt(WorkspaceGtk& asker, std::string wanted)
        : workspace(asker)
        , cancellable(G_CANCELLABLE(g_object_ref(asker.m_cancellable.get())))
        , anchor(std::move(wanted))
    {
    }

    bool isAbandoned() const { return g_cancellable_is_cancelled(cancellable.get()); }
};

WorkspaceGtk::WorkspaceGtk(ApplicationGtk& application, WindowPlacement& placement,
    MakeHelpWindow makeHelpWindow, SystemLog& log)
    : m_application(application)
    , m_placement(placement)
    , m_makeHelpWindow(std::move(makeHelpWindow))
    , m_log(log)
    , m_cancellable(g_cancellable_new())
{
}

WorkspaceGtk::~WorkspaceGtk()
{
    g_cancellable_cancel(m_cancellable.get());
    if (m_guide)
        m_application.removeSideWindow(m_guide->window());
}

bool WorkspaceGtk::isSealed() const
{
    return !m_application.sealedWindows().empty();
}

void WorkspaceGtk::open(const std::string& url)
{
    if (isSealed()) {
        m_log.write("Quillox: an address was not opened; a page is sealed.");
        return;
    }
    if (url == helpPages::setupGuide)
        return openGuide("");
    if (url == AppState::accessibilitySettings)
        return openGuide(helpPages::permissionAnchor);
    g_app_info_launch_default_for_uri_async(
        url.c_str(), launchContext().get(), m_cancellable.get(),
        [](GObject*, GAsyncResult* result, gpointer data) {
            const std::unique_ptr<Attempt> attempt(static_cast<Attempt*>(data));
            GError* failure = nullptr;
            g_app_info_launch_default_for_uri_finish(result, &failure);
            const GErrorOwner error(failure);
            if (error && !attempt->isAbandoned())
                attempt->workspace.logFailure(error.get());
        },
        new Attempt(*this, ""));
}

void WorkspaceGtk::openGuide(const std::string& anchor)
{
    const auto page = findGuide();
    const auto browser = findBrowser();
    if (!page || !browser)
        return showGuide(anchor);
    auto address = fileAddress(*page, anchor);
    GList addresses { address.data(), nullptr, nullptr };
    g_app_info_launch_uris_async(
        browser.get(), &addresses, launchContext().get(), m_cancellable.get(),
        [](GObject* app, GAsyncResult* result, gpointer data) {
            const std::unique_ptr<Attempt> attempt(static_cast<Attempt*>(data));
            GError* failure = nullptr;
            g_app_info_launch_uris_finish(G_APP_INFO(app), result, &failure);
            const GErrorOwner error(failure);
            if (!error || attempt->isAbandoned())
                return;
            attempt->workspace.logFailure(error.get());
            attempt->workspace.showGuide(attempt->anchor);
        },
        new Attempt(*this, anchor));
}

void WorkspaceGtk::showGuide(const std::string& anchor)
{
    if (isSealed())
        return; // A run began before the desktop answered.
    if (!m_guide) {
        m_guide = m_makeHelpWindow(m_application.setupWindow());
        if (!m_guide)
            return m_log.write("Quillox: the setup guide cannot be shown.");
        m_guide->onLink = [this](const std::string& url) { open(url); };
        m_guide->onClosed = [this] { handleGuideClosed(); };
        m_application.addSideWindow(m_guide->window());
    }
    m_guide->load(anchor);
    m_placement.present(m_guide->window());
}

void WorkspaceGtk::handleGuideClosed()
{
    m_application.removeSideWindow(m_guide->window());
    // It is still in an event of its own.
    Glib::signal_idle().connect_once(
        m_lifetime.guard([this, closed = std::shared_ptr<HelpWindow>(m_guide.release())]() mutable {
            closed.reset();
            if (!isSealed())
                m_application.bringVisibleWindowsForward();
        }));
}

void WorkspaceGtk::logFailure(const GError* error)
{
    m_log.write(fmt::format("Quillox: could not open an address: {}.", error->message));
}

void WorkspaceGtk::relaunch()
{
    m_wantsRelaunch = true;
    m_application.terminate();
}

} // namespace quillox
