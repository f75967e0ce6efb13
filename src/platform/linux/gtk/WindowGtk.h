#pragma once

#include "platform/linux/gtk/ContainerGtk.h"
#include "platform/linux/gtk/WindowPlacement.h"
#include "ports/Window.h"

#include <gtkmm/window.h>
#include <memory>

namespace quillox {

class ApplicationGtk;
class EventMonitorsGtk;

/// A window of a sealed run. Nothing from outside closes it.
class WindowGtk final : public Window {
public:
    WindowGtk(const WindowSpec&, WindowPlacement&, ApplicationGtk&, EventMonitorsGtk&);
    ~WindowGtk() override;

    void setFrame(std::uint32_t displayNumber, Rect frame) override;
    void setContentView(Container*) override;
    void makeKeyAndOrderFront() override;
    void orderFrontRegardless() override;
    void orderOut() override;
    void makeFirstResponder(View&) override;

private:
    struct DestroyLater {
        void operator()(Gtk::Window*) const;
    };

    void show(bool withKeyboard);

    WindowPlacement& m_placement;
    ApplicationGtk& m_application;
    std::uint32_t m_displayNumber;
    Rect m_frame;
    bool m_canBecomeKey;
    ContainerGtk* m_content = nullptr;
    /// Destroyed by the main loop, since a run may end from within its events.
    std::unique_ptr<Gtk::Window, DestroyLater> m_window;
};

/// Makes the windows and containers of sealed runs.
class WindowsGtk final : public Windows {
public:
    WindowsGtk(WindowPlacement& placement, ApplicationGtk& application, EventMonitorsGtk& monitors)
        : m_placement(placement)
        , m_application(application)
        , m_monitors(monitors)
    {
    }

    std::unique_ptr<Window> makeWindow(const WindowSpec&) override;
    std::unique_ptr<Container> makeContainer(Rect frame) override;
    bool canCoverSeparateScreens() const override;

private:
    WindowPlacement& m_placement;
    ApplicationGtk& m_application;
    EventMonitorsGtk& m_monitors;
};

} // namespace quillox
