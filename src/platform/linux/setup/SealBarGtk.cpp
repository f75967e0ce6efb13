#include "platform/linux/setup/SealBarGtk.h"

#include <algorithm>
#include <gtkmm/binlayout.h>
#include <gtkmm/snapshot.h>

namespace quillox {

namespace {

    constexpr int gap = 12;

} // namespace

SealBarGtk::Face::Face()
    : box(Gtk::Orientation::HORIZONTAL, gap)
{
    box.set_halign(Gtk::Align::FILL);
    box.add_css_class("seal-bar-face");
    auto& content = *Gtk::make_managed<Gtk::Box>(Gtk::Orientation::HORIZONTAL, gap);
    content.set_halign(Gtk::Align::CENTER);
    content.set_hexpand(true);
    content.append(text);
    content.append(keyCaps.widget());
    box.append(content);
    keyCaps.widget().set_visible(false);
}

SealBarGtk::Bar::Bar(Gtk::Widget& plain, Gtk::Widget& filled)
    : Glib::ObjectBase("QuilloxSealBar")
    , m_plain(plain)
    , m_filled(filled)
{
    set_layout_manager(Gtk::BinLayout::create());
    set_overflow(Gtk::Overflow::HIDDEN); // The faces keep within its corners.
    set_hexpand(true);
    add_css_class("seal-bar");
    m_filled.add_css_class("filled");
    m_plain.set_parent(*this);
    m_filled.set_parent(*this);
}

SealBarGtk::Bar::~Bar()
{
    m_filled.unparent();
    m_plain.unparent();
}

void SealBarGtk::Bar::setFill(double fill)
{
    fill = std::clamp(fill, 0.0, 1.0);
    if (fill == m_fill)
        return;
    m_fill = fill;
    queue_draw();
}

void SealBarGtk::Bar::snapshot_vfunc(const Glib::RefPtr<Gtk::Snapshot>& snapshot)
{
    snapshot_child(m_plain, snapshot);
    if (m_fill == 0)
        return;
    const double filled = get_width() * m_fill;
    const bool isMirrored = get_direction() == Gtk::TextDirection::RTL;
    const auto start = static_cast<float>(isMirrored ? get_width() - filled : 0);
    const auto clip = GRAPHENE_RECT_INIT(
        start, 0, static_cast<float>(filled), static_cast<float>(get_height()));
    gtk_snapshot_push_clip(snapshot->gobj(), &clip);
    snapshot_child(m_filled, snapshot);
    snapshot->pop();
}

SealBarGtk::SealBarGtk()
    : m_bar(m_plain.box, m_filled.box)
{
    g_object_set(m_bar.gobj(), "accessible-role", GTK_ACCESSIBLE_ROLE_PROGRESS_BAR, nullptr);
    for (auto* face : { &m_plain, &m_filled })
        gtk_accessible_update_state(
            GTK_ACCESSIBLE(face->box.gobj()), GTK_ACCESSIBLE_STATE_HIDDEN, TRUE, -1);
    gtk_accessible_update_property(GTK_ACCESSIBLE(m_bar.gobj()), GTK_ACCESSIBLE_PROPERTY_VALUE_MIN,
        0.0, GTK_ACCESSIBLE_PROPERTY_VALUE_MAX, 1.0, GTK_ACCESSIBLE_PROPERTY_VALUE_NOW, 0.0, -1);
}

void SealBarGtk::update(const SealBar& bar)
{
    if (bar.text != m_text) {
        m_text = bar.text;
        m_plain.text.set_text(m_text);
        m_filled.text.set_text(m_text);
        gtk_accessible_update_property(GTK_ACCESSIBLE(m_bar.gobj()), GTK_ACCESSIBLE_PROPERTY_LABEL,
            spokenKeys(m_text).c_str(), -1);
    }
    if (bar.fill != m_fill) {
        m_fill = bar.fill;
        m_bar.setFill(m_fill);
        gtk_accessible_update_property(
            GTK_ACCESSIBLE(m_bar.gobj()), GTK_ACCESSIBLE_PROPERTY_VALUE_NOW, m_fill, -1);
    }
}

void SealBarGtk::setShowsKeyCaps(bool shows)
{
    m_plain.keyCaps.widget().set_visible(shows);
    m_filled.keyCaps.widget().set_visible(shows);
}

} // namespace quillox
