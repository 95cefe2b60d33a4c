/** Named tolerances and the comparison that every numeric test uses. */
#pragma once

#include <gtest/gtest.h>

#include <bit>
#include <cmath>
#include <cstdint>
#include <source_location>

#include "core/limits.h"

namespace korvenrg::test {

/** The same value: copies, counts, integers, values that no rounding touches. */
inline constexpr double kExact = 0.0;
/** A short chain of roundings, some tens of ulps. */
inline constexpr double kRoundoff = 1E-14;
/** Results of an iteration or of a solve on well-conditioned data. */
inline constexpr double kIterative = 1E-10;
/** Values written by another program to about ten digits. */
inline constexpr double kPrinted = 1E-9;

/**
 * Fails the test unless |actual - expected| <= relative * |expected|. An expected 0 takes `relative` as it
 * is. The missing marker is close to itself alone, bit for bit, and a NaN to nothing. The failure carries the
 * caller's line.
 */
inline void ExpectClose(double actual,
                        double expected,
                        double relative,
                        std::source_location where = std::source_location::current())
{
    const bool marked = IsMissing(actual) || IsMissing(expected);
    const double scale = expected == 0.0 ? 1.0 : std::fabs(expected);
    const bool close = marked ? std::bit_cast<std::uint64_t>(actual) == std::bit_cast<std::uint64_t>(expected)
                              : actual == expected || std::fabs(actual - expected) <= relative * scale;
    if (close) return;
    const auto named = [](double value) {
        return std::bit_cast<std::uint64_t>(value) == std::bit_cast<std::uint64_t>(kMissing)
                   ? ::testing::PrintToString("missing")
                   : ::testing::PrintToString(value);
    };
    ADD_FAILURE_AT(where.file_name(), static_cast<int>(where.line()))
        << named(actual) << " is not " << named(expected) << ", relative difference "
        << std::fabs(actual - expected) / scale << ", allowed " << relative;
}

}  // namespace korvenrg::test
