/** The range of independent standard normal means, fast: on a fixed grid whose tables serve every argument. */
#pragma once

#include <vector>

namespace korvenrg::distributions {

/**
 * The upper tail of the range of k means,
 *     P(range > w) = k integral of phi(x) Phi(x)^(k-1) (1 - [1 - Phi(x - w) / Phi(x)]^(k-1)) dx,
 * x the largest mean, by the trapezoidal rule with a step that k alone decides. What does not depend on w is kept.
 * Source: H. O. Hartley (1942), The range in random samples.
 */
class EqualRange
{
  public:
    static constexpr int kLeastMeans = 3;
    static constexpr int kMostMeans = 2000;  // beyond, the step would have to be smaller than the grid's
    static constexpr double kWidest = 24.0;  // the widest range that the grid serves

    explicit EqualRange(int k);

    /** P(range > w) for 0 < w <= kWidest, with a relative error of about 1e-13. */
    double UpperTail(double w) const;

  private:
    int others_;                   // k - 1
    int stride_;                   // step of the rule, in steps of the grid
    int first_;                    // node of the first point
    std::vector<double> front_;    // by point: k phi(x) Phi(x)^(k-1), times the step
    std::vector<double> inverse_;  // 1 / Phi(x)
};

}  // namespace korvenrg::distributions
