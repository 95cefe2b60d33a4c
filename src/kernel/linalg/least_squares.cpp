#include "kernel/linalg/least_squares.h"

#include <algorithm>
#include <cmath>
#include <vector>

#include "core/limits.h"
#include "kernel/linalg/moments.h"
#include "kernel/linalg/row_forms.h"
#include "kernel/linalg/sweep.h"

using korvenrg::kGuard;
using korvenrg::kMissing;
using korvenrg::kTrue;
using korvenrg::linalg::Centres;
using korvenrg::linalg::Columns;
using korvenrg::linalg::ColumnsOf;
using korvenrg::linalg::CrossProducts;
using korvenrg::linalg::LinearCombination;
using korvenrg::linalg::PackedPosition;
using korvenrg::linalg::PackedSize;
using korvenrg::linalg::RowWeights;
using korvenrg::linalg::WeightedMeans;
using korvenrg::linalg::ZeroCentres;

namespace {

using Cells = std::vector<double>;

// Steps of refinement: with correlations of condition 1e12 the second one still gains two digits.
constexpr int kRefinements = 2;

// The terms of the model as columns of n rows.
std::vector<Cells> BuildTerms(const matrix<double>& X, int n, int p, int degree, bool withProducts)
{
    std::vector<Cells> terms;
    for (int power = 1; power <= degree; ++power) {
        for (int j = 1; j <= p; ++j) {
            Cells term;
            const Cells* lower = power == 1 ? nullptr : &terms[terms.size() - static_cast<std::size_t>(p)];
            for (int i = 1; i <= n; ++i) {
                const double x = X.vbget(i, j);
                term.push_back(lower == nullptr ? x : (*lower)[static_cast<std::size_t>(i - 1)] * x);
            }
            terms.push_back(std::move(term));
        }
    }
    for (int a = 1; withProducts && a <= p; ++a) {
        for (int b = a + 1; b <= p; ++b) {
            Cells term;
            for (int i = 1; i <= n; ++i) {
                term.push_back(X.vbget(i, a) * X.vbget(i, b));
            }
            terms.push_back(std::move(term));
        }
    }
    return terms;
}

// A fit in progress. Index q, the last of all vectors, is the response.
struct Fit
{
    int n;
    int q;  // terms
    bool hasConstant;
    std::vector<const double*> columns;  // q terms and the response
    const double* weights;
    double totalWeight;
    Centres centres;
    Cells scale;             // root of the centred sum of squares
    matrix<double> packed;   // swept correlations
    std::vector<bool> isIn;  // per term
    Cells slopes;            // per term, 0 for one that stays out
    double constant = 0.0;
};

// Correlations of terms and response, packed by rows; a column without spread has correlations of 0.
void PackCorrelations(Fit& fit)
{
    const auto size = static_cast<std::size_t>(fit.q) + 1;
    fit.centres = fit.hasConstant ? WeightedMeans(fit.columns, fit.n, fit.weights) : ZeroCentres(size);
    Cells products(size * size);
    CrossProducts(fit.columns, fit.n, fit.weights, fit.centres, fit.hasConstant, products.data());
    for (std::size_t j = 0; j < size; ++j) {
        fit.scale.push_back(std::sqrt(std::max(products[j * size + j], 0.0)));
    }
    for (std::size_t i = 0; i < size; ++i) {
        for (std::size_t j = 0; j <= i; ++j) {
            const double scale = fit.scale[i] * fit.scale[j];
            double cell = scale > 0.0 ? products[j * size + i] / scale : 0.0;
            if (i == j && scale > 0.0) cell = 1.0;
            const std::size_t position = PackedPosition(static_cast<int>(i) + 1, static_cast<int>(j) + 1);
            fit.packed.vbset(static_cast<int>(position), cell);
        }
    }
}

// Sweeps the terms in, in order, but for those that the tolerance test refuses.
void SweepTerms(Fit& fit, double tol)
{
    for (int j = 1; j <= fit.q; ++j) {
        const bool accepted = OLSCheckIfIn(&fit.packed, fit.q, j, tol) > tol;
        fit.isIn.push_back(accepted);
        if (accepted) M_Sweep(&fit.packed, fit.q + 1, j);
    }
}

double PackedCell(const Fit& fit, int i, int j)
{
    return fit.packed.vbget(static_cast<int>(PackedPosition(i, j)));
}

void ReadSlopes(Fit& fit)
{
    const auto response = static_cast<std::size_t>(fit.q);
    for (int j = 1; j <= fit.q; ++j) {
        const auto term = static_cast<std::size_t>(j - 1);
        const double standardised = PackedCell(fit, fit.q + 1, j);
        fit.slopes.push_back(fit.isIn[term] ? standardised * fit.scale[response] / fit.scale[term] : 0.0);
    }
}

void ReadConstant(Fit& fit)
{
    if (!fit.hasConstant) return;
    const auto response = static_cast<std::size_t>(fit.q);
    fit.constant = fit.centres.value[response] + fit.centres.correction[response];
    for (std::size_t j = 0; j < response; ++j) {
        fit.constant -= fit.slopes[j] * (fit.centres.value[j] + fit.centres.correction[j]);
    }
}

Cells FittedValues(const Fit& fit)
{
    Cells fitted(static_cast<std::size_t>(fit.n));
    const Columns terms(fit.columns.data(), static_cast<std::size_t>(fit.q));
    LinearCombination(terms, fit.n, fit.slopes.data(), fit.constant, fitted.data());
    return fitted;
}

// One step of refinement: the residuals are regressed on the terms by the swept matrix, which holds the inverse of
// their correlations with a minus sign, and the slopes take up what is found.
void RefineSlopes(Fit& fit)
{
    const Cells fitted = FittedValues(fit);
    const double* y = fit.columns[static_cast<std::size_t>(fit.q)];
    Cells moments(static_cast<std::size_t>(fit.q));  // of residuals with unit-scaled terms
    for (std::size_t j = 0; j < moments.size(); ++j) {
        if (!fit.isIn[j]) continue;
        double sum = 0.0;
        for (std::size_t i = 0; i < fitted.size(); ++i) {
            const double weight = fit.weights == nullptr ? 1.0 : fit.weights[i];
            if (weight == 0.0) continue;
            const double centred = (fit.columns[j][i] - fit.centres.value[j]) - fit.centres.correction[j];
            sum += weight * centred * (y[i] - fitted[i]);
        }
        moments[j] = sum / fit.scale[j];
    }
    for (int j = 1; j <= fit.q; ++j) {
        const auto term = static_cast<std::size_t>(j - 1);
        if (!fit.isIn[term]) continue;
        double correction = 0.0;
        for (int k = 1; k <= fit.q; ++k) {
            const auto other = static_cast<std::size_t>(k - 1);
            if (fit.isIn[other]) correction -= PackedCell(fit, j, k) * moments[other];
        }
        fit.slopes[term] += correction / fit.scale[term];
    }
}

// The least-squares fit:
//   scale the terms and the response and pack their correlations
//   sweep the terms in, in order
//   read slopes and constant
//   refine the slopes from the residuals
Fit FitTerms(Columns terms, int n, const double* y, const RowWeights& weights, bool hasConstant, double tol)
{
    const int q = static_cast<int>(terms.size());
    Fit fit{.n = n,
            .q = q,
            .hasConstant = hasConstant,
            .columns = {terms.begin(), terms.end()},
            .weights = weights.Data(),
            .totalWeight = weights.Total(),
            .centres = {},
            .scale = {},
            .packed = matrix<double>(static_cast<int>(PackedSize(terms.size() + 1)), 1),
            .isIn = {},
            .slopes = {}};
    fit.columns.push_back(y);
    PackCorrelations(fit);
    SweepTerms(fit, tol);
    ReadSlopes(fit);
    ReadConstant(fit);
    for (int step = 0; step < kRefinements; ++step) {
        RefineSlopes(fit);
        ReadConstant(fit);
    }
    return fit;
}

void WriteFit(const Fit& fit, const Cells& fittedValues, matrix<double>* coefficients, matrix<double>* fitted)
{
    for (int j = 1; j <= fit.q; ++j) {
        coefficients->vbset(j, fit.slopes[static_cast<std::size_t>(j - 1)]);
    }
    coefficients->vbset(fit.q + 1, fit.constant);
    for (int i = 1; i <= fit.n; ++i) {
        fitted->vbset(i, fittedValues[static_cast<std::size_t>(i - 1)]);
    }
}

// Sum of weighted squared errors over the sum of weights minus the number of coefficients.
double MeanSquaredError(const Fit& fit, const Cells& fittedValues)
{
    const auto termsIn = static_cast<double>(std::count(fit.isIn.begin(), fit.isIn.end(), true));
    const double degreesOfFreedom = fit.totalWeight - termsIn - (fit.hasConstant ? 1.0 : 0.0);
    if (!(degreesOfFreedom > kGuard)) return kMissing;
    const double* y = fit.columns[static_cast<std::size_t>(fit.q)];
    double sse = 0.0;
    for (std::size_t i = 0; i < fittedValues.size(); ++i) {
        const double weight = fit.weights == nullptr ? 1.0 : fit.weights[i];
        if (weight != 0.0) sse += weight * (y[i] - fittedValues[i]) * (y[i] - fittedValues[i]);
    }
    return sse / degreesOfFreedom;
}

// Cell (j, k) of the inverse of the centred cross-products.
double InverseCell(const Fit& fit, int j, int k)
{
    return -PackedCell(fit, j, k) / fit.scale[static_cast<std::size_t>(j - 1)] /
           fit.scale[static_cast<std::size_t>(k - 1)];
}

// Variance factor of the constant: 1 / sum of weights + m' C m, with m the means of the terms and C their inverse.
double ConstantVariance(const Fit& fit)
{
    double variance = 1.0 / fit.totalWeight;
    for (int j = 1; j <= fit.q; ++j) {
        for (int k = 1; k <= fit.q; ++k) {
            const auto a = static_cast<std::size_t>(j - 1);
            const auto b = static_cast<std::size_t>(k - 1);
            if (!fit.isIn[a] || !fit.isIn[b]) continue;
            variance += fit.centres.value[a] * InverseCell(fit, j, k) * fit.centres.value[b];
        }
    }
    return variance;
}

void WriteStandardErrors(const Fit& fit, double mse, matrix<double>* standardErrors)
{
    const bool known = mse > kMissing;
    for (int j = 1; j <= fit.q; ++j) {
        const bool isIn = fit.isIn[static_cast<std::size_t>(j - 1)];
        const double error = known && isIn ? std::sqrt(mse * InverseCell(fit, j, j)) : kMissing;
        standardErrors->vbset(j, isIn ? error : 0.0);
    }
    const double constantError = known ? std::sqrt(mse * ConstantVariance(fit)) : kMissing;
    standardErrors->vbset(fit.q + 1, fit.hasConstant ? constantError : 0.0);
}

}  // namespace

void OLSBasic(int n,
              int p,
              matrix<double>* X,
              matrix<double>* Y,
              matrix<double>* W,
              int degree,
              int products,
              short interceptFixed,
              double tol,
              matrix<double>* coefficients,
              matrix<double>* fitted)
{
    OLSBasic2(n, p, X, Y, W, degree, products, interceptFixed, tol, coefficients, nullptr, fitted, nullptr);
}

void OLSBasic2(int n,
               int p,
               matrix<double>* X,
               matrix<double>* Y,
               matrix<double>* W,
               int degree,
               int products,
               short interceptFixed,
               double tol,
               matrix<double>* coefficients,
               matrix<double>* standardErrors,
               matrix<double>* fitted,
               double* mse)
{
    n = std::max(n, 0);
    const std::vector<Cells> terms = BuildTerms(*X, n, p, degree, products == kTrue);
    std::vector<const double*> columns;
    for (const Cells& term : terms) {
        columns.push_back(term.data());
    }
    const ColumnsOf response(*Y, n, 1);
    const RowWeights weights(W, n, nullptr);
    const Fit fit = FitTerms(columns, n, response[0], weights, interceptFixed != kTrue, tol);
    const Cells fittedValues = FittedValues(fit);
    WriteFit(fit, fittedValues, coefficients, fitted);
    const double meanSquaredError = MeanSquaredError(fit, fittedValues);
    if (standardErrors != nullptr) WriteStandardErrors(fit, meanSquaredError, standardErrors);
    if (mse != nullptr) *mse = meanSquaredError;
}
