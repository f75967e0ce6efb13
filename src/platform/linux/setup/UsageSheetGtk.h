#pragma once

#include "usage/UsageStatsView.h"

#include <functional>
#include <gtkmm/box.h>
#include <gtkmm/builder.h>
#include <sigc++/connection.h>
#include <vector>

namespace quillox {

/// The usage sheet on a scrim, to be laid over the screen that opens it. Its button, Escape and a
/// click beside the sheet ask to close it. The view outlives this; the widget leaves its parent
/// with it.
class UsageSheetGtk final {
public:
    /// `onClose` may destroy this.
    UsageSheetGtk(UsageStatsView&, std::function<void()> onClose);
    ~UsageSheetGtk();
    UsageSheetGtk(const UsageSheetGtk&) = delete;
    UsageSheetGtk& operator=(const UsageSheetGtk&) = delete;

    Gtk::Widget& widget() { return get<Gtk::Widget>("scrim"); }

private:
    template <typename Widget> Widget& get(const char* id) const
    {
        return *m_builder->get_widget<Widget>(id);
    }

    void fillIn();
    void connect();
    void connectClosing();
    void close() const;
    void refresh();
    /// Rows of a title and a value, the value below or beside it.
    void addRows(const std::vector<UsageStatsView::Row>&, const char* style, Gtk::Orientation,
        const char* heading = nullptr);

    UsageStatsView& m_view;
    std::function<void()> m_onClose;
    Glib::RefPtr<Gtk::Builder> m_builder;
    Gtk::Box& m_body;
    std::vector<sigc::connection> m_connections;
};

} // namespace quillox
