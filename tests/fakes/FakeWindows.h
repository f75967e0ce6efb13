#pragma once

#include "fakes/Journal.h"
#include "ports/WebView.h"
#include "ports/Window.h"
#include "support/CanonicalText.h"

#include <map>
#include <vector>

namespace quillox {

/// Windows, containers and web views without a display. Everything that exists at a moment can be
/// looked at; what the core destroyed is gone from the lists. Calls whose order matters go to the
/// journal.
class FakeWindows final : public Windows, public WebViews {
public:
    class FakeWindow;
    class FakeWebView;
    class FakeContainer;

    explicit FakeWindows(Journal& journal)
        : m_journal(journal)
    {
    }

    std::vector<FakeWindow*> windows; ///< In the order of their making.
    std::vector<FakeWebView*> webViews;
    bool coversScreens = true;

    std::unique_ptr<Window> makeWindow(const WindowSpec&) override;
    std::unique_ptr<Container> makeContainer(Rect frame) override;
    std::unique_ptr<WebView> makeWebView(const WebViewConfiguration&) override;
    bool canCoverSeparateScreens() const override { return coversScreens; }

    /// As the engine, in lower case.
    std::string canonicalURL(const std::string& url) const override { return lowercased(url); }

private:
    Journal& m_journal;
};

class FakeWindows::FakeContainer final : public Container {
public:
    FakeContainer(Journal& log, Rect area)
        : frame(area)
        , m_journal(log)
    {
    }

    struct Placement {
        View* view;
        Rect frame;
        Autoresizing autoresizing;
    };
    std::vector<Placement> views; ///< Bottom to top.
    Rect frame;

    void add(View& view, Rect area, Autoresizing) override;
    void addBelow(View& sibling, View& view, Rect area, Autoresizing) override;
    void move(View& view, Rect area) override;
    void setExclusive(View* view) override { exclusive = view; }

    View* exclusive = nullptr;

private:
    Journal& m_journal;
};

class FakeWindows::FakeWindow final : public Window {
public:
    FakeWindow(FakeWindows& owner, const WindowSpec& made);
    ~FakeWindow() override;

    WindowSpec spec;
    bool isVisible = false;
    FakeContainer* content = nullptr;

    void setFrame(std::uint32_t displayNumber, Rect frame) override;
    void setContentView(Container*) override;
    void makeKeyAndOrderFront() override;
    void orderFrontRegardless() override;
    void orderOut() override;
    void makeFirstResponder(View&) override;

private:
    FakeWindows& m_owner;
};

class FakeWindows::FakeWebView final : public WebView {
public:
    FakeWebView(FakeWindows& owner, const WebViewConfiguration& made);
    ~FakeWebView() override;

    WebViewConfiguration configuration;
    NavigationDelegate* navigationDelegate = nullptr;
    UIDelegate* uiDelegate = nullptr;
    bool allowsMagnification = true;
    bool allowsGestures = true;
    std::vector<UrlRequest> loads;

    void setNavigationDelegate(NavigationDelegate* delegate) override
    {
        navigationDelegate = delegate;
    }
    void setUIDelegate(UIDelegate* delegate) override { uiDelegate = delegate; }
    void setAllowsMagnification(bool allowed) override { allowsMagnification = allowed; }
    void setAllowsBackForwardNavigationGestures(bool allowed) override { allowsGestures = allowed; }
    void load(const UrlRequest&) override;
    void loadInsistently(const UrlRequest& request) override { load(request); }
    void reload() override;
    void stopLoading() override;
    LoadPhase loadPhase() const override { return phase; }
    std::string url() const override { return shownURL; }
    bool canGoBack() const override { return hasBack; }
    bool canGoForward() const override { return hasForward; }
    void goBack() override;
    void goForward() override;
    void readUnderPageBackground(ColorCallback callback) override { callback(background); }
    void ping(std::function<void()> onAnswer) override;
    void endPageProcess() override;

    LoadPhase phase = LoadPhase::Idle;
    std::string shownURL;
    bool hasBack = false;
    bool hasForward = false;
    bool isHung = false;
    int reloads = 0;
    std::optional<Color> background;

    /// What the engine tells when a page has come.
    void show(const std::string& url);

private:
    FakeWindows& m_owner;
};

} // namespace quillox
