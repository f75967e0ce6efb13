#include "platform/linux/webkit/PageLoad.h"

#include "platform/linux/webkit/LoadErrorsWebKit.h"

#include <string_view>
#include <utility>

namespace quillox {

namespace {

    using namespace std::chrono_literals;

    constexpr std::string_view emptyPage = "about:blank";

    /// When the second frame begins, the first one is on its way to the screen.
    constexpr auto untilDrawn
        = "return new Promise(done => requestAnimationFrame(() => requestAnimationFrame(done)))";
    /// A page that nobody can see draws nothing.
    constexpr RunLoop::Duration longestDrawing = 1s;
    /// The time that a page has to leave for another.
    constexpr RunLoop::Duration longestLeaving = 2s;

    std::string textOf(const char* text)
    {
        return text ? text : "";
    }

} // namespace

PageLoad::PageLoad(WebKitWebView* view, RunLoop& runLoop)
    : m_view(view)
    , m_runLoop(runLoop)
{
    const auto connect = [this, view](const char* signal, GCallback callback) {
        g_signal_connect(view, signal, callback, this);
    };
    connect("load-changed", G_CALLBACK(+[](WebKitWebView*, WebKitLoadEvent event, gpointer self) {
        static_cast<PageLoad*>(self)->handleChange(event);
    }));
    connect("load-failed",
        G_CALLBACK(+[](WebKitWebView*, WebKitLoadEvent event, const char*, GError* error,
                        gpointer self) -> gboolean {
            static_cast<PageLoad*>(self)->handleFailure(event, translateLoadError(*error));
            return TRUE; // No error page; what was shown stays.
        }));
    connect("load-failed-with-tls-errors",
        G_CALLBACK(+[](WebKitWebView*, const char*, GTlsCertificate*, GTlsCertificateFlags,
                        gpointer self) -> gboolean {
            static_cast<PageLoad*>(self)->handleFailure(WEBKIT_LOAD_STARTED,
                { LoadError::Domain::UrlLoading, urlErrors::secureConnectionFailed,
                    "the server's certificate is not valid" });
            return TRUE;
        }));
    connect("notify::estimated-load-progress",
        G_CALLBACK(+[](WebKitWebView*, GParamSpec*, gpointer self) {
            auto* load = static_cast<PageLoad*>(self);
            if (load->m_phase == LoadPhase::Committed && !load->m_isDocumentComplete)
                load->waitFor(load->m_timeout);
        }));
}

PageLoad::~PageLoad()
{
    cancelDrawing();
    g_signal_handlers_disconnect_by_data(m_view, this);
    if (m_mainResource)
        g_signal_handlers_disconnect_by_data(m_mainResource.get(), this);
}

NavigationDelegate& PageLoad::delegate() const
{
    static NavigationDelegate nobody;
    return m_delegate ? *m_delegate : nobody;
}

void PageLoad::load(const UrlRequest& request)
{
    endInsistence();
    m_timeout = request.timeout;
    m_requestedURL = request.url;
    webkit_web_view_load_uri(m_view, request.url.c_str());
}

void PageLoad::loadInsistently(const UrlRequest& request)
{
    load(request);
    m_insistence.emplace().timer = m_runLoop.every(longestLeaving, [this] { insist(); });
}

void PageLoad::insist()
{
    // A page that has let go only waits for the server now.
    if (isInsistedLoad())
        return;
    m_isMakingRoom = true;
    webkit_web_view_terminate_web_process(m_view);
}

void PageLoad::endInsistence()
{
    m_insistence.reset();
}

bool PageLoad::isInsistedLoad() const
{
    return m_insistence && m_insistence->isUnderway && !m_insistence->isSuperseded;
}

void PageLoad::reload()
{
    endInsistence();
    // The engine loads nothing again that was never committed, or that its process took along.
    if (!m_isPageLost)
        return webkit_web_view_reload(m_view);
    const auto& url = m_committedURL.empty() ? m_requestedURL : m_committedURL;
    webkit_web_view_load_uri(m_view, url.c_str());
}

void PageLoad::stop()
{
    m_timer.reset();
    endInsistence();
    webkit_web_view_stop_loading(m_view);
}

bool PageLoad::handleProcessEnd()
{
    m_timer.reset();
    cancelDrawing();
    m_phase = LoadPhase::Idle;
    m_isPageLost = true;
    // The engine shows its background where the page was.
    constexpr GdkRGBA black { 0, 0, 0, 1 };
    webkit_web_view_set_background_color(m_view, &black);
    if (m_insistence)
        m_committedURL = m_requestedURL;
    endInsistence();
    return std::exchange(m_isMakingRoom, false);
}

void PageLoad::waitFor(RunLoop::Duration duration)
{
    m_timer = m_runLoop.after(duration, [this] { handleTimeout(); });
}

void PageLoad::handleChange(WebKitLoadEvent event)
{
    switch (event) {
    case WEBKIT_LOAD_STARTED:
        cancelDrawing();
        m_failure.reset();
        if (m_insistence)
            m_insistence->isUnderway = true;
        [[fallthrough]];
    case WEBKIT_LOAD_REDIRECTED:
        m_hasFailed = false;
        m_phase = LoadPhase::Provisional;
        return waitFor(m_timeout);
    case WEBKIT_LOAD_COMMITTED:
        return handleCommit();
    case WEBKIT_LOAD_FINISHED:
        return handleFinish();
    }
}

void PageLoad::handleCommit()
{
    const auto url = textOf(webkit_web_view_get_uri(m_view));
    const bool isExpected = std::exchange(m_expectsEmptyPage, false);
    if (url == emptyPage && !isExpected) {
        m_isPageLost = true;
        return handleFailure(WEBKIT_LOAD_STARTED,
            { LoadError::Domain::UrlLoading, urlErrors::badServerResponse,
                "the engine refuses the server's port" });
    }
    if (isInsistedLoad())
        endInsistence();
    m_hasFailed = false;
    m_committedURL = url;
    m_isPageLost = false;
    m_phase = LoadPhase::Committed;
    // Pages that name no background are made for a white one; before the first there is none.
    constexpr GdkRGBA white { 1, 1, 1, 1 };
    webkit_web_view_set_background_color(m_view, &white);
    watchMainResource();
    waitFor(m_timeout);
    delegate().didCommitNavigation();
}

void PageLoad::watchMainResource()
{
    if (m_mainResource)
        g_signal_handlers_disconnect_by_data(m_mainResource.get(), this);
    auto* resource = webkit_web_view_get_main_resource(m_view);
    m_mainResource.reset(resource ? WEBKIT_WEB_RESOURCE(g_object_ref(resource)) : nullptr);
    m_isDocumentComplete = !resource;
    if (resource) {
        g_signal_connect(resource, "finished", G_CALLBACK(+[](WebKitWebResource*, gpointer self) {
            static_cast<PageLoad*>(self)->handleDocument();
        }),
            this);
    }
}

void PageLoad::handleDocument()
{
    m_isDocumentComplete = true;
    // Once more: some pages never stop to ask for more.
    if (m_phase == LoadPhase::Committed)
        waitFor(m_timeout);
}

void PageLoad::handleFinish()
{
    if (m_phase == LoadPhase::Idle)
        return;
    m_timer.reset();
    m_phase = LoadPhase::Idle;
    if (!m_hasFailed)
        awaitDrawing();
}

void PageLoad::awaitDrawing()
{
    cancelDrawing();
    m_drawing.reset(g_cancellable_new());
    m_drawingTimer = m_runLoop.after(longestDrawing, [this] { handleDrawn(); });
    webkit_web_view_call_async_javascript_function(
        m_view, untilDrawn, -1, nullptr, "quillox", nullptr, m_drawing.get(),
        [](GObject* view, GAsyncResult* result, gpointer self) {
            GError* failure = nullptr;
            const GObjectOwner<JSCValue> value(
                webkit_web_view_call_async_javascript_function_finish(
                    WEBKIT_WEB_VIEW(view), result, &failure));
            const GErrorOwner error(failure);
            if (!g_error_matches(error.get(), G_IO_ERROR, G_IO_ERROR_CANCELLED))
                static_cast<PageLoad*>(self)->handleDrawn();
        },
        this);
}

void PageLoad::cancelDrawing()
{
    if (m_drawing)
        g_cancellable_cancel(m_drawing.get());
    m_drawing.reset();
    m_drawingTimer.reset();
}

void PageLoad::handleDrawn()
{
    cancelDrawing();
    delegate().didFinishNavigation();
}

void PageLoad::handleFailure(WebKitLoadEvent event, const LoadError& engineError)
{
    m_timer.reset();
    m_hasFailed = true;
    m_phase = LoadPhase::Idle;
    const auto error = std::exchange(m_failure, std::nullopt).value_or(engineError);
    const bool isCancelled = error.code == urlErrors::cancelled;
    if (isCancelled && isInsistedLoad())
        m_insistence->isSuperseded = true;
    else if (!isCancelled && isInsistedLoad())
        endInsistence();
    if (event == WEBKIT_LOAD_COMMITTED)
        delegate().didFailNavigation(error);
    else
        delegate().didFailProvisionalNavigation(error);
}

void PageLoad::handleTimeout()
{
    // A page that is there and only waits for something beside it is good enough.
    if (m_phase == LoadPhase::Committed && m_isDocumentComplete)
        return handleFinish();
    m_failure
        = { LoadError::Domain::UrlLoading, urlErrors::timedOut, "the server does not answer" };
    webkit_web_view_stop_loading(m_view);
}

} // namespace quillox
