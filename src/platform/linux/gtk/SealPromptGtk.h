#pragma once

#include "lockdown/SealPrompt.h"
#include "platform/linux/gtk/AccentTextFieldGtk.h"
#include "platform/linux/gtk/WidgetView.h"

#include <gtkmm/builder.h>
#include <sigc++/connection.h>
#include <vector>

namespace quillox {

/// The password prompt on a dark scrim, which takes every click on what is below. The keyboard goes
/// to its field and round its buttons, and never out of it. The prompt outlives this.
class SealPromptGtk final : public View, public WidgetView {
public:
    SealPromptGtk(SealPrompt&, RunLoop&);
    ~SealPromptGtk() override;

    Gtk::Widget& widget() override { return get<Gtk::Widget>("scrim"); }

private:
    template <typename Widget> Widget& get(const char* id) const
    {
        return *m_builder->get_widget<Widget>(id);
    }

    void fillIn();
    void connect();
    void connectKeys();
    bool handleKey(unsigned symbol);
    void moveFocus(int step);
    void showWrong();

    SealPrompt& m_prompt;
    Glib::RefPtr<Gtk::Builder> m_builder;
    AccentTextFieldGtk m_field;
    WidgetStyle m_panelStyle;
    WidgetStyle m_boxStyle;
    std::vector<sigc::connection> m_connections;
    std::vector<Handle> m_observations;
};

} // namespace quillox
