#include "platform/linux/gtk/SealOverlaysGtk.h"

#include <gdkmm/general.h>
#include <gtkmm/box.h>
#include <gtkmm/label.h>

namespace quillox {

namespace {

    constexpr int barHeight = 8;
    constexpr double trackOpacity = 0.28;

} // namespace

SealPanelGtk::SealPanelGtk()
    : m_builder(Gtk::Builder::create_from_resource("/com/orvendal/quillox/seal-panel.ui"))
{
    get<Gtk::Box>("panel").set_spacing(static_cast<int>(SealHoldOverlay::spacing));
}

SealPanelGtk::~SealPanelGtk()
{
    widget().unparent();
}

void SealPanelGtk::moveToTop()
{
    get<Gtk::Widget>("panel").set_valign(Gtk::Align::START);
}

void SealPanelGtk::setShown(bool isShown)
{
    get<Gtk::Widget>("panel").set_visible(isShown);
}

void SealPanelGtk::setText(const char* id, const std::string& text)
{
    auto& label = get<Gtk::Label>(id);
    label.set_text(text);
    label.set_visible(true);
}

SealHoldOverlayGtk::SealHoldOverlayGtk()
    : m_bar(get<Gtk::DrawingArea>("bar"))
{
    setText("hint", SealHoldOverlay::hint);
    m_bar.set_content_width(static_cast<int>(SealHoldOverlay::barWidth));
    m_bar.set_content_height(barHeight);
    m_bar.set_draw_func([this](const Cairo::RefPtr<Cairo::Context>& context, int width,
                            int height) { drawBar(context, width, height); });
    m_bar.set_visible(true);
}

void SealHoldOverlayGtk::update(const SealHoldOverlay& overlay)
{
    const bool hasGrown = overlay.filledWidth() != m_shown.filledWidth();
    if (overlay.title != m_shown.title)
        setText("title", overlay.title);
    m_shown = overlay;
    setShown(overlay.isShown());
    if (hasGrown && overlay.isShown())
        m_bar.queue_draw();
}

void SealHoldOverlayGtk::drawBar(
    const Cairo::RefPtr<Cairo::Context>& context, int width, int height) const
{
    const double filled = m_shown.filledWidth();
    const bool isMirrored = m_bar.get_direction() == Gtk::TextDirection::RTL;
    context->set_source_rgba(1, 1, 1, trackOpacity);
    context->paint();
    context->set_source_rgb(1, 1, 1);
    context->rectangle(isMirrored ? width - filled : 0, 0, filled, height);
    context->fill();
}

SealReleaseOverlayGtk::SealReleaseOverlayGtk()
{
    setText("title", SealReleaseOverlay::title);
    setText("hint", SealReleaseOverlay::hint);
}

void SealHintOverlayGtk::update(const SealHintOverlay& overlay)
{
    setText("title", overlay.hint);
    setShown(overlay.isVisible);
}

} // namespace quillox
