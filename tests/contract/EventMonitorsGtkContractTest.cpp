#include "fakes/FakeEventMonitors.h"
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

    struct FakeRig {
        FakeEventMonitors monitors;
        std::string reachedWindow; ///< "d" and "u" for each S that went down and up there.

        void shiftS()
        {
            send({ EventType::FlagsChanged, 56, ModifierFlags::Shift, false });
            send({ EventType::KeyDown, keys::s, ModifierFlags::Shift, false });
            send({ EventType::KeyUp, keys::s, ModifierFlags::Shift, false });
            send({ EventType::FlagsChanged, 56, ModifierFlags::None, false });
        }
        void click()
        {
            send({ EventType::LeftMouseDown, keys::unknown, ModifierFlags::None, false });
            send({ EventType::LeftMouseUp, keys::unknown, ModifierFlags::None, false });
        }
        bool waitFor(const std::function<bool()>& condition) { return condition(); }

    private:
        bool m_isDownSwallowed = false;

        void send(const Event& event)
        {
            const bool isPassed = monitors.send(event) == pass;
            if (event.type == EventType::KeyDown)
                m_isDownSwallowed = !isPassed;
            if (event.keyCode == keys::s && isPassed && !m_isDownSwallowed)
                reachedWindow += event.type == EventType::KeyDown ? "d" : "u";
        }
    };

    /// A real window, and real input from the X server.
    struct GtkRig {
        EventMonitorsGtk monitors;
        std::string reachedWindow;
        Gtk::Window window;
        ::Display* display = gdk_x11_display_get_xdisplay(gdk_display_get_default());

        GtkRig()
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

    template <typename Rig> class EventMonitorsContractTest : public testing::Test {
    protected:
        Rig rig;
    };

    using Rigs = testing::Types<FakeRig, GtkRig>;
    TYPED_TEST_SUITE(EventMonitorsContractTest, Rigs);

    TYPED_TEST(EventMonitorsContractTest, AMonitorSeesWhatItsMaskNames)
    {
        std::vector<Event> seen;
        const auto mask = maskOf(EventType::KeyDown) | maskOf(EventType::KeyUp)
            | maskOf(EventType::FlagsChanged) | maskOf(EventType::LeftMouseDown);
        const auto monitor = this->rig.monitors.addLocalMonitor(mask, [&](const Event& event) {
            seen.push_back(event);
            return pass;
        });
        this->rig.shiftS();
        this->rig.click();
        EXPECT_TRUE(this->rig.waitFor([&] { return seen.size() >= 5; }));
        EXPECT_EQ(seen,
            (std::vector<Event> { { EventType::FlagsChanged, 56, ModifierFlags::Shift, false },
                { EventType::KeyDown, keys::s, ModifierFlags::Shift, false },
                { EventType::KeyUp, keys::s, ModifierFlags::Shift, false },
                { EventType::FlagsChanged, 56, ModifierFlags::None, false },
                { EventType::LeftMouseDown, keys::unknown, ModifierFlags::None, false } }));
        EXPECT_EQ(this->rig.reachedWindow, "du");
    }

    TYPED_TEST(
        EventMonitorsContractTest, OneThatSwallowsKeepsThePairFromTheWindowButNotFromTheOthers)
    {
        int seen = 0;
        const auto keyDown = maskOf(EventType::KeyDown);
        const auto first = this->rig.monitors.addLocalMonitor(keyDown, [&](const Event&) {
            ++seen;
            return pass;
        });
        Handle once;
        once = this->rig.monitors.addLocalMonitor(keyDown, [&](const Event&) {
            once.reset();
            return swallow;
        });
        const auto last = this->rig.monitors.addLocalMonitor(keyDown, [&](const Event&) {
            ++seen;
            return pass;
        });
        this->rig.shiftS();
        EXPECT_TRUE(this->rig.waitFor([&] { return seen == 2; }));
        EXPECT_EQ(this->rig.reachedWindow, "");
        this->rig.shiftS();
        EXPECT_TRUE(this->rig.waitFor([&] { return this->rig.reachedWindow == "du"; }));
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
