#include "logistic/coefficient_combinations.h"

#include <algorithm>
#include <cmath>

#include "core/limits.h"
#include "kernel/distributions/chi_square.h"
#include "kernel/distributions/normal.h"
#include "kernel/linalg/products.h"

namespace korvenrg::logistic {

namespace {

// The model and the new variables.
struct Combinations
{
    int variables;
    int slopes;
    matrix<double>* map;
    matrix<double>* coefficients;
    matrix<double>* mean;
    matrix<double>* stDev;
    matrix<double>* covariance;
    bool normed;

    int Intercept() const
    {
        return slopes + 1;
    }

    double Scale(int i) const
    {
        return normed ? stDev->vbget(i) : 1.0;
    }
};

// c with its variances and covariances.
struct CombinedSlopes
{
    matrix<double> value;
    matrix<double> variance;
    matrix<double> covariance;
};

struct Estimate
{
    double value;
    double stdError;
};

double RootOf(double variance)
{
    return variance > 0.0 ? std::sqrt(variance) : 0.0;
}

CombinedSlopes CombineSlopes(const Combinations& model)
{
    const int m = model.variables;
    CombinedSlopes c{{m, 1}, {m, 1}, {m, m}};
    M_ProductBV(model.map, m, model.slopes, model.coefficients, &c.value);
    ComputeNewVar(model.map, m, model.slopes, model.covariance, &c.variance, &c.covariance);
    return c;
}

void DivideByDeviations(const Combinations& model, CombinedSlopes& c)
{
    if (!model.normed) return;
    for (int i = 1; i <= model.variables; ++i) {
        const double scale = model.stDev->vbget(i);
        c.value.vbset(i, c.value.vbget(i) / scale);
        c.variance.vbset(i, c.variance.vbget(i) / (scale * scale));
        for (int j = 1; j <= model.variables; ++j) {
            c.covariance.vbset(i, j, c.covariance.vbget(i, j) / (scale * model.stDev->vbget(j)));
        }
    }
}

// V(a, L_i b), scaled as c_i is.
double CovarianceWithIntercept(const Combinations& model, int i)
{
    double sum = 0.0;
    for (int k = 1; k <= model.slopes; ++k) {
        sum += model.map->vbget(i, k) * model.covariance->vbget(model.Intercept(), k);
    }
    return sum / model.Scale(i);
}

// a - sum of mean_i c_i with its variance.
Estimate MoveIntercept(const Combinations& model, const CombinedSlopes& c)
{
    const int a = model.Intercept();
    double value = model.coefficients->vbget(a);
    double variance = model.covariance->vbget(a, a);
    for (int i = 1; i <= model.variables; ++i) {
        const double mean = model.mean->vbget(i);
        value -= mean * c.value.vbget(i);
        variance += mean * mean * c.variance.vbget(i) - 2.0 * mean * CovarianceWithIntercept(model, i);
        for (int j = i + 1; j <= model.variables; ++j) {
            variance += 2.0 * mean * model.mean->vbget(j) * c.covariance.vbget(i, j);
        }
    }
    return {value, RootOf(variance)};
}

// A row of either table: the tests are missing unless the standard error exceeds `least`.
void WriteRow(matrix<double>& table, int row, Estimate estimate, double least, double z)
{
    table.vbset(row, kCombinedValue, estimate.value);
    table.vbset(row, kCombinedStdError, estimate.stdError);
    for (int column = kCombinedWald; column <= kCombinedUpper; ++column) {
        table.vbset(row, column, kMissing);
    }
    if (!(estimate.stdError > least)) return;
    const double ratio = estimate.value / estimate.stdError;
    table.vbset(row, kCombinedWald, ratio * ratio);
    table.vbset(row, kCombinedPValue, pValChiSq(ratio * ratio, 1.0));
    table.vbset(row, kCombinedLower, estimate.value - z * estimate.stdError);
    table.vbset(row, kCombinedUpper, estimate.value + z * estimate.stdError);
}

}  // namespace

}  // namespace korvenrg::logistic

// The re-expression:
//   - combine the slopes, with their covariance
//   - on the scale of the variables where they were scaled
//   - move the intercept to variables that are not centred
//   - the rows of both tables
void cComputeCoeffStatsLog(matrix<double>* LCombines,
                           int nVar,
                           int p,
                           matrix<double>* Coefficients,
                           matrix<double>* Mean,
                           matrix<double>* Stdev,
                           double StdevY,
                           short Normed,
                           matrix<double>* VarCov,
                           double alpha,
                           matrix<double>* NewCoefStats,
                           matrix<double>* BetaCoefficients)
{
    using namespace korvenrg;
    using namespace korvenrg::logistic;
    const Combinations model{.variables = std::max(nVar, 0),
                             .slopes = std::max(p, 0),
                             .map = LCombines,
                             .coefficients = Coefficients,
                             .mean = Mean,
                             .stDev = Stdev,
                             .covariance = VarCov,
                             .normed = Normed == kTrue};
    CombinedSlopes c = CombineSlopes(model);
    DivideByDeviations(model, c);
    const double z = InvCDFNormalStd(1.0 - alpha / 2.0);
    WriteRow(*NewCoefStats, 1, MoveIntercept(model, c), 0.0, z);
    for (int i = 1; i <= model.variables; ++i) {
        const Estimate estimate{c.value.vbget(i), RootOf(c.variance.vbget(i))};
        const double toStandard = Stdev->vbget(i) / StdevY;
        WriteRow(*NewCoefStats, i + 1, estimate, 0.0, z);
        WriteRow(*BetaCoefficients,
                 i,
                 {estimate.value * toStandard, estimate.stdError * toStandard},
                 kEps,
                 z);
    }
}
