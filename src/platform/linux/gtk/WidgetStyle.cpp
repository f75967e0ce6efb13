#include "platform/linux/gtk/WidgetStyle.h"

#include <cmath>
#include <fmt/format.h>

namespace quillox {

std::string cssColor(const Color& color)
{
    const auto byte = [](double component) { return std::lround(component * 255); };
    return fmt::format(
        "rgba({},{},{},{:.3f})", byte(color.red), byte(color.green), byte(color.blue), color.alpha);
}

Color textColor(const Gtk::Widget& widget)
{
    const auto color = widget.get_style_context()->get_color();
    return { color.get_red(), color.get_green(), color.get_blue(), color.get_alpha() };
}

void setStyleClass(Gtk::Widget& widget, const char* name, bool isSet)
{
    if (isSet)
        widget.add_css_class(name);
    else
        widget.remove_css_class(name);
}

WidgetStyle::WidgetStyle(Gtk::Widget& widget)
{
    widget.get_style_context()->add_provider(
        m_provider, GTK_STYLE_PROVIDER_PRIORITY_APPLICATION + 1);
}

void WidgetStyle::set(const std::string& rules)
{
    m_provider->load_from_data(rules);
}

} // namespace quillox
