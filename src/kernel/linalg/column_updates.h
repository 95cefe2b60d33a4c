/** The inner loop of eliminations. */
#pragma once

#include <cstddef>

namespace korvenrg::linalg {

/** target -= multiplier * source over n cells, which may not overlap. */
using SubtractMultiple = void(double* target, const double* source, double multiplier, std::size_t n);

/** The one for the widest lanes of this processor. Each cell has one product and one difference, so that all of
 * them give the same bits. */
SubtractMultiple* BestSubtractMultiple();

}  // namespace korvenrg::linalg
