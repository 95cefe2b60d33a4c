#include <algorithm>
#include <cmath>

#include "kernel/linalg/moments.h"
#include "linear/ols_state.h"

namespace korvenrg::linear {

namespace {

// A column whose mean is more than this many standard deviations calls for correlations of a standardised
// copy.
constexpr double kLargeMean = 100000.0;

// Weights that add to no more than this are rescaled.
constexpr double kSmallSumOfWeights = 1.0;

// The columns of X and, last, the response that is fitted.
void ReadResponse(OlsRun& run)
{
    OlsData& data = run.data;
    const bool shifts = run.options.fixedIntercept && std::fabs(run.options.interceptValue) > kEps;
    const double shift = shifts ? run.options.interceptValue : 0.0;
    data.fittedResponse.resize(static_cast<std::size_t>(std::max(data.n, 0)));
    for (int r = 1; r <= data.n; ++r) {
        const double y = data.response->vbget(r);
        data.fittedResponse[static_cast<std::size_t>(r - 1)] = shifts ? y - shift : y;
    }
    data.columns.Append(data.fittedResponse.data());
}

double SumOf(const std::vector<double>& values)
{
    double sum = 0.0;
    for (const double value : values) {
        sum += value;
    }
    return sum;
}

// Scales the weights so that they add to the sum of the case weights, in the caller's array too. Weights of
// which none is above 0 cannot be scaled and stay.
void RescaleWeights(OlsData& data, double sum)
{
    for (int r = 1; r <= data.n; ++r) {
        double& w = data.weights[static_cast<std::size_t>(r - 1)];
        w = w * data.sumWc / sum;
        const double caseWeight = data.caseWeights->vbget(r);
        if (caseWeight > 0.0) data.regressionWeights->vbset(r, w / caseWeight);
    }
}

// Null when every weight is 1, which the kernel takes as unit weights and need not multiply.
const double* WeightsForKernel(const OlsData& data)
{
    const bool unit =
        std::all_of(data.weights.begin(), data.weights.end(), [](double w) { return w == 1.0; });
    return unit ? nullptr : data.weights.data();
}

void StoreMeansAndDeviations(OlsRun& run, const linalg::Moments& moments)
{
    for (int j = 1; j <= run.data.p + 1; ++j) {
        run.out.mean->vbset(j, moments.mean[static_cast<std::size_t>(j - 1)]);
        run.out.stDev->vbset(j, moments.standardDeviation[static_cast<std::size_t>(j - 1)]);
    }
}

bool HasLargeMean(const linalg::Moments& moments)
{
    for (std::size_t j = 0; j < moments.mean.size(); ++j) {
        const double deviation = moments.standardDeviation[j];
        if (deviation > 0.0 && moments.mean[j] / deviation > kLargeMean) return true;
    }
    return false;
}

std::vector<double> CorrelationsOfStandardisedCopy(const OlsData& data, const double* weights)
{
    const auto rows = static_cast<std::size_t>(data.n);
    const auto q = static_cast<std::size_t>(data.p) + 1;
    std::vector<double> copy(rows * q);
    linalg::StandardizeColumns(data.columns, data.n, copy.data());
    std::vector<const double*> columns(q);
    for (std::size_t j = 0; j < q; ++j) {
        columns[j] = copy.data() + j * rows;
    }
    return linalg::CorrelationMoments(columns, data.n, weights).correlation;
}

// With a fixed intercept: moments about zero, on the scale of the standard deviations about the means.
void FormMomentsAboutZero(OlsRun& run, const double* weights)
{
    linalg::Moments moments = linalg::MomentsAboutZero(run.data.columns, run.data.n, weights);
    StoreMeansAndDeviations(run, moments);
    run.correlation = std::move(moments.correlation);
    run.meanY = 0.0;
    run.varY = run.correlation.back() * run.StDevY() * run.StDevY();
}

// With an estimated intercept: correlations; then standard deviations whose divisor counts the observations.
void FormCorrelations(OlsRun& run, const double* weights)
{
    linalg::Moments moments = linalg::CorrelationMoments(run.data.columns, run.data.n, weights);
    StoreMeansAndDeviations(run, moments);
    run.correlation = HasLargeMean(moments) ? CorrelationsOfStandardisedCopy(run.data, weights)
                                            : std::move(moments.correlation);

    const double factor = std::sqrt((run.data.sumW - 1.0) / (run.data.sumWc - 1.0));
    for (int j = 1; j <= run.data.p + 1; ++j) {
        // An exact 0 stays one, whatever the factor: it marks a constant column.
        if (run.StDevOf(j) != 0.0) run.out.stDev->vbset(j, run.StDevOf(j) * factor);
    }
    run.meanY = run.MeanOf(run.data.p + 1);
    run.varY = run.StDevY() * run.StDevY();
}

}  // namespace

void PrepareWeights(OlsRun& run)
{
    OlsData& data = run.data;
    data.weights.resize(static_cast<std::size_t>(std::max(data.n, 0)));
    for (int r = 1; r <= data.n; ++r) {
        const double caseWeight = data.caseWeights->vbget(r);
        data.weights[static_cast<std::size_t>(r - 1)] = caseWeight * data.regressionWeights->vbget(r);
        data.sumWc += caseWeight;
    }
    const double sum = SumOf(data.weights);
    if (sum <= kSmallSumOfWeights && sum != 0.0) RescaleWeights(data, sum);
    data.sumW = SumOf(data.weights);
}

void FormMoments(OlsRun& run)
{
    ReadResponse(run);
    const double* weights = WeightsForKernel(run.data);
    if (run.options.fixedIntercept) {
        FormMomentsAboutZero(run, weights);
    } else {
        FormCorrelations(run, weights);
    }
}

void FlagConstantColumns(OlsRun& run)
{
    for (int i = 1; i <= run.data.p; ++i) {
        if (run.StDevOf(i) == 0.0) {
            run.factors.subRemoved->vbset(i, kConstant);
            const int type = run.factors.type->vbget(run.factors.FactorOf(i));
            // The factor that is switched off is the one whose number is the column's, also where the column
            // belongs to another. It stays: OlsOddities.ConstantColumnSwitchesOffTheFactorOfItsNumber.
            if (type == kQuantitative || type == kQuantitativeInteraction) run.factors.active->vbset(i, 0);
        } else if (run.factors.InModel(i)) {
            run.factors.subRemoved->vbset(i, kCandidate);
        }
    }
}

void PackCorrelations(OlsRun& run)
{
    const int m = run.data.p + 1;
    for (int i = 1; i <= m; ++i) {
        for (int j = 1; j <= i; ++j) {
            const auto cell = static_cast<std::size_t>(j - 1) * static_cast<std::size_t>(m) +
                              static_cast<std::size_t>(i - 1);
            run.packed.vbset(static_cast<int>(linalg::PackedPosition(i, j)), run.correlation[cell]);
        }
    }
}

}  // namespace korvenrg::linear
