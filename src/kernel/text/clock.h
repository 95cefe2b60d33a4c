/** The clock of the time limits and of the seeds. */
#pragma once

/**
 * The time now, in days since midnight of 30 December 1899, as universal time: no step when summer time
 * begins or ends. A day of this century has steps of 0.6 microseconds in a double; the clock moves at least
 * every millisecond. It follows the system's clock, so a clock set back makes a difference of two readings
 * negative.
 */
double COleDateTimeGetCurrentTime();

namespace korvenrg::text {

/** What the time limits call elapsed: (now - start) times 100000, in units of 0.864 seconds. Not seconds:
    limits and reported times are both in this unit. */
double ElapsedUnits(double start, double now);

}  // namespace korvenrg::text
