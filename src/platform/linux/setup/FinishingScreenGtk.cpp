#include "platform/linux/setup/FinishingScreenGtk.h"

#include "ui/FinishingView.h"

#include <algorithm>
#include <fmt/format.h>
#include <gdkmm/frameclock.h>
#include <gdkmm/general.h>
#include <gtkmm/box.h>
#include <gtkmm/label.h>
#include <gtkmm/settings.h>

namespace quillox {

namespace {

    constexpr double outline = 2;

    /// Ours are 1/96 of an inch. The toolkit's follow the size of text that the user has chosen.
    constexpr double toolkitPoints = 0.75;

} // namespace

FinishingScreenGtk::FinishingScreenGtk()
    : m_builder(Gtk::Builder::create_from_resource("/com/orvendal/quillox/finishing.ui"))
    , m_logo(FinishingView::logoHeight)
    , m_textStyle(get<Gtk::Widget>("text"))
    , m_bar(get<Gtk::DrawingArea>("bar"))
{
    get<Gtk::Label>("text").set_text(std::string(FinishingView::text));
    m_textStyle.set(fmt::format("label {{ font-size: {}pt; font-weight: bold; }}",
        FinishingView::textSize * toolkitPoints));
    get<Gtk::Box>("logo").append(m_logo.widget());
    m_bar.set_draw_func([this](const Cairo::RefPtr<Cairo::Context>& context, int width,
                            int height) { drawBar(context, width, height); });
    widget().signal_map().connect([this] { beginFill(); });
}

void FinishingScreenGtk::beginFill()
{
    if (!m_bar.get_settings()->property_gtk_enable_animations()) {
        m_fill = 1;
        return;
    }
    m_fill = 0;
    m_start = 0;
    m_bar.add_tick_callback(
        [this](const Glib::RefPtr<Gdk::FrameClock>& clock) { return fillOn(clock); });
}

bool FinishingScreenGtk::fillOn(const Glib::RefPtr<Gdk::FrameClock>& clock)
{
    const auto time = clock->get_frame_time();
    if (m_start == 0)
        m_start = time;
    const std::chrono::duration<double, std::micro> elapsed(static_cast<double>(time - m_start));
    m_fill = std::min(elapsed / FinishingView::fillDuration, 1.0);
    m_bar.queue_draw();
    return m_fill < 1;
}

void FinishingScreenGtk::drawBar(
    const Cairo::RefPtr<Cairo::Context>& context, int width, int height)
{
    Gdk::Cairo::set_source_rgba(context, m_bar.get_style_context()->get_color());
    context->set_line_width(outline);
    context->rectangle(outline / 2, outline / 2, width - outline, height - outline);
    context->stroke();
    context->rectangle(0, 0, width * m_fill, height);
    context->fill();
}

} // namespace quillox
