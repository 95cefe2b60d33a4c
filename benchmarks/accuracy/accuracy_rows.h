/** What a row of the accuracy programme is made from: its random arguments and its largest error. */
#pragma once

#include <cmath>
#include <cstdint>
#include <cstdio>
#include <string>
#include <utility>
#include <vector>

#include "../../tools/distribution_reference.h"

namespace accuracy {

using reference::Real;

constexpr double kSmallest = 1e-300;  // smaller tails are not compared

/** A 64-bit mixing generator: the same sequence on every platform. */
class Draws
{
  public:
    double Uniform(double low, double high)
    {
        given_++;
        std::uint64_t z = kStart + given_ * kStride;
        z = (z ^ (z >> 30)) * 0xBF58476D1CE4E5B9u;
        z = (z ^ (z >> 27)) * 0x94D049BB133111EBu;
        z ^= z >> 31;
        return low + (high - low) * (static_cast<double>(z >> 11) * 0x1p-53);
    }

    double LogUniform(double low, double high)
    {
        return std::exp(Uniform(std::log(low), std::log(high)));
    }

    /** How many numbers it has given. */
    std::uint64_t Given() const
    {
        return given_;
    }

    void SkipTo(std::uint64_t given)
    {
        given_ = given;
    }

    /** A standardised deviate: the middle, the tails and the far tails in equal parts. */
    double Deviate()
    {
        const double reach = 38;
        const double part = Uniform(0, 3);
        return part < 1 ? Uniform(-2.5, 2.5) : part < 2 ? Uniform(-8, 8) : Uniform(-reach, reach);
    }

    /** A probability: the middle, both sides, far out on the lower side. */
    double Probability()
    {
        const double part = Uniform(0, 3);
        if (part < 1) return Uniform(1e-4, 1);
        if (part < 2) return LogUniform(1e-290, 0.5);
        return 1 - LogUniform(1e-15, 0.5);
    }

  private:
    static constexpr std::uint64_t kStart = 20240229;
    static constexpr std::uint64_t kStride = 0x9E3779B97F4A7C15u;
    std::uint64_t given_ = 0;
};

/** The largest error so far, with its arguments. */
class Worst
{
  public:
    void Compare(double actual, const Real& expected, const std::string& where)
    {
        if (abs(expected) < kSmallest) return;
        Note(static_cast<double>(abs((Real(actual) - expected) / expected)), where);
    }

    void Note(double error, const std::string& where)
    {
        if (error <= error_) return;
        error_ = std::isnan(error) ? HUGE_VAL : error;
        where_ = where;
    }

    void Print(const std::string& function, const std::string& regime) const
    {
        std::printf("| %s | %s | %.1e | %s |\n", function.c_str(), regime.c_str(), error_, where_.c_str());
        std::fflush(stdout);
    }

  private:
    double error_ = 0;
    std::string where_ = "-";
};

inline std::string Named(const std::vector<std::pair<const char*, double>>& arguments)
{
    std::string text;
    for (const auto& [name, value] : arguments) {
        char number[64];
        std::snprintf(number, sizeof number, "%s%s %.6g", text.empty() ? "" : ", ", name, value);
        text += number;
    }
    return text;
}

}  // namespace accuracy
