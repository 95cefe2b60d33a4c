#include "comparisons/scalar_tests.h"

#include <cmath>

#include "comparisons/studentized_range.h"
#include "core/limits.h"
#include "kernel/distributions/comparison_laws.h"
#include "kernel/distributions/student.h"
#include "kernel/scalars/scalars.h"

namespace korvenrg::comparisons {

namespace {

constexpr double kRoot2 = 1.4142135623730951;
constexpr double kDunnettCRoot2 = 1.4142135623731;  // of its own: the shorter divisor stays
constexpr double kMostMeans = 1E9;

double StudentCritical(double alpha, double df)
{
    return InvCDFStudent(1 - alpha / 2, df);
}

/** 2 min(F, 1 - F), with 1 - F computed as the upper tail. */
double TwoSidedP(double diff, double df)
{
    return 2 * Min(CDFStudent(diff, df), CDFStudent(diff, df, kFalse));
}

double TukeyCritical(double alpha, double k, double df)
{
    return k == 2 ? StudentCritical(alpha, df) : QTukey(1 - alpha, 1, k, df) / kRoot2;
}

double TukeyP(double diff, double k, double df)
{
    return k == 2 ? TwoSidedP(diff, df) : 1 - PTukey(diff * kRoot2, 1, k, df);
}

/** The factors of equal group sizes that a range of m among k means reads. */
matrix<double> EqualFactors(int m, int k)
{
    const int means = m < k ? m : k;
    return matrix<double>(means > 1 ? means - 1 : 0, 1, 1 / sqr(2));
}

/** The critical value from the memo, or computed and kept there. */
template <typename Compute>
double Remembered(double df, double* oldDF, double* oldCrit, bool sameMeans, const Compute& compute)
{
    if (!(sameMeans && *oldDF == df)) *oldCrit = compute();
    *oldDF = df;
    return *oldCrit;
}

}  // namespace

double ChanceOfAny(double p, double exponent)
{
    return -std::expm1(exponent * std::log1p(-p));
}

int MeansOf(double count)
{
    return count >= 0 && count <= kMostMeans ? static_cast<int>(count) : 0;
}

double RangeP(double m, double k, double df, double diff)
{
    matrix<double> lambda = EqualFactors(MeansOf(m), MeansOf(k));
    return pvmcav(MeansOf(m), &lambda, df, diff);
}

double RangeCritical(double m, double k, double df, double level)
{
    matrix<double> lambda = EqualFactors(MeansOf(m), MeansOf(k));
    return qmcav(MeansOf(m), &lambda, df, 1 - level);
}

double RegwqLevel(double m, double k, double alpha)
{
    return m >= k - 1 ? alpha : ChanceOfAny(alpha, m / k);
}

double DuncanLevel(double m, double alpha)
{
    return ChanceOfAny(alpha, m - 1);
}

double DunnettCCritical(double n, double k, double alpha)
{
    return k == 2 ? StudentCritical(alpha, n - 1) : QTukey(1 - alpha, 1, k, n - 1) / kDunnettCRoot2;
}

double DunnettCMean(double ci, double cj, double vi, double vj)
{
    return (ci * vi + cj * vj) / (vi + vj);
}

}  // namespace korvenrg::comparisons

using namespace korvenrg::comparisons;

void MCATestTukey(double DFErrors,
                  double k,
                  double Diff,
                  double alpha,
                  double* oCritVal,
                  double* pVal,
                  double* oldDF,
                  double* oldk,
                  double* oldCrit)
{
    const auto critical = [&] { return TukeyCritical(alpha, k, DFErrors); };
    *oCritVal = Remembered(DFErrors, oldDF, oldCrit, *oldk == k, critical);
    *oldk = k;
    *pVal = TukeyP(Diff, k, DFErrors);
}

void MCATestFischerLSD(double DFErrors,
                       double Diff,
                       double alpha,
                       double* oCritVal,
                       double* pVal,
                       double* oldDF,
                       double* oldCrit)
{
    const auto critical = [&] { return StudentCritical(alpha, DFErrors); };
    *oCritVal = Remembered(DFErrors, oldDF, oldCrit, true, critical);
    *pVal = TwoSidedP(Diff, DFErrors);
}

void MCATestBonferroni(double DFErrors,
                       double k,
                       double Diff,
                       double alpha,
                       double* newalpha,
                       double* oCritVal,
                       double* pVal,
                       double* oldDF,
                       double* oldk,
                       double* oldCrit)
{
    *newalpha = 2 * alpha / k / (k - 1);
    const auto critical = [&] { return StudentCritical(*newalpha, DFErrors); };
    *oCritVal = Remembered(DFErrors, oldDF, oldCrit, *oldk == k, critical);
    *oldk = k;
    *pVal = TwoSidedP(Diff, DFErrors);
}

void MCATestDunnSidak(double DFErrors,
                      double k,
                      double Diff,
                      double alpha,
                      double* newalpha,
                      double* oCritVal,
                      double* pVal)
{
    *newalpha = ChanceOfAny(alpha, 2 / k / (k - 1));
    *oCritVal = StudentCritical(*newalpha, DFErrors);
    *pVal = TwoSidedP(Diff, DFErrors);
}

void MCATestNewmanKeuls(double DFErrors,
                        double m,
                        double k,
                        double Diff,
                        double alpha,
                        double* oCritVal,
                        double* pVal)
{
    *oCritVal = RangeCritical(m, k, DFErrors, alpha);
    *pVal = RangeP(m, k, DFErrors, Diff);
}

void MCATestDuncan(double DFErrors,
                   double m,
                   double k,
                   double Diff,
                   double alpha,
                   double* newalpha,
                   double* oCritVal,
                   double* pVal)
{
    *newalpha = DuncanLevel(m, alpha);
    *oCritVal = RangeCritical(m, k, DFErrors, *newalpha);
    *pVal = RangeP(m, k, DFErrors, Diff);
}

void MCATestREGWQ(double DFErrors,
                  double m,
                  double k,
                  double Diff,
                  double alpha,
                  short Quick,
                  double* newalpha,
                  double* oCritVal,
                  double* pVal)
{
    if (Quick != korvenrg::kTrue) {
        *pVal = RangeP(m, k, DFErrors, Diff);
        return;
    }
    *newalpha = RegwqLevel(m, k, alpha);
    *oCritVal = RangeCritical(m, k, DFErrors, *newalpha);
}

void MCATestDunnettC(double ni,
                     double nj,
                     double vi,
                     double vj,
                     double k,
                     double /*Diff*/,
                     double alpha,
                     double* oCritVal,
                     double* pVal)
{
    *oCritVal = DunnettCMean(DunnettCCritical(ni, k, alpha), DunnettCCritical(nj, k, alpha), vi, vj);
    *pVal = korvenrg::kMissing;
}
