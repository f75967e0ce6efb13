#pragma once

#include "fakes/Journal.h"
#include "ports/WebView.h"
#include "ports/Window.h"
#include "support/CanonicalText.h"

#include <algorithm>
#include <fmt/format.h>
#include <vector>

namespace quillox {

/// Windows, containers and web views without a display. Everything that exists at a moment can be
/// looked at; what the core destroyed is gone from the lists. Calls whose order matters go to the
/// journal.
class FakeWindows final : public Windows, public WebViews {
public:
    class FakeContainer;
    class FakeWindow;
    class FakeWebView;

    explicit FakeWindows(Journal& journal)
        : m_journal(journal)
    {
    }

    std::vector<FakeWindow*> windows; ///< In the order of their making.
    std::vector<FakeWebView*> webViews;
    bool hasEngine = true;

    bool isAvailable() override { return hasEngine; }
    std::unique_ptr<Window> makeWindow(const WindowSpec&) override;
    std::unique_ptr<Container> makeContainer(Rect frame) override;
    std::unique_ptr<WebView> makeWebView(const WebViewConfiguration&) override;
    bool canCoverSeparateScreens() const override { return true; }

    /// As the engine, in lower case.
    std::string canonicalURL(const std::string& url) const override { return lowercased(url); }

private:
    static std::string text(const Rect& rect)
    {
        return fmt::format("{},{} {}x{}", rect.x, rect.y, rect.width, rect.height);
    }

    Journal& m_journal;
};

class FakeWindows::FakeContainer final : public Container {
public:
    explicit FakeContainer(Journal& journal)
        : m_journal(journal)
    {
    }

    struct Placement {
        View* view;
        Rect frame;
    };
    std::vector<Placement> views; ///< Bottom to top.
    View* exclusive = nullptr;

    void add(View& view, Rect area, Autoresizing) override
    {
        views.push_back({ &view, area });
        m_journal.add(fmt::format("add view at {}", text(area)));
    }
    void addBelow(View& sibling, View& view, Rect area, Autoresizing) override
    {
        views.insert(std::ranges::find(views, &sibling, &Placement::view), { &view, area });
    }
    void move(View& view, Rect area) override
    {
        std::ranges::find(views, &view, &Placement::view)->frame = area;
    }
    void setExclusive(View* view) override { exclusive = view; }

private:
    Journal& m_journal;
};

class FakeWindows::FakeWindow final : public Window {
public:
    FakeWindow(FakeWindows& owner, const WindowSpec& made)
        : spec(made)
        , m_owner(owner)
    {
        owner.windows.push_back(this);
        owner.m_journal.add(fmt::format("make {} at {}", name(), text(spec.frame)));
    }
    ~FakeWindow() override { std::erase(m_owner.windows, this); }

    WindowSpec spec;
    bool isVisible = false;
    FakeContainer* content = nullptr;

    void setFrame(std::uint32_t displayNumber, Rect frame) override
    {
        spec.displayNumber = displayNumber;
        spec.frame = frame;
        note("frame " + text(frame));
    }
    void setContentView(Container* container) override
    {
        content = static_cast<FakeContainer*>(container);
        note(content ? "content" : "no content");
    }
    void makeKeyAndOrderFront() override { show(true, "key and front"); }
    void orderFrontRegardless() override { show(true, "front"); }
    void orderOut() override { show(false, "out"); }
    void makeFirstResponder(View&) override { note("first responder"); }

private:
    std::string name() const
    {
        return spec.canBecomeKey ? "kiosk window" : fmt::format("cover {}", spec.displayNumber);
    }
    void note(const std::string& what) { m_owner.m_journal.add(name() + " " + what); }
    void show(bool isShown, const char* what)
    {
        isVisible = isShown;
        note(what);
    }

    FakeWindows& m_owner;
};

class FakeWindows::FakeWebView final : public WebView {
public:
    FakeWebView(FakeWindows& owner, const WebViewConfiguration& made)
        : configuration(made)
        , m_owner(owner)
    {
        owner.webViews.push_back(this);
        note("make web view");
    }
    ~FakeWebView() override { std::erase(m_owner.webViews, this); }

    WebViewConfiguration configuration;
    NavigationDelegate* navigationDelegate = nullptr;
    UIDelegate* uiDelegate = nullptr;
    bool allowsMagnification = true;
    bool allowsGestures = true;
    std::vector<UrlRequest> loads;
    LoadPhase phase = LoadPhase::Idle;
    std::string shownURL;
    bool hasBack = false;
    bool isHung = false;
    int reloads = 0;
    std::optional<Color> background;

    /// What the engine tells when a page has come.
    void show(const std::string& url)
    {
        shownURL = url;
        navigationDelegate->didCommitNavigation();
        navigationDelegate->didFinishNavigation();
    }

    void setNavigationDelegate(NavigationDelegate* told) override { navigationDelegate = told; }
    void setUIDelegate(UIDelegate* asked) override { uiDelegate = asked; }
    void setAllowsMagnification(bool allowed) override { allowsMagnification = allowed; }
    void setAllowsBackForwardNavigationGestures(bool allowed) override { allowsGestures = allowed; }
    void load(const UrlRequest& request) override
    {
        loads.push_back(request);
        note("load " + request.url);
    }
    void loadInsistently(const UrlRequest& request) override
    {
        loads.push_back(request);
        note("insist on " + request.url);
    }
    void reload() override
    {
        ++reloads;
        note("reload");
    }
    void stopLoading() override { note("stop loading"); }
    LoadPhase loadPhase() const override { return phase; }
    std::string url() const override { return shownURL; }
    bool canGoBack() const override { return hasBack; }
    bool canGoForward() const override { return false; }
    void goBack() override { note("go back"); }
    void goForward() override { note("go forward"); }
    void readUnderPageBackground(ColorCallback callback) override { callback(background); }
    void ping(std::function<void()> onAnswer) override
    {
        if (!isHung)
            onAnswer();
    }
    void endPageProcess() override
    {
        isHung = false;
        shownURL.clear();
        navigationDelegate->pageProcessDidEnd(PageProcessEnd::Requested);
    }

private:
    void note(const std::string& what) { m_owner.m_journal.add(what); }

    FakeWindows& m_owner;
};

inline std::unique_ptr<Window> FakeWindows::makeWindow(const WindowSpec& spec)
{
    return std::make_unique<FakeWindow>(*this, spec);
}

inline std::unique_ptr<Container> FakeWindows::makeContainer(Rect)
{
    return std::make_unique<FakeContainer>(m_journal);
}

inline std::unique_ptr<WebView> FakeWindows::makeWebView(const WebViewConfiguration& configuration)
{
    return std::make_unique<FakeWebView>(*this, configuration);
}

} // namespace quillox
