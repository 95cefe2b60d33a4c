// Largest relative errors of variances and correlations on near-constant columns, against exact rational arithmetic on
// the same doubles. Prints the table of docs/accuracy.md.

#include <algorithm>
#include <boost/multiprecision/cpp_bin_float.hpp>
#include <boost/multiprecision/cpp_int.hpp>
#include <cmath>
#include <cstdio>
#include <random>
#include <vector>

#include "core/limits.h"
#include "kernel/linalg/column_moments.h"

namespace {

using Rational = boost::multiprecision::cpp_rational;
using Wide = boost::multiprecision::cpp_bin_float_100;
using Table = matrix<double>;
using korvenrg::kFalse;
using korvenrg::kTrue;

constexpr int kColumns = 4;

// Columns of unit spread, correlated by a common part, on a level of `level`; rounded to doubles, so that what they
// hold of the spread shrinks with the level.
Table NearConstant(int n, double level, std::mt19937_64& generator)
{
    std::normal_distribution<double> normal;
    Table table(n, kColumns);
    for (int i = 1; i <= n; ++i) {
        const double common = normal(generator);
        for (int j = 1; j <= kColumns; ++j) {
            table.vbset(i, j, level * (1.0 + 0.1 * j) + 0.7 * common + normal(generator));
        }
    }
    return table;
}

struct ExactMoments
{
    Wide variance[kColumns];
    Wide correlation[kColumns][kColumns];
};

ExactMoments ExactOf(const Table& table, const Table& weights)
{
    Rational total = 0;
    Rational sums[kColumns] = {};
    Rational products[kColumns][kColumns] = {};
    for (int i = 1; i <= table.rows; ++i) {
        const Rational w(weights.vbget(i));
        total += w;
        for (int a = 0; a < kColumns; ++a) {
            const Rational x(table.vbget(i, a + 1));
            sums[a] += w * x;
            for (int b = 0; b <= a; ++b) {
                products[a][b] += w * x * Rational(table.vbget(i, b + 1));
            }
        }
    }
    ExactMoments exact;
    const auto centred = [&](int a, int b) -> Rational { return products[a][b] - sums[a] * sums[b] / total; };
    for (int a = 0; a < kColumns; ++a) {
        exact.variance[a] = Wide(Rational(centred(a, a) / (total - 1)));
        for (int b = 0; b < a; ++b) {
            const Rational square = centred(a, a) * centred(b, b);
            exact.correlation[a][b] = Wide(centred(a, b)) / sqrt(Wide(square));
        }
    }
    return exact;
}

double RelativeError(double value, const Wide& exact)
{
    return static_cast<double>(abs((Wide(value) - exact) / exact));
}

struct Errors
{
    double variance = 0.0;
    double correlation = 0.0;
};

Errors LargestErrors(int n, double level, bool weighted)
{
    std::mt19937_64 generator(5);
    Errors errors;
    for (int trial = 0; trial < 20; ++trial) {
        Table table = NearConstant(n, level, generator);
        Table weights(n, 1, 1.0);
        for (int i = 1; weighted && i <= n; ++i) {
            weights.vbset(i, 0.5 + static_cast<double>(generator() % 1000) / 1000.0);
        }
        const ExactMoments exact = ExactOf(table, weights);
        Table* R = nullptr;
        Table* mean = nullptr;
        Table* sd = nullptr;
        Table* variance = nullptr;
        M_CovCorrAndMeanStDevVar(&table,
                                 n,
                                 kColumns,
                                 R,
                                 mean,
                                 sd,
                                 variance,
                                 kTrue,
                                 nullptr,
                                 &weights,
                                 kTrue,
                                 kTrue,
                                 kFalse,
                                 kFalse,
                                 kTrue);
        for (int a = 0; a < kColumns; ++a) {
            errors.variance =
                std::max(errors.variance, RelativeError(variance->vbget(a + 1), exact.variance[a]));
            for (int b = 0; b < a; ++b) {
                errors.correlation = std::max(errors.correlation,
                                              RelativeError(R->vbget(a + 1, b + 1), exact.correlation[a][b]));
            }
        }
        delete R;
        delete mean;
        delete sd;
        delete variance;
    }
    return errors;
}

}  // namespace

int main()
{
    std::puts("| mean / spread | weights | rows | variance | correlation |");
    std::puts("| --- | --- | --- | --- | --- |");
    for (const double level : {0.0, 1e3, 1e6, 1e9, 1e12, 1e14}) {
        for (const bool weighted : {false, true}) {
            const Errors errors = LargestErrors(500, level, weighted);
            std::printf("| %.0e | %s | 500 | %.1e | %.1e |\n",
                        level,
                        weighted ? "0.5 to 1.5" : "1",
                        errors.variance,
                        errors.correlation);
        }
    }
    return 0;
}
