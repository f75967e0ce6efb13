#include "platform/linux/gtk/LogoGtk.h"

#include "app/QuilloxApp.h"
#include "platform/linux/gtk/Symbol.h"
#include "platform/linux/gtk/WidgetStyle.h"

#include <cmath>

namespace quillox {

LogoGtk::LogoGtk(double height)
{
    g_object_set(m_area.gobj(), "accessible-role", GTK_ACCESSIBLE_ROLE_IMG, nullptr);
    gtk_accessible_update_property(
        GTK_ACCESSIBLE(m_area.gobj()), GTK_ACCESSIBLE_PROPERTY_LABEL, QuilloxApp::windowTitle, -1);
    m_area.set_content_width(static_cast<int>(std::ceil(logoWidth(height))));
    m_area.set_content_height(static_cast<int>(std::ceil(height)));
    m_area.set_halign(Gtk::Align::CENTER);
    m_area.set_valign(Gtk::Align::CENTER);
    m_area.set_draw_func([this, height](const auto& context, int, int) {
        drawLogo(context, height, textColor(m_area));
    });
}

} // namespace quillox
