#include "logistic/fit_statistics.h"

#include <algorithm>
#include <cmath>

#include "kernel/linalg/products.h"
#include "logistic/logit_derivatives.h"
#include "logistic/logit_fit.h"
#include "logistic/logit_probabilities.h"
#include "logistic/row_sum.h"

namespace korvenrg::logistic {

namespace {

// Variances of an observation at or below this add nothing to Pearson's chi-square.
constexpr double kSmallestVariance = 1E-12;

double SumOf(const double* cells, int n)
{
    RowSum sum;
    for (int i = 0; i < n; ++i) {
        sum.Add(cells[i]);
    }
    return sum.Total();
}

// Weighted mean of the response, or of the indicator of each block.
std::vector<double> CategoryMeans(const LogitModel& model)
{
    const double total = SumOf(model.caseWeights, model.n);
    std::vector<double> means;
    for (std::size_t k = 0; k < static_cast<std::size_t>(model.layout.blocks); ++k) {
        const double* cells = model.IsMultinomial() ? model.indicators[k] : model.response;
        RowSum sum;
        for (std::size_t i = 0; i < static_cast<std::size_t>(model.n); ++i) {
            sum.Add(cells[i] * (model.IsBinomial() ? 1.0 : model.caseWeights[i]));
        }
        means.push_back(sum.Total() / total);
    }
    return means;
}

// Slopes 0, the given mortality, and as intercept, whatever the link, the logit of the category mean. The mortality
// enters that mean unless the response is multinomial. Pinned by LogitOddities.ScoreStartsFromLogits.
void PutNullParameters(const LogitModel& model, bool estimatesIntercept, matrix<double>& parameters)
{
    const std::vector<double> means = CategoryMeans(model);
    double rest = 1.0;
    for (const double mean : means) {
        rest -= mean;
    }
    for (int k = 1; k <= model.layout.blocks; ++k) {
        const double c = model.givenMortality[k - 1];
        const double mean = means[static_cast<std::size_t>(k - 1)];
        const double pi = model.form == kMultinomial || model.IsMultinomial() ? mean : c + (1.0 - c) * mean;
        const double other = model.IsMultinomial() ? rest : 1.0 - pi;
        for (int j = 1; j <= model.layout.columns; ++j) {
            parameters.vbset(model.layout.Slope(k, j), 0.0);
        }
        parameters.vbset(model.layout.Intercept(k), estimatesIntercept ? std::log(pi / other) : 0.0);
        parameters.vbset(model.layout.Mortality(k), c);
    }
}

}  // namespace

void MeasureResiduals(const LogitModel& model, const LogitWork& work, FitStatistics& statistics)
{
    statistics.sumOfCaseWeights = SumOf(model.caseWeights, model.n);
    statistics.pearson = 0.0;
    statistics.residualSumOfSquares = 0.0;
    if (model.IsMultinomial()) return;
    RowSum pearson;
    RowSum squares;
    for (std::size_t i = 0; i < work.natural.size(); ++i) {
        const double P = work.probability[0][i];
        const double trials = model.IsBinomial() ? model.caseWeights[i] : 1.0;
        const double residual = model.response[i] - trials * P;
        const double variance = trials * P * (1.0 - P);
        if (variance > kSmallestVariance)
            pearson.Add(model.secondWeights[i] * residual * residual / variance);
        if (!model.IsBinomial()) {
            squares.Add(model.caseWeights[i] * model.secondWeights[i] * residual * residual);
        }
    }
    statistics.pearson = pearson.Total();
    statistics.residualSumOfSquares = squares.Total();
}

double ScoreStat(const LogitModel& model,
                 const FitOptions& options,
                 const LogitFit& fit,
                 const KeptDerivatives* start)
{
    LogitFit null(fit.layout);
    std::copy_n(fit.fixedMask.data, fit.fixedMask.total, null.fixedMask.data);
    PutNullParameters(model, options.estimatesIntercept, null.parameters);
    if (start != nullptr && start->parameters == KeptDerivatives::CellsOf(null.parameters)) {
        std::ranges::copy(start->gradient, null.gradient.data);
        std::ranges::copy(start->hessian, null.hessian.data);
    } else {
        LogitWork work(model.n, model.layout.blocks);
        LogitProbabilities(model, null.parameters, work);
        LogitDerivatives(model, DerivativesOf(options), null, work);
    }
    const int length = fit.layout.Length();
    if (!InvertOverFree(length, null.fixedMask, null.hessian, null.covariance)) return 0.0;
    for (int i = 1; i <= length; ++i) {
        if (!null.IsFree(i)) null.gradient.vbset(i, 0.0);
    }
    return 0.0 - M_ProductTrVBV(&null.gradient, length, &null.covariance);
}

double LogitWaldStat(LogitFit& fit)
{
    const int p = fit.layout.columns;
    const int slopes = p * fit.layout.blocks;
    matrix<double> covariance(slopes, slopes);
    matrix<double> theta(slopes, 1);
    matrix<int> removed(slopes, 1);
    const auto positionOf = [&](int slope) {
        return fit.layout.Slope((slope - 1) / p + 1, (slope - 1) % p + 1);
    };
    for (int j = 1; j <= slopes; ++j) {
        theta.vbset(j, fit.parameters.vbget(positionOf(j)));
        removed.vbset(j, fit.fixedMask.vbget(positionOf(j)));
        for (int i = 1; i <= slopes; ++i) {
            covariance.vbset(i, j, fit.covariance.vbget(positionOf(i), positionOf(j)));
        }
    }
    matrix<double> inverse(slopes, slopes);
    InvertOverFree(slopes, removed, covariance, inverse);
    return 0.0 - M_ProductTrVBV(&theta, slopes, &inverse);
}

double LogitScoreStat(const LogitModel& model, const FitOptions& options, const LogitFit& fit)
{
    return ScoreStat(model, options, fit, nullptr);
}

}  // namespace korvenrg::logistic
