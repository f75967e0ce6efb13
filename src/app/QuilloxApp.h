#pragma once

#include <string>

namespace quillox {

class AppDelegate;
class AppState;

/// What the one window of the setup shows.
enum class RootView { Onboarding, Finishing, Operator };

/// The application's entry: its delegate, its state and the scene that they drive.
class QuilloxApp {
public:
    QuilloxApp(AppDelegate& appDelegate, AppState& app)
        : m_appDelegate(appDelegate)
        , m_app(app)
    {
    }

    static constexpr auto windowTitle = "Quillox";
    static constexpr auto bundleIdentifier = "com.orvendal.quillox";

    /// The version of this build, for example "1.2.0".
    static std::string version();

    AppDelegate& appDelegate() { return m_appDelegate; }
    AppState& app() { return m_app; }

    RootView rootView() const;

private:
    AppDelegate& m_appDelegate;
    AppState& m_app;
};

} // namespace quillox
