#include "driver/progress_meter.h"

#include <cstdint>
#include <cstdio>

static std::int32_t tickTicks = 0;    ///< ticks so far
static std::int32_t tickNextTick = 0; ///< tick count at which the next percentage is printed
static std::int32_t tickTotal = 0;    ///< expected number of ticks
static std::int32_t tickQuantum = 0;  ///< ticks between two printed percentages

void tickInitTick(int total, int percent) {
    tickTicks = 0;
    tickTotal = total;
    tickQuantum = static_cast<std::int32_t>(static_cast<double>(total) * percent / 100 + 0.5);
    tickNextTick = tickQuantum;
}

void tickTick() {
    ++tickTicks;
    if (tickTicks < tickNextTick || tickTotal <= 0)
        return;
    const int percentage = static_cast<int>(tickTicks * 100.0 / tickTotal + 0.5);
    // In 64 bits, as the sum may exceed the total by a quantum.
    const std::int64_t next = std::int64_t{tickNextTick} + tickQuantum;
    tickNextTick = next > tickTotal && percentage < 100 ? tickTotal : static_cast<std::int32_t>(next);
    // Deliberate: a report of fewer than five routines has a quantum of 0 and no label; it is over before one
    // is read.
    if (tickTicks <= tickQuantum)
        std::fputs("Progress: ", stdout);
    if (percentage < 100)
        std::printf("%d%% .. ", percentage);
    else
        std::printf("%d%%", percentage);
    std::fflush(stdout);
}
