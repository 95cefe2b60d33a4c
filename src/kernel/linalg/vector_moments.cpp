#include "kernel/linalg/vector_moments.h"

#include <cmath>
#include <vector>

#include "core/limits.h"
#include "kernel/linalg/moments.h"

using korvenrg::kTrue;
using korvenrg::linalg::Centres;
using korvenrg::linalg::ColumnsOf;
using korvenrg::linalg::RowWeights;
using korvenrg::linalg::SumsOfSquares;
using korvenrg::linalg::WeightedMeans;

namespace {

struct VectorMoments
{
    double mean;
    double sumOfSquares;
    double totalWeight;

    // A constant vector has an exact 0, whatever the divisor.
    double Variance(short sample) const
    {
        if (sumOfSquares == 0.0) return 0.0;
        return sumOfSquares / (sample == kTrue ? totalWeight - 1.0 : totalWeight);
    }
};

VectorMoments MomentsOf(const matrix<double>& x, int n, const RowWeights& weights)
{
    const ColumnsOf column(x, n, 1);
    const Centres centre = WeightedMeans(column, n, weights.Data());
    const std::vector<double> squares = SumsOfSquares(column, n, weights.Data(), centre);
    if (squares.empty()) return {0.0, 0.0, 0.0};
    return {centre.value[0], squares[0], weights.Total()};
}

}  // namespace

double V_Sum(matrix<double>* x, int n, short* mask)
{
    double sum = 0.0;
    for (int i = 1; i <= n; ++i) {
        if (mask == nullptr || mask[i - 1] == 0) sum += x->vbget(i);
    }
    return sum;
}

double V_SumSq(matrix<double>* x, int n)
{
    double sum = 0.0;
    for (int i = 1; i <= n; ++i) {
        sum += x->vbget(i) * x->vbget(i);
    }
    return sum;
}

double V_Mean(matrix<double>* x, int n, short* mask, matrix<double>* W)
{
    return MomentsOf(*x, n, RowWeights(W, n, mask)).mean;
}

double V_Mean2(matrix<double>* x, int n)
{
    return V_Mean(x, n, nullptr, nullptr);
}

double V_Var(matrix<double>* x, int n, short* mask, matrix<double>* W, short sample)
{
    return MomentsOf(*x, n, RowWeights(W, n, mask)).Variance(sample);
}

double V_Var2(matrix<double>* x, int n)
{
    return V_Var(x, n, nullptr, nullptr, kTrue);
}

double V_Var2(matrix<double>* x, int n, matrix<double>* W)
{
    return V_Var(x, n, nullptr, W, kTrue);
}

void V_MeanVar(matrix<double>* x,
               int n,
               double& mean,
               double& variance,
               short* mask,
               matrix<double>* W,
               short weighted,
               short sample)
{
    const VectorMoments moments = MomentsOf(*x, n, RowWeights(weighted == kTrue ? W : nullptr, n, mask));
    mean = moments.mean;
    variance = moments.Variance(sample);
}

void V_MeanStdev(matrix<double>* x,
                 int n,
                 double& mean,
                 double& standardDeviation,
                 short* mask,
                 matrix<double>* W,
                 short weighted,
                 short sample)
{
    double variance = 0.0;
    V_MeanVar(x, n, mean, variance, mask, W, weighted, sample);
    standardDeviation = std::sqrt(variance);
}

void V_MeanStdev2(matrix<double>* x, int n, double& mean, double& standardDeviation)
{
    V_MeanStdev(x, n, mean, standardDeviation, nullptr, nullptr, korvenrg::kFalse, kTrue);
}

void V_MeanVarW2(matrix<double>* x,
                 int n,
                 matrix<double>* W,
                 double* mean,
                 double* variance,
                 short weighted,
                 short sample)
{
    V_MeanVar(x, n, *mean, *variance, nullptr, W, weighted, sample);
}

double V_VarIfSup0W(matrix<double>* x, int n, matrix<double>* W, matrix<double>* condition, short sample)
{
    std::vector<short> leftOut;
    for (int i = 1; i <= n; ++i) {
        const bool weighs = W == nullptr || W->vbget(i) > 0.0;
        const bool meets = condition == nullptr || condition->vbget(i) > 0.0;
        leftOut.push_back(korvenrg::AsFlag(!weighs || !meets));
    }
    return V_Var(x, n, leftOut.data(), W, sample);
}

double GetSSE(matrix<double>* Y, int n, matrix<double>* W, double* mean)
{
    const VectorMoments moments = MomentsOf(*Y, n, RowWeights(W, n, nullptr));
    if (mean != nullptr) *mean = moments.mean;
    return moments.sumOfSquares;
}
