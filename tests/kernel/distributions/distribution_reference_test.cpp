// The distribution functions against the 70-digit values of tools/distribution_oracle.cpp: both tails, both
// sides of every switch of method, tails down to 1e-300.

#include <gtest/gtest.h>

#include <cmath>
#include <span>

#include "kernel/distributions/distributions.h"
#include "support/tolerances.h"

namespace {

using korvenrg::distributions::GammaFunction;
using korvenrg::test::ExpectClose;
using korvenrg::test::kRoundoff;

constexpr double kTail = 1e-13;       // the promised accuracy of every tail
constexpr double kPoint = 1e-14;      // and of a binomial probability
constexpr double kNotCompared = 0.0;  // stands in the tables for a tail below 1e-300

struct PointRow
{
    double x;
    double value;
};

struct NormalRow
{
    double z;
    double lower;
    double upper;
};

struct OneDfRow
{
    double x;
    double df;
    double lower;
    double upper;
};

struct TwoDfRow
{
    double x;
    double df1;
    double df2;
    double lower;
    double upper;
};

struct BinomialRow
{
    double n;
    double k;
    double value;
};

struct BinomialTailRow
{
    double k;
    double n;
    double p;
    double lower;
    double upper;
    double point;
};

struct HypergeometricRow
{
    double t;
    double marked;
    double unmarked;
    double drawn;
    double lower;
    double upper;
};

constexpr OneDfRow kStudent[] = {
#include "reference/distributions/student.inc"
};
constexpr OneDfRow kChiSquare[] = {
#include "reference/distributions/chi_square.inc"
};
constexpr TwoDfRow kFisher[] = {
#include "reference/distributions/fisher.inc"
};
constexpr NormalRow kNormal[] = {
#include "reference/distributions/normal.inc"
};
constexpr PointRow kLogGamma[] = {
#include "reference/distributions/log_gamma.inc"
};
constexpr PointRow kGamma[] = {
#include "reference/distributions/gamma.inc"
};
constexpr PointRow kDigamma[] = {
#include "reference/distributions/digamma.inc"
};
constexpr PointRow kTrigamma[] = {
#include "reference/distributions/trigamma.inc"
};
constexpr PointRow kErf[] = {
#include "reference/distributions/erf.inc"
};
constexpr PointRow kErfc[] = {
#include "reference/distributions/erfc.inc"
};
constexpr BinomialRow kLogBinomial[] = {
#include "reference/distributions/log_binomial.inc"
};
constexpr BinomialTailRow kBinomial[] = {
#include "reference/distributions/binomial.inc"
};
constexpr HypergeometricRow kHypergeometric[] = {
#include "reference/distributions/hypergeometric.inc"
};

void ExpectTail(double actual, double expected)
{
    if (expected == kNotCompared)
        EXPECT_LE(actual, 1.1e-300);
    else
        ExpectClose(actual, expected, kTail);
}

TEST(DistributionReference, StudentTails)
{
    for (const auto& [t, df, lower, upper] : kStudent) {
        SCOPED_TRACE(testing::Message() << "t " << t << " df " << df);
        ExpectTail(CDFStudent(t, df), lower);
        ExpectTail(CDFStudent(t, df, 0), upper);
        ExpectTail(pValStudent(t, df), std::fmin(lower, upper));
    }
}

TEST(DistributionReference, ChiSquareTails)
{
    for (const auto& [x, df, lower, upper] : kChiSquare) {
        SCOPED_TRACE(testing::Message() << "x " << x << " df " << df);
        ExpectTail(CDFChiSq(x, df), lower);
        ExpectTail(CDFChiSq(x, df, 0), upper);
        ExpectTail(pValChiSq(x, df), upper);
    }
}

TEST(DistributionReference, FisherTails)
{
    for (const auto& [F, df1, df2, lower, upper] : kFisher) {
        SCOPED_TRACE(testing::Message() << "F " << F << " df " << df1 << ", " << df2);
        ExpectTail(CDFFisher(F, df1, df2, 1), lower);
        ExpectTail(CDFFisher(F, df1, df2, 0), upper);
        ExpectTail(pValFisher(F, df1, df2), upper);
    }
}

TEST(DistributionReference, NormalTails)
{
    for (const auto& [z, lower, upper] : kNormal) {
        SCOPED_TRACE(testing::Message() << "z " << z);
        ExpectTail(CDFNormalStd(z), lower);
        ExpectTail(CDFNormalStd(z, 0), upper);
        ExpectTail(pValNormalStd(z), upper);
    }
}

TEST(DistributionReference, BinomialTailsAndProbabilities)
{
    for (const auto& [k, n, p, lower, upper, point] : kBinomial) {
        SCOPED_TRACE(testing::Message() << "k " << k << " n " << n << " p " << p);
        ExpectTail(CDFBinomial(k, n, p), lower);
        ExpectTail(CDFBinomial(k, n, p, 0), upper);
        ExpectClose(PDFBinomial(k, n, p), point, kPoint);
    }
}

TEST(DistributionReference, HypergeometricTails)
{
    for (const auto& [t, marked, unmarked, drawn, lower, upper] : kHypergeometric) {
        SCOPED_TRACE(testing::Message()
                     << "t " << t << " of " << marked << ", " << unmarked << ", " << drawn);
        ExpectTail(CDFHyperG(t, marked, unmarked, drawn), lower);
        ExpectTail(CDFHyperG(t, marked, unmarked, drawn, 0), upper);
        ExpectTail(CDFHyperG(t, drawn, marked + unmarked - drawn, marked), lower);  // the table transposed
    }
}

TEST(DistributionReference, GammaFunctionsAndErrorFunctions)
{
    struct Function
    {
        const char* name;
        double (*call)(double);
        std::span<const PointRow> rows;
    };
    const Function functions[] = {
        {"GammaLn", GammaLn, kLogGamma},
        {"GammaFunction", GammaFunction, kGamma},
        {"Digamma", Digamma, kDigamma},
        {"Trigamma", Trigamma, kTrigamma},
        {"derf", derf, kErf},
        {"derfc", derfc, kErfc},
    };
    for (const auto& [name, call, rows] : functions)
        for (const auto& [x, value] : rows) {
            SCOPED_TRACE(testing::Message() << name << " at " << x);
            ExpectClose(call(x), value, kRoundoff);
        }
}

TEST(DistributionReference, LogBinomialCoefficient)
{
    for (const auto& [n, k, value] : kLogBinomial) {
        SCOPED_TRACE(testing::Message() << "n " << n << " k " << k);
        ExpectClose(cLogCnk(n, k), value, kRoundoff);
    }
}

}  // namespace
