#pragma once

#include "platform/linux/system/GlibOwner.h"
#include "ports/LoadError.h"
#include "ports/RunLoop.h"
#include "ports/WebView.h"

#include <chrono>
#include <optional>
#include <string>
#include <webkit/webkit.h>

namespace quillox {

/// Follows the loads of a view's page: tells the delegate what became of each, and ends the waiting
/// that the engine itself would never end.
class PageLoad {
public:
    PageLoad(WebKitWebView*, RunLoop&);
    ~PageLoad();
    PageLoad(const PageLoad&) = delete;
    PageLoad& operator=(const PageLoad&) = delete;

    void setDelegate(NavigationDelegate* delegate) { m_delegate = delegate; }

    void load(const UrlRequest&);
    void loadInsistently(const UrlRequest&);
    void reload();
    void stop();
    LoadPhase phase() const { return m_drawing ? LoadPhase::Committed : m_phase; }

    /// An answer for the page itself that is none; the engine will be told to ignore it, and its
    /// failure counts as this.
    void rejectAnswer(const LoadError& error) { m_failure = error; }

    /// An empty page may come because it was asked for, or because the engine would not speak to a
    /// port and says nothing else.
    void expectEmptyPage() { m_expectsEmptyPage = true; }

    /// The page went with its process. True when that was to make room for another; `loadAgain`
    /// then loads that.
    bool handleProcessEnd();
    void loadAgain() { load({ .url = m_requestedURL, .timeout = m_timeout }); }

private:
    void handleChange(WebKitLoadEvent);
    void handleCommit();
    void handleDocument();
    void handleFinish();
    void awaitDrawing();
    void cancelDrawing();
    void handleDrawn();
    void handleFailure(WebKitLoadEvent, const LoadError&);
    void handleTimeout();
    void insist();
    void endInsistence();
    bool isInsistedLoad() const;
    void waitFor(RunLoop::Duration);
    void watchMainResource();

    NavigationDelegate& delegate() const;

    WebKitWebView* m_view; ///< Owned by whoever owns this.
    RunLoop& m_runLoop;
    NavigationDelegate* m_delegate = nullptr;
    std::chrono::seconds m_timeout { 60 };
    std::string m_requestedURL; ///< What `load` last asked for.
    std::string m_committedURL; ///< Where the last good page came from.
    bool m_isPageLost = true; ///< Whether the engine has nothing that it could load again.
    bool m_expectsEmptyPage = false;

    LoadPhase m_phase = LoadPhase::Idle;
    bool m_hasFailed = false; ///< The engine says that a failed load is finished, too.
    bool m_isDocumentComplete = false; ///< What it refers to may still be missing.
    std::optional<LoadError> m_failure; ///< What the next failure really is.
    Handle m_timer;
    GObjectOwner<GCancellable> m_drawing; ///< While the finished page is awaited on the screen.
    Handle m_drawingTimer;

    /// A load that the present page must not stop.
    struct Insistence {
        Handle timer;
        bool isUnderway = false; ///< The engine has begun with it.
        bool isSuperseded = false; ///< The page began with another one since.
    };
    std::optional<Insistence> m_insistence;
    bool m_isMakingRoom = false;
    GObjectOwner<WebKitWebResource> m_mainResource;
};

} // namespace quillox
