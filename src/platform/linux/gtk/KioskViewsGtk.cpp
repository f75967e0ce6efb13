#include "platform/linux/gtk/KioskViewsGtk.h"

#include "platform/linux/gtk/NavBarGtk.h"
#include "platform/linux/gtk/OfflineNoticeGtk.h"

#include <fmt/format.h>
#include <gtkmm/box.h>

namespace quillox {

namespace {

    class NotchBarGtk final : public View, public WidgetView {
    public:
        explicit NotchBarGtk(Published<Color>& color)
            : m_style(m_bar)
            , m_observation(color.observe([this](const Color& present) { show(present); }))
        {
            show(color.get());
        }
        ~NotchBarGtk() override { m_bar.unparent(); }

        Gtk::Widget& widget() override { return m_bar; }

    private:
        void show(const Color& color)
        {
            m_style.set(fmt::format("box {{ background: {}; }}", cssColor(color)));
        }

        Gtk::Box m_bar;
        WidgetStyle m_style;
        Handle m_observation;
    };

} // namespace

std::unique_ptr<View> KioskViewsGtk::makeOfflineNotice(OfflineModel& model)
{
    return std::make_unique<OfflineNoticeGtk>(model);
}

std::unique_ptr<View> KioskViewsGtk::makeNavBar(KioskNavBar& bar)
{
    return std::make_unique<NavBarGtk>(bar);
}

std::unique_ptr<View> KioskViewsGtk::makeNotchBar(Published<Color>& color)
{
    return std::make_unique<NotchBarGtk>(color);
}

} // namespace quillox
