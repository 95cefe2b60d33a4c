/** The numbers that every subsystem shares: the missing marker, eps, the guard, the 16-bit booleans. */
#pragma once

#include <bit>
#include <cstdint>

namespace korvenrg {

/** The missing marker, -1.79769313486231E+308: stands in each result cell that has no value. */
inline constexpr double kMissing = std::bit_cast<double>(std::uint64_t{0xFFEFFFFFFFFFFFE2});

/** The marker's mirror image, 1.79769313486231E+308: starts a search for a minimum. */
inline constexpr double kLargest = std::bit_cast<double>(std::uint64_t{0x7FEFFFFFFFFFFFE2});

/** Distance from 1 to the next double. */
inline constexpr double kEps = 2.220446049250313E-16;

/** Degrees of freedom and standard errors at or below this count as none. */
inline constexpr double kGuard = 1E-12;

/** The boolean of the interface, 16 bits wide. Workers test for kTrue exactly, so 1 counts as false. */
inline constexpr short kTrue = -1;
inline constexpr short kFalse = 0;

/** Whether a cell holds no value: it is at or below the marker. */
constexpr bool IsMissing(double value)
{
    return value <= kMissing;
}

/** The 16-bit form of a condition. */
constexpr short AsFlag(bool condition)
{
    return condition ? kTrue : kFalse;
}

/** Whether an option of a numeric option vector is on: exactly 1.0. */
constexpr bool IsOn(double option)
{
    return option == 1.0;
}

}  // namespace korvenrg
