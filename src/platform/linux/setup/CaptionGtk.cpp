#include "platform/linux/setup/CaptionGtk.h"

#include "platform/linux/setup/ColumnLayout.h"

namespace quillox {

namespace {

    constexpr int lineLength = 75;

    void fillIn(Gtk::Label& label, std::string_view text, const char* style)
    {
        label.set_text(std::string(text));
        label.set_xalign(0);
        label.set_wrap(true);
        // A long text asks for a line as long as is good to read, and wraps where that is not
        // there.
        label.set_width_chars(1);
        label.set_max_width_chars(lineLength);
        label.add_css_class(style);
    }

} // namespace

CaptionGtk::CaptionGtk(Gtk::Box& box, const Caption& caption)
{
    box.set_layout_manager(ColumnLayout::create());
    fillIn(m_heading, caption.heading, "heading");
    box.append(m_heading);
    fillIn(m_help, caption.help, "help");
    m_help.set_visible(!caption.help.empty());
    box.append(m_help);
}

void CaptionGtk::setHelp(std::string_view help)
{
    if (m_help.get_text().raw() != help)
        m_help.set_text(std::string(help));
}

void CaptionGtk::nameControl(Gtk::Widget& control) const
{
    gtk_accessible_update_relation(GTK_ACCESSIBLE(control.gobj()),
        GTK_ACCESSIBLE_RELATION_LABELLED_BY, m_heading.gobj(), nullptr,
        GTK_ACCESSIBLE_RELATION_DESCRIBED_BY, m_help.gobj(), nullptr, -1);
}

} // namespace quillox
