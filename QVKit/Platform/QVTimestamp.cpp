#include "QVKit/Platform/QVTimestamp.h"

#include <time.h>

namespace {

double secondsOnClock(clockid_t clock) noexcept
{
    timespec now{};
    if (clock_gettime(clock, &now) != 0)
        return 0.0;
    // Whole nanoseconds first, then one division, as the uptime clocks are specified.
    const auto nanoseconds = static_cast<unsigned long long>(now.tv_sec) * 1000000000ULL
                             + static_cast<unsigned long long>(now.tv_nsec);
    return static_cast<double>(nanoseconds) / 1e9;
}

} // namespace

double QVTimestamp() noexcept
{
    return secondsOnClock(CLOCK_MONOTONIC);
}

double QVTimestampContinuous() noexcept
{
    return secondsOnClock(CLOCK_BOOTTIME);
}
