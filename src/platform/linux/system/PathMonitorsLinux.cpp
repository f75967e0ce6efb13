#include "platform/linux/system/PathMonitorsLinux.h"

#include "platform/linux/system/FileDescriptor.h"
#include "platform/linux/system/NetlinkRoutes.h"
#include "platform/linux/system/RunLoopGlib.h"

#include <glib-unix.h>

#include <algorithm>
#include <atomic>
#include <memory>
#include <optional>
#include <utility>

namespace quillox {

namespace {

    using namespace std::chrono_literals;

    constexpr auto settlingTime = 50ms; ///< Changes come in bursts.
    constexpr std::size_t longestThreadName = 15; ///< Of the kernel.

    struct ContextUnref {
        void operator()(GMainContext* context) const { g_main_context_unref(context); }
    };

    /// A thread with a main loop of its own that looks at the network.
    class PathWatch {
    public:
        explicit PathWatch(PathMonitors::Handler handler)
            : m_handler(std::move(handler))
        {
        }
        ~PathWatch();

        /// Names tell most at their end.
        bool start(const std::string& label);

    private:
        void run();
        Handle watchRoutes();
        void lookSoon();
        void look();

        PathMonitors::Handler m_handler;
        const std::unique_ptr<GMainContext, ContextUnref> m_context { g_main_context_new() };
        std::atomic<bool> m_isEnding = false;
        RunLoopGlib m_runLoop { m_context.get() };
        GThread* m_thread = nullptr;

        // Of the thread.
        FileDescriptor m_routeNews;
        Handle m_pendingLook;
        std::optional<PathStatus> m_told;
    };

    PathWatch::~PathWatch()
    {
        if (!m_thread)
            return;
        m_isEnding = true;
        g_main_context_wakeup(m_context.get());
        g_thread_join(m_thread);
    }

    bool PathWatch::start(const std::string& label)
    {
        const auto name = label.substr(label.size() - std::min(label.size(), longestThreadName));
        m_thread = g_thread_try_new(
            name.c_str(),
            [](gpointer self) -> gpointer {
                static_cast<PathWatch*>(self)->run();
                return nullptr;
            },
            this, nullptr);
        return m_thread;
    }

    void PathWatch::run()
    {
        auto watch = watchRoutes();
        look();
        while (!m_isEnding)
            g_main_context_iteration(m_context.get(), TRUE);
        m_pendingLook.reset();
        watch.reset();
    }

    /// Empty where the kernel does not tell.
    Handle PathWatch::watchRoutes()
    {
        m_routeNews = openRouteNews();
        if (!m_routeNews)
            return {};
        auto* source = g_unix_fd_source_new(m_routeNews.get(), G_IO_IN);
        g_source_set_callback(source,
            G_SOURCE_FUNC(+[](gint, GIOCondition, gpointer self) -> gboolean {
                auto& watch = *static_cast<PathWatch*>(self);
                discardRouteNews(watch.m_routeNews);
                watch.lookSoon();
                return G_SOURCE_CONTINUE;
            }),
            this, nullptr);
        g_source_attach(source, m_context.get());
        return Handle([source] {
            g_source_destroy(source);
            g_source_unref(source);
        });
    }

    /// Not later for further changes, so that a link which never rests is looked at as well.
    void PathWatch::lookSoon()
    {
        if (!m_pendingLook)
            m_pendingLook = m_runLoop.after(settlingTime, [this] { look(); });
    }

    void PathWatch::look()
    {
        m_pendingLook.reset();
        const auto status
            = hasWorkingRoute().value_or(true) ? PathStatus::Satisfied : PathStatus::Unsatisfied;
        if (std::exchange(m_told, status) != status && !m_isEnding)
            m_handler(status);
    }

} // namespace

Handle PathMonitorsLinux::startMonitor(const std::string& label, Handler handler)
{
    auto watch = std::make_shared<PathWatch>(std::move(handler));
    return watch->start(label) ? Handle([watch]() mutable { watch.reset(); }) : Handle();
}

} // namespace quillox
