#pragma once

#include <functional>
#include <gtkmm/builder.h>
#include <gtkmm/window.h>
#include <string>
#include <webkit/webkit.h>

namespace quillox {

/// Shows the setup guide where no browser does. Nothing leads out of it: it has no scripts, no
/// network and no menus, takes no keys but those for reading, and shows no other page. Escape,
/// Ctrl+W and its button close it.
class HelpWindowGtk final {
public:
    /// `parent` may be null.
    explicit HelpWindowGtk(Gtk::Window* parent);
    HelpWindowGtk(const HelpWindowGtk&) = delete;
    HelpWindowGtk& operator=(const HelpWindowGtk&) = delete;
    ~HelpWindowGtk();

    /// Loads the guide, at one of its anchors; empty: at its beginning.
    void load(const std::string& anchor);

    Gtk::Window& window() { return m_window; }

    /// A link was chosen that leads out of the guide.
    std::function<void(const std::string& url)> onLink;

    /// The window has left the screen. It comes out of an event of the window: whoever destroys it
    /// upon that has to wait until the main loop turns again.
    std::function<void()> onClosed;

private:
    template <typename Widget> Widget& get(const char* id)
    {
        return *m_builder->get_widget<Widget>(id);
    }

    void makeView();
    void connectKeys();
    bool handleKey(guint key, GdkModifierType modifiers);
    bool handleCommand(guint key);
    void zoom(double factor);
    gboolean decide(WebKitPolicyDecision*, WebKitPolicyDecisionType);

    Glib::RefPtr<Gtk::Builder> m_builder;
    Gtk::Window m_window;
    WebKitWebView* m_view = nullptr; ///< Owned by the window.
};

} // namespace quillox
