#include "resilience/RestartPolicy.h"

#include <gtest/gtest.h>

namespace quillox {

namespace {

    using namespace std::chrono_literals;

    TEST(RestartPolicyTest, PausesGrowUntilALongLife)
    {
        const struct {
            std::chrono::milliseconds life;
            std::chrono::seconds pause;
        } rows[] { { 0s, 1s }, { 59'999ms, 2s }, { 1s, 4s }, { 1s, 8s }, { 1s, 16s }, { 1s, 32s },
            { 1s, 60s }, { 1s, 60s }, { 60s, 1s }, { 1s, 2s }, { 24h, 1s }, { 70s, 1s } };
        RestartPolicy policy;
        for (const auto& row : rows)
            EXPECT_EQ(policy.pauseAfterCrash(row.life), row.pause) << row.life.count();
    }

} // namespace

} // namespace quillox
