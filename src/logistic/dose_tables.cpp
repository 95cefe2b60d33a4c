// Doses at given probabilities of a model with one variable, with Fieller's intervals (Finney 1971, "Probit Analysis").
#include <array>
#include <cmath>

#include "kernel/distributions/student.h"
#include "logistic/link_functions.h"
#include "logistic/logit_state.h"
#include "logistic/logit_tables.h"

namespace korvenrg::logistic {

namespace {

constexpr std::array<double, kDoseRows> kDosePercents = {1, 5, 10, 20, 30, 40, 50, 60, 70, 80, 90, 95, 99};
constexpr double kPercent = 100.0;
constexpr double kNoHeterogeneity = 1.0;

struct Interval
{
    double lower = kMissing;
    double upper = kMissing;

    bool Contains(double value) const
    {
        return lower < value && value < upper;
    }
};

// The line a + b u on the scale of the link, with its covariance (of the sign of the Hessian).
struct DoseLine
{
    int form;
    int link;
    double intercept;
    double slope;
    double covAA;
    double covAB;
    double covBB;
    bool interceptFree;
    double mean;   // of the dose
    double stDev;  // of the dose
    double mortality;
    double subtracted;  // mortality that the probabilities include

    // Linear predictor at a probability; not finite where there is none.
    double PredictorAt(double probability) const
    {
        return LogitInverseLink(form, link, (probability - subtracted) / (1.0 - subtracted));
    }

    bool Reaches(double probability) const
    {
        return !(probability < mortality) && std::isfinite(PredictorAt(probability));
    }

    double OnDataScale(double u) const
    {
        return u * stDev + mean;
    }
};

DoseLine LineOf(const LogitRun& run, int column)
{
    const ParameterLayout& layout = run.model.layout;
    const int a = layout.Intercept(1);
    const double mortality = run.fit.parameters.vbget(layout.Mortality(1));
    return {.form = run.model.form,
            .link = run.model.link,
            .intercept = run.fit.parameters.vbget(a),
            .slope = run.fit.parameters.vbget(column),
            .covAA = run.fit.covariance.vbget(a, a),
            .covAB = run.fit.covariance.vbget(a, column),
            .covBB = run.fit.covariance.vbget(column, column),
            .interceptFree = run.fit.IsFree(a),
            .mean = run.data.mean.vbget(column),
            .stDev = run.data.stDev.vbget(column),
            .mortality = mortality,
            .subtracted = run.options.observedScale ? mortality : 0.0};
}

// Roots of A u^2 + 2 B u + C = 0, with A = b^2 - G^2 h var(b) and so on: where a + b u - t is G standard errors from 0
// (Fieller 1954, "Some problems in interval estimation").
Interval LogitFiellerInterval(const DoseLine& line, double probability, double G, double h)
{
    if (!line.Reaches(probability)) return {};
    const double t = line.PredictorAt(probability);
    const double g = G * G * h;
    const double A = line.slope * line.slope - std::fabs(line.covBB) * g;
    double B = line.slope * (line.intercept - t);
    double C = line.intercept * line.intercept + t * t - 2.0 * line.intercept * t;
    if (line.interceptFree) {
        B += line.covAB * g;
        C -= std::fabs(line.covAA) * g;
    }
    B /= A;
    const double discriminant = B * B - C / A;
    if (!(discriminant >= 0.0)) return {};
    const double half = std::sqrt(discriminant);
    return {line.OnDataScale(-B - half), line.OnDataScale(-B + half)};
}

// A slope of nothing makes the dose the missing marker, which is scaled like any other. Pinned by
// LogitDoses.SlopeOfNothing.
double DoseAt(const DoseLine& line, double probability)
{
    if (!line.Reaches(probability)) return kMissing;
    const double u = std::fabs(line.slope) <= kEps
                         ? kMissing
                         : (line.PredictorAt(probability) - line.intercept) / line.slope;
    return line.OnDataScale(u);
}

double OnDoseScale(const LogitRun& run, double value)
{
    constexpr double kBase = 10.0;
    return run.options.logDoses && !IsMissing(value) ? std::pow(kBase, value) : value;
}

// The multiplier under heterogeneity is the square of Student's quantile, and Fieller's form squares it again. Pinned by
// LogitDoses.FourthPowerOfStudent.
double HeterogeneityMultiplier(const LogitRun& run)
{
    const double quantile =
        InvCDFStudent(run.options.alpha / 2.0, run.data.sumWc - run.model.layout.columns + 2.0);
    return quantile * quantile;
}

void WriteDoseRow(LogitRun& run, const DoseLine& line, int row)
{
    matrix<double>& table = *run.out.doses;
    const double probability = kDosePercents[static_cast<std::size_t>(row - 1)] / kPercent;
    const double heterogeneity = *run.out.heterogeneity;
    const double dose = DoseAt(line, probability);
    Interval interval = LogitFiellerInterval(line, probability, run.z, kNoHeterogeneity);
    if (!interval.Contains(dose)) interval = {};
    table.vbset(row, kDoseProbability, probability);
    table.vbset(row, kDoseValue, OnDoseScale(run, dose));
    table.vbset(row, kDoseLower, OnDoseScale(run, interval.lower));
    table.vbset(row, kDoseUpper, OnDoseScale(run, interval.upper));
    if (heterogeneity == kNoHeterogeneity && line.Reaches(probability)) return;
    const Interval wide =
        LogitFiellerInterval(line, probability, HeterogeneityMultiplier(run), heterogeneity);
    table.vbset(row, kDoseHeteroLower, OnDoseScale(run, wide.lower));
    table.vbset(row, kDoseHeteroUpper, OnDoseScale(run, wide.upper));
}

void WriteCurveRow(LogitRun& run, const DoseLine& line, int row)
{
    matrix<double>& table = *run.out.doseCurve;
    const double probability = row / kPercent;
    const double heterogeneity = *run.out.heterogeneity;
    const Interval interval = LogitFiellerInterval(line, probability, run.z, heterogeneity);
    table.vbset(row, kCurveProbability, probability);
    table.vbset(row, kCurveLower, interval.lower);
    table.vbset(row, kCurveUpper, interval.upper);
    if (heterogeneity == kNoHeterogeneity && line.Reaches(probability)) return;
    const Interval wide =
        LogitFiellerInterval(line, probability, HeterogeneityMultiplier(run), heterogeneity);
    table.vbset(row, kCurveHeteroLower, wide.lower);
    table.vbset(row, kCurveHeteroUpper, wide.upper);
}

}  // namespace

void WriteDoseTables(LogitRun& run)
{
    if (!run.options.withDoses || run.fit.CountFreeColumns() != 1) return;
    int column = 1;
    while (!run.fit.IsFree(column)) {
        ++column;
    }
    const DoseLine line = LineOf(run, column);
    for (int row = 1; row <= kDoseRows; ++row) {
        WriteDoseRow(run, line, row);
    }
    for (int row = 1; row <= kCurveRows; ++row) {
        WriteCurveRow(run, line, row);
    }
}

}  // namespace korvenrg::logistic
