/** exp of many numbers. */
#pragma once

namespace korvenrg::linalg {

/**
 * out(i) = exp(x(i)), in eight lanes: reduction by multiples of log 2 and a polynomial of degree 13. Within 1.5 units in
 * the last place for x in -709..709, which is the range that it is for; NaN gives NaN. The same bits on every processor,
 * which the platform's exp does not promise. `out` may be x.
 */
void Exponentials(const double* x, int n, double* out);

}  // namespace korvenrg::linalg
