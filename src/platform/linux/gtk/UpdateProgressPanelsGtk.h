#pragma once

#include "ports/UpdateProgressPanels.h"

#include <gtkmm/window.h>

namespace quillox {

/// A modal panel over the setup window.
class UpdateProgressPanelsGtk final : public UpdateProgressPanels {
public:
    Handle show(const std::string& message, Published<double>& fraction,
        std::function<void()> onCancel) override;

    /// The window that panels belong to; it must outlive them.
    void setParent(Gtk::Window* parent) { m_parent = parent; }

private:
    Gtk::Window* m_parent = nullptr;
};

} // namespace quillox
