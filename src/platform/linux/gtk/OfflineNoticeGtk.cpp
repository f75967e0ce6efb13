#include "platform/linux/gtk/OfflineNoticeGtk.h"

#include <fmt/format.h>
#include <gtkmm/box.h>
#include <gtkmm/label.h>

namespace quillox {

OfflineNoticeGtk::OfflineNoticeGtk(OfflineModel& model)
    : m_builder(Gtk::Builder::create_from_resource("/com/orvendal/quillox/offline-notice.ui"))
    , m_coverStyle(widget())
    , m_titleStyle(get<Gtk::Widget>("title"))
    , m_messageStyle(get<Gtk::Widget>("message"))
    , m_observation(model.offline.observe([this](bool offline) { widget().set_visible(offline); }))
{
    m_coverStyle.set(fmt::format("box {{ background: {}; color: {}; }}",
        cssColor(OfflineOverlay::background), cssColor(OfflineOverlay::textColor)));
    get<Gtk::Box>("stack").set_spacing(static_cast<int>(OfflineOverlay::spacing));
    fillIn("title", m_titleStyle, OfflineOverlay::title);
    fillIn("message", m_messageStyle, OfflineOverlay::message);
    widget().set_visible(model.offline.get());
}

OfflineNoticeGtk::~OfflineNoticeGtk()
{
    widget().unparent();
}

void OfflineNoticeGtk::fillIn(const char* id, WidgetStyle& style, const OfflineOverlay::Line& line)
{
    auto& label = get<Gtk::Label>(id);
    label.set_text(line.text);
    label.set_opacity(line.opacity);
    style.set(fmt::format("label {{ font-size: {}px; }}", line.fontSize));
}

} // namespace quillox
