#include "platform/linux/gtk/UpdateProgressPanelsGtk.h"

#include "platform/linux/gtk/Toplevel.h"
#include "support/Published.h"

#include <glibmm/main.h>
#include <gtkmm/button.h>
#include <gtkmm/dialog.h>
#include <gtkmm/label.h>
#include <gtkmm/progressbar.h>
#include <memory>
#include <utility>

namespace quillox {

namespace {

    constexpr int panelWidth = 400;
    constexpr int margin = 24;
    constexpr int spacing = 16;

    class Panel final : public Gtk::Dialog {
    public:
        Panel(
            const std::string& message, Published<double>& fraction, std::function<void()> onCancel)
            : m_onCancel(std::move(onCancel))
        {
            refuseInspector(*this);
            set_title(message);
            set_modal(true);
            set_resizable(false);
            set_default_size(panelWidth, -1);
            m_message.set_text(message);
            m_message.set_halign(Gtk::Align::START);
            gtk_accessible_update_property(
                GTK_ACCESSIBLE(m_bar.gobj()), GTK_ACCESSIBLE_PROPERTY_LABEL, message.c_str(), -1);
            m_cancel.set_halign(Gtk::Align::END);
            m_cancel.signal_clicked().connect([this] { response(Gtk::ResponseType::CANCEL); });
            auto& content = *get_content_area();
            content.set_margin(margin);
            content.set_spacing(spacing);
            for (Gtk::Widget* widget :
                std::initializer_list<Gtk::Widget*> { &m_message, &m_bar, &m_cancel })
                content.append(*widget);
            signal_response().connect([this](int) {
                // It may end this panel, and with it this very callback.
                if (const auto cancel = std::exchange(m_onCancel, nullptr))
                    cancel();
            });
            m_bar.set_fraction(fraction.get());
            m_subscription = fraction.observe([this](double done) { m_bar.set_fraction(done); });
        }

        /// Nothing is told from here on.
        void end()
        {
            m_onCancel = nullptr;
            m_subscription.reset();
            set_visible(false);
        }

    private:
        Gtk::Label m_message;
        Gtk::ProgressBar m_bar;
        Gtk::Button m_cancel { "Cancel" };
        std::function<void()> m_onCancel;
        Handle m_subscription;
    };

} // namespace

Handle UpdateProgressPanelsGtk::show(
    const std::string& message, Published<double>& fraction, std::function<void()> onCancel)
{
    auto panel = std::make_shared<Panel>(message, fraction, std::move(onCancel));
    if (m_parent)
        panel->set_transient_for(*m_parent);
    panel->present();
    return Handle([panel] {
        panel->end();
        // Deleted when whatever it is doing now is over.
        Glib::signal_idle().connect_once([panel] { /* Lived until here. */ });
    });
}

} // namespace quillox
