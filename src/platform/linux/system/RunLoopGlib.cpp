#include "platform/linux/system/RunLoopGlib.h"

#include <algorithm>
#include <memory>
#include <utility>

namespace quillox {

namespace {

    struct Timer {
        RunLoop::Callback callback;
        gint64 due = 0; ///< Microseconds on the monotonic clock.
        gint64 interval = 0; ///< Zero: once.
        bool isEnded = false;
    };

    gint64 microseconds(RunLoop::Duration duration)
    {
        return std::chrono::ceil<std::chrono::microseconds>(duration).count();
    }

    gboolean dispatchTimer(GSource*, GSourceFunc function, gpointer data)
    {
        return function(data);
    }

    GSourceFuncs timerFunctions { nullptr, nullptr, dispatchTimer, nullptr, nullptr, nullptr };

    gboolean fireTimer(gpointer data)
    {
        // Kept alive here, since the callback may end its own timer.
        const auto timer = *static_cast<std::shared_ptr<Timer>*>(data);
        if (timer->interval > 0) {
            const auto now = g_get_monotonic_time();
            timer->due += timer->interval;
            if (timer->due <= now)
                timer->due = now + timer->interval - (now - timer->due) % timer->interval;
            g_source_set_ready_time(g_main_current_source(), timer->due);
        }
        timer->callback();
        return timer->interval > 0 && !timer->isEnded ? G_SOURCE_CONTINUE : G_SOURCE_REMOVE;
    }

    template <typename Data> void destroyData(gpointer data)
    {
        delete static_cast<Data*>(data);
    }

    struct SourceUnref {
        void operator()(GSource* source) const { g_source_unref(source); }
    };
    using SourceOwner = std::unique_ptr<GSource, SourceUnref>;

    gboolean runPosted(gpointer data)
    {
        (*static_cast<RunLoop::Callback*>(data))();
        return G_SOURCE_REMOVE;
    }

} // namespace

RunLoopGlib::RunLoopGlib(GMainContext* context)
    : m_context(context ? context : g_main_context_default())
{
}

RunLoop::WallTime RunLoopGlib::now() const
{
    return std::chrono::system_clock::now();
}

RunLoop::MonotonicTime RunLoopGlib::monotonicNow() const
{
    return MonotonicTime(std::chrono::steady_clock::now());
}

Handle RunLoopGlib::after(Duration delay, Callback callback)
{
    return schedule(delay, Duration::zero(), std::move(callback));
}

Handle RunLoopGlib::every(Duration interval, Callback callback)
{
    return schedule(
        interval, std::max(interval, Duration(std::chrono::microseconds(1))), std::move(callback));
}

Handle RunLoopGlib::schedule(Duration delay, Duration interval, Callback callback)
{
    auto timer = std::make_shared<Timer>();
    timer->callback = std::move(callback);
    timer->interval = microseconds(interval);
    timer->due = g_get_monotonic_time() + microseconds(delay);

    SourceOwner source(g_source_new(&timerFunctions, sizeof(GSource)));
    g_source_set_callback(source.get(), fireTimer, new std::shared_ptr<Timer>(timer),
        destroyData<std::shared_ptr<Timer>>);
    g_source_set_ready_time(source.get(), timer->due);
    g_source_attach(source.get(), m_context);
    return Handle([timer, shared = std::shared_ptr<GSource>(std::move(source))] {
        timer->isEnded = true;
        g_source_destroy(shared.get());
    });
}

void RunLoopGlib::post(Callback callback)
{
    SourceOwner source(g_idle_source_new());
    g_source_set_priority(source.get(), G_PRIORITY_DEFAULT);
    g_source_set_callback(
        source.get(), runPosted, new Callback(std::move(callback)), destroyData<Callback>);
    g_source_attach(source.get(), m_context);
}

} // namespace quillox
