// What the distribution functions return at the ends of their domains and outside them.

#include <gtest/gtest.h>

#include <cmath>
#include <limits>

#include "kernel/distributions/distributions.h"

namespace {

using korvenrg::distributions::GammaFunction;
using korvenrg::distributions::IncompleteBeta;
using korvenrg::distributions::IncompleteGamma;

constexpr double kInf = std::numeric_limits<double>::infinity();
constexpr double kNaN = std::numeric_limits<double>::quiet_NaN();
constexpr double kMost = std::numeric_limits<double>::max();
constexpr double kLeast = std::numeric_limits<double>::denorm_min();

struct Edge
{
    const char* call;
    double actual;
    double expected;
};

#define EDGE(call, expected)  \
    {                         \
#call, call, expected \
    }

TEST(DistributionEdges, EndsOfTheDomains)
{
    const Edge edges[] = {
        EDGE(CDFNormalStd(-kInf), 0),
        EDGE(CDFNormalStd(kInf), 1),
        EDGE(pValNormalStd(kMost), 0),
        EDGE(pValNormalStd(-kMost), 1),
        EDGE(CDFNormalStd(0), 0.5),
        EDGE(PDFNormalStd(kInf), 0),
        EDGE(InvCDFNormalStd(0), -kInf),
        EDGE(InvCDFNormalStd(1), kInf),
        EDGE(InvCDFNormalStd(0.5), 0),

        EDGE(CDFStudent(-kInf, 3), 0),
        EDGE(CDFStudent(kInf, 3), 1),
        EDGE(CDFStudent(0, 3), 0.5),
        EDGE(CDFStudent(0, 3, 0), 0.5),
        EDGE(pValStudent(-kInf, 3), 0),
        EDGE(pValStudent(kMost, 300), 0),
        EDGE(pValStudent(kLeast, 3), 0.5),
        EDGE(InvCDFStudent(0, 3), -kInf),
        EDGE(InvCDFStudent(1, 3), kInf),
        EDGE(InvCDFStudent(0.5, 3), 0),
        EDGE(InvCDFStudent(1e-300, 0.1), -kInf),

        EDGE(CDFChiSq(0, 3), 0),
        EDGE(CDFChiSq(0, 3, 0), 1),
        EDGE(CDFChiSq(-1, 3), 0),
        EDGE(CDFChiSq(-kInf, 3), 0),
        EDGE(pValChiSq(kInf, 3), 0),
        EDGE(pValChiSq(kMost, 3), 0),
        EDGE(CDFChiSq(5, kInf), 0),
        EDGE(InvCDFChiSq(0, 3), 0),
        EDGE(InvCDFChiSq(1, 3), kInf),
        EDGE(InvCDFChiSq(1e-300, 0.1), 0),

        EDGE(CDFFisher(0, 3, 4, 1), 0),
        EDGE(pValFisher(0, 3, 4), 1),
        EDGE(pValFisher(-2, 3, 4), 1),
        EDGE(pValFisher(kInf, 3, 4), 0),
        EDGE(pValFisher(-kInf, 3, 4), 1),
        EDGE(pValFisher(kLeast, 3, 4), 1),
        EDGE(pValFisher(kMost, 3, 40), 0),
        EDGE(pValFisher(0.99, kInf, kInf), 1),
        EDGE(pValFisher(1.01, kInf, kInf), 0),
        EDGE(InvCDFFisher(0, 3, 4), 0),
        EDGE(InvCDFFisher(1, 3, 4), kInf),
        EDGE(InvCDFFisher(0.3, kInf, kInf), 1),
        EDGE(InvCDFFisher(1e-300, 0.1, 4), 0),

        EDGE(CDFHyperG(-1, 3, 4, 5), 0),
        EDGE(CDFHyperG(0, 3, 4, 5), 0),  // one of the three is always drawn
        EDGE(CDFHyperG(0, 3, 4, 5, 0), 1),
        EDGE(CDFHyperG(3, 3, 4, 5), 1),
        EDGE(CDFHyperG(kInf, 3, 4, 5, 0), 0),
        EDGE(CDFHyperG(0, 0, 0, 0), 1),
        EDGE(CDFHyperG(1, 2, 2, 2), CDFHyperG(0.99999999, 2, 2, 2)),
        EDGE(CDFHyperG(1, 2, 2, 2), CDFHyperG(1.9, 2, 2, 2)),

        EDGE(CDFBinomial(-1, 5, 0.3), 0),
        EDGE(CDFBinomial(-1, 5, 0.3, 0), 1),
        EDGE(CDFBinomial(-kInf, 5, 0.3), 0),
        EDGE(CDFBinomial(5, 5, 0.3), 1),
        EDGE(CDFBinomial(kInf, 5, 0.3, 0), 0),
        EDGE(CDFBinomial(0, 5, 0), 1),
        EDGE(CDFBinomial(0, 5, 0, 0), 0),
        EDGE(CDFBinomial(4, 5, 0, 0), 0),
        EDGE(CDFBinomial(0, 5, 1), 0),
        EDGE(CDFBinomial(4, 5, 1), 0),
        EDGE(CDFBinomial(4, 5, 1, 0), 1),
        EDGE(CDFBinomial(5, 5, 1), 1),
        EDGE(CDFBinomial(0, 0, 0.3), 1),
        EDGE(CDFBinomial(-0.5, 0, 1), 0),
        EDGE(CDFBinomial(2, 5, 0.25), CDFBinomial(1.99999999, 5.2, 0.25)),
        EDGE(CDFBinomial(2, 5, 0.25), CDFBinomial(2.9, 4.8, 0.25)),
        EDGE(CDFBinomial(0, 5, kLeast, 0), 5 * kLeast),
        EDGE(CDFBinomial(1, 0x1p53, kLeast, 0), 0),
        EDGE(PDFBinomial(-1, 5, 0.3), 0),
        EDGE(PDFBinomial(6, 5, 0.3), 0),
        EDGE(PDFBinomial(kInf, 5, 0.3), 0),
        EDGE(PDFBinomial(2.5, 5, 0.3), 0),
        EDGE(PDFBinomial(2, 5, 0.25), PDFBinomial(2.00000001, 5.2, 0.25)),
        EDGE(PDFBinomial(0, 5, 0), 1),
        EDGE(PDFBinomial(1, 5, 0), 0),
        EDGE(PDFBinomial(5, 5, 1), 1),
        EDGE(PDFBinomial(4, 5, 1), 0),
        EDGE(PDFBinomial(0, 0, 0.3), 1),
        EDGE(PDFBinomial(1, 5, kLeast), 5 * kLeast),
        EDGE(PDFBinomial(1, 5, 1e-310), 5 * 1e-310),
        EDGE(PDFBinomial(2, 5, kLeast), 0),

        EDGE(GammaLn(0), kInf),
        EDGE(GammaLn(-3), kInf),
        EDGE(GammaLn(kInf), kInf),
        EDGE(GammaLn(-kInf), kInf),
        EDGE(GammaLn(1), 0),
        EDGE(GammaLn(2), 0),
        EDGE(GammaFunction(0.0), kInf),
        EDGE(GammaFunction(-0.0), -kInf),
        EDGE(GammaFunction(172), kInf),
        EDGE(GammaFunction(-200.5), 0),
        EDGE(GammaFunction(23), 1124000727777607680000.0),
        EDGE(Digamma(kInf), kInf),
        EDGE(Trigamma(0), kInf),
        EDGE(Trigamma(-2), kInf),
        EDGE(Trigamma(kInf), 0),
        EDGE(derf(-kInf), -1),
        EDGE(derf(kInf), 1),
        EDGE(derfc(-kInf), 2),
        EDGE(derfc(kInf), 0),
        EDGE(derf(0), 0),
        EDGE(derfc(0), 1),
        EDGE(cLogCnk(5, 0), 0),
        EDGE(cLogCnk(5, 5), 0),
        EDGE(cLogCnk(5, 6), -kInf),
        EDGE(cLogCnk(5, -1), -kInf),
        EDGE(cLogCnk(0, 0), 0),
        EDGE(cLogCnk(kInf, 2), kInf),

        EDGE(IncompleteBeta(2, 3, 0, 1), 0),
        EDGE(IncompleteBeta(2, 3, 1, 0), 1),
        EDGE(IncompleteGamma(2, -1), 0),
        EDGE(IncompleteGamma(2, kInf), 1),
    };
    for (const auto& [call, actual, expected] : edges)
        EXPECT_EQ(actual, expected) << call;
}

TEST(DistributionEdges, InvalidArgumentsGiveNaN)
{
    const Edge edges[] = {
        EDGE(CDFNormalStd(kNaN), 0),
        EDGE(PDFNormalStd(kNaN), 0),
        EDGE(InvCDFNormalStd(kNaN), 0),
        EDGE(InvCDFNormalStd(-0.1), 0),
        EDGE(InvCDFNormalStd(1.1), 0),
        EDGE(pValStudent(kNaN, 3), 0),
        EDGE(pValStudent(1, 0), 0),
        EDGE(pValStudent(1, -2), 0),
        EDGE(pValStudent(1, kNaN), 0),
        EDGE(InvCDFStudent(1.5, 3), 0),
        EDGE(InvCDFStudent(0.3, 0), 0),
        EDGE(InvCDFStudent(kNaN, 3), 0),
        EDGE(pValChiSq(kNaN, 3), 0),
        EDGE(pValChiSq(1, 0), 0),
        EDGE(pValChiSq(1, -1), 0),
        EDGE(pValChiSq(0, kNaN), 0),
        EDGE(InvCDFChiSq(-0.5, 3), 0),
        EDGE(InvCDFChiSq(0.5, -3), 0),
        EDGE(pValFisher(kNaN, 1, 1), 0),
        EDGE(pValFisher(1, 0, 5), 0),
        EDGE(pValFisher(1, 5, 0), 0),
        EDGE(pValFisher(1, -1, 5), 0),
        EDGE(pValFisher(1, 5, kNaN), 0),
        EDGE(InvCDFFisher(2, 3, 4), 0),
        EDGE(InvCDFFisher(0.5, 0, 4), 0),
        EDGE(InvCDFFisher(0.5, 4, kNaN), 0),
        EDGE(CDFHyperG(kNaN, 3, 4, 5), 0),
        EDGE(CDFHyperG(1, -3, 4, 5), 0),
        EDGE(CDFHyperG(1, 3, kNaN, 5), 0),
        EDGE(CDFHyperG(1, 3, 4, 8), 0),
        EDGE(CDFHyperG(1, kInf, 4, 5), 0),
        EDGE(CDFHyperG(1, 9e15, 9e15, 5), 0),
        EDGE(CDFBinomial(kNaN, 5, 0.3), 0),
        EDGE(CDFBinomial(1, kNaN, 0.3), 0),
        EDGE(CDFBinomial(-1, 5, kNaN), 0),
        EDGE(CDFBinomial(-1, -1, 0.3), 0),
        EDGE(CDFBinomial(-1, kInf, 0.3), 0),
        EDGE(CDFBinomial(-1, 1e16, 0.3), 0),
        EDGE(CDFBinomial(-1, 5, -1e-9), 0),
        EDGE(CDFBinomial(5, 5, 1.000001), 0),
        EDGE(PDFBinomial(kNaN, 5, 0.3), 0),
        EDGE(PDFBinomial(-1, -1, 0.3), 0),
        EDGE(PDFBinomial(-1, kInf, 0.3), 0),
        EDGE(PDFBinomial(-1, 5, kNaN), 0),
        EDGE(PDFBinomial(-1, 5, 2), 0),
        EDGE(GammaLn(kNaN), 0),
        EDGE(GammaFunction(-1), 0),
        EDGE(GammaFunction(kNaN), 0),
        EDGE(Digamma(0), 0),
        EDGE(Digamma(-4), 0),
        EDGE(Digamma(kNaN), 0),
        EDGE(Trigamma(kNaN), 0),
        EDGE(derf(kNaN), 0),
        EDGE(derfc(kNaN), 0),
        EDGE(cLogCnk(-1, 0), 0),
        EDGE(cLogCnk(kNaN, 1), 0),
        EDGE(cLogCnk(3, kNaN), 0),
        EDGE(IncompleteBeta(0, 1, 0.5, 0.5), 0),
        EDGE(IncompleteBeta(1, 1, kNaN, 0.5), 0),
        EDGE(IncompleteGamma(-1, 1), 0),
    };
    for (const auto& [call, actual, unused] : edges)
        EXPECT_TRUE(std::isnan(actual)) << call << " is " << actual;
}

// Extreme but legal arguments: the answer is a probability, and the search ends.
TEST(DistributionEdges, ExtremeArgumentsStayProbabilities)
{
    const double extremes[] = {kLeast, 1e-300, 1e-30, 1e-6, 1, 1e8, 1e15, 1e19, 1e31, 1e300, kMost, kInf};
    for (double df1 : extremes)
        for (double df2 : extremes)
            for (double x : extremes) {
                SCOPED_TRACE(testing::Message() << "x " << x << " df " << df1 << ", " << df2);
                for (short lower : {short{0}, short{-1}}) {
                    const double tail = CDFFisher(x, df1, df2, lower);
                    EXPECT_TRUE(tail >= 0 && tail <= 1) << tail;
                }
                EXPECT_TRUE(pValStudent(x, df1) >= 0 && pValStudent(x, df1) <= 0.5);
                EXPECT_TRUE(CDFChiSq(x, df1) >= 0 && CDFChiSq(x, df1) <= 1);
                for (double p : {1e-200, 0.3, 0.99}) {
                    EXPECT_GE(InvCDFFisher(p, df1, df2), 0) << p;
                    EXPECT_GE(InvCDFChiSq(p, df1), 0) << p;
                    EXPECT_EQ(InvCDFStudent(p, df1) > 0, p > 0.5) << p;
                }
            }
}

TEST(DistributionEdges, ExtremeBinomialsStayProbabilities)
{
    for (double n : {1.0, 3.0, 1e6, 1e15, 0x1p53})
        for (double p : {kLeast, 1e-300, 0.9e-280, 1.1e-280, 1e-100, 1e-16, 0.3, 0.5, 1 - 0x1p-53})
            for (double k : {0.0, 1.0, 2.0, std::floor(n * p), std::floor(n * p * 2), n - 1, n}) {
                SCOPED_TRACE(testing::Message() << "k " << k << " n " << n << " p " << p);
                const double lower = CDFBinomial(k, n, p), upper = CDFBinomial(k, n, p, 0);
                EXPECT_TRUE(lower >= 0 && lower <= 1 && upper >= 0) << lower << " " << upper;
                EXPECT_NEAR(lower + upper, 1, 1e-15);
                const double point = PDFBinomial(k, n, p), most = std::fmin(1, lower * (1 + 1e-12));
                EXPECT_TRUE(k > n || (point >= 0 && point <= most)) << point << " " << lower;
            }
}

}  // namespace
