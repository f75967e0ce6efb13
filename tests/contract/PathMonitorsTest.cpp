#include "platform/linux/system/PathMonitorsLinux.h"

#include <gtest/gtest.h>
#include <sched.h>
#include <unistd.h>

#include <chrono>
#include <condition_variable>
#include <cstdlib>
#include <fstream>
#include <mutex>
#include <optional>
#include <string>
#include <vector>

namespace quillox {

namespace {

    using namespace std::chrono_literals;
    using enum PathStatus;

    /// What a monitor tells.
    class Told {
    public:
        void handle(PathStatus status)
        {
            const std::lock_guard lock(m_mutex);
            m_last = status;
            ++m_calls;
            m_isTold.notify_all();
        }

        bool becomes(PathStatus status)
        {
            std::unique_lock lock(m_mutex);
            return m_isTold.wait_for(lock, 5s, [&] { return m_last == status; });
        }

        int calls()
        {
            const std::lock_guard lock(m_mutex);
            return m_calls;
        }

    private:
        std::mutex m_mutex;
        std::condition_variable m_isTold;
        std::optional<PathStatus> m_last;
        int m_calls = 0;
    };

    /// A network of this process's own, in which a cable leads from `kiosk` to `peer`.
    class PathMonitorsLinuxTest : public testing::Test {
    protected:
        void SetUp() override
        {
            const auto user = "0 " + std::to_string(::geteuid()) + " 1";
            if (::unshare(CLONE_NEWNET) != 0) {
                if (::unshare(CLONE_NEWUSER | CLONE_NEWNET) != 0)
                    GTEST_SKIP() << "may not make a network of its own";
                std::ofstream("/proc/self/uid_map") << user;
            }
            if (!run("ip link set lo up && ip link add kiosk type veth peer name peer"))
                GTEST_SKIP() << "needs ip and virtual cables";
        }

        static bool run(const std::string& command) { return std::system(command.c_str()) == 0; }
        static void plugIn() { ASSERT_TRUE(run("ip link set peer up")); }
        static void pull() { ASSERT_TRUE(run("ip link set peer down")); }

        PathMonitorsLinux m_monitors;
        Told m_long; ///< By a monitor that is there all the time.
    };

    TEST_F(PathMonitorsLinuxTest, FollowsCablesLinksAndRoutes)
    {
        auto monitor = m_monitors.startMonitor(
            "com.orvendal.quillox.network", [this](auto status) { m_long.handle(status); });
        EXPECT_TRUE(m_long.becomes(Unsatisfied)) << "loopback is no network";

        struct Row {
            const char* change;
            PathStatus after;
        };
        for (const auto& [change, after] : std::vector<Row> {
                 { "ip address add 10.7.0.1/24 dev kiosk", Unsatisfied },
                 { "ip link set kiosk up && ip link set peer up", Satisfied },
                 { "ip link set peer down", Unsatisfied },
                 { "ip link set peer up", Satisfied },
                 { "ip link set kiosk down", Unsatisfied },
                 { "ip link set kiosk up", Satisfied },
                 { "ip -4 address flush dev kiosk", Unsatisfied },
                 { "ip address add 169.254.7.1/16 dev kiosk", Unsatisfied },
                 { "ip route add 10.9.0.0/16 dev lo && ip route add broadcast 10.9.9.9 dev kiosk "
                   "table main",
                     Unsatisfied },
                 { "ip -6 address add fd00:7::1/64 dev kiosk", Satisfied },
                 { "ip -6 address flush dev kiosk", Unsatisfied },
                 { "ip route add 10.8.0.0/16 nexthop dev lo nexthop dev kiosk", Satisfied },
             }) {
            ASSERT_TRUE(run(change)) << change;
            EXPECT_TRUE(m_long.becomes(after)) << change;
            Told fresh;
            auto second = m_monitors.startMonitor("", [&](auto status) { fresh.handle(status); });
            EXPECT_TRUE(fresh.becomes(after)) << change;
            second.reset();
            EXPECT_EQ(fresh.calls(), 1) << change;
        }
        EXPECT_EQ(m_long.calls(), 10) << "only changes are told";
    }

    TEST_F(PathMonitorsLinuxTest, TellsWhereAQuickLinkComesToRest)
    {
        constexpr auto flaps = 20;
        ASSERT_TRUE(run("ip address add 10.7.0.1/24 dev kiosk && ip link set kiosk up"));
        auto monitor
            = m_monitors.startMonitor("quillox", [this](auto status) { m_long.handle(status); });
        EXPECT_TRUE(m_long.becomes(Unsatisfied));
        for (auto flap = 0; flap < flaps; ++flap) {
            plugIn();
            pull();
        }
        plugIn();
        EXPECT_TRUE(m_long.becomes(Satisfied));
        EXPECT_LE(m_long.calls(), flaps);

        // A monitor that ends in the midst of it is silent from then on.
        for (auto flap = 0; flap < flaps; ++flap) {
            pull();
            auto isOver = false;
            auto brief = m_monitors.startMonitor("quillox", [&](auto) { EXPECT_FALSE(isOver); });
            plugIn();
            brief.reset();
            isOver = true;
        }
    }

} // namespace

} // namespace quillox
