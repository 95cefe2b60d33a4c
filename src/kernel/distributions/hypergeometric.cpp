#include "kernel/distributions/hypergeometric.h"

#include <cmath>
#include <limits>

#include "kernel/distributions/stirling_form.h"
#include "kernel/distributions/tail_pair.h"
#include "kernel/distributions/two_double.h"

using namespace korvenrg::distributions;

namespace {

constexpr double kNaN = std::numeric_limits<double>::quiet_NaN();
constexpr double kTwoPi = 6.28318530717958647693;

/** The table that x marked objects in the sample make, with its margins. */
struct FourfoldTable
{
    double drawnMarked, drawnUnmarked, leftMarked, leftUnmarked;
    double marked, unmarked, drawn, left, total;
};

FourfoldTable TableAt(double x, double marked, double unmarked, double drawn)
{
    const double total = marked + unmarked;
    const double drawnUnmarked = drawn - x;
    return {x,
            drawnUnmarked,
            marked - x,
            unmarked - drawnUnmarked,
            marked,
            unmarked,
            drawn,
            total - drawn,
            total};
}

/** The root sqrt(2 pi n) in Stirling's formula for n!. */
double StirlingRoot(double n)
{
    return n == 0 ? 1 : std::sqrt(kTwoPi * n);
}

/** The deviance of a cell from its expectation row column / total. */
double CellDeviance(double cell, double row, double column, double total, double excess)
{
    return CountDeviance(cell, row / total * column, excess);
}

/** cell log(cell total / (row column)) as a two-double. */
TwoDouble CellExponent(double cell, double row, double column, double total)
{
    if (cell == 0) return {0, 0};
    return CountExponent(cell, Divide(ExactProduct(cell, total), ExactProduct(row, column)));
}

/** P(X = x). All four cells deviate from their expectations by the same amount,
    (drawnMarked leftUnmarked - drawnUnmarked leftMarked) / total, and the probability is
        exp(-sum of the cells' deviances) times Stirling's roots and corrections of margins over cells. */
double PointProbability(const FourfoldTable& f)
{
    const double excess = Add(ExactProduct(f.drawnMarked, f.leftUnmarked),
                              Negative(ExactProduct(f.drawnUnmarked, f.leftMarked)))
                              .high /
                          f.total;
    const double deviance = CellDeviance(f.drawnMarked, f.drawn, f.marked, f.total, excess) +
                            CellDeviance(f.drawnUnmarked, f.drawn, f.unmarked, f.total, -excess) +
                            CellDeviance(f.leftMarked, f.left, f.marked, f.total, -excess) +
                            CellDeviance(f.leftUnmarked, f.left, f.unmarked, f.total, excess);
    const double correction =
        (StirlingCorrection(f.marked) - StirlingCorrection(f.drawnMarked) -
         StirlingCorrection(f.leftMarked)) +
        (StirlingCorrection(f.unmarked) - StirlingCorrection(f.drawnUnmarked) -
         StirlingCorrection(f.leftUnmarked)) +
        (StirlingCorrection(f.drawn) + StirlingCorrection(f.left) - StirlingCorrection(f.total));
    const double root =
        StirlingRoot(f.marked) / StirlingRoot(f.drawnMarked) / StirlingRoot(f.leftMarked) *
        (StirlingRoot(f.unmarked) / StirlingRoot(f.drawnUnmarked) / StirlingRoot(f.leftUnmarked)) *
        (StirlingRoot(f.drawn) * (StirlingRoot(f.left) / StirlingRoot(f.total)));
    if (deviance <= kDeepCountDeviance) return root * std::exp(correction - deviance);
    const TwoDouble exponent = Add(Add(CellExponent(f.drawnMarked, f.drawn, f.marked, f.total),
                                       CellExponent(f.drawnUnmarked, f.drawn, f.unmarked, f.total)),
                                   Add(CellExponent(f.leftMarked, f.left, f.marked, f.total),
                                       CellExponent(f.leftUnmarked, f.left, f.unmarked, f.total)));
    return TimesExp(root, Add(Negative(exponent), correction));
}

/** Sum of P(X = x) from x on in steps of +1 or -1, until the terms no longer count. A step down swaps the two
    pairs of cells that grow and shrink. */
double SumOutward(double x, double direction, double marked, double unmarked, double drawn)
{
    constexpr int kFreshStart = 256;  // terms by ratios between two from the formula
    constexpr double kNegligible = 1e-18;

    double sum = 0;
    for (;; x += direction * kFreshStart) {
        const FourfoldTable f = TableAt(x, marked, unmarked, drawn);
        double shrink1 = direction > 0 ? f.drawnUnmarked : f.drawnMarked;
        double shrink2 = direction > 0 ? f.leftMarked : f.leftUnmarked;
        double grow1 = direction > 0 ? f.drawnMarked : f.drawnUnmarked;
        double grow2 = direction > 0 ? f.leftUnmarked : f.leftMarked;
        double term = PointProbability(f);
        double before = 0;
        for (int i = 0; i < kFreshStart; i++) {
            sum += term;
            if (shrink1 < 1 || shrink2 < 1 || (term <= kNegligible * sum && term <= before)) return sum;
            before = term;
            grow1 += 1;
            grow2 += 1;
            term *= (shrink1 * shrink2) / (grow1 * grow2);
            shrink1 -= 1;
            shrink2 -= 1;
        }
    }
}

/** P(X <= t) or P(X > t), both sides of t possible. */
double TailOf(double t, double marked, double unmarked, double drawn, bool isLower)
{
    const auto sumOf = [&](bool ofLower) {
        return AtMostOne(SumOutward(ofLower ? t : t + 1, ofLower ? -1 : 1, marked, unmarked, drawn));
    };
    const double mean = drawn * (marked / (marked + unmarked));
    const bool isSmaller = isLower ? t < mean : t >= mean;
    if (isSmaller) return sumOf(isLower);
    const double other = sumOf(!isLower);
    return other <= 0.5 ? 1 - other : sumOf(isLower);
}

}  // namespace

double CDFHyperG(double t, double marked, double unmarked, double drawn, short lower)
{
    marked = std::round(marked);
    unmarked = std::round(unmarked);
    drawn = std::round(drawn);
    if (std::isnan(t) || !IsCount(marked) || !IsCount(unmarked) || !IsCount(drawn)) return kNaN;
    if (!IsCount(marked + unmarked) || drawn > marked + unmarked) return kNaN;
    const double least = std::fmax(0.0, drawn - unmarked);
    const double most = std::fmin(marked, drawn);
    t = std::floor(t + kCountTolerance);
    if (t < least) return lower != 0 ? 0 : 1;
    if (t >= most) return lower != 0 ? 1 : 0;
    return TailOf(t, marked, unmarked, drawn, lower != 0);
}
