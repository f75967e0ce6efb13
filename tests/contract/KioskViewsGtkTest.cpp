#include "platform/linux/gtk/KioskViewsGtk.h"
#include "platform/linux/gtk/ContainerGtk.h"
#include "platform/linux/system/GlibOwner.h"

#include <gtest/gtest.h>
#include <gtkmm/box.h>
#include <gtkmm/window.h>

namespace quillox {

namespace {

    struct Area final : View, WidgetView {
        ~Area() override { box.unparent(); }
        Gtk::Widget& widget() override { return box; }

        Gtk::Box box;
    };

    /// A container in a window, planned for 400 by 300 points and twice as large since.
    class KioskViewsGtkTest : public testing::Test {
    protected:
        static constexpr int width = 800;
        static constexpr int height = 600;

        ContainerGtk container { { 0, 0, 400, 300 } };
        Gtk::Window window;

        KioskViewsGtkTest() { window.set_child(container.widget()); }

        void show()
        {
            window.set_decorated(false);
            window.set_default_size(width, height);
            window.present();
            const auto deadline = g_get_monotonic_time() + 5 * G_USEC_PER_SEC;
            while (container.widget().get_width() != width && g_get_monotonic_time() < deadline)
                g_main_context_iteration(nullptr, FALSE);
            ASSERT_EQ(container.widget().get_width(), width);
        }

        /// Where a widget is now, as the core counts.
        Rect frameOf(Gtk::Widget& widget)
        {
            graphene_rect_t area;
            EXPECT_TRUE(gtk_widget_compute_bounds(
                widget.gobj(), GTK_WIDGET(container.widget().gobj()), &area));
            return { area.origin.x, height - area.origin.y - area.size.height, area.size.width,
                area.size.height };
        }

        /// What a click at this point of the container is for, counted from its top left.
        GtkWidget* clicked(double x, double y)
        {
            return gtk_widget_pick(GTK_WIDGET(container.widget().gobj()), x, y, GTK_PICK_DEFAULT);
        }
    };

    TEST_F(KioskViewsGtkTest, ViewsFollowTheContainersSize)
    {
        struct Row {
            Autoresizing follows;
            Rect now;
        };
        const Row rows[] = {
            { {}, { 10, 20, 30, 40 } },
            { { .rightMargin = true }, { 10, 20, 30, 40 } },
            { { .leftMargin = true }, { 410, 20, 30, 40 } },
            { { .leftMargin = true, .rightMargin = true }, { 210, 20, 30, 40 } },
            { { .width = true, .bottomMargin = true }, { 10, 320, 430, 40 } },
            { { .height = true, .leftMargin = true }, { 410, 20, 30, 340 } },
        };
        Area areas[std::size(rows)];
        for (std::size_t index = 0; index < std::size(rows); ++index)
            container.add(areas[index], { 10, 20, 30, 40 }, rows[index].follows);
        show();
        for (std::size_t index = 0; index < std::size(rows); ++index)
            EXPECT_EQ(frameOf(areas[index].box), rows[index].now) << index;
    }

    TEST_F(KioskViewsGtkTest, AViewBelowAnotherIsAboveTheRest)
    {
        Area bottom;
        Area top;
        Area between;
        const Rect everywhere { 0, 0, 400, 300 };
        container.add(bottom, everywhere, {});
        container.add(top, everywhere, {});
        container.addBelow(top, between, everywhere, {});
        show();
        EXPECT_EQ(clicked(10, 590), GTK_WIDGET(top.box.gobj()));
        top.box.set_visible(false);
        EXPECT_EQ(clicked(10, 590), GTK_WIDGET(between.box.gobj()));
    }

    TEST_F(KioskViewsGtkTest, TheBarsButtonsAreNamedAndNeverHaveTheKeyboard)
    {
        KioskNavBar model(true, true, true, true);
        model.backButton().state.set({ .isEnabled = false });
        auto bar = KioskViewsGtk().makeNavBar(model);
        auto& box = widgetOf(*bar);
        Area page;
        container.add(page, { 0, 0, 400, 300 }, { .width = true, .height = true });
        container.add(*bar, model.size(), {});
        show();

        auto* button = gtk_widget_get_first_child(box.gobj());
        for (const auto* name : { "Back", "Forward", "Reload", "Home" }) {
            ASSERT_NE(button, nullptr) << name;
            auto* accessible = GTK_ACCESSIBLE(button);
            EXPECT_TRUE(gtk_test_accessible_has_role(accessible, GTK_ACCESSIBLE_ROLE_BUTTON));
            const GTextOwner wrong(gtk_test_accessible_check_property(
                accessible, GTK_ACCESSIBLE_PROPERTY_LABEL, name));
            EXPECT_EQ(wrong, nullptr) << wrong.get();
            EXPECT_FALSE(gtk_widget_grab_focus(button)) << name;
            button = gtk_widget_get_next_sibling(button);
        }
        EXPECT_EQ(button, nullptr);
        EXPECT_FALSE(gtk_widget_child_focus(GTK_WIDGET(window.gobj()), GTK_DIR_TAB_FORWARD));

        constexpr int middleOfBack = 32;
        constexpr int besideBack = 59;
        constexpr int barsMiddle = height - 26;
        EXPECT_EQ(clicked(middleOfBack, barsMiddle), box.gobj());
        EXPECT_EQ(clicked(besideBack, barsMiddle), box.gobj());
        model.backButton().state.set({ .isEnabled = true });
        EXPECT_TRUE(GTK_IS_BUTTON(
            gtk_widget_get_ancestor(clicked(middleOfBack, barsMiddle), GTK_TYPE_BUTTON)));
        bar.reset();
        EXPECT_EQ(clicked(middleOfBack, barsMiddle), GTK_WIDGET(page.box.gobj()));
    }

} // namespace

} // namespace quillox
