#include "kernel/linalg/moments.h"

#include <algorithm>
#include <cmath>

#include "core/limits.h"
#include "kernel/linalg/lanes.h"

namespace korvenrg::linalg {

namespace {

/** A correlation that exceeds 1 by at most this does so by rounding. */
constexpr double kCorrelationRounding = 16.0 * kEps;

double TotalWeight(int n, const double* weights)
{
    if (weights == nullptr) return n;
    double total = 0.0;
    for (int row = 0; row < n; ++row) {
        total += weights[row];
    }
    return total;
}

// Weighted sums of the centred cells and of their squares.
struct PowerSums
{
    double first;
    double second;
};

PowerSums CentredPowerSums(const double* x,
                           const double* weights,
                           std::size_t n,
                           double value,
                           double correction)
{
    Lanes firsts = {};
    Lanes seconds = {};
    std::size_t row = 0;
    for (; row + kLanes <= n; row += kLanes) {
        Lanes cells = (LoadLanes(x + row) - value) - correction;
        if (weights == nullptr) {
            firsts += cells;
            seconds += cells * cells;
            continue;
        }
        const Lanes w = LoadLanes(weights + row);
        cells = w == 0.0 ? Lanes{} : cells;
        firsts += w * cells;
        seconds += w * cells * cells;
    }
    PowerSums sums{FoldLanes(firsts), FoldLanes(seconds)};
    for (; row < n; ++row) {
        const double w = weights == nullptr ? 1.0 : weights[row];
        if (w == 0.0) continue;
        const double cell = (x[row] - value) - correction;
        sums.first += w * cell;
        sums.second += w * cell * cell;
    }
    return sums;
}

// Means, variances and standard deviations; `products` receives the centred cross-products.
Moments CentredMoments(Columns columns, int n, const double* weights, std::vector<double>& products)
{
    const std::size_t q = columns.size();
    const Centres means = WeightedMeans(columns, n, weights);
    products.resize(q * q);
    CrossProducts(columns, n, weights, means, true, products.data());

    const double divisor = TotalWeight(n, weights) - 1.0;
    Moments moments{.mean = means.value,
                    .standardDeviation = std::vector<double>(q),
                    .variance = std::vector<double>(q),
                    .correlation = {}};
    for (std::size_t j = 0; j < q; ++j) {
        // A constant column keeps an exact 0, whatever the divisor.
        const double sumOfSquares = products[j * q + j];
        moments.variance[j] = sumOfSquares == 0.0 ? 0.0 : sumOfSquares / divisor;
        moments.standardDeviation[j] = std::sqrt(moments.variance[j]);
    }
    return moments;
}

}  // namespace

RowWeights::RowWeights(const matrix<double>* W, int n, const short* mask)
{
    const auto rows = static_cast<std::size_t>(std::max(n, 0));
    total_ = static_cast<double>(rows);
    if (W == nullptr && mask == nullptr) return;
    if (mask == nullptr && rows <= W->total) {
        data_ = W->data;
    } else {
        copy_.resize(rows);
        for (std::size_t i = 0; i < rows; ++i) {
            if (mask != nullptr && mask[i] != 0) continue;
            copy_[i] = W == nullptr ? 1.0 : W->vbget(static_cast<int>(i) + 1);
        }
        data_ = copy_.data();
    }
    total_ = TotalWeight(n, data_);
}

std::vector<double> SumsOfSquares(Columns columns, int n, const double* weights, const Centres& centres)
{
    const auto rows = static_cast<std::size_t>(std::max(n, 0));
    const double total = TotalWeight(static_cast<int>(rows), weights);
    std::vector<double> sums;
    for (std::size_t j = 0; j < columns.size(); ++j) {
        const PowerSums powers =
            CentredPowerSums(columns[j], weights, rows, centres.value[j], centres.correction[j]);
        sums.push_back(total == 0.0 ? powers.second : powers.second - powers.first * powers.first / total);
    }
    return sums;
}

namespace {

// The root of a product of equal numbers is that number exactly, so the product is formed, its exponents apart.
double RootOfProduct(double a, double b)
{
    int exponentA = 0, exponentB = 0;
    const double mantissas = std::frexp(a, &exponentA) * std::frexp(b, &exponentB);
    const int exponent = exponentA + exponentB;
    const int odd = exponent & 1;
    return std::ldexp(std::sqrt(std::ldexp(mantissas, odd)), (exponent - odd) / 2);
}

}  // namespace

double CorrelationOf(double product, double squareA, double squareB)
{
    const double scale = RootOfProduct(squareA, squareB);
    if (scale == 0.0) return 0.0;
    const double correlation = product / scale;
    const double excess = std::fabs(correlation) - 1.0;
    return excess > 0.0 && excess <= kCorrelationRounding ? std::copysign(1.0, correlation) : correlation;
}

std::vector<double> CorrelationsOf(const std::vector<double>& products, std::size_t q)
{
    std::vector<double> correlations(q * q);
    for (std::size_t j = 0; j < q; ++j) {
        for (std::size_t i = 0; i < q; ++i) {
            double correlation = CorrelationOf(products[j * q + i], products[i * q + i], products[j * q + j]);
            if (i == j && correlation != 0.0 && !std::isnan(correlation)) correlation = 1.0;
            correlations[j * q + i] = correlation;
        }
    }
    return correlations;
}

Moments CorrelationMoments(Columns columns, int n, const double* weights)
{
    std::vector<double> products;
    Moments moments = CentredMoments(columns, n, weights, products);
    moments.correlation = CorrelationsOf(products, columns.size());
    return moments;
}

Moments MomentsAboutZero(Columns columns, int n, const double* weights)
{
    const std::size_t q = columns.size();
    std::vector<double> products;
    Moments moments = CentredMoments(columns, n, weights, products);
    CrossProducts(columns, n, weights, ZeroCentres(q), false, products.data());

    const double divisor = TotalWeight(n, weights) - 1.0;
    moments.correlation.resize(q * q);
    for (std::size_t j = 0; j < q; ++j) {
        for (std::size_t i = 0; i < q; ++i) {
            const double scale = moments.standardDeviation[i] * moments.standardDeviation[j];
            moments.correlation[j * q + i] = scale <= kEps ? 0.0 : products[j * q + i] / divisor / scale;
        }
    }
    return moments;
}

void StandardizeColumns(Columns columns, int n, double* out)
{
    const auto rows = static_cast<std::size_t>(std::max(n, 0));
    const Centres means = WeightedMeans(columns, n, nullptr);
    for (std::size_t j = 0; j < columns.size(); ++j) {
        double* column = out + j * rows;
        double sumOfSquares = 0.0;
        for (std::size_t row = 0; row < rows; ++row) {
            column[row] = (columns[j][row] - means.value[j]) - means.correction[j];
            sumOfSquares += column[row] * column[row];
        }
        if (sumOfSquares == 0.0) continue;
        const double deviation = std::sqrt(sumOfSquares / (static_cast<double>(n) - 1.0));
        for (std::size_t row = 0; row < rows; ++row) {
            column[row] /= deviation;
        }
    }
}

}  // namespace korvenrg::linalg
