#include "fakes/FakeRunLoop.h"
#include "platform/linux/system/RunLoopGlib.h"

#include <gtest/gtest.h>
#include <thread>

namespace quillox {

namespace {

    using namespace std::chrono_literals;

    struct FakeRig {
        FakeRunLoop loop;
        void turn() { loop.advance(1ms); }
    };

    struct GlibRig {
        RunLoopGlib loop;
        static void turn() { g_main_context_iteration(nullptr, TRUE); }
    };

    template <typename Rig> class RunLoopContractTest : public testing::Test {
    protected:
        /// Turns the loop until something holds; gives up after two seconds of its own time.
        template <typename Condition> bool waitFor(Condition condition)
        {
            const auto deadline = rig.loop.monotonicNow() + 2s;
            const auto wakeUp = rig.loop.every(5ms, [] {});
            while (!condition() && rig.loop.monotonicNow() < deadline)
                rig.turn();
            return condition();
        }

        Rig rig;
        RunLoop& loop = rig.loop;
    };

    using Rigs = testing::Types<FakeRig, GlibRig>;
    TYPED_TEST_SUITE(RunLoopContractTest, Rigs);

    TYPED_TEST(RunLoopContractTest, TimersFireInOrderAndNotTooEarly)
    {
        std::string order;
        const auto begin = this->loop.monotonicNow();
        const auto wallBegin = this->loop.now();
        RunLoop::MonotonicTime fired;
        const auto late = this->loop.after(30ms, [&] {
            order += "late";
            fired = this->loop.monotonicNow();
        });
        const auto early = this->loop.after(10ms, [&] { order += "early "; });
        const auto atOnce = this->loop.after(0ms, [&] { order += "first "; });
        EXPECT_EQ(order, "");
        EXPECT_TRUE(this->waitFor([&] { return order.ends_with("late"); }));
        EXPECT_EQ(order, "first early late");
        EXPECT_GE(fired - begin, 30ms);
        EXPECT_GE(this->loop.now() - wallBegin, 29ms);
    }

    TYPED_TEST(RunLoopContractTest, RepeatingTimersKeepTheirPaceUntilTheirHandleIsGone)
    {
        int fired = 0;
        const auto begin = this->loop.monotonicNow();
        Handle self;
        self = this->loop.every(10ms, [&] {
            if (++fired == 3)
                self.reset();
        });
        auto other = this->loop.after(10ms, [&] { fired += 100; });
        other.reset();
        EXPECT_TRUE(this->waitFor([&] { return fired == 3; }));
        EXPECT_GE(this->loop.monotonicNow() - begin, 30ms);
        bool isOver = false;
        const auto end = this->loop.after(40ms, [&] { isOver = true; });
        EXPECT_TRUE(this->waitFor([&] { return isOver; }));
        EXPECT_EQ(fired, 3);
    }

    TYPED_TEST(RunLoopContractTest, PostedWorkRunsLaterInOrder)
    {
        std::string order;
        this->loop.post([&] {
            order += "1";
            this->loop.post([&] { order += "3"; });
        });
        this->loop.post([&] { order += "2"; });
        EXPECT_EQ(order, "");
        EXPECT_TRUE(this->waitFor([&] { return order.size() == 3; }));
        EXPECT_EQ(order, "123");
    }

    TEST(RunLoopGlibTest, AnyThreadMayPost)
    {
        RunLoopGlib loop;
        std::thread::id ranOn;
        std::thread poster([&] { loop.post([&] { ranOn = std::this_thread::get_id(); }); });
        poster.join();
        const auto patience = loop.after(2s, [] {});
        while (ranOn == std::thread::id() && g_main_context_iteration(nullptr, TRUE)) { }
        EXPECT_EQ(ranOn, std::this_thread::get_id());
    }

} // namespace

} // namespace quillox
