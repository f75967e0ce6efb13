#include "platform/linux/gtk/EventMonitorsGtk.h"

#include <gtest/gtest.h>
#include <gtkmm/application.h>
#include <gtkmm/eventcontrollerkey.h>
#include <gtkmm/window.h>
#include <linux/input-event-codes.h>

// Last, since Xlib claims common words.
#include <X11/extensions/XTest.h>
#include <gdk/x11/gdkx.h>
#undef None

namespace quillox {

namespace {

    constexpr auto swallow = EventMonitors::Verdict::Swallow;
    constexpr auto pass = EventMonitors::Verdict::Pass;

    /// A real window, and real input from the X server.
    class EventMonitorsGtkTest : public testing::Test {
    protected:
        EventMonitorsGtk monitors;
        std::string reachedWindow; ///< "d" and "u" for each S that went down and up there.
        Gtk::Window window;
        ::Display* display = gdk_x11_display_get_xdisplay(gdk_display_get_default());

        EventMonitorsGtkTest()
        {
            monitors.attach(window);
            auto keys = Gtk::EventControllerKey::create();
            keys->signal_key_pressed().connect(
                [this](guint key, guint, Gdk::ModifierType) {
                    reachedWindow += key == GDK_KEY_S ? "d" : "";
                    return false;
                },
                false);
            keys->signal_key_released().connect([this](guint key, guint, Gdk::ModifierType) {
                reachedWindow += key == GDK_KEY_S ? "u" : "";
            });
            window.add_controller(keys);
            window.set_default_size(200, 200);
            window.present();
            EXPECT_TRUE(waitFor([this] { return takeFocus(); }));
        }

        bool takeFocus()
        {
            auto* surface = gtk_native_get_surface(GTK_NATIVE(window.gobj()));
            gdk_x11_display_error_trap_push(gdk_display_get_default());
            XSetInputFocus(display, gdk_x11_surface_get_xid(surface), RevertToParent, CurrentTime);
            XTestFakeMotionEvent(display, -1, 100, 100, CurrentTime);
            XSync(display, False);
            gdk_x11_display_error_trap_pop_ignored(gdk_display_get_default());
            return window.is_active();
        }

        void key(unsigned kernelCode, bool isDown)
        {
            XTestFakeKeyEvent(display, kernelCode + 8, isDown, CurrentTime);
            XFlush(display);
        }
        void shiftS()
        {
            key(KEY_LEFTSHIFT, true);
            key(KEY_S, true);
            key(KEY_S, false);
            key(KEY_LEFTSHIFT, false);
        }
        void click()
        {
            XTestFakeButtonEvent(display, 1, True, CurrentTime);
            XTestFakeButtonEvent(display, 1, False, CurrentTime);
            XFlush(display);
        }
        bool waitFor(const std::function<bool()>& condition)
        {
            const auto deadline = g_get_monotonic_time() + 5 * G_USEC_PER_SEC;
            while (!condition() && g_get_monotonic_time() < deadline)
                g_main_context_iteration(nullptr, FALSE);
            return condition();
        }
    };

    TEST_F(EventMonitorsGtkTest, AMonitorSeesWhatItsMaskNames)
    {
        std::vector<Event> seen;
        const auto mask = maskOf(EventType::KeyDown) | maskOf(EventType::KeyUp)
            | maskOf(EventType::FlagsChanged) | maskOf(EventType::LeftMouseDown);
        const auto monitor = monitors.addLocalMonitor(mask, [&](const Event& event) {
            seen.push_back(event);
            return pass;
        });
        shiftS();
        click();
        EXPECT_TRUE(waitFor([&] { return seen.size() >= 5; }));
        EXPECT_EQ(seen,
            (std::vector<Event> { { EventType::FlagsChanged, 56, ModifierFlags::Shift, false },
                { EventType::KeyDown, keys::s, ModifierFlags::Shift, false },
                { EventType::KeyUp, keys::s, ModifierFlags::Shift, false },
                { EventType::FlagsChanged, 56, ModifierFlags::None, false },
                { EventType::LeftMouseDown, keys::unknown, ModifierFlags::None, false } }));
        EXPECT_EQ(reachedWindow, "du");
    }

    TEST_F(EventMonitorsGtkTest, OneThatSwallowsKeepsThePairFromTheWindowButNotFromTheOthers)
    {
        int seen = 0;
        const auto keyDown = maskOf(EventType::KeyDown);
        const auto first = monitors.addLocalMonitor(keyDown, [&](const Event&) {
            ++seen;
            return pass;
        });
        Handle once;
        once = monitors.addLocalMonitor(keyDown, [&](const Event&) {
            once.reset();
            return swallow;
        });
        const auto last = monitors.addLocalMonitor(keyDown, [&](const Event&) {
            ++seen;
            return pass;
        });
        shiftS();
        EXPECT_TRUE(waitFor([&] { return seen == 2; }));
        EXPECT_EQ(reachedWindow, "");
        shiftS();
        EXPECT_TRUE(waitFor([&] { return reachedWindow == "du"; }));
        EXPECT_EQ(seen, 4);
    }

} // namespace

} // namespace quillox

int main(int argc, char** argv)
{
    testing::InitGoogleTest(&argc, argv);
    if (!gtk_init_check()) {
        std::puts("skipped: there is no X display");
        return 77;
    }
    const auto application = Gtk::Application::create("", Gio::Application::Flags::NON_UNIQUE);
    return RUN_ALL_TESTS();
}
