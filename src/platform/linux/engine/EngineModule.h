#pragma once

#include "platform/linux/engine/Engine.h"
#include "platform/linux/system/OwnModule.h"
#include "support/Lifetime.h"

#include <functional>
#include <future>
#include <string>

namespace quillox {

/// Loads the web engine's module, which takes the linker about as long as everything else that the
/// program starts with: beside the main thread, ahead of need, or at once when something needs it
/// sooner. Once loaded it stays. A module that is missing, damaged or not of this very build is not
/// used, which the system log says once; there is no engine then for as long as the program runs.
/// Main thread only.
class EngineModule final : public WebViews {
public:
    /// `pageMemoryLimit` as `MakeEngine` has it.
    EngineModule(RunLoop&, SystemLog&, unsigned pageMemoryLimit);

    /// Waits for a load that is under way.
    ~EngineModule() override;

    /// Returns at once; loads the module on a thread, then starts what every page needs.
    void prepare();

    /// The first time, it waits until the module is loaded.
    bool isAvailable() override;
    std::unique_ptr<WebView> makeWebView(const WebViewConfiguration&) override;
    std::string canonicalURL(const std::string& url) const override;

    /// Waits like `isAvailable`. `parent` may be null; so is the answer without an engine.
    std::unique_ptr<HelpWindow> makeHelpWindow(Gtk::Window* parent);

private:
    void startLoading(std::function<void()> onLoaded);
    void finishLoading();

    RunLoop& m_runLoop;
    SystemLog& m_log;
    unsigned m_pageMemoryLimit;
    std::future<OwnModule> m_loading; ///< Until its result was taken.
    bool m_isLoaded = false; ///< Or turned out not to be to be had.
    std::unique_ptr<Engine> m_engine;
    Lifetime m_lifetime;
};

} // namespace quillox
