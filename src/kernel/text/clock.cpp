#include "kernel/text/clock.h"

#include <chrono>

namespace {

/** Days from 30 December 1899 to 1 January 1970. */
constexpr double kDaysToUnixEpoch = 25569.0;

/** What a difference in days is multiplied with. A day has 86400 seconds; the limits are not in seconds, and
    stay so. Pinned by Clock.ElapsedUnitsAreNotSeconds. */
constexpr double kUnitsPerDay = 100000.0;

}  // namespace

double COleDateTimeGetCurrentTime()
{
    using Days = std::chrono::duration<double, std::ratio<86400>>;
    return kDaysToUnixEpoch + Days(std::chrono::system_clock::now().time_since_epoch()).count();
}

double korvenrg::text::ElapsedUnits(double start, double now)
{
    return (now - start) * kUnitsPerDay;
}
