#include "platform/linux/setup/KeyCapsGtk.h"

#include "ui/Caption.h"

#include <gtkmm/label.h>

namespace quillox {

namespace {

    constexpr int gap = 4;
    constexpr int minimumCharacters = 2; ///< Narrow symbols get keys as wide as the others.

    std::string name(const KeyCap& key)
    {
        return std::string(key.name) + (&key == &sealKeyCaps.back() ? "" : "+");
    }

} // namespace

std::string spokenKeys(std::string_view text)
{
    std::string spoken(text);
    for (const auto& key : sealKeyCaps) {
        if (key.symbol == key.name)
            continue;
        const auto at = spoken.find(key.symbol);
        if (at != std::string::npos)
            spoken.replace(at, key.symbol.size(), name(key));
    }
    return spoken;
}

KeyCapsGtk::KeyCapsGtk()
    : m_row(Gtk::Orientation::HORIZONTAL, gap)
{
    std::string spoken;
    for (const auto& key : sealKeyCaps) {
        auto& cap = *Gtk::make_managed<Gtk::Label>(std::string(key.symbol));
        g_object_set(cap.gobj(), "accessible-role", GTK_ACCESSIBLE_ROLE_PRESENTATION, nullptr);
        cap.add_css_class("key-cap");
        cap.set_width_chars(minimumCharacters);
        m_row.append(cap);
        spoken += name(key);
    }
    m_row.set_halign(Gtk::Align::CENTER);
    m_row.set_valign(Gtk::Align::CENTER);
    g_object_set(m_row.gobj(), "accessible-role", GTK_ACCESSIBLE_ROLE_IMG, nullptr);
    gtk_accessible_update_property(
        GTK_ACCESSIBLE(m_row.gobj()), GTK_ACCESSIBLE_PROPERTY_LABEL, spoken.c_str(), -1);
}

} // namespace quillox
