#include "kernel/distributions/comparison_laws.h"

#include <cmath>
#include <limits>
#include <optional>

#include "kernel/distributions/degrees_of_freedom.h"
#include "kernel/distributions/student.h"
#include "kernel/distributions/studentized_tail.h"

using namespace korvenrg::distributions;

namespace {

constexpr double kInfinity = std::numeric_limits<double>::infinity();
constexpr double kNaN = std::numeric_limits<double>::quiet_NaN();

/** The law of k means, or none when k or a factor is outside its range. */
std::optional<ComparisonLaw> LawOf(ComparisonKind kind, int k, const matrix<double>* lambda)
{
    if (k < 2 || lambda == nullptr) return std::nullopt;
    std::vector<double> factors;
    for (int i = 1; i < k; ++i) {
        const double factor = lambda->vbget(i);
        if (!(std::fabs(factor) < 1)) return std::nullopt;
        if (factor == 0 && kind == ComparisonKind::kRange) return std::nullopt;
        factors.push_back(factor);
    }
    return MakeComparisonLaw(kind, factors);
}

double UpperTail(ComparisonKind kind, int k, const matrix<double>* lambda, double df, double x)
{
    if (std::isnan(x) || !IsDf(df)) return kNaN;
    const auto law = LawOf(kind, k, lambda);
    if (!law) return kNaN;
    if (k > 2) return StudentizedTail(*law, df, x, Side::kUpper);
    if (kind == ComparisonKind::kOneSided) return CDFStudent(x, df, 0);
    return x <= 0 ? 1 : 2 * pValStudent(x, df);
}

double Quantile(ComparisonKind kind, int k, const matrix<double>* lambda, double df, double conf)
{
    if (!(conf >= 0 && conf <= 1) || !IsDf(df)) return kNaN;
    const auto law = LawOf(kind, k, lambda);
    if (!law) return kNaN;
    const bool isOneSided = kind == ComparisonKind::kOneSided;
    if (conf == 1) return kInfinity;
    if (conf == 0) return isOneSided ? -kInfinity : 0;
    if (k > 2) return StudentizedQuantile(*law, df, conf);
    return isOneSided ? InvCDFStudent(conf, df) : -InvCDFStudent(0.5 * (1 - conf), df);
}

/** Reads the confidence of a 1 x 1 matrix and writes the critical value into another. */
void WriteQuantile(ComparisonKind kind,
                   int k,
                   const matrix<double>* lambda,
                   double df,
                   const matrix<double>* conf,
                   matrix<double>* result)
{
    if (result == nullptr) return;
    result->vbset(1, conf == nullptr ? kNaN : Quantile(kind, k, lambda, df, conf->vbget(1)));
}

}  // namespace

double pvmcav(int k, matrix<double>* lambda, double df, double x)
{
    return UpperTail(ComparisonKind::kRange, k, lambda, df, x);
}

double qmcav(int k, matrix<double>* lambda, double df, double conf)
{
    return Quantile(ComparisonKind::kRange, k, lambda, df, conf);
}

double pvmcbv(int k, matrix<double>* lambda, double df, double x)
{
    return UpperTail(ComparisonKind::kOneSided, k, lambda, df, x);
}

double pvmccv(int k, matrix<double>* lambda, double df, double x)
{
    return UpperTail(ComparisonKind::kTwoSided, k, lambda, df, x);
}

void qmcbv(int k,
           matrix<double>* lambda,
           double /*reserved1*/,
           double df,
           double /*reserved2*/,
           matrix<double>* conf,
           matrix<double>* result)
{
    WriteQuantile(ComparisonKind::kOneSided, k, lambda, df, conf, result);
}

void qmccv(int k,
           matrix<double>* lambda,
           double df,
           double /*reserved*/,
           matrix<double>* conf,
           matrix<double>* result)
{
    WriteQuantile(ComparisonKind::kTwoSided, k, lambda, df, conf, result);
}
