#include "kernel/linalg/column_moments.h"

#include <cmath>
#include <vector>

#include "core/limits.h"
#include "kernel/linalg/moments.h"

using korvenrg::kEps;
using korvenrg::kTrue;
using korvenrg::linalg::Centres;
using korvenrg::linalg::ColumnsOf;
using korvenrg::linalg::CorrelationsOf;
using korvenrg::linalg::CrossProducts;
using korvenrg::linalg::EnsureShape;
using korvenrg::linalg::RowWeights;
using korvenrg::linalg::SumsOfSquares;
using korvenrg::linalg::WeightedMeans;
using korvenrg::linalg::ZeroCentres;

namespace {

using Cells = std::vector<double>;

double DivisorOf(double totalWeight, short sample)
{
    return sample == kTrue ? totalWeight - 1.0 : totalWeight;
}

// A sum of squares of exactly 0 is a variance of 0, whatever the divisor.
double VarianceOf(double sumOfSquares, double divisor)
{
    return sumOfSquares == 0.0 ? 0.0 : sumOfSquares / divisor;
}

void WriteVector(const Cells& cells, matrix<double>*& out)
{
    EnsureShape(out, static_cast<int>(cells.size()), 1);
    for (int i = 1; i <= static_cast<int>(cells.size()); ++i) {
        out->vbset(i, cells[static_cast<std::size_t>(i - 1)]);
    }
}

void WriteMatrix(const Cells& cells, int rows, int cols, matrix<double>*& out)
{
    EnsureShape(out, rows, cols);
    std::size_t position = 0;
    for (int j = 1; j <= cols; ++j) {
        for (int i = 1; i <= rows; ++i) {
            out->vbset(i, j, cells[position++]);
        }
    }
}

// Means and variances of the columns, with the centres that they came from.
struct Spread
{
    Centres centres;
    Cells variance;
    Cells standardDeviation;
};

Spread SpreadOf(Centres centres, const Cells& sumsOfSquares, double divisor)
{
    Spread spread{.centres = std::move(centres), .variance = {}, .standardDeviation = {}};
    for (const double sumOfSquares : sumsOfSquares) {
        spread.variance.push_back(VarianceOf(sumOfSquares, divisor));
        spread.standardDeviation.push_back(std::sqrt(spread.variance.back()));
    }
    return spread;
}

void WriteSpread(const Spread& spread, matrix<double>*& mean, matrix<double>*& sd, matrix<double>*& variance)
{
    WriteVector(spread.centres.value, mean);
    WriteVector(spread.standardDeviation, sd);
    WriteVector(spread.variance, variance);
}

Cells DiagonalOf(const Cells& square, std::size_t q)
{
    Cells diagonal;
    for (std::size_t j = 0; j < q; ++j) {
        diagonal.push_back(square[j * q + j]);
    }
    return diagonal;
}

Cells Divided(Cells products, double divisor)
{
    for (double& product : products) {
        product = VarianceOf(product, divisor);
    }
    return products;
}

// Mean products about 0 over the deviations about the means.
Cells ScaledByDeviations(Cells covariances, const Cells& deviations)
{
    const std::size_t q = deviations.size();
    for (std::size_t j = 0; j < q; ++j) {
        for (std::size_t i = 0; i < q; ++i) {
            const double scale = deviations[i] * deviations[j];
            double& cell = covariances[j * q + i];
            cell = scale <= kEps ? 0.0 : cell / scale;
        }
    }
    return covariances;
}

void StandardiseInPlace(matrix<double>* X, int n, int p, const Spread& spread)
{
    for (int j = 1; j <= p; ++j) {
        const auto column = static_cast<std::size_t>(j - 1);
        const double deviation = spread.standardDeviation[column];
        for (int i = 1; i <= n; ++i) {
            const double centred =
                (X->vbget(i, j) - spread.centres.value[column]) - spread.centres.correction[column];
            X->vbset(i, j, deviation > 0.0 ? centred / deviation : centred);
        }
    }
}

// What the matrix operations of this file compute before they write.
struct MatrixAndSpread
{
    Cells matrix;
    Spread spread;
};

MatrixAndSpread MatrixOf(matrix<double>* X,
                         int n,
                         int p,
                         short corr,
                         const RowWeights& weights,
                         short sample,
                         short aboutZero)
{
    const ColumnsOf columns(*X, n, p);
    const auto q = static_cast<std::size_t>(std::max(p, 0));
    const double divisor = DivisorOf(weights.Total(), sample);
    Centres means = WeightedMeans(columns, n, weights.Data());
    Cells products(q * q);
    CrossProducts(columns, n, weights.Data(), means, true, products.data());
    Spread spread = SpreadOf(std::move(means), DiagonalOf(products, q), divisor);
    if (aboutZero == kTrue) {
        CrossProducts(columns, n, weights.Data(), ZeroCentres(q), false, products.data());
        Cells covariances = Divided(std::move(products), divisor);
        if (corr == kTrue) covariances = ScaledByDeviations(std::move(covariances), spread.standardDeviation);
        return {std::move(covariances), std::move(spread)};
    }
    return {corr == kTrue ? CorrelationsOf(products, q) : Divided(std::move(products), divisor),
            std::move(spread)};
}

}  // namespace

void M_MeanStDevVar(matrix<double>* X,
                    int n,
                    int p,
                    matrix<double>*& mean,
                    matrix<double>*& sd,
                    matrix<double>*& variance,
                    short* mask,
                    matrix<double>* W,
                    short weighted,
                    short sample)
{
    const RowWeights weights(weighted == kTrue ? W : nullptr, n, mask);
    const ColumnsOf columns(*X, n, p);
    Centres means = WeightedMeans(columns, n, weights.Data());
    const Cells squares = SumsOfSquares(columns, n, weights.Data(), means);
    WriteSpread(SpreadOf(std::move(means), squares, DivisorOf(weights.Total(), sample)), mean, sd, variance);
}

void M_MeanStDev(matrix<double>* X,
                 int n,
                 int p,
                 matrix<double>*& mean,
                 matrix<double>*& sd,
                 short* mask,
                 matrix<double>* W,
                 short weighted,
                 short sample,
                 short aboutZero)
{
    const RowWeights weights(weighted == kTrue ? W : nullptr, n, mask);
    const ColumnsOf columns(*X, n, p);
    Centres means = WeightedMeans(columns, n, weights.Data());
    Cells squares = SumsOfSquares(columns, n, weights.Data(), means);
    if (aboutZero == kTrue) {
        for (std::size_t j = 0; j < squares.size(); ++j) {
            squares[j] += weights.Total() * means.value[j] * means.value[j];
        }
    }
    const Spread spread = SpreadOf(std::move(means), squares, DivisorOf(weights.Total(), sample));
    WriteVector(spread.centres.value, mean);
    WriteVector(spread.standardDeviation, sd);
}

void M_Mean2(matrix<double>* X, int n, int p, matrix<double>* W, matrix<double>*& mean)
{
    const RowWeights weights(W, n, nullptr);
    WriteVector(WeightedMeans(ColumnsOf(*X, n, p), n, weights.Data()).value, mean);
}

void M_Mean3(matrix<double>* X, int n, int p, matrix<double>*& mean)
{
    M_Mean2(X, n, p, nullptr, mean);
}

void M_SumByCols(matrix<double>* X, int n, int p, matrix<double>*& sums)
{
    Cells totals(static_cast<std::size_t>(std::max(p, 0)));
    for (int j = 1; j <= p; ++j) {
        for (int i = 1; i <= n; ++i) {
            totals[static_cast<std::size_t>(j - 1)] += X->vbget(i, j);
        }
    }
    WriteVector(totals, sums);
}

void M_CovCorrAndMeanStDevVar(matrix<double>* X,
                              int n,
                              int p,
                              matrix<double>*& R,
                              matrix<double>*& mean,
                              matrix<double>*& sd,
                              matrix<double>*& variance,
                              short corr,
                              short* mask,
                              matrix<double>* W,
                              short weighted,
                              short sample,
                              short aboutZero,
                              short standardise,
                              short withMoments)
{
    const RowWeights weights(weighted == kTrue ? W : nullptr, n, mask);
    const MatrixAndSpread result = MatrixOf(X, n, p, corr, weights, sample, aboutZero);
    WriteMatrix(result.matrix, p, p, R);
    if (withMoments == kTrue) WriteSpread(result.spread, mean, sd, variance);
    if (standardise == kTrue) StandardiseInPlace(X, n, p, result.spread);
}

int M_CovCorr(matrix<double>*& X,
              int n,
              int p,
              matrix<double>*& R,
              short corr,
              short* mask,
              matrix<double>* W,
              short weighted,
              short sample,
              short aboutZero)
{
    const RowWeights weights(weighted == kTrue ? W : nullptr, n, mask);
    WriteMatrix(MatrixOf(X, n, p, corr, weights, sample, aboutZero).matrix, p, p, R);
    return 0;
}

void M_CorrMatFromCovMat(matrix<double>* C, int n, matrix<double>* R, short flag)
{
    for (int j = 1; j <= n; ++j) {
        const double variance = C->vbget(j, j);
        for (int i = 1; i <= n; ++i) {
            const double other = C->vbget(i, i);
            const bool isSpread = variance > 0.0 && other > 0.0;
            double correlation =
                isSpread ? korvenrg::linalg::CorrelationOf(C->vbget(i, j), other, variance) : 0.0;
            if (i == j && (isSpread || flag == kTrue)) correlation = 1.0;
            R->vbset(i, j, correlation);
        }
    }
}

void M_CorrMatMat(matrix<double>* A,
                  int n,
                  int p,
                  matrix<double>* B,
                  int q,
                  short* mask,
                  matrix<double>* W,
                  matrix<double>*& R)
{
    const RowWeights weights(W, n, mask);
    const ColumnsOf right(*B, n, q);
    ColumnsOf both(*A, n, p);
    for (int j = 0; j < q; ++j) {
        both.Append(right[static_cast<std::size_t>(j)]);
    }
    const auto left = static_cast<std::size_t>(std::max(p, 0));
    const std::size_t all = left + static_cast<std::size_t>(std::max(q, 0));
    Cells products(all * all);
    CrossProducts(both, n, weights.Data(), WeightedMeans(both, n, weights.Data()), true, products.data());
    const Cells correlations = CorrelationsOf(products, all);
    Cells between;
    for (std::size_t j = left; j < all; ++j) {
        for (std::size_t i = 0; i < left; ++i) {
            between.push_back(correlations[j * all + i]);
        }
    }
    WriteMatrix(between, p, q, R);
}

void M_Standardize2(matrix<double>* X, int n, int p, short flag)
{
    const ColumnsOf columns(*X, n, p);
    Centres means = WeightedMeans(columns, n, nullptr);
    const Cells squares = SumsOfSquares(columns, n, nullptr, means);
    StandardiseInPlace(X, n, p, SpreadOf(std::move(means), squares, DivisorOf(static_cast<double>(n), flag)));
}
