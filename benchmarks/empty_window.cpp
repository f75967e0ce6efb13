// The least that a window of this toolkit costs: nothing in it, tuned as the setup's window is.

#include <filesystem>
#include <glibmm/miscutils.h>
#include <gtkmm/application.h>
#include <gtkmm/window.h>
#include <system_error>

#include <unistd.h>

namespace {

bool hasGpu()
{
    std::error_code error;
    for (const auto& node : std::filesystem::directory_iterator("/dev/dri", error)) {
        const bool isRenderNode = node.path().filename().native().starts_with("renderD");
        if (isRenderNode && access(node.path().c_str(), R_OK | W_OK) == 0)
            return true;
    }
    return false;
}

class EmptyWindow final : public Gtk::Window {
public:
    EmptyWindow()
    {
        set_title("Empty");
        set_default_size(720, 880);
    }
};

} // namespace

int main(int argc, char** argv)
{
    if (!hasGpu())
        Glib::setenv("GDK_DEBUG", "gl-disable", false);
    return Gtk::Application::create(
        "com.orvendal.quillox.empty", Gio::Application::Flags::NON_UNIQUE)
        ->make_window_and_run<EmptyWindow>(argc, argv);
}
