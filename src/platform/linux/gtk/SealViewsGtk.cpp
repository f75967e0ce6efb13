#include "platform/linux/gtk/SealViewsGtk.h"

#include "platform/linux/gtk/SealOverlaysGtk.h"
#include "platform/linux/gtk/SealPromptGtk.h"

namespace quillox {

namespace {

    class SealHoldIndicatorGtk final : public View, public WidgetView {
    public:
        explicit SealHoldIndicatorGtk(HoldIndicatorModel& model)
            : m_indicator(model)
            , m_observation(model.progress.observe([this](double) { refresh(); }))
        {
            refresh();
        }

        Gtk::Widget& widget() override { return m_overlay.widget(); }

    private:
        void refresh() { m_overlay.update(m_indicator.body()); }

        SealHoldIndicator m_indicator;
        SealHoldOverlayGtk m_overlay;
        Handle m_observation;
    };

} // namespace

std::unique_ptr<View> SealViewsGtk::makePrompt(SealPrompt& prompt)
{
    return std::make_unique<SealPromptGtk>(prompt, m_runLoop);
}

std::unique_ptr<View> SealViewsGtk::makeHoldIndicator(HoldIndicatorModel& model)
{
    return std::make_unique<SealHoldIndicatorGtk>(model);
}

} // namespace quillox
