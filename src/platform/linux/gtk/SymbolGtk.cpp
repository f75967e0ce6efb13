#include "platform/linux/gtk/SymbolGtk.h"

#include "platform/linux/gtk/Symbol.h"
#include "platform/linux/gtk/WidgetStyle.h"

namespace quillox {

SymbolGtk::SymbolGtk(std::string_view name, double size)
    : m_name(name)
{
    g_object_set(gobj(), "accessible-role", GTK_ACCESSIBLE_ROLE_PRESENTATION, nullptr);
    const int side = static_cast<int>(size);
    set_content_width(side);
    set_content_height(side);
    set_halign(Gtk::Align::CENTER);
    set_valign(Gtk::Align::CENTER);
    set_draw_func([this, size](const auto& context, int, int) {
        drawSymbol(context, m_name, size, textColor(*this));
    });
}

void SymbolGtk::set(std::string_view name)
{
    if (m_name == name)
        return;
    m_name = name;
    queue_draw();
}

} // namespace quillox
