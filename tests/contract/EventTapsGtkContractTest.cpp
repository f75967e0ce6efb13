#include "fakes/FakeRunLoop.h"
#include "fakes/FakeSystemLog.h"
#include "platform/linux/gtk/EventMonitorsGtk.h"
#include "platform/linux/lock/EventTapsLinux.h"

#include <gtest/gtest.h>

namespace quillox {

namespace {

    using Lines = std::vector<std::string>;

    /// A keyboard that others can hold.
    struct ScriptedLayer final : KeyboardLayer {
        bool isFree = true;
        bool isEngaged = false;
        bool isOurs = false;

        void change(bool free)
        {
            isFree = isOurs = free;
            onChange();
        }
        std::string_view name() const override { return "scripted"; }
        bool engage() override
        {
            isEngaged = true;
            return isOurs = isFree;
        }
        void release() override { isEngaged = isOurs = false; }
        bool isHeld() const override { return isOurs; }
        bool isIndependentOfFocus() const override { return true; }
    };

    class EventTapsLinuxTest : public testing::Test {
    protected:
        std::unique_ptr<EventTap> create()
        {
            return taps.create(EventTaps::Options::Default, maskOf(EventType::KeyDown),
                [this](const Event& event) {
                    events.push_back(event.type);
                    onEvent();
                    return EventTaps::Verdict::Pass;
                });
        }

        FakeRunLoop runLoop;
        FakeSystemLog log;
        EventMonitorsGtk monitors;
        ScriptedLayer* layer = new ScriptedLayer;
        EventTapsLinux taps { monitors, std::unique_ptr<KeyboardLayer>(layer), runLoop, log };
        std::vector<EventType> events;
        std::function<void()> onEvent;
    };

    TEST_F(EventTapsLinuxTest, TellsWhenATapIsWorthAnotherTryAndNeverAtOnce)
    {
        for (const bool comesFreeBeforehand : { true, false }) {
            layer->isFree = false;
            ASSERT_EQ(create(), nullptr);
            EXPECT_FALSE(layer->isEngaged);
            layer->isFree = comesFreeBeforehand;
            std::unique_ptr<EventTap> tap;
            auto waiting = taps.onAvailable([&] { tap = create(); });
            EXPECT_EQ(tap, nullptr);
            if (!comesFreeBeforehand)
                layer->change(true);
            runLoop.runPosted();
            EXPECT_NE(tap, nullptr);
            EXPECT_EQ(create(), nullptr) << "there is one already";
            waiting.reset();
            EXPECT_TRUE(layer->isEngaged);
        }
        EXPECT_FALSE(layer->isEngaged);
    }

    TEST_F(EventTapsLinuxTest, ReportsALostLayerToTheTapAndTheLogAndSurvivesTheTapsEnd)
    {
        auto tap = create();
        onEvent = [&] { tap->setEnabled(true); };
        layer->change(false);
        layer->change(true);
        EXPECT_EQ(events, (std::vector { EventType::TapDisabledByUserInput }));
        EXPECT_EQ(log.lines(),
            (Lines { "Quillox: keyboard lock missing: scripted.",
                "Quillox: keyboard lock back: scripted." }));
        onEvent = [&] { tap.reset(); };
        layer->change(false);
        EXPECT_EQ(tap, nullptr);
        EXPECT_FALSE(layer->isEngaged);
        runLoop.runPosted();
    }

} // namespace

} // namespace quillox
