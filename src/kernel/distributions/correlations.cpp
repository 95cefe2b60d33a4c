#include "kernel/distributions/correlations.h"

#include <algorithm>
#include <cmath>
#include <limits>
#include <vector>

#include "core/limits.h"
#include "kernel/distributions/student.h"
#include "kernel/linalg/columns.h"
#include "kernel/linalg/moments.h"
#include "kernel/linalg/outputs.h"

namespace {

using korvenrg::linalg::Columns;
using korvenrg::linalg::ColumnsOf;

using Weights = std::vector<double>;

/** Weights with the rows that do not count at 0. */
Weights EffectiveWeights(int n, const short* mask, const matrix<double>* W)
{
    Weights weights(static_cast<std::size_t>(std::max(n, 0)));
    for (int r = 1; r <= n; ++r) {
        const auto row = static_cast<std::size_t>(r - 1);
        const bool masked = mask != nullptr && mask[row] != 0;
        const double weight = W == nullptr ? 1.0 : W->vbget(r);
        weights[row] = !masked && weight > 0.0 ? weight : 0.0;
    }
    return weights;
}

double TwoSidedPValue(double rho, double df)
{
    if (!(df > 0.0)) return korvenrg::kMissing;
    const double unexplained = (1.0 - rho) * (1.0 + rho);
    if (unexplained <= 0.0) return 0.0;
    return 2.0 * pValStudent(rho * std::sqrt(df / unexplained), df);
}

/** Weighted mid-ranks of the rows that count, 0 in the others; all NaN when a value that counts is. */
std::vector<double> RanksOf(const double* values, const Weights& weights)
{
    std::vector<double> ranks(weights.size(), 0.0);
    std::vector<std::size_t> order;
    for (std::size_t row = 0; row < weights.size(); ++row) {
        if (weights[row] == 0.0) continue;
        if (std::isnan(values[row])) {
            return std::vector<double>(weights.size(), std::numeric_limits<double>::quiet_NaN());
        }
        order.push_back(row);
    }
    std::sort(order.begin(), order.end(), [&](std::size_t a, std::size_t b) {
        return values[a] < values[b];
    });

    double below = 0.0;
    for (std::size_t first = 0, end = 0; first < order.size(); first = end) {
        double tied = 0.0;
        for (end = first; end < order.size() && values[order[end]] == values[order[first]]; ++end) {
            tied += weights[order[end]];
        }
        for (std::size_t i = first; i < end; ++i) {
            ranks[order[i]] = below + 0.5 * (tied + 1.0);
        }
        below += tied;
    }
    return ranks;
}

/** The columns of both tables replaced by their ranks. */
class RankedColumns
{
  public:
    RankedColumns(Columns x, Columns y, const Weights& weights)
    {
        ranks_.reserve(x.size() + y.size());
        for (const Columns columns : {x, y}) {
            for (const double* column : columns) {
                ranks_.push_back(RanksOf(column, weights));
            }
        }
        for (const std::vector<double>& column : ranks_) {
            pointers_.push_back(column.data());
        }
    }

    operator Columns() const
    {
        return pointers_;
    }

  private:
    std::vector<std::vector<double>> ranks_;
    std::vector<const double*> pointers_;
};

struct CorrelationTables
{
    matrix<double>*& rho;
    matrix<double>*& pValues;
};

/** The block of the first p with the last q of all columns, with its p-values. */
void WriteTables(Columns all, int p, int q, const Weights& weights, const CorrelationTables& out)
{
    korvenrg::linalg::EnsureShape(out.rho, p, q);
    korvenrg::linalg::EnsureShape(out.pValues, p, q);
    const auto moments =
        korvenrg::linalg::CorrelationMoments(all, static_cast<int>(weights.size()), weights.data());
    double total = 0.0;
    for (const double weight : weights) {
        total += weight;
    }
    for (int i = 1; i <= p; ++i) {
        for (int j = 1; j <= q; ++j) {
            const std::size_t cell =
                static_cast<std::size_t>(i - 1) + all.size() * static_cast<std::size_t>(p + j - 1);
            const double rho = weights.empty() ? 0.0 : moments.correlation[cell];
            out.rho->vbset(i, j, rho);
            out.pValues->vbset(i, j, TwoSidedPValue(rho, total - 2.0));
        }
    }
}

enum class Scale
{
    kValues,
    kRanks
};

/** Correlations of all pairs of columns of two tables. */
void CorrelateTables(const matrix<double>& X,
                     const matrix<double>& Y,
                     int p,
                     int q,
                     const Weights& weights,
                     Scale scale,
                     const CorrelationTables& out)
{
    p = std::max(p, 0);
    q = std::max(q, 0);
    const int n = static_cast<int>(weights.size());
    ColumnsOf both(X, n, p);
    const ColumnsOf other(Y, n, q);
    if (scale == Scale::kRanks) {
        WriteTables(RankedColumns(both, other, weights), p, q, weights, out);
        return;
    }
    for (const double* column : Columns(other)) {
        both.Append(column);
    }
    WriteTables(both, p, q, weights, out);
}

double CorrelateVectors(const matrix<double>& x,
                        const matrix<double>& y,
                        const Weights& weights,
                        Scale scale,
                        double* pValue)
{
    matrix<double> rho(1, 1), p(1, 1);
    matrix<double>* rhoSlot = &rho;
    matrix<double>* pSlot = &p;
    CorrelateTables(x, y, 1, 1, weights, scale, {rhoSlot, pSlot});
    if (pValue != nullptr) *pValue = p.vbget(1);
    return rho.vbget(1);
}

}  // namespace

double V_PearsonRho(matrix<double>* x,
                    int n,
                    matrix<double>* y,
                    const short* mask,
                    matrix<double>* W,
                    double* pValue)
{
    return CorrelateVectors(*x, *y, EffectiveWeights(n, mask, W), Scale::kValues, pValue);
}

double V_SpearmanRho(matrix<double>* x,
                     int n,
                     matrix<double>* y,
                     const short* mask,
                     matrix<double>* W,
                     double* pValue)
{
    return CorrelateVectors(*x, *y, EffectiveWeights(n, mask, W), Scale::kRanks, pValue);
}

void M_PearsonRhoMatMat(matrix<double>* X,
                        int n,
                        int p,
                        matrix<double>* Y,
                        int q,
                        const short* mask,
                        matrix<double>* W,
                        matrix<double>*& rho,
                        matrix<double>*& pValues)
{
    CorrelateTables(*X, *Y, p, q, EffectiveWeights(n, mask, W), Scale::kValues, {rho, pValues});
}

void M_SpearmanRhoMatMat(matrix<double>* X,
                         int n,
                         int p,
                         matrix<double>* Y,
                         int q,
                         const short* mask,
                         matrix<double>* W,
                         matrix<double>*& rho,
                         matrix<double>*& pValues)
{
    CorrelateTables(*X, *Y, p, q, EffectiveWeights(n, mask, W), Scale::kRanks, {rho, pValues});
}
