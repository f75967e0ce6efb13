#pragma once

#include "kiosk/OfflineOverlay.h"
#include "platform/linux/gtk/WidgetStyle.h"
#include "platform/linux/gtk/WidgetView.h"

#include <gtkmm/builder.h>

namespace quillox {

/// The notice of a lost connection: it takes every click while it is shown, and is an alert to
/// those who hear the screen. The model outlives this.
class OfflineNoticeGtk final : public View, public WidgetView {
public:
    explicit OfflineNoticeGtk(OfflineModel&);
    ~OfflineNoticeGtk() override;

    Gtk::Widget& widget() override { return get<Gtk::Widget>("cover"); }

private:
    template <typename Widget> Widget& get(const char* id) const
    {
        return *m_builder->get_widget<Widget>(id);
    }

    void fillIn(const char* id, WidgetStyle&, const OfflineOverlay::Line&);

    Glib::RefPtr<Gtk::Builder> m_builder;
    WidgetStyle m_coverStyle;
    WidgetStyle m_titleStyle;
    WidgetStyle m_messageStyle;
    Handle m_observation;
};

} // namespace quillox
