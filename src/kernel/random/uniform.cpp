#include "kernel/random/uniform.h"

#include <algorithm>
#include <cmath>

#include "core/limits.h"
#include "kernel/text/clock.h"

namespace {

/** The inverse of 0x9E3779B9, the golden ratio in 32 bits, modulo 2^32. */
constexpr std::uint32_t kStep = 0x144CBC89;
static_assert(kStep * 0x9E3779B9U == 1U);

constexpr std::uint64_t kGoldenRatio = 0x9E3779B97F4A7C15;

// The finaliser of SplitMix: xor-shifts and multiplications, each of them invertible.
std::uint64_t Mixed(std::uint64_t z)
{
    z = (z ^ (z >> 30)) * 0xBF58476D1CE4E5B9;
    z = (z ^ (z >> 27)) * 0x94D049BB133111EB;
    return z ^ (z >> 31);
}

int SeedFromClock()
{
    constexpr double kMicrosecondsPerDay = 86400e6;
    const auto moment =
        static_cast<std::uint64_t>(std::max(COleDateTimeGetCurrentTime(), 0.0) * kMicrosecondsPerDay);
    const auto bits = static_cast<int>(Mixed(moment) >> 33);  // 31 bits
    return std::max(bits, 1);
}

// Gives `table` the size asked for, with a new matrix when there is none.
void Shape(matrix<double>*& table, int rows, int cols)
{
    if (table == nullptr) {
        table = new matrix<double>(rows, cols);
    } else if (table->rows != rows || table->cols != cols) {
        table->Redim(rows, cols);
    }
}

}  // namespace

namespace korvenrg::random {

double UniformStream::Next()
{
    const std::uint64_t top = Mixed((std::uint64_t{state_} + 1) * kGoldenRatio) >> 12;
    state_ += kStep;
    return (static_cast<double>(top) + 0.5) * 0x1p-52;
}

UniformStream StartStream(int* seed, short seedInitFlag)
{
    const int start = GetSeed2(seed == nullptr ? 0 : *seed, seed == nullptr ? kFalse : seedInitFlag);
    if (seed != nullptr) *seed = start;
    return UniformStream(start);
}

}  // namespace korvenrg::random

int GetSeed2(int seed, short flag)
{
    return flag == korvenrg::kTrue ? seed : SeedFromClock();
}

double Cpp_Random01(int* seed, short seedInitFlag, int* lastSeed)
{
    auto stream = korvenrg::random::StartStream(seed, seedInitFlag);
    const double uniform = stream.Next();
    if (lastSeed != nullptr) *lastSeed = stream.State();
    return uniform;
}

void M_GenerateRandom01(matrix<double>*& table,
                        int rows,
                        int cols,
                        int* seed,
                        short seedInitFlag,
                        int* lastSeed)
{
    rows = std::max(rows, 0);
    cols = std::max(cols, 0);
    Shape(table, rows, cols);
    auto stream = korvenrg::random::StartStream(seed, seedInitFlag);
    for (int j = 1; j <= cols; ++j) {
        for (int i = 1; i <= rows; ++i) {
            table->vbset(i, j, stream.Next());
        }
    }
    if (lastSeed != nullptr) *lastSeed = stream.State();
}
