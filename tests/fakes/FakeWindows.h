#pragma once

#include "fakes/Journal.h"
#include "ports/WebView.h"
#include "ports/Window.h"

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
    void stopLoading() override;

private:
    FakeWindows& m_owner;
};

} // namespace quillox
