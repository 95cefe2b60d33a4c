/* What the run does on purpose where a textbook would do otherwise, its invariants, and data that cause trouble. */
#include <cmath>
#include <random>

#include "logit_fixture.h"

namespace logistic_test {
namespace {

/** Agreement of two fits that take different ways to one optimum (logit_reference_test.cpp says how near they come). */
constexpr double kSameOptimum = 1E-8;

/** n rows of p normal columns with a response that depends on the first. */
LogitProblem RandomBinary(int n, int p, unsigned seed = 3)
{
    std::mt19937 generator(seed);
    std::normal_distribution<double> normal;
    std::uniform_real_distribution<double> uniform;
    std::vector<Vector> columns(static_cast<size_t>(p), Vector(static_cast<size_t>(n)));
    Vector y;
    for (auto& column : columns)
        for (double& cell : column)
            cell = normal(generator);
    for (size_t i = 0; i < static_cast<size_t>(n); ++i)
        y.push_back(uniform(generator) < 1.0 / (1.0 + std::exp(0.3 - (p > 0 ? columns[0][i] : 0.0))) ? 1.0
                                                                                                     : 0.0);
    return Binary(y, columns);
}

LogitProblem RandomCategories(int n, int p, int categories)
{
    LogitProblem q = RandomBinary(n, p);
    std::mt19937 generator(4);
    std::uniform_int_distribution<int> code(0, categories - 1);
    q.categories = categories;
    q.form = kMultinomialForm;
    q.mortality.assign(static_cast<size_t>(categories - 1), 0.0);
    for (double& y : q.y)
        y = code(generator);
    return q;
}

double Sum(const Vector& v)
{
    double sum = 0.0;
    for (double x : v)
        sum += x;
    return sum;
}

// An integer case weight is that many rows, in every statistic that takes weights alike.
TEST(LogitInvariants, WeightsAreReplicatedRows)
{
    for (int categories : {2, 3})
        for (int link : {kLogitLink, kCloglogLink}) {
            SCOPED_TRACE(testing::Message() << categories << " categories, link " << link);
            LogitProblem q = categories == 2 ? RandomBinary(60, 2) : RandomCategories(60, 2, 3);
            q.link = link;
            LogitProblem rows = q;
            for (int i = 0; i < q.n; ++i)
                q.wc[static_cast<size_t>(i)] = 1.0 + i % 3;
            rows.n = static_cast<int>(Sum(q.wc));
            rows.y.clear();
            rows.x.clear();
            for (int j = -1; j < q.p; ++j)
                for (int i = 0; i < q.n; ++i)
                    for (int k = 0; k <= i % 3; ++k)
                        if (j < 0)
                            rows.y.push_back(q.y[static_cast<size_t>(i)]);
                        else
                            rows.x.push_back(q.x[static_cast<size_t>(j * q.n + i)]);
            rows.wc.assign(rows.y.size(), 1.0);
            rows.wr = rows.wc;
            const LogitResults a = RunLogit(q), b = RunLogit(rows);
            for (int r = 1; r <= a.coefficients.rows; ++r)
                for (int c : {kCoefValue, kCoefStdError})
                    ExpectClose(a.coefficients(r, c), b.coefficients(r, c), 1E-6);
            for (int test : {kScoreTest, kWaldTest})
                ExpectClose(a.tests(test, kTestStatistic), b.tests(test, kTestStatistic), kSameOptimum);
            ExpectClose(a.fit(kRowMinus2LogLikelihood, 2), b.fit(kRowMinus2LogLikelihood, 2), kPrinted);
            // The null log-likelihood of several categories leaves the case weight out.
            EXPECT_EQ(std::fabs(a.fit(kRowMinus2LogLikelihood, 1) / b.fit(kRowMinus2LogLikelihood, 1) - 1.0) <
                          1E-12,
                      categories == 2);
        }
}

// Columns in other units or another order, and a column more that repeats one, give the same fit.
TEST(LogitInvariants, UnitsOrderAndCopies)
{
    const LogitProblem q = RandomBinary(80, 2);
    const auto half = static_cast<std::ptrdiff_t>(q.n);
    const Vector x1(q.x.begin(), q.x.begin() + half), x2(q.x.begin() + half, q.x.end());
    Vector x1Scaled = x1;
    for (double& x : x1Scaled)
        x = 100.0 + 1000.0 * x;
    const LogitResults plain = RunLogit(q), other = RunLogit(Binary(q.y, {x2, x1Scaled, x2}));
    EXPECT_EQ(other.states, (Integers{0, 0, 1}));
    EXPECT_EQ(other.active, (Integers{1, 1, 0}));
    EXPECT_EQ(other.nbActive, 2);
    ExpectClose(other.coefficients(3, kCoefValue) * 1000.0, plain.coefficients(2, kCoefValue), kSameOptimum);
    ExpectClose(other.coefficients(2, kCoefStdError), plain.coefficients(3, kCoefStdError), kSameOptimum);
    ExpectClose(other.standardised(2, kCoefValue), plain.standardised(1, kCoefValue), kSameOptimum);
    for (int row = 1; row <= 3; ++row)
        ExpectClose(other.tests(row, kTestStatistic), plain.tests(row, kTestStatistic), kSameOptimum);
    EXPECT_EQ(other.coefficients(4, kCoefValue), 0.0);
    EXPECT_EQ(other.coefficients(4, 11), kMissing);
}

// The second weight counts in the likelihood, Pearson's chi-square and the null likelihood, not in the derivatives.
TEST(LogitOddities, SecondWeightsOfBinomialData)
{
    LogitProblem q =
        Binary({6, 13, 18, 28, 52, 53, 61, 60}, {{1.69, 1.72, 1.75, 1.78, 1.81, 1.84, 1.86, 1.88}});
    q.form = kBinomialForm;
    q.wc = {59, 60, 62, 56, 63, 59, 62, 60};
    q.maxIterations = 0;  // one step from the same start, accepted under both likelihoods
    const LogitResults plain = RunLogit(q);
    q.wr = {1, 2, 1, 2, 1, 2, 1, 2};
    const LogitResults weighted = RunLogit(q);
    EXPECT_EQ(CellsOf(weighted.coefficients), CellsOf(plain.coefficients));
    EXPECT_EQ(weighted.tests(kScoreTest, kTestStatistic), plain.tests(kScoreTest, kTestStatistic));
    for (int model : {kIndependentModel, kFittedModel})
        EXPECT_GT(std::fabs(weighted.fit(kRowMinus2LogLikelihood, model) -
                            plain.fit(kRowMinus2LogLikelihood, model)),
                  0.1);
    ExpectClose(Sum({59, 60 * 2, 62, 56 * 2, 63, 59 * 2, 62, 60 * 2}),
                weighted.fit(kRowSumOfWeights, 1),
                kExact);
    ExpectClose(weighted.wr[1], 2.0 * 481.0 / (481.0 + 60 + 56 + 59 + 60), kRoundoff);
}

// One block of a multinomial response: start log(pi), likelihood and derivatives of a binary one.
TEST(LogitOddities, MultinomialResponseOfOneBlock)
{
    LogitProblem q = RandomBinary(50, 1);
    const LogitResults binary = RunLogit(q);
    q.form = kMultinomialForm;
    const LogitResults one = RunLogit(q);
    ExpectClose(one.coefficients(2, kCoefValue), binary.coefficients(2, kCoefValue), kSameOptimum);
    q.info[kFixedIntercept] = 1;
    ExpectClose(RunLogit(q).coefficients(1, kCoefValue), std::log(0.5), kRoundoff);
    q.form = kBinaryForm;
    EXPECT_EQ(RunLogit(q).coefficients(1, kCoefValue), 0.0);
}

// Successes of several categories: with one trial a row their shares are those of the indicators.
TEST(LogitOddities, SeveralCategoriesOfTheBinomialForm)
{
    LogitProblem q = RandomCategories(30, 1, 3);
    const LogitResults asCategories = RunLogit(q);
    q.form = kBinomialForm;
    const LogitResults asSuccesses = RunLogit(q);
    EXPECT_EQ(asSuccesses.code, 0);
    for (int k = 1; k <= 2; ++k)
        ExpectClose(asSuccesses.marginal(k, 1), asCategories.marginal(k, 1), kRoundoff);
    ExpectClose(asSuccesses.coefficients(2, kCoefValue),
                asCategories.coefficients(2, kCoefValue),
                kSameOptimum);
}

// By hand: with case weights of 2 the categories' terms are half of those of the reference, and of the model's.
TEST(LogitOddities, NullLogLikelihood)
{
    LogitProblem q = RandomCategories(30, 1, 3);
    q.wc.assign(30, 2.0);
    Vector counts(3);
    for (double y : q.y)
        counts[static_cast<size_t>(y)] += 1.0;
    const double null = 2.0 * counts[0] * std::log(counts[0] / 30.0) +
                        counts[1] * std::log(counts[1] / 30.0) + counts[2] * std::log(counts[2] / 30.0);
    ExpectClose(RunLogit(q).fit(kRowMinus2LogLikelihood, kIndependentModel), -2.0 * null, kRoundoff);
    // One block that is not binary: no case weight in the second term.
    q = RandomBinary(30, 1);
    q.form = kMultinomialForm;
    q.wc.assign(30, 2.0);
    const double ones = Sum(q.y), pi = ones / 30.0;
    ExpectClose(RunLogit(q).fit(kRowMinus2LogLikelihood, kIndependentModel),
                -2.0 * (60.0 * std::log(1.0 - pi) + ones * std::log(pi / (1.0 - pi))),
                kRoundoff);
}

// Whatever the link, the score is taken at the logit of the share: with x in two groups by hand.
TEST(LogitOddities, ScoreStartsFromLogits)
{
    LogitProblem q = Binary({0, 0, 0, 1, 0, 1, 1, 1, 1, 0}, {{0, 0, 0, 0, 0, 1, 1, 1, 1, 1}});
    q.link = kProbitLink;
    double g[2] = {}, h[2][2] = {};
    const double eta = std::log(0.5 / 0.5),
                 f = 0.3989422804014327;  // the share is 1/2: P = Phi(0) = 1/2, f' = 0
    for (size_t i = 0; i < 10; ++i) {
        const double x[2] = {q.x[i] - 0.5, 1.0};
        const double d = q.y[i] / 0.5 - 1.0, s = q.y[i] / 0.25 + (1.0 - q.y[i]) / 0.25;
        for (int a = 0; a < 2; ++a) {
            g[a] += d * f * x[a] / 0.5;
            for (int b = 0; b < 2; ++b)
                h[a][b] += x[a] * x[b] * (d * -eta * f / 0.5 - s * f * f);
        }
    }
    const double statistic = -g[0] * g[0] / h[0][0];  // the intercept's gradient and the mixed cell are 0
    ASSERT_NEAR(g[1], 0.0, 1E-14);
    ExpectClose(RunLogit(q).tests(kScoreTest, kTestStatistic), statistic, kRoundoff);
    // A share of 0.3: the probit at log(3/7) is 0.198, where the intercept's gradient is not 0.
    q = Binary({0, 0, 0, 1, 0, 1, 1, 0, 0, 0}, {{0, 0, 0, 0, 0, 1, 1, 1, 1, 1}});
    q.link = kProbitLink;
    const double probit = RunLogit(q).tests(kScoreTest, kTestStatistic);
    q.link = kLogitLink;
    EXPECT_GT(probit, 1.5 * RunLogit(q).tests(kScoreTest, kTestStatistic));
}

TEST(LogitOddities, ObservedShareOfWeightedCases)
{
    LogitProblem q = RandomBinary(20, 1);
    q.wc.assign(20, 4.0);
    const LogitResults r = RunLogit(q);
    for (int i = 1; i <= 20; ++i) {
        EXPECT_EQ(r.predictions(i, kPredObserved), q.y[At(i)] / 4.0);
        EXPECT_EQ(r.predictions(i, kPredObservedCount), q.y[At(i)] / 4.0);
    }
    // The classification takes Wc - y and y in the same way.
    EXPECT_EQ(r.classification(2, 3), Sum(q.y));
    EXPECT_EQ(r.classification(1, 3), 80.0 - Sum(q.y));
    EXPECT_EQ(r.classification(3, 3), 80.0);
}

TEST(LogitOddities, CountsOfThreeCategories)
{
    LogitProblem q = RandomCategories(45, 2, 3);
    q.wc.assign(45, 3.0);
    q.reference = 1;
    const LogitResults r = RunLogit(q);
    double percents = 0.0;
    for (int i = 1; i <= 3; ++i) {
        double row = 0.0, column = 0.0;
        for (int j = 1; j <= 3; ++j) {
            row += r.classification(i, j);
            column += r.classification(j, i);
        }
        EXPECT_EQ(r.classification(i, 4), row);
        EXPECT_EQ(r.classification(4, i), column / 3.0);
        percents += r.classification(i, i) / row;
    }
    EXPECT_EQ(r.classification(4, 4), 45.0);
    ExpectClose(r.classification(4, 5), percents / 3.0, kRoundoff);
}

// A second phase with the mortality free ends where the first, with it held at the estimate, ends too.
TEST(LogitInvariants, MortalityInTwoPhases)
{
    LogitProblem q =
        Binary({8, 9, 10, 24, 33, 43, 52, 50}, {{0.41, 0.58, 0.71, 0.89, 1.01, 1.21, 1.42, 1.61}});
    q.form = kBinomialForm;
    q.link = kProbitLink;
    q.wc = {50, 48, 46, 49, 50, 47, 52, 50};
    q.info[kWithMortality] = 1;
    q.mortality = {0.06};
    const LogitResults estimated = RunLogit(q);
    ASSERT_EQ(estimated.code, 0);
    EXPECT_GT(estimated.mortality[0], 0.05);
    q.mortality = estimated.mortality;
    q.info[kGivenMortality] = 1;
    const LogitResults given = RunLogit(q);
    ExpectClose(given.coefficients(2, kCoefValue), estimated.coefficients(2, kCoefValue), kSameOptimum);
    ExpectClose(given.fit(kRowMinus2LogLikelihood, 2), estimated.fit(kRowMinus2LogLikelihood, 2), kRoundoff);
    EXPECT_LT(given.coefficients(2, kCoefStdError), estimated.coefficients(2, kCoefStdError));
    EXPECT_EQ(given.tests(1, kTestDf) + 1.0, estimated.tests(1, kTestDf));
    // A step to a negative mortality is cut to 0, searched back from there, and never passes it.
    q.y = {0, 0, 0, 20, 25, 44, 52, 50};
    q.info[kGivenMortality] = 0;
    q.mortality = {0.01};
    const LogitResults cut = RunLogit(q);
    EXPECT_GE(cut.mortality[0], 0.0);
    EXPECT_LT(cut.mortality[0], 0.01);
    EXPECT_LE(cut.fit(kRowIterations, kFittedModel), q.maxIterations + 1);
}

TEST(LogitDoses, SlopeOfNothing)
{
    LogitProblem q = Binary({1, 1, 1, 1}, {{1, 2, 1, 2}});
    q.form = kBinomialForm;
    q.wc.assign(4, 2.0);
    q.info[kDoses] = 1;
    const LogitResults r = RunLogit(q);
    ASSERT_EQ(r.code, 0);
    EXPECT_LT(r.doses(3, kDoseValue), -1E307);
    EXPECT_EQ(r.doses(3, kDoseLower), kMissing);
    EXPECT_TRUE(r.doses.Kept(3, kDoseHeteroLower));
    EXPECT_EQ(r.doses(7, kDoseProbability), 0.5);
    EXPECT_EQ(r.curve(99, kCurveProbability), 0.99);
}

// Under heterogeneity the bounds are where the line is q^2 sqrt(h) standard errors away, q Student's quantile with W - p + 2
// degrees of freedom: its square as multiplier, squared by Fieller's form.
TEST(LogitDoses, FourthPowerOfStudent)
{
    LogitProblem q = Binary({1, 40, 150, 260}, {{-11.5, -3, 0, 3}});
    q.form = kBinomialForm;
    q.wc = {1, 300, 300, 300};
    q.info[kDoses] = 1;
    const LogitResults r = RunLogit(q);
    const double h = r.hetero(1), student = -1.9625974696062976;  // 902 degrees of freedom, from R's qt
    ASSERT_GT(h, 1.1);
    const double a = r.coefficients(1, kCoefValue), b = r.coefficients(2, kCoefValue);
    const auto distance = [&](double u, double probability) {
        const double gap = a + b * u - std::log(probability / (1.0 - probability));
        return gap * gap / (r.covariance(2, 2) + 2.0 * u * r.covariance(1, 2) + u * u * r.covariance(1, 1)) /
               h;
    };
    const double wide = std::pow(student, 4.0), z2 = 3.841458820694124;
    for (int c : {kDoseHeteroLower, kDoseHeteroUpper})
        ExpectClose(distance(r.doses(7, c), 0.5), wide, kIterative);
    for (int c : {kCurveHeteroLower, kCurveHeteroUpper})
        ExpectClose(distance(r.curve(30, c), 0.3), wide, kIterative);
    for (int c : {kCurveLower, kCurveUpper})
        ExpectClose(distance(r.curve(30, c), 0.3), z2, kIterative);
    for (int c : {kDoseLower, kDoseUpper})
        ExpectClose(distance(r.doses(7, c), 0.5) * h, z2, kIterative);
}

// Probabilities below the mortality have no dose, whatever scale they are stated on.
TEST(LogitDoses, ProbabilitiesBelowTheMortality)
{
    LogitProblem q =
        Binary({6, 11, 16, 27, 36, 40, 50, 49}, {{0.41, 0.58, 0.71, 0.89, 1.01, 1.21, 1.42, 1.61}});
    q.form = kBinomialForm;
    q.wc = {50, 48, 46, 49, 50, 47, 52, 50};
    q.info[kDoses] = q.info[kWithMortality] = q.info[kGivenMortality] = 1;
    q.mortality = {0.05};
    for (int scale : {0, 1}) {
        q.info[kObservedScale] = scale;
        const LogitResults r = RunLogit(q);
        for (int c = kDoseValue; c <= kDoseHeteroUpper; ++c)
            EXPECT_EQ(r.doses(1, c), kMissing) << c;
        for (int c = kCurveLower; c <= kCurveHeteroUpper; ++c)
            EXPECT_EQ(r.curve(4, c), kMissing) << c;
        EXPECT_EQ(r.doses(2, kDoseValue) == kMissing, scale == 1);  // 0.05 itself: a probability of 0
        EXPECT_GT(r.doses(3, kDoseValue), -10.0);
    }
}

struct Trouble
{
    const char* name;
    LogitProblem problem;
    int code;
    int kept;  ///< columns in the model on return, or -1
};

std::vector<Trouble> Troubles()
{
    const double nan = std::nan("");
    std::vector<Trouble> all;
    LogitProblem q = Binary({0, 0, 0, 0, 1, 1, 1, 1}, {{1, 2, 3, 4, 5, 6, 7, 8}});
    all.push_back({"complete separation", q, 0, 1});
    q.y.assign(8, 1.0);
    all.push_back({"a constant response", q, -5, -1});
    q = RandomBinary(20, 2);
    q.states = {1, 40000};
    all.push_back({"no column left", q, 0, 0});
    q.info[kFixedIntercept] = 1;
    all.push_back({"nothing to estimate", q, 0, 0});
    q = RandomBinary(20, 3);
    std::fill_n(q.x.begin() + 20, 20, 4.0);
    all.push_back({"a constant column", q, 0, 2});
    q = RandomBinary(5, 8);
    all.push_back({"fewer rows than columns", q, 0, 4});
    q = RandomBinary(20, 2);
    q.x[25] = nan;
    all.push_back({"a cell of X that is no number", q, 0, 1});
    q = RandomBinary(20, 2);
    q.y[3] = nan;
    all.push_back({"a response that is no number", q, -5, -1});
    q = RandomBinary(20, 2);
    q.wc[3] = nan;
    all.push_back({"a weight that is no number", q, -5, -1});
    q = RandomBinary(20, 2);
    q.wc.assign(20, 0.0);
    all.push_back({"no weight", q, -5, -1});
    q = RandomBinary(20, 0);
    all.push_back({"no columns", q, 0, 0});
    q = RandomCategories(30, 2, 3);
    for (double& y : q.y)
        y = y == 2.0 ? 1.0 : y;
    all.push_back({"a category without rows", q, -5, -1});
    q = RandomBinary(20, 2);
    q.n = 0;
    all.push_back({"no rows", q, -5, -1});
    return all;
}

TEST(LogitTrouble, GivesTheStatedResult)
{
    for (const Trouble& t : Troubles())
        for (int extras : {0, 1}) {
            SCOPED_TRACE(testing::Message() << t.name << ", extras " << extras);
            LogitProblem q = t.problem;
            if (extras == 1) q.info[kProfile] = q.info[kDoses] = q.info[kFirth] = 1;
            const LogitResults r = RunLogit(q);
            if (extras == 1 && r.code == 0 && t.code != 0) continue;  // the penalty may well save a fit
            EXPECT_EQ(r.code, t.code);
            if (t.kept < 0) continue;
            EXPECT_EQ(std::count(r.states.begin(), r.states.end(), 0), t.kept);
            EXPECT_EQ(r.tests(1, kTestP) == kMissing, t.kept == 0);
            EXPECT_EQ(r.nbActive, t.kept);
            EXPECT_FALSE(std::isnan(r.fit(kRowAic, kFittedModel)));
        }
}

// A level without an observation in a category: the penalty with one block, an end with several.
TEST(LogitTrouble, EmptyLevels)
{
    const Vector level = {1, 1, 1, 1, 0, 0, 0, 0, 0, 0};
    LogitProblem q = Binary({0, 0, 0, 0, 1, 1, 0, 1, 1, 0}, {level});
    q.type = {2};
    q.qualitative = 1;
    const LogitResults one = RunLogit(q);
    EXPECT_EQ(one.code, 0);
    EXPECT_EQ(one.separate[0], -1);
    EXPECT_GT(one.coefficients(2, kCoefValue), -6.0);
    q.type = {1};
    const LogitResults quantitative = RunLogit(q);
    EXPECT_EQ(quantitative.separate[0], 0);
    EXPECT_LT(quantitative.coefficients(2, kCoefValue), -15.0);
    LogitProblem several = RandomCategories(10, 1, 3);
    several.x = level;
    several.y = {0, 0, 1, 1, 2, 2, 0, 1, 2, 0};
    several.type = {4};
    const LogitResults stopped = RunLogit(several);
    EXPECT_EQ(stopped.code, -10);
    EXPECT_EQ(stopped.separate[0], -1);
    for (const Table* table : stopped.Tables())
        EXPECT_EQ(table->cells.CountChanged(), 0u);
    several.y = {0, 2, 1, 1, 2, 2, 0, 1, 2, 0};
    EXPECT_EQ(RunLogit(several).code, 0);
}

// The iteration counter: a limit of 0 makes one; a settled fit at least six; separation in several blocks ends at nine.
TEST(LogitTrouble, StoppingRules)
{
    LogitProblem q = RandomBinary(100, 2);
    const auto iterations = [](const LogitProblem& problem) {
        return RunLogit(problem).fit(kRowIterations, kFittedModel);
    };
    q.maxIterations = 0;
    EXPECT_EQ(iterations(q), 1.0);
    q.maxIterations = 2;
    EXPECT_EQ(iterations(q), 3.0);
    q.maxIterations = 100;
    q.convergence = 1.0;
    q.info[kFirth] = 1;  // convergence is linear: no step promises less than eps
    EXPECT_EQ(iterations(q), 6.0);
    q.info[kFirth] = 0;
    q.convergence = 1E3;
    q.info[kWithMortality] = 1;
    EXPECT_EQ(iterations(q), 16.0);
    LogitProblem several = Binary({0, 0, 0, 1, 1, 1, 2, 2, 2}, {{1, 2, 3, 4, 5, 6, 7, 8, 9}});
    several.form = kMultinomialForm;
    several.categories = 3;
    several.mortality.assign(2, 0.0);
    several.convergence = 0.0;
    EXPECT_EQ(iterations(several), 9.0);
}

// Heterogeneity is 1 unless Pearson's test is significant at 0.1.
TEST(LogitTables, HeterogeneityAndColumnsThatStay)
{
    LogitProblem q = Binary({0, 0, 0, 0, 0, 0, 0, 0, 0, 1}, {{1, 2, 3, 4, 5, 6, 7, 8, 9, 0}});
    q.info[kFirth] = 1;
    const LogitResults r = RunLogit(q);
    EXPECT_EQ(r.hetero(1), 1.0);
    EXPECT_TRUE(r.coefficients.Kept(2, 10) && r.coefficients.Kept(1, 11));
    EXPECT_EQ(r.coefficients(1, 7), kMissing);
    EXPECT_TRUE(r.fit.Kept(kRowIterations, kIndependentModel));
    EXPECT_EQ(r.standardised(1, kCoefProfileLower), 0.0);
    EXPECT_EQ(r.covariance(3, 3), 0.0);
    EXPECT_EQ(r.fit(kRowMcFadden, kIndependentModel), 0.0);
}

// Equal probabilities: the reference has to exceed the others, a probability at the cut point is a success.
TEST(LogitTables, Ties)
{
    LogitProblem q = RandomCategories(40, 1, 4);
    for (int i = 0; i < 40; ++i)
        q.y[static_cast<size_t>(i)] = i % 4;
    q.states = {1};
    const LogitResults four = RunLogit(q);
    EXPECT_EQ(four.predictions(1, kCatReference), 0.25);
    for (int i = 1; i <= 40; ++i)
        EXPECT_EQ(four.predictions(i, kCatPredicted), 2.0);
    EXPECT_EQ(four.classification(5, 2), 40.0);
    q = RandomBinary(40, 1);
    for (int i = 0; i < 40; ++i)
        q.y[static_cast<size_t>(i)] = i % 2;
    q.states = {1};
    EXPECT_EQ(RunLogit(q).classification(3, 2), 40.0);
}

// One parameter alone has no heterogeneity, however bad the fit: the mortality keeps all probabilities above 0.9.
TEST(LogitTables, HeterogeneityOfOneParameter)
{
    LogitProblem q = Binary({0, 0, 0, 0}, {{-1, 1, -2, 2}});
    q.form = kBinomialForm;
    q.wc.assign(4, 20.0);
    q.mortality = {0.9};
    q.info[kFixedIntercept] = q.info[kWithMortality] = q.info[kGivenMortality] = 1;
    q.maxIterations = 0;
    const LogitResults r = RunLogit(q);
    ASSERT_EQ(r.code, 0);
    EXPECT_EQ(r.hetero(1), 1.0);
}

// The tolerance counts without qualitative columns, or when it is asked for.
TEST(LogitTables, ToleranceOfTheScreen)
{
    LogitProblem q = RandomBinary(60, 2);
    for (int i = 0; i < 60; ++i)
        q.x[static_cast<size_t>(60 + i)] =
            q.x[static_cast<size_t>(i)] + 1E-3 * q.x[static_cast<size_t>(60 + i)];
    q.tolerance = 1E-4;
    EXPECT_EQ(RunLogit(q).states, (Integers{0, 1}));
    q.qualitative = 1;
    EXPECT_EQ(RunLogit(q).states, (Integers{0, 0}));
    q.info[kUseTolerance] = 1;
    EXPECT_EQ(RunLogit(q).states, (Integers{0, 1}));
}

TEST(LogitTables, OddsRatiosUpTo702)
{
    LogitProblem q = RandomBinary(60, 1);
    for (double unit : {100.0, 1000.0}) {
        LogitProblem scaled = q;
        for (double& x : scaled.x)
            x /= unit;
        const LogitResults r = RunLogit(scaled);
        EXPECT_EQ(r.coefficients(2, kCoefUpper) >= 702.0, unit == 1000.0);
        if (unit == 1000.0) {
            for (int c = 7; c <= 9; ++c)
                EXPECT_EQ(r.coefficients(2, c), kMissing);
        } else {
            ExpectClose(std::log(r.coefficients(2, 9)), r.coefficients(2, kCoefUpper), kRoundoff);
            ExpectClose(std::log(r.coefficients(2, 8)), r.coefficients(2, kCoefLower), kRoundoff);
        }
    }
}

}  // namespace
}  // namespace logistic_test
