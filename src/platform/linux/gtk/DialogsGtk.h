#pragma once

#include "ports/Dialogs.h"
#include "ports/FileSystem.h"

#include <gtkmm/application.h>
#include <gtkmm/window.h>
#include <memory>

namespace quillox {

/// Modal dialogs over the setup window.
class DialogsGtk final : public Dialogs {
public:
    void present(const Alert&, std::function<void(std::size_t)> onButton) override;
    void present(
        const OpenPanel&, std::function<void(std::optional<std::string>)> onChosen) override;

    /// The window that dialogs belong to; it must outlive them.
    void setParent(Gtk::Window* parent) { m_parent = parent; }

private:
    Gtk::Window* m_parent = nullptr;
};

} // namespace quillox
