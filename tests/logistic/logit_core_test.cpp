/* The likelihood core: derivatives against differences, the penalty's gradient, the score at the optimum. */
#include <gtest/gtest.h>

#include <cmath>
#include <random>

#include "kernel/linalg/exponentials.h"
#include "kernel/linalg/weighted_products.h"
#include "logistic/link_functions.h"
#include "logistic/logit_derivatives.h"
#include "logistic/logit_fit.h"
#include "logistic/logit_probabilities.h"
#include "logistic/profile_intervals.h"
#include "support/tolerances.h"

namespace korvenrg::logistic {
namespace {

using namespace korvenrg::test;

/** A random design of p columns with its own response, and a model on it. */
struct Setting
{
    int n, p, blocks, form, link;
    std::vector<std::vector<double>> columns, indicators;
    std::vector<double> y, reference, wc, wr, mortality;
    std::vector<const double*> columnPointers, indicatorPointers;

    Setting(int rows, int cols, int K, int responseForm, int linkCode)
        : n(rows), p(cols), blocks(K), form(responseForm), link(linkCode), mortality(static_cast<size_t>(K))
    {
        std::mt19937 generator(static_cast<unsigned>(7 + 10 * K + linkCode));
        std::normal_distribution<double> normal;
        std::uniform_real_distribution<double> uniform;
        columns.assign(static_cast<size_t>(p), std::vector<double>(static_cast<size_t>(n)));
        for (auto& column : columns)
            for (double& cell : column)
                cell = normal(generator);
        indicators.assign(static_cast<size_t>(K), std::vector<double>(static_cast<size_t>(n)));
        for (size_t i = 0; i < static_cast<size_t>(n); ++i) {
            wc.push_back(form == kBinomial ? 1.0 + std::floor(6.0 * uniform(generator))
                                           : 0.5 + uniform(generator));
            wr.push_back(0.5 + uniform(generator));
            const auto code = static_cast<size_t>((K + 1) * uniform(generator));
            y.push_back(form == kBinomial ? std::floor((wc.back() + 1.0) * uniform(generator))
                                          : static_cast<double>(code));
            reference.push_back(code == 0 ? 1.0 : 0.0);
            if (code > 0) indicators[code - 1][i] = 1.0;
        }
        for (const auto& column : columns)
            columnPointers.push_back(column.data());
        for (const auto& column : indicators)
            indicatorPointers.push_back(column.data());
    }

    LogitModel Model() const
    {
        return {.n = n,
                .layout = {.columns = p, .blocks = blocks},
                .columns = columnPointers,
                .response = y.data(),
                .isReference = reference.data(),
                .indicators = indicatorPointers,
                .caseWeights = wc.data(),
                .secondWeights = wr.data(),
                .form = form,
                .link = link,
                .givenMortality = mortality.data()};
    }

    /** A fit at some point that is no optimum. */
    LogitFit SomeFit(double c) const
    {
        LogitFit fit({.columns = p, .blocks = blocks});
        for (int i = 1; i <= fit.layout.Length(); ++i)
            fit.parameters.vbset(i, 0.3 * std::sin(1.7 * i));
        for (int k = 1; k <= blocks; ++k)
            fit.parameters.vbset(fit.layout.Mortality(k), c);
        return fit;
    }
};

constexpr FitOptions Options(bool mortality, bool firth, bool intercept = true)
{
    return {.convergence = 1E-13,
            .maxIterations = 100,
            .firth = firth,
            .estimatesIntercept = intercept,
            .estimatesMortality = mortality};
}

double ValueAt(const LogitModel& model, const FitOptions& options, const LogitFit& fit, int i, double shift)
{
    LogitFit moved(fit);
    LogitWork work(model.n, model.layout.blocks);
    moved.parameters(i) += shift;
    return EvaluateLogitModel(model, options, moved, work);
}

double SlopeAt(const LogitModel& model,
               const FitOptions& options,
               const LogitFit& fit,
               int i,
               int j,
               double shift)
{
    LogitFit moved(fit);
    LogitWork work(model.n, model.layout.blocks);
    moved.parameters(i) += shift;
    EvaluateLogitModel(model, options, moved, work);
    return moved.gradient.vbget(j);
}

// Central differences of fourth order: errors of h^4 and of eps / h are about 1e-11.
constexpr double kStep = 1E-3;
constexpr double kDifferences = 2E-8;

template <typename Function>
double Derivative(Function f)
{
    return (8.0 * (f(kStep) - f(-kStep)) - (f(2.0 * kStep) - f(-2.0 * kStep))) / (12.0 * kStep);
}

struct CoreCase
{
    int blocks, form, link;
    double mortality;
    bool firth;
};

TEST(LogitCore, DerivativesAreDifferences)
{
    std::vector<CoreCase> cases;
    for (int form : {kBinary, kBinomial})
        for (int link : {kLogit, kProbit, kComplementaryLogLog, kLogLog})
            for (double c : {0.0, 0.2})
                for (bool firth : {false, true})
                    cases.push_back({1, form, link, c, firth});
    cases.push_back({1, kMultinomial, kProbit, 0.0, false});
    cases.push_back({2, kMultinomial, kLogit, 0.0, false});
    cases.push_back({4, kMultinomial, kLogit, 0.0, false});
    for (const CoreCase& c : cases) {
        SCOPED_TRACE(testing::Message() << "K " << c.blocks << " form " << c.form << " link " << c.link
                                        << " mortality " << c.mortality << " firth " << c.firth);
        Setting setting(61, 3, c.blocks, c.form, c.link);
        if (c.form == kBinomial) setting.wr.assign(setting.wr.size(), 1.0);
        const LogitModel model = setting.Model();
        const bool withMortality = c.mortality > 0.0;
        LogitFit fit = setting.SomeFit(c.mortality);
        for (int k = 1; k <= c.blocks; ++k)
            fit.fixedMask.vbset(fit.layout.Mortality(k), withMortality && !c.firth ? kFree : kFixed);
        const FitOptions options = Options(withMortality && !c.firth, c.firth);
        LogitWork work(model.n, model.layout.blocks);
        EvaluateLogitModel(model, options, fit, work);
        double size = 0.0;
        for (int i = 1; i <= fit.layout.Length(); ++i)
            size = std::max(size, std::fabs(fit.hessian.vbget(i, i)));
        for (int i = 1; i <= fit.layout.Length(); ++i) {
            if (!fit.IsFree(i)) continue;
            const double g = Derivative([&](double h) { return ValueAt(model, options, fit, i, h); });
            EXPECT_NEAR(fit.gradient.vbget(i), g, kDifferences * size) << "gradient " << i;
            if (c.firth) continue;  // the Hessian is that of the likelihood alone
            for (int j = 1; j <= fit.layout.Length(); ++j) {
                if (!fit.IsFree(j)) continue;
                const double H = Derivative([&](double h) { return SlopeAt(model, options, fit, i, j, h); });
                EXPECT_NEAR(fit.hessian.vbget(i, j), H, kDifferences * size) << "Hessian " << i << "," << j;
            }
        }
    }
}

TEST(LogitCore, ScoreIsZeroAtTheOptimum)
{
    for (int link : {kLogit, kProbit, kComplementaryLogLog, kLogLog})
        for (bool firth : {false, true}) {
            SCOPED_TRACE(testing::Message() << "link " << link << " firth " << firth);
            const Setting setting(200, 3, 1, kBinary, link);
            const LogitModel model = setting.Model();
            LogitFit fit({.columns = 3, .blocks = 1});
            LogitWork work(model.n, 1);
            ASSERT_EQ(OptimizeLogitModel(model, Options(false, firth), fit, work), kFitted);
            for (int i = 1; i <= 4; ++i)
                EXPECT_NEAR(fit.gradient.vbget(i), 0.0, 1E-5) << i;
            // Wald's form by hand from the covariance: b' (V_bb)^-1 b with one slope.
            LogitFit single(fit);
            single.RemoveColumn(2);
            single.RemoveColumn(3);
            const double b = single.parameters.vbget(1);
            ExpectClose(LogitWaldStat(single), -b * b / single.covariance.vbget(1, 1), kRoundoff);
        }
}

// A predictor beyond 709 is left out of the sum: its own probability is the largest, the others keep theirs.
TEST(LogitCore, HugePredictorsOfSeveralBlocks)
{
    Setting setting(1, 1, 2, kMultinomial, kLogit);
    setting.columns[0][0] = 1.0;
    const LogitModel model = setting.Model();
    LogitFit fit({.columns = 1, .blocks = 2});
    fit.parameters.vbset(fit.layout.Slope(1, 1), 800.0);
    fit.parameters.vbset(fit.layout.Slope(2, 1), 1.0);
    LogitWork work(1, 2);
    LogitProbabilities(model, fit.parameters, work);
    EXPECT_EQ(work.probability[0][0], kLargestProbability);
    ExpectClose(work.probability[1][0], std::exp(1.0) / (1.0 + std::exp(1.0)), kRoundoff);
    ExpectClose(work.reference[0], 1.0 / (1.0 + std::exp(1.0)), kRoundoff);
}

TEST(LogitCore, ProbabilitiesAreClampedAndNaNStays)
{
    const double nan = std::nan("");
    for (int link : {kLogit, kProbit, kComplementaryLogLog, kLogLog}) {
        Setting setting(3, 1, 1, kBinary, link);
        setting.columns[0] = {5000.0, -5000.0, nan};
        LogitFit fit({.columns = 1, .blocks = 1});
        fit.parameters.vbset(1, 1.0);
        LogitWork work(3, 1);
        LogitProbabilities(setting.Model(), fit.parameters, work);
        EXPECT_EQ(work.probability[0][0], kLargestProbability) << link;
        EXPECT_EQ(work.probability[0][1], kSmallestProbability) << link;
        EXPECT_TRUE(std::isnan(work.probability[0][2])) << link;
    }
    EXPECT_EQ(LogitLinkCDF(kLogit, 5000.0, 0.0), 0.9999999999999999);
    EXPECT_EQ(LogitLinkCDF(kComplementaryLogLog, -5000.0, 0.0), 1E-16);
    EXPECT_EQ(LogitLinkCDF(kProbit, -5000.0, 0.25), 0.25);
    for (int link : {kLogit, kProbit, kComplementaryLogLog, kLogLog})
        for (double eta : {-3.0, -0.1, 2.0})
            ExpectClose(LogitInverseLink(kBinary, link, LogitLinkCDF(link, eta, 0.0)), eta, 1E-12);
    ExpectClose(LogitInverseLink(kMultinomial, kProbit, 0.2), std::log(0.25), kRoundoff);
}

// The kernel beneath: exponentials to 1.5 ulps, and sums over blocks of any length.
TEST(LogitCore, ExponentialsAndWeightedProducts)
{
    std::vector<double> x;
    for (double v = -709.0; v <= 709.0; v += 0.37)
        x.push_back(v);
    x.push_back(std::nan(""));
    std::vector<double> e(x.size());
    linalg::Exponentials(x.data(), static_cast<int>(x.size()), e.data());
    for (size_t i = 0; i + 1 < x.size(); ++i)
        EXPECT_NEAR(e[i] / std::exp(x[i]), 1.0, x[i] < -707.0 ? 1E-15 : 4E-16) << x[i];
    EXPECT_TRUE(std::isnan(e.back()));

    for (int n : {0, 1, 7, 8, 255, 256, 257, 523})
        for (int p : {1, 4, 5}) {
            const Setting s(std::max(n, 1), p, 1, kBinary, kLogit);
            const auto q = static_cast<size_t>(p);
            std::vector<double> slopes(q), constants(q), products(q * q), sums(q);
            linalg::WeightedProducts(s.columnPointers,
                                     n,
                                     s.wr.data(),
                                     s.y.data(),
                                     {slopes.data(), constants.data(), products.data()});
            linalg::ColumnProducts(s.columnPointers, n, s.wr.data(), sums.data());
            for (size_t i = 0; i < q; ++i)
                for (size_t j = 0; j < q; ++j) {
                    double u = 0.0, v = 0.0, uu = 0.0;
                    for (size_t r = 0; r < static_cast<size_t>(n); ++r) {
                        u += s.wr[r] * s.columns[i][r];
                        v += s.y[r] * s.columns[i][r];
                        uu += s.y[r] * s.columns[i][r] * s.columns[j][r];
                    }
                    EXPECT_NEAR(slopes[i], u, 1E-12);
                    EXPECT_NEAR(sums[i], u, 1E-12);
                    EXPECT_NEAR(constants[i], v, 1E-12);
                    EXPECT_NEAR(products[j * q + i], uu, 1E-12);
                }
        }
}

// Fixed parameters stay, their rows of the Hessian are 0, and columns outside the model may hold anything.
TEST(LogitCore, HeldColumnsAreNotRead)
{
    Setting setting(80, 3, 1, kBinary, kLogit);
    setting.columns[1].assign(80, std::nan(""));
    const LogitModel model = setting.Model();
    LogitFit fit({.columns = 3, .blocks = 1});
    fit.RemoveColumn(2);
    LogitWork work(80, 1);
    ASSERT_EQ(OptimizeLogitModel(model, Options(false, true), fit, work), kFitted);
    Setting without(80, 3, 1, kBinary, kLogit);
    without.columns[1].assign(80, 0.0);
    LogitFit other({.columns = 3, .blocks = 1});
    other.RemoveColumn(2);
    ASSERT_EQ(OptimizeLogitModel(without.Model(), Options(false, true), other, work), kFitted);
    for (int i : {1, 3, 4})
        EXPECT_EQ(fit.parameters.vbget(i), other.parameters.vbget(i));
    EXPECT_EQ(fit.statistics.score, other.statistics.score);
    EXPECT_EQ(fit.parameters.vbget(2), 0.0);
    EXPECT_EQ(fit.hessian.vbget(2, 2), 0.0);
}

}  // namespace
}  // namespace korvenrg::logistic
