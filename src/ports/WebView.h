#pragma once

#include "ports/SchemeHandler.h"
#include "ports/View.h"

#include <chrono>
#include <map>
#include <memory>
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

    /// By scheme, in lower case. Pages of a private scheme are a secure context with an origin of
    /// their own; pages of other schemes can neither show, fetch nor open anything of it. The
    /// handlers are asked until another web view is made or this one is destroyed; after that such
    /// requests are answered with 404.
    std::map<std::string, std::shared_ptr<SchemeHandler>> schemeHandlers;

    bool operator==(const WebViewConfiguration&) const = default;
};

/// A load with the protocol's own caching rules.
struct UrlRequest {
    std::string url;
    std::chrono::seconds timeout { 60 }; ///< Without an answer by then the load fails.

    bool operator==(const UrlRequest&) const = default;
};

/// What the engine asks while it navigates. A delegate that answers nothing of its own lets
/// everything proceed.
class NavigationDelegate {
public:
    virtual ~NavigationDelegate() = default;
    virtual bool shouldNavigate(const std::string& url) { return !url.empty(); }
    virtual void didCommitNavigation() { }
    virtual void didFinishNavigation() { }
};

/// What the engine wants to show beside the page. Nothing of it ever shows by itself: alerts
/// return, questions are refused, choosers are cancelled, downloads and new windows do not happen.
class UIDelegate {
public:
    virtual ~UIDelegate() = default;

    /// `items` are the titles of the menu's entries. What is left in it is shown; with none left,
    /// no menu opens.
    virtual void willOpenContextMenu(std::vector<std::string>& items) = 0;
};

/// One page at a time. A failed load leaves what was shown before, never an error page. Main thread
/// only.
class WebView : public View {
public:
    virtual void setNavigationDelegate(NavigationDelegate*) = 0;
    virtual void setUIDelegate(UIDelegate*) = 0;
    virtual void setAllowsMagnification(bool) = 0;
    virtual void setAllowsBackForwardNavigationGestures(bool) = 0;
    virtual void load(const UrlRequest&) = 0;
    virtual void stopLoading() = 0;
};

class WebViews {
public:
    virtual ~WebViews() = default;
    virtual std::unique_ptr<WebView> makeWebView(const WebViewConfiguration&) = 0;
};

} // namespace quillox
