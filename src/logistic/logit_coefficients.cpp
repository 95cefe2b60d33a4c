// Reported coefficients with their covariance and intervals, standardised and on the scale of the data.
#include <algorithm>
#include <cmath>
#include <numbers>

#include "kernel/distributions/chi_square.h"
#include "kernel/linalg/products.h"
#include "logistic/logit_state.h"
#include "logistic/logit_tables.h"
#include "logistic/profile_intervals.h"

namespace korvenrg::logistic {

namespace {

// An upper bound from here on has no odds ratio.
constexpr double kLargestLogOdds = 702.0;

// Coefficients after a linear map of the fitted ones. Variances carry the sign of the Hessian: negative.
struct Mapped
{
    matrix<double> coefficients;
    matrix<double> variances;
    matrix<double> covariance;

    Mapped(LogitFit& fit, matrix<double>& map)
        : coefficients(map.rows, 1), variances(map.rows, 1), covariance(map.rows, map.rows)
    {
        M_ProductBV(&map, map.rows, map.cols, &fit.parameters, &coefficients);
        ComputeNewVar(&map, map.rows, map.cols, &fit.covariance, &variances, &covariance);
    }
};

// Standard deviation of the link's error distribution, as a factor of standardised coefficients.
double LinkScale(int link)
{
    switch (link) {
        case kProbit:
            return 1.0;
        case kComplementaryLogLog:
        case kLogLog:
            return std::sqrt(6.0) / std::numbers::pi;
        default:
            return std::sqrt(3.0) / std::numbers::pi;
    }
}

// Per block: the design map, 1 for the intercept, 0 for the mortality; all scaled by the link.
matrix<double> StandardisedMap(const LogitRun& run)
{
    const ParameterLayout& layout = run.model.layout;
    const double scale = LinkScale(run.model.link);
    matrix<double> map(layout.Length(), layout.Length());
    for (int k = 1; k <= layout.blocks; ++k) {
        for (int j = 1; j <= layout.columns; ++j) {
            for (int i = 1; i <= layout.columns; ++i) {
                map.vbset(layout.Slope(k, i), layout.Slope(k, j), scale * run.factors.subDesign->vbget(i, j));
            }
        }
        map.vbset(layout.Intercept(k), layout.Intercept(k), scale);
    }
    return map;
}

// Per block: the design map over the standard deviations, the intercept moved by the means, and the mortality.
matrix<double> DataScaleMap(const LogitRun& run)
{
    const ParameterLayout& layout = run.model.layout;
    matrix<double> map(layout.Length(), layout.Length());
    for (int k = 1; k <= layout.blocks; ++k) {
        for (int j = 1; j <= layout.columns; ++j) {
            const double stDev = run.data.stDev.vbget(j);
            if (!(stDev > kEps)) continue;
            for (int i = 1; i <= layout.columns; ++i) {
                map.vbset(layout.Slope(k, i), layout.Slope(k, j), run.factors.subDesign->vbget(i, j) / stDev);
            }
            map.vbset(layout.Intercept(k), layout.Slope(k, j), -run.data.mean.vbget(j) / stDev);
        }
        map.vbset(layout.Intercept(k), layout.Intercept(k), 1.0);
        map.vbset(layout.Mortality(k), layout.Mortality(k), 1.0);
    }
    return map;
}

// A row of a coefficient table.
struct CoefficientRow
{
    matrix<double>& table;
    int row;

    void Put(int column, double value)
    {
        table.vbset(row, column, value);
    }

    void PutMissing(int first, int last)
    {
        for (int column = first; column <= last; ++column) {
            Put(column, kMissing);
        }
    }

    // Value, standard error, Wald test and bounds; returns the standard error. A variance of the wrong sign counts as 0.
    double PutEstimate(double value, double variance, double z)
    {
        const double stdError = variance > 0.0 ? 0.0 : std::sqrt(-variance);
        Put(kCoefValue, value);
        Put(kCoefStdError, stdError);
        if (stdError > kEps) {
            const double ratio = value / stdError;
            Put(kCoefWald, ratio * ratio);
            Put(kCoefP, pValChiSq(ratio * ratio, 1.0));
        }
        Put(kCoefLower, value - z * stdError);
        Put(kCoefUpper, value + z * stdError);
        return stdError;
    }

    void PutOddsRatios(int before, double value, double lower, double upper)
    {
        if (upper >= kLargestLogOdds) {
            PutMissing(before + kOddsRatio, before + kOddsUpper);
            return;
        }
        Put(before + kOddsRatio, std::exp(value));
        Put(before + kOddsLower, std::exp(lower));
        Put(before + kOddsUpper, std::exp(upper));
    }

    void PutLeftOut(int lastColumn)
    {
        Put(kCoefValue, 0.0);
        Put(kCoefStdError, 0.0);
        PutMissing(kCoefWald, lastColumn);
    }
};

// Whether a column is the last one of its factor.
bool IsLastOfFactor(const LogitRun& run, int column)
{
    for (int j = column + 1; j <= run.model.layout.columns; ++j) {
        if (run.factors.FactorOf(j) == run.factors.FactorOf(column)) return false;
    }
    return true;
}

// Columns of the model and, under constraints that derive it, the last level of each factor in it.
bool IsReported(const LogitRun& run, int column)
{
    if (run.fit.IsFree(column)) return true;
    return run.options.DerivesLastLevels() && run.factors.IsActive(run.factors.FactorOf(column)) &&
           IsLastOfFactor(run, column);
}

// Profile bounds are those of the fitted columns; the standardised ones are scaled by the link.
struct Profiles
{
    ProfileBounds standardised;
    ProfileBounds dataScale;
};

void ScaleBounds(std::vector<double>& bounds, double scale)
{
    for (double& bound : bounds) {
        if (!IsMissing(bound)) bound *= scale;
    }
}

Profiles ComputeProfiles(const LogitRun& run, const Mapped& dataScale)
{
    Profiles profiles;
    profiles.standardised = LogitProfileIntervals(run.model, run.fitOptions, run.fit, run.options.alpha);
    ScaleBounds(profiles.standardised.lower, LinkScale(run.model.link));
    ScaleBounds(profiles.standardised.upper, LinkScale(run.model.link));
    LogitModel raw(run.model);
    raw.columns = run.data.raw;
    LogitFit rawFit(run.fit);
    std::copy_n(dataScale.coefficients.data, dataScale.coefficients.total, rawFit.parameters.data);
    profiles.dataScale = LogitProfileIntervals(raw, run.fitOptions, rawFit, run.options.alpha);
    return profiles;
}

// Without profile intervals the last two columns of a row in the model are not written.
void WriteInterceptRow(LogitRun& run, const Mapped& mapped, const Profiles& profiles, int block)
{
    const ParameterLayout& layout = run.model.layout;
    const auto position = static_cast<std::size_t>(block - 1);
    CoefficientRow row{*run.out.coefficients, (block - 1) * (layout.columns + 1) + 1};
    if (!run.fitOptions.estimatesIntercept) {
        const double pi = run.marginal[position];
        row.PutMissing(kCoefWald, kCoefCols);
        row.Put(kCoefValue, run.startIntercepts[position]);
        row.Put(kCoefStdError, 2.0 / std::sqrt(pi * (1.0 - pi) * run.data.sumWc));
        return;
    }
    const int intercept = layout.Intercept(block);
    row.PutEstimate(mapped.coefficients.vbget(intercept), mapped.variances.vbget(intercept), run.z);
    int before = kCoefUpper;
    if (run.options.withProfile) {
        row.Put(kCoefProfileLower, profiles.dataScale.lower.back());
        row.Put(kCoefProfileUpper, profiles.dataScale.upper.back());
        before = kCoefProfileUpper;
    }
    row.PutMissing(before + kOddsRatio, before + kOddsUpper);
}

void WriteDataScaleRow(LogitRun& run, const Mapped& mapped, const Profiles& profiles, int block, int column)
{
    const ParameterLayout& layout = run.model.layout;
    CoefficientRow row{*run.out.coefficients, (block - 1) * (layout.columns + 1) + 1 + column};
    if (!IsReported(run, column)) {
        row.PutLeftOut(kCoefCols);
        return;
    }
    const int slope = layout.Slope(block, column);
    const double value = mapped.coefficients.vbget(slope);
    const double stdError = row.PutEstimate(value, mapped.variances.vbget(slope), run.z);
    int before = kCoefUpper;
    if (run.options.withProfile) {
        row.Put(kCoefProfileLower, profiles.dataScale.lower[static_cast<std::size_t>(column - 1)]);
        row.Put(kCoefProfileUpper, profiles.dataScale.upper[static_cast<std::size_t>(column - 1)]);
        before = kCoefProfileUpper;
    }
    row.PutOddsRatios(before, value, value - run.z * stdError, value + run.z * stdError);
}

void WriteStandardisedRow(LogitRun& run,
                          const Mapped& mapped,
                          const Profiles& profiles,
                          int block,
                          int column)
{
    const ParameterLayout& layout = run.model.layout;
    CoefficientRow row{*run.out.standardised, (block - 1) * layout.columns + column};
    if (!IsReported(run, column)) {
        row.PutLeftOut(kBetaCols);
        return;
    }
    const int slope = layout.Slope(block, column);
    row.PutEstimate(mapped.coefficients.vbget(slope), mapped.variances.vbget(slope), run.z);
    if (!run.HasOneBlock()) {
        row.PutMissing(kCoefProfileLower, kCoefProfileUpper);
        return;
    }
    const auto position = static_cast<std::size_t>(column - 1);
    const bool withProfile = run.options.withProfile;
    row.Put(kCoefProfileLower, withProfile ? profiles.standardised.lower[position] : 0.0);
    row.Put(kCoefProfileUpper, withProfile ? profiles.standardised.upper[position] : 0.0);
}

// The covariance of the first block alone, also when there are several.
void WriteCovariance(LogitRun& run, const Mapped& mapped)
{
    const int size = run.model.layout.BlockLength();
    for (int j = 1; j <= size; ++j) {
        for (int i = 1; i <= size; ++i) {
            run.out.covariance->vbset(i, j, 0.0 - mapped.covariance.vbget(i, j));
        }
    }
}

}  // namespace

void WriteCoefficientTables(LogitRun& run)
{
    matrix<double> standardisedMap = StandardisedMap(run);
    matrix<double> dataScaleMap = DataScaleMap(run);
    const Mapped standardised(run.fit, standardisedMap);
    const Mapped dataScale(run.fit, dataScaleMap);
    const Profiles profiles = run.options.withProfile ? ComputeProfiles(run, dataScale) : Profiles();
    for (int k = 1; k <= run.model.layout.blocks; ++k) {
        WriteInterceptRow(run, dataScale, profiles, k);
        for (int j = 1; j <= run.model.layout.columns; ++j) {
            WriteDataScaleRow(run, dataScale, profiles, k, j);
            WriteStandardisedRow(run, standardised, profiles, k, j);
        }
    }
    WriteCovariance(run, dataScale);
}

}  // namespace korvenrg::logistic
