#include "platform/linux/gtk/NavBarGtk.h"

#include "platform/linux/gtk/Symbol.h"

#include <fmt/format.h>
#include <gtkmm/button.h>
#include <gtkmm/drawingarea.h>

namespace quillox {

namespace {

    int whole(double points)
    {
        return static_cast<int>(points);
    }

} // namespace

class NavBarGtk::Button final {
public:
    Button(KioskNavBar& bar, KioskNavBar::Button& model)
        : m_observation(model.state.observe([this](const auto& state) { show(state); }))
    {
        // The button's name says it all.
        g_object_set(m_symbol.gobj(), "accessible-role", GTK_ACCESSIBLE_ROLE_NONE, nullptr);
        const int symbolSize = whole(KioskNavBar::symbolSize);
        m_symbol.set_content_width(symbolSize);
        m_symbol.set_content_height(symbolSize);
        m_symbol.set_halign(Gtk::Align::CENTER);
        m_symbol.set_valign(Gtk::Align::CENTER);
        m_symbol.set_draw_func([name = model.symbol](const auto& context, int, int) {
            drawSymbol(context, name, KioskNavBar::symbolSize, KioskNavBar::contentTint);
        });

        const int buttonSize = whole(KioskNavBar::buttonSize);
        m_button.set_child(m_symbol);
        m_button.set_size_request(buttonSize, buttonSize);
        m_button.set_focusable(false);
        m_button.set_focus_on_click(false);
        m_button.signal_clicked().connect([&bar, tapped = model.tapped] { (bar.*tapped)(); });
        gtk_accessible_update_property(GTK_ACCESSIBLE(m_button.gobj()),
            GTK_ACCESSIBLE_PROPERTY_LABEL, model.accessibleName, -1);
        show(model.state.get());
    }

    Gtk::Widget& widget() { return m_button; }

private:
    void show(const KioskNavBar::State& state)
    {
        m_button.set_sensitive(state.isEnabled);
        m_button.set_opacity(state.alpha());
    }

    Gtk::DrawingArea m_symbol;
    Gtk::Button m_button;
    Handle m_observation;
};

NavBarGtk::NavBarGtk(KioskNavBar& model)
    : m_style(m_bar)
{
    m_bar.add_css_class("nav-bar");
    m_bar.set_spacing(whole(KioskNavBar::spacing));
    m_bar.set_can_focus(false);
    m_style.set(fmt::format("box {{ padding: {}px {}px; border-radius: {}px; background: {}; }}",
        KioskNavBar::verticalInset, KioskNavBar::horizontalInset, KioskNavBar::cornerRadius,
        cssColor(KioskNavBar::background)));
    for (auto* button : model.stack())
        m_bar.append(m_buttons.emplace_back(model, *button).widget());
}

NavBarGtk::~NavBarGtk()
{
    m_bar.unparent();
}

} // namespace quillox
