#include "driver/progress_meter.h"

#include <gtest/gtest.h>
#include <string>

static std::string printed(int total) {
    testing::internal::CaptureStdout();
    tickInitTick(total, 10);
    for (int i = 0; i < total; ++i)
        tickTick();
    return testing::internal::GetCapturedStdout();
}

TEST(ProgressMeter, Quantum) {
    EXPECT_EQ(printed(1), "100%") << "without a quantum there is no label";
    EXPECT_EQ(printed(4), "25% .. 50% .. 75% .. 100%");
    EXPECT_EQ(printed(5), "Progress: 20% .. 40% .. 60% .. 80% .. 100%");
    EXPECT_EQ(printed(14),
              "Progress: 7% .. 14% .. 21% .. 29% .. 36% .. 43% .. 50% .. 57% .. 64% .. 71% .. 79% .. "
              "86% .. 93% .. 100%");
    EXPECT_EQ(printed(15), "Progress: 13% .. 27% .. 40% .. 53% .. 67% .. 80% .. 93% .. 100%");
    EXPECT_EQ(printed(199), "Progress: 10% .. 20% .. 30% .. 40% .. 50% .. 60% .. 70% .. 80% .. 90% .. 100%");
}

TEST(ProgressMeter, NothingWithoutModules) {
    testing::internal::CaptureStdout();
    tickInitTick(0, 10);
    tickTick();
    EXPECT_EQ(testing::internal::GetCapturedStdout(), "");
}
