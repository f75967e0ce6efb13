#pragma once

#include "ports/LoadError.h"
#include "ports/SchemeHandler.h"
#include "ports/View.h"
#include "support/Geometry.h"

#include <chrono>
#include <functional>
#include <map>
#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace quillox {

/// A script of ours in every page, run when the document starts, before any script of the page.
struct UserScript {
    std::string source;
    bool isForMainFrameOnly = false;

    bool operator==(const UserScript&) const = default;
};

/// Everything that is not named here is the engine's default: one persistent data store, its own
/// user agent.
struct WebViewConfiguration {
    std::vector<UserScript> userScripts;

    /// Rules in CSS that no page can override, in every frame.
    std::string userStyleSheet;

    /// By scheme, in lower case. Pages of a private scheme are a secure context with an origin of
    /// their own; pages of other schemes can neither show, fetch nor open anything of it. The
    /// handlers are asked until another web view is made or this one is destroyed; after that such
    /// requests are answered with 404.
    std::map<std::string, std::shared_ptr<SchemeHandler>> schemeHandlers;

    /// The absolute path of the folder that the private scheme's pages come from. Engines that read
    /// audio and video in the page's process need it; empty when there is none.
    std::string siteFolder;

    bool operator==(const WebViewConfiguration&) const = default;
};

/// A load with the protocol's own caching rules.
struct UrlRequest {
    std::string url;
    std::chrono::seconds timeout { 60 }; ///< Without an answer by then the load fails.

    bool operator==(const UrlRequest&) const = default;
};

/// How the process that a page runs in came to its end.
enum class PageProcessEnd {
    Crashed,
    ExceededMemoryLimit,
    Requested, ///< By `WebView::endPageProcess`.
    MadeRoom, ///< It would not leave for `WebView::loadInsistently`, which goes on by itself.
};

/// What the engine asks and tells while it navigates. Addresses are as the engine has read them:
/// what it goes on to load is exactly what was judged. A delegate that answers nothing of its own
/// lets everything proceed.
class NavigationDelegate {
public:
    virtual ~NavigationDelegate() = default;

    /// Whether a page, a frame, a redirect, a form or the history may go there; empty when the
    /// engine has no address. What is refused is dropped without a trace.
    virtual bool shouldNavigate(const std::string& url) { return !url.empty(); }

    /// The page begins to show something else.
    virtual void didCommitNavigation() { }

    /// The page is there as a whole, and can be seen. Never follows a failure of the same load.
    virtual void didFinishNavigation() { }

    /// A load that had nothing to show yet failed; what was shown before stays. Nobody is told of a
    /// navigation that `shouldNavigate` refused, but for a redirect, which fails here.
    virtual void didFailProvisionalNavigation(const LoadError&) { }

    /// A load failed that shows a part of its page already.
    virtual void didFailNavigation(const LoadError&) { }

    /// What lies before or behind the page in its history is not what it was.
    virtual void backForwardListDidChange() { }

    /// The page is gone, and the view black. `WebView::reload` brings it back.
    virtual void pageProcessDidEnd(PageProcessEnd) { }

    /// The process that speaks to servers for every page died. The page is still there, but what it
    /// had under way over the network is lost.
    virtual void networkProcessDidEnd() { }
};

/// What the engine wants to show beside the page. Nothing of it ever shows by itself: alerts
/// return, questions are refused, choosers are cancelled, downloads and new windows do not happen.
class UIDelegate {
public:
    virtual ~UIDelegate() = default;

    /// `items` are the titles of the menu's entries. What is left in it is shown; with none left,
    /// no menu opens.
    virtual void willOpenContextMenu(std::vector<std::string>& items) = 0;

    /// A link or a script asks for a new window, which it never gets. True loads the same request
    /// in place of the present page.
    virtual bool shouldLoadInPlaceOfNewWindow(const std::string& url) = 0;
};

enum class LoadPhase {
    Idle,
    Provisional, ///< Waits for an answer; what was shown before is still there.
    Committed, ///< Receives the page that it shows.
};

/// One page at a time. A failed load leaves what was shown before, never an error page. A load that
/// is not answered within its timeout, and a page that stops coming for that long, fail as timed
/// out. Main thread only; callbacks come from the main loop, and none once the view is gone.
class WebView : public View {
public:
    virtual void setNavigationDelegate(NavigationDelegate*) = 0;
    virtual void setUIDelegate(UIDelegate*) = 0;
    virtual void setAllowsMagnification(bool) = 0;
    virtual void setAllowsBackForwardNavigationGestures(bool) = 0;

    virtual void load(const UrlRequest&) = 0;

    /// The same, and nothing that the present page does can stop it: while the load has not begun
    /// after 2 seconds, or other loads of the page take its place, the page's process is ended and
    /// the request made again. It is over when it was committed or failed.
    virtual void loadInsistently(const UrlRequest&) = 0;

    /// Loads the page again that was committed last. When none was, or when the page's process
    /// ended in the middle of `loadInsistently`, it is what was last asked for.
    virtual void reload() = 0;
    virtual void stopLoading() = 0;
    virtual LoadPhase loadPhase() const = 0;

    /// The address of the page that is shown, which its scripts may have changed within its site;
    /// empty without a page.
    virtual std::string url() const = 0;

    virtual bool canGoBack() const = 0;
    virtual bool canGoForward() const = 0;
    virtual void goBack() = 0;
    virtual void goForward() = 0;

    using ColorCallback = std::function<void(std::optional<Color>)>;
    /// The colour behind and around the page, from the page's own background; opaque. None when it
    /// cannot be told. Only the last of several calls under way is answered.
    virtual void readUnderPageBackground(ColorCallback) = 0;

    /// Calls back as soon as the page's process answers; never when it does not. Only the last of
    /// several calls under way is answered.
    virtual void ping(std::function<void()> onAnswer) = 0;

    /// Ends the process of the page, whatever it is doing; `pageProcessDidEnd` follows.
    virtual void endPageProcess() = 0;
};

class WebViews {
public:
    virtual ~WebViews() = default;

    /// Whether there is an engine, without which neither of the others may be called. It may take
    /// the time that loading one takes.
    virtual bool isAvailable() = 0;

    virtual std::unique_ptr<WebView> makeWebView(const WebViewConfiguration&) = 0;

    /// The address as the engine reads it, which is the form that delegates are given.
    virtual std::string canonicalURL(const std::string& url) const = 0;
};

} // namespace quillox
