#include "fakes/FakeWindows.h"

#include <algorithm>
#include <fmt/format.h>

namespace quillox {

namespace {

    std::string text(const Rect& rect)
    {
        return fmt::format("{},{} {}x{}", rect.x, rect.y, rect.width, rect.height);
    }

    std::string nameOf(const WindowSpec& spec)
    {
        return spec.canBecomeKey ? "kiosk window" : fmt::format("cover {}", spec.displayNumber);
    }

} // namespace

std::unique_ptr<Window> FakeWindows::makeWindow(const WindowSpec& spec)
{
    return std::make_unique<FakeWindow>(*this, spec);
}

std::unique_ptr<Container> FakeWindows::makeContainer(Rect frame)
{
    return std::make_unique<FakeContainer>(m_journal, frame);
}

std::unique_ptr<WebView> FakeWindows::makeWebView(const WebViewConfiguration& configuration)
{
    return std::make_unique<FakeWebView>(*this, configuration);
}

void FakeWindows::FakeContainer::add(View& view, Rect area, Autoresizing autoresizing)
{
    views.push_back({ &view, area, autoresizing });
    m_journal.add(fmt::format("add view at {}", text(area)));
}

void FakeWindows::FakeContainer::addBelow(
    View& sibling, View& view, Rect area, Autoresizing autoresizing)
{
    const auto place = std::ranges::find(views, &sibling, &Placement::view);
    views.insert(place, { &view, area, autoresizing });
}

void FakeWindows::FakeContainer::move(View& view, Rect area)
{
    std::ranges::find(views, &view, &Placement::view)->frame = area;
}

FakeWindows::FakeWindow::FakeWindow(FakeWindows& owner, const WindowSpec& made)
    : spec(made)
    , m_owner(owner)
{
    owner.windows.push_back(this);
    owner.m_journal.add(fmt::format("make {} at {}", nameOf(spec), text(spec.frame)));
}

FakeWindows::FakeWindow::~FakeWindow()
{
    std::erase(m_owner.windows, this);
}

void FakeWindows::FakeWindow::setFrame(std::uint32_t displayNumber, Rect frame)
{
    spec.displayNumber = displayNumber;
    spec.frame = frame;
    m_owner.m_journal.add(fmt::format("{} frame {}", nameOf(spec), text(frame)));
}

void FakeWindows::FakeWindow::setContentView(Container* container)
{
    content = static_cast<FakeContainer*>(container);
    m_owner.m_journal.add(nameOf(spec) + (content ? " content" : " no content"));
}

void FakeWindows::FakeWindow::makeKeyAndOrderFront()
{
    isVisible = true;
    m_owner.m_journal.add(nameOf(spec) + " key and front");
}

void FakeWindows::FakeWindow::orderFrontRegardless()
{
    isVisible = true;
    m_owner.m_journal.add(nameOf(spec) + " front");
}

void FakeWindows::FakeWindow::orderOut()
{
    isVisible = false;
    m_owner.m_journal.add(nameOf(spec) + " out");
}

void FakeWindows::FakeWindow::makeFirstResponder(View&)
{
    m_owner.m_journal.add(nameOf(spec) + " first responder");
}

FakeWindows::FakeWebView::FakeWebView(FakeWindows& owner, const WebViewConfiguration& made)
    : configuration(made)
    , m_owner(owner)
{
    owner.webViews.push_back(this);
    owner.m_journal.add("make web view");
}

FakeWindows::FakeWebView::~FakeWebView()
{
    std::erase(m_owner.webViews, this);
}

void FakeWindows::FakeWebView::load(const UrlRequest& request)
{
    loads.push_back(request);
    m_owner.m_journal.add("load " + request.url);
}

void FakeWindows::FakeWebView::stopLoading()
{
    m_owner.m_journal.add("stop loading");
}

void FakeWindows::FakeWebView::reload()
{
    ++reloads;
    m_owner.m_journal.add("reload");
}

void FakeWindows::FakeWebView::goBack()
{
    m_owner.m_journal.add("go back");
}

void FakeWindows::FakeWebView::goForward()
{
    m_owner.m_journal.add("go forward");
}

void FakeWindows::FakeWebView::ping(std::function<void()> onAnswer)
{
    if (!isHung)
        onAnswer();
}

void FakeWindows::FakeWebView::endPageProcess()
{
    isHung = false;
    shownURL.clear();
    navigationDelegate->pageProcessDidEnd(PageProcessEnd::Requested);
}

void FakeWindows::FakeWebView::show(const std::string& url)
{
    shownURL = url;
    navigationDelegate->didCommitNavigation();
    navigationDelegate->didFinishNavigation();
}

} // namespace quillox
