#pragma once

#include "platform/linux/gtk/HelpWindow.h"

#include <gtkmm/builder.h>
#include <webkit/webkit.h>

namespace quillox {

/// Shows the setup guide where no browser does. Nothing leads out of it: it has no scripts, no
/// network and no menus, takes no keys but those for reading, and shows no other page. Escape,
/// Ctrl+W and its button close it.
class HelpWindowWebKit final : public HelpWindow {
public:
    /// `parent` may be null.
    explicit HelpWindowWebKit(Gtk::Window* parent);
    ~HelpWindowWebKit() override;

    void load(const std::string& anchor) override;
    Gtk::Window& window() override { return m_window; }

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
