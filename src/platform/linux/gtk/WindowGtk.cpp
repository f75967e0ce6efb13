#include "platform/linux/gtk/WindowGtk.h"

#include "platform/linux/gtk/ApplicationGtk.h"
#include "platform/linux/gtk/EventMonitorsGtk.h"
#include "platform/linux/system/GlibOwner.h"

#include <glibmm/main.h>

namespace quillox {

WindowGtk::WindowGtk(const WindowSpec& spec, WindowPlacement& placement,
    ApplicationGtk& application, EventMonitorsGtk& monitors)
    : m_placement(placement)
    , m_application(application)
    , m_displayNumber(spec.displayNumber)
    , m_frame(spec.frame)
    , m_canBecomeKey(spec.canBecomeKey)
    , m_window(new Gtk::Window)
{
    m_window->set_title("Quillox");
    m_window->set_decorated(false);
    m_window->set_deletable(false);
    m_window->add_css_class("sealed");
    m_window->set_focusable(m_canBecomeKey);
    m_window->signal_close_request().connect([] { return true; }, false);
    // In a group of its own, no modal dialog of the setup can keep input from it.
    const GObjectOwner<GtkWindowGroup> group(gtk_window_group_new());
    gtk_window_group_add_window(group.get(), m_window->gobj());
    monitors.attach(*m_window);
    m_placement.prepare(*m_window);
    m_application.addSealedWindow(*m_window);
}

WindowGtk::~WindowGtk()
{
    m_window->unset_child();
    m_placement.hide(*m_window);
    m_application.removeSealedWindow(*m_window);
}

void WindowGtk::DestroyLater::operator()(Gtk::Window* window) const
{
    Glib::signal_idle().connect_once([window] { delete window; });
}

void WindowGtk::setFrame(std::uint32_t displayNumber, Rect frame)
{
    m_displayNumber = displayNumber;
    m_frame = frame;
    if (m_content)
        m_content->setPlane(frame.width, frame.height);
    if (m_window->get_visible())
        m_placement.cover(*m_window, m_displayNumber, m_frame);
}

void WindowGtk::setContentView(Container* container)
{
    m_content = dynamic_cast<ContainerGtk*>(container);
    if (m_content)
        m_window->set_child(m_content->widget());
    else
        m_window->unset_child();
}

void WindowGtk::makeKeyAndOrderFront()
{
    show(m_canBecomeKey);
}

void WindowGtk::orderFrontRegardless()
{
    show(false);
}

void WindowGtk::show(bool withKeyboard)
{
    m_placement.cover(*m_window, m_displayNumber, m_frame);
    if (withKeyboard)
        m_placement.takeKeyboard(*m_window);
}

void WindowGtk::orderOut()
{
    m_placement.hide(*m_window);
}

void WindowGtk::makeFirstResponder(View& view)
{
    widgetOf(view).grab_focus();
}

std::unique_ptr<Window> WindowsGtk::makeWindow(const WindowSpec& spec)
{
    return std::make_unique<WindowGtk>(spec, m_placement, m_application, m_monitors);
}

std::unique_ptr<Container> WindowsGtk::makeContainer(Rect frame)
{
    return std::make_unique<ContainerGtk>(frame);
}

bool WindowsGtk::canCoverSeparateScreens() const
{
    return m_placement.canCoverSeparateScreens();
}

} // namespace quillox
