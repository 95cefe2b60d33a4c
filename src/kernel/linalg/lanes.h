/**
 * Eight doubles side by side, and which instruction set to run on them.
 *
 * A sum over rows is always kept in eight lanes and folded in one fixed order, and no product is fused with a
 * sum, so that every processor gives the same bits: the wider instruction sets change the speed alone.
 */
#pragma once

#include <cstdint>
#include <cstring>

#if defined(__x86_64__)
#define KORVEN_FOR_AVX2 __attribute__((target("avx2")))
#define KORVEN_FOR_AVX512 __attribute__((target("avx512f,avx512dq,prefer-vector-width=512")))
#else
#define KORVEN_FOR_AVX2
#define KORVEN_FOR_AVX512
#endif

namespace korvenrg::linalg {

inline constexpr int kLanes = 8;

using Lanes = double __attribute__((vector_size(kLanes * sizeof(double))));

[[gnu::always_inline]] inline Lanes LoadLanes(const double* source)
{
    Lanes lanes;
    std::memcpy(&lanes, source, sizeof lanes);
    return lanes;
}

[[gnu::always_inline]] inline void StoreLanes(const Lanes& lanes, double* target)
{
    std::memcpy(target, &lanes, sizeof lanes);
}

/** Sum over the lanes, always in this order. */
[[gnu::always_inline]] inline double FoldLanes(const Lanes& l)
{
    return ((l[0] + l[4]) + (l[2] + l[6])) + ((l[1] + l[5]) + (l[3] + l[7]));
}

enum class InstructionSet
{
    kBaseline,
    kAvx2,
    kAvx512
};

inline InstructionSet BestInstructionSet()
{
#if defined(__x86_64__)
    if (__builtin_cpu_supports("avx512f") && __builtin_cpu_supports("avx512dq"))
        return InstructionSet::kAvx512;
    if (__builtin_cpu_supports("avx2")) return InstructionSet::kAvx2;
#endif
    return InstructionSet::kBaseline;
}

/** Smallest multiple of `unit` not below `count`. */
constexpr std::size_t RoundUp(std::size_t count, std::size_t unit)
{
    return (count + unit - 1) / unit * unit;
}

}  // namespace korvenrg::linalg
