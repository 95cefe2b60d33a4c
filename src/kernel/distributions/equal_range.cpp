#include "kernel/distributions/equal_range.h"

#include <algorithm>
#include <array>
#include <cmath>

#include "kernel/distributions/gamma_functions.h"

namespace korvenrg::distributions {

namespace {

constexpr double kReciprocalRootTwoPi = 0.398942280401432677940;
constexpr double kRootHalf = 0.707106781186547524401;

// The grid: nodes -kNodes .. kNodes at multiples of kStep, as far as kWidest and the reach of a normal deviate.
constexpr double kStep = 0.0625;
constexpr int kNodes = 528;
constexpr double kReach = 8.3;       // exp(-kReach^2 / 2) < 1.1e-15
constexpr double kLastPoint = 19.0;  // of the largest mean when the range is kWidest

constexpr std::size_t kTerms = 8;         // of a Taylor series; the ninth is below rounding at half a step
constexpr double kNegligibleLog = -39.0;  // of P(all means <= x): what lies below such an x does not count
constexpr std::size_t kBlock = 8;         // points at a time

/** phi at the nodes, and R(x) = Phi(x) / phi(x) at those up to 0 by its Taylor coefficients. */
struct NormalGrid
{
    std::array<double, 2 * kNodes + 1> density;
    std::array<std::array<double, kNodes + 1>, kTerms> ratio;  ///< [term][-node]
};

// R' = 1 + x R and then R^(m+1) = x R^(m) + m R^(m-1).
NormalGrid MakeNormalGrid()
{
    NormalGrid grid;
    for (std::size_t i = 0; i <= kNodes; ++i) {
        const double x = -kStep * static_cast<double>(i);
        const double density = kReciprocalRootTwoPi * std::exp(-0.5 * x * x);
        grid.density[kNodes - i] = density;
        grid.density[kNodes + i] = density;
        const double r = 0.5 * ScaledErfc(-x * kRootHalf) / kReciprocalRootTwoPi;
        std::array<double, kTerms> derivative = {r, 1 + x * r};
        for (std::size_t m = 1; m + 1 < kTerms; ++m)
            derivative[m + 1] = x * derivative[m] + static_cast<double>(m) * derivative[m - 1];
        double factorial = 1;
        for (std::size_t m = 0; m < kTerms; ++m) {
            grid.ratio[m][i] = derivative[m] / factorial;
            factorial *= static_cast<double>(m + 1);
        }
    }
    return grid;
}

const NormalGrid& Grid()
{
    static const NormalGrid grid = MakeNormalGrid();
    return grid;
}

double DensityAt(const NormalGrid& grid, int node)
{
    return grid.density[static_cast<std::size_t>(node + kNodes)];
}

/** Phi(x) / phi(x) at x = node kStep + shift, node <= 0, |shift| <= kStep / 2. */
double TailRatio(const NormalGrid& grid, int node, double shift)
{
    const auto at = static_cast<std::size_t>(-node);
    double r = grid.ratio[kTerms - 1][at];
    for (std::size_t m = kTerms - 1; m-- > 0;)
        r = r * shift + grid.ratio[m][at];
    return r;
}

/** Phi(x), given phi(x), at x = node kStep + shift. */
double BelowAt(const NormalGrid& grid, int node, double shift, double density)
{
    if (node <= 0) return density * TailRatio(grid, node, shift);
    return 1 - density * TailRatio(grid, -node, -shift);
}

using Block = std::array<double, kBlock>;

/** 1 - (1 - q)^exponent with the digits of a small q, by repeated squaring. */
Block ChanceOfAny(const Block& q, int exponent)
{
    Block any{};
    Block none;
    Block oneOf = q;
    Block noneOf;
    for (std::size_t i = 0; i < kBlock; ++i) {
        none[i] = 1;
        noneOf[i] = 1 - q[i];
    }
    for (; exponent > 0; exponent /= 2) {
        if (exponent % 2 == 1) {
            for (std::size_t i = 0; i < kBlock; ++i) {
                any[i] += oneOf[i] * none[i];
                none[i] *= noneOf[i];
            }
        }
        for (std::size_t i = 0; i < kBlock; ++i) {
            oneOf[i] += oneOf[i] * noneOf[i];
            noneOf[i] *= noneOf[i];
        }
    }
    return any;
}

/** Steps of the grid in one of the rule: the more means, the narrower is the law of the largest. The least for which
    the rule's error is below 1e-13 (measured against half the step). */
int StrideFor(int k)
{
    if (k <= 10) return 4;
    if (k <= 30) return 3;
    return k <= 200 ? 2 : 1;
}

}  // namespace

EqualRange::EqualRange(int k)
    : others_(k - 1), stride_(StrideFor(k)), first_(-static_cast<int>(kReach / kStep))
{
    const NormalGrid& grid = Grid();
    const auto below = [&](int node) { return BelowAt(grid, node, 0, DensityAt(grid, node)); };
    const double negligible = std::exp(kNegligibleLog / others_);
    while (below(first_) < negligible)
        ++first_;
    for (int node = first_; node <= static_cast<int>(kLastPoint / kStep); node += stride_) {
        const double all = std::exp(others_ * std::log(below(node)));
        front_.push_back(k * DensityAt(grid, node) * all * (stride_ * kStep));
        inverse_.push_back(1 / below(node));
    }
}

double EqualRange::UpperTail(double w) const
{
    const NormalGrid& grid = Grid();
    const int whole = static_cast<int>(std::lround(w / kStep));
    const double shift = whole * kStep - w;  // x - w is (node - whole) kStep + shift
    const double reach = std::sqrt(0.5 * w * w + kReach * kReach);
    const int steps = (static_cast<int>(reach / kStep) - first_) / stride_ + 2;
    const std::size_t points = std::min(front_.size(), static_cast<std::size_t>(std::max(steps, 0)));

    // phi(z kStep + shift) is phi(z kStep) exp(-z kStep shift) exp(-shift^2 / 2): the exponentials are a sequence.
    double factor = std::exp(-(first_ - whole) * kStep * shift - 0.5 * shift * shift);
    const double ratio = std::exp(-stride_ * kStep * shift);
    double sum = 0;
    for (std::size_t start = 0; start < points; start += kBlock) {
        const std::size_t count = std::min(kBlock, points - start);
        Block q{};
        for (std::size_t i = 0; i < count; ++i) {
            const int node = first_ + static_cast<int>(start + i) * stride_ - whole;
            q[i] = BelowAt(grid, node, shift, DensityAt(grid, node) * factor) * inverse_[start + i];
            factor *= ratio;
        }
        const Block any = ChanceOfAny(q, others_);
        for (std::size_t i = 0; i < count; ++i)
            sum += front_[start + i] * any[i];
    }
    return sum;
}

}  // namespace korvenrg::distributions
