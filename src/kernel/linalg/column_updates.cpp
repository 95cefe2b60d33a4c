#include "kernel/linalg/column_updates.h"

#include "kernel/linalg/lanes.h"

namespace korvenrg::linalg {

namespace {

[[gnu::always_inline]] inline void Subtract(double* __restrict target,
                                            const double* __restrict source,
                                            double multiplier,
                                            std::size_t n)
{
    for (std::size_t i = 0; i < n; ++i) {
        target[i] -= multiplier * source[i];
    }
}

KORVEN_FOR_AVX512 void SubtractAvx512(double* target, const double* source, double multiplier, std::size_t n)
{
    Subtract(target, source, multiplier, n);
}

KORVEN_FOR_AVX2 void SubtractAvx2(double* target, const double* source, double multiplier, std::size_t n)
{
    Subtract(target, source, multiplier, n);
}

void SubtractBaseline(double* target, const double* source, double multiplier, std::size_t n)
{
    Subtract(target, source, multiplier, n);
}

}  // namespace

SubtractMultiple* BestSubtractMultiple()
{
    switch (BestInstructionSet()) {
        case InstructionSet::kAvx512:
            return SubtractAvx512;
        case InstructionSet::kAvx2:
            return SubtractAvx2;
        default:
            return SubtractBaseline;
    }
}

}  // namespace korvenrg::linalg
