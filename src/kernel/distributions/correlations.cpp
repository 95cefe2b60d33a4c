#include "kernel/distributions/correlations.h"

#include <algorithm>
#include <cmath>
#include <vector>

#include "core/limits.h"
#include "kernel/distributions/student.h"
#include "kernel/linalg/columns.h"
#include "kernel/linalg/moments.h"

namespace {

// Weights with the masked rows at 0.
std::vector<double> EffectiveWeights(int n, const short* mask, const matrix<double>* W)
{
    std::vector<double> weights(static_cast<std::size_t>(std::max(n, 0)));
    for (int r = 1; r <= n; ++r) {
        const auto row = static_cast<std::size_t>(r - 1);
        const bool masked = mask != nullptr && mask[row] == korvenrg::kTrue;
        const double weight = W == nullptr ? 1.0 : W->vbget(r);
        weights[row] = masked ? 0.0 : weight;
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

}  // namespace

double V_PearsonRho(matrix<double>* x,
                    int n,
                    matrix<double>* y,
                    const short* mask,
                    matrix<double>* W,
                    double* pValue)
{
    const std::vector<double> weights = EffectiveWeights(n, mask, W);
    korvenrg::linalg::ColumnsOf both(*x, n, 1);
    const korvenrg::linalg::ColumnsOf other(*y, n, 1);
    if (weights.empty()) return 0.0;
    both.Append(other[0]);
    const auto moments = korvenrg::linalg::CorrelationMoments(both, n, weights.data());
    const double rho = moments.correlation[1];
    if (pValue != nullptr) {
        double total = 0.0;
        for (const double weight : weights) {
            total += weight;
        }
        *pValue = TwoSidedPValue(rho, total - 2.0);
    }
    return rho;
}
