#include "platform/linux/engine/EngineModule.h"

#include "ports/RunLoop.h"
#include "ports/SystemLog.h"

#include <cassert>
#include <fmt/format.h>
#include <utility>

namespace quillox {

EngineModule::EngineModule(RunLoop& runLoop, SystemLog& log, unsigned pageMemoryLimit)
    : m_runLoop(runLoop)
    , m_log(log)
    , m_pageMemoryLimit(pageMemoryLimit)
{
}

EngineModule::~EngineModule() = default;

void EngineModule::prepare()
{
    startLoading([this] {
        finishLoading();
        if (m_engine)
            m_engine->prepare();
    });
}

/// Calls back on the main thread, later, unless it is loaded or under way.
void EngineModule::startLoading(std::function<void()> onLoaded)
{
    if (m_isLoaded || m_loading.valid())
        return;
    m_loading = std::async(std::launch::async,
        [this, done = RunLoop::Callback(m_lifetime.guard(std::move(onLoaded)))] {
            auto loaded = openOwnModule("libquillox-engine.so", makeEngineName);
            m_runLoop.post(done);
            return loaded;
        });
}

void EngineModule::finishLoading()
{
    if (!m_loading.valid())
        return;
    const auto [door, failure] = m_loading.get();
    m_isLoaded = true;
    if (door)
        m_engine.reset(reinterpret_cast<MakeEngine*>(door)(m_runLoop, m_log, m_pageMemoryLimit));
    else
        m_log.write(fmt::format("Quillox: there is no web engine: {}.", failure));
}

bool EngineModule::isAvailable()
{
    startLoading([] {});
    finishLoading();
    return m_engine != nullptr;
}

std::unique_ptr<WebView> EngineModule::makeWebView(const WebViewConfiguration& configuration)
{
    assert(m_engine);
    return m_engine->makeWebView(configuration);
}

std::string EngineModule::canonicalURL(const std::string& url) const
{
    assert(m_engine);
    return m_engine->canonicalURL(url);
}

std::unique_ptr<HelpWindow> EngineModule::makeHelpWindow(Gtk::Window* parent)
{
    return isAvailable() ? m_engine->makeHelpWindow(parent) : nullptr;
}

} // namespace quillox
