/* ROC curve, Hosmer-Lemeshow test, marginal effects and combined coefficients: against R
 * (tests/reference/logit_service_values.R), by hand, and with data that cause trouble. */
#include <cmath>
#include <limits>

#include "logistic/coefficient_combinations.h"
#include "logistic/hosmer_lemeshow.h"
#include "logistic/marginal_effects.h"
#include "logistic/roc_curve.h"
#include "logit_fixture.h"
#include "support/reference_file.h"

namespace logistic_test {
namespace {

constexpr double kNaN = std::numeric_limits<double>::quiet_NaN();

double Number(const Reference& table)
{
    return table.Numbers()[0];
}

Integers WholeNumbers(const Reference& table)
{
    const Vector numbers = table.Numbers();
    return {numbers.begin(), numbers.end()};
}

/** The reference cases whose names begin with `kind`. */
std::vector<Case> CasesOf(const std::string& kind)
{
    std::vector<Case> cases = ReadCases("logit_service_values.txt");
    std::erase_if(cases, [&](const Case& c) { return !c.name.starts_with(kind); });
    EXPECT_FALSE(cases.empty());
    return cases;
}

/** No input of a call changed, and no guard of a result. */
template <class... Tables>
void ExpectIntact(const Tables&... tables)
{
    EXPECT_TRUE((tables.cells.IntactGuards() && ...));
}

// ---- ROC curve

struct Curve
{
    Table table, area{1, 1};
};

Curve RocOf(Vector score, Vector y, Vector w, double total0, double total1, bool binary = true)
{
    const int n = static_cast<int>(y.size());
    Curve curve{{n + 1, 2}};
    Vector scores(y.size(), kNaN);  // column 1 is not read
    scores.insert(scores.end(), score.begin(), score.end());
    const Vector given = scores, givenY = y, givenW = w;
    // clang-format off
    VB_ROCCurve(scores.data(), y.data(), w.data(), n, -7, kNaN, 2, total0, total1, binary ? -1 : 0,
                curve.table.cells.data(), curve.area.cells.data());
    // clang-format on
    ExpectIntact(curve.table, curve.area);
    EXPECT_TRUE(SameBytes(scores, given) && SameBytes(y, givenY) && SameBytes(w, givenW));
    return curve;
}

// The door with the scores of a run. The run itself takes its totals from the classification table, whose cells hold
// Wc - Y and Y: with case weights these are not the weights of the two classes.
TEST(RocCurve, AgreesWithR)
{
    for (const Case& c : CasesOf("roc_")) {
        SCOPED_TRACE(c.name);
        std::vector<Vector> columns;
        for (int j = 1; j <= c["x"].cols; ++j)
            columns.push_back(c["x"].Column(j));
        LogitProblem q = Binary(c["y"].Numbers(), columns);
        const bool binary = Number(c["binary"]) == 1.0;
        q.wc = c["w"].Numbers();
        q.form = binary ? kBinaryForm : kBinomialForm;
        double totals[] = {0.0, 0.0};
        for (size_t i = 0; i < q.y.size(); ++i) {
            totals[0] += binary ? (1.0 - q.y[i]) * q.wc[i] : q.wc[i] - q.y[i];
            totals[1] += binary ? q.y[i] * q.wc[i] : q.y[i];
        }
        const LogitResults run = RunLogit(q);
        const Vector score = run.predictions.Column(5);
        const Curve door = RocOf(score, q.y, q.wc, totals[0], totals[1], binary);
        ExpectTable(
            door.table,
            c["table"],
            "roc",
            [](int, int) { return 1.0; },
            1E-13);
        ExpectTable(door.area, c["area"], "area", {}, 1E-13);
        const Curve same =
            RocOf(score, q.y, q.wc, run.classification(1, 3), run.classification(2, 3), binary);
        EXPECT_EQ(CellsOf(run.roc), CellsOf(same.table));
        EXPECT_EQ(CellsOf(run.area), CellsOf(same.area));
        EXPECT_EQ(run.area(1) == door.area(1), c.name != "roc_weighted");
    }
}

TEST(RocCurve, TiedScoresCountOneByOne)
{
    EXPECT_EQ(RocOf({1, 1}, {0, 1}, {1, 1}, 1, 1).area(1), 1.0);
    EXPECT_EQ(RocOf({1, 1}, {1, 0}, {1, 1}, 1, 1).area(1), 0.0);
}

TEST(RocCurve, SkipsMissingClasses)
{
    for (double skipped : {kMissing, kNaN}) {
        const Curve curve = RocOf({1, 2, 3, 4}, {0, skipped, 0, 1}, {1, 1, 1, 1}, 2, 1);
        EXPECT_EQ(CellsOf(curve.table), (Vector{1, 0.5, 0, -0.5, -0.5, 1, 1, 0, 0, -1}));
        EXPECT_EQ(curve.area(1), 0.5 * 1.0 + 0.5 * 0.0 + 0.0 * -1.0);
    }
    EXPECT_EQ(CellsOf(RocOf({}, {}, {}, 1, 1).table), (Vector{1, 1}));
    EXPECT_EQ(RocOf({kNaN, 5}, {1, 0}, {1, 1}, 1, 1).area(1),
              1.0);  // a score that is no number counts as highest
}

// Several blocks have no curve.
TEST(RocCurve, StaysWithSeveralCategories)
{
    LogitProblem q = Binary({0, 1, 2, 0, 2, 1, 1, 0, 2}, {{1, 2, 3, 4, 5, 6, 7, 8, 9}});
    q.categories = 3;
    q.form = kMultinomialForm;
    q.mortality = {0, 0};
    const LogitResults r = RunLogit(q);
    EXPECT_EQ(r.code, 0);
    EXPECT_EQ(r.roc.cells.CountChanged() + r.area.cells.CountChanged(), 0u);
}

// ---- Hosmer-Lemeshow test

Table HosmerOf(Vector observed, const Vector& expected, Vector w)
{
    const int n = static_cast<int>(observed.size());
    Table table(3, 1);
    observed.insert(observed.end(), expected.begin(), expected.end());
    const Vector given = observed, givenW = w;
    Cpp_HLTest(n, observed.data(), w.data(), table.cells.data());
    ExpectIntact(table);
    EXPECT_TRUE(SameBytes(observed, given) && SameBytes(w, givenW));
    return table;
}

TEST(HosmerLemeshow, AgreesWithR)
{
    for (const Case& c : CasesOf("hosmer_")) {
        SCOPED_TRACE(c.name);
        ExpectTable(HosmerOf(c["p"].Column(1), c["p"].Column(2), c["w"].Numbers()),
                    c["table"],
                    "hosmer",
                    {},
                    1E-11);
    }
}

// Two rows of weights 1 and 40 (a tenth of all is 4): the weight of 40 goes with the second of the sorted rows.
TEST(HosmerLemeshow, WeightsStayInStorageOrder)
{
    const double straight = HosmerOf({1, 3}, {0.5, 4}, {1, 40})(kHosmerStatistic);
    ExpectClose(straight, 0.25 / (0.5 * 0.5) + 1.0 / (0.9 * 4.0), kRoundoff);
    EXPECT_EQ(HosmerOf({3, 1}, {4, 0.5}, {1, 40})(kHosmerStatistic), straight);
}

struct Grouping
{
    const char* name;
    Vector observed, expected, weights;
    double groups;
};

TEST(HosmerLemeshow, Groups)
{
    const auto rising = [](int n) {
        Vector v;
        for (int i = 1; i <= n; ++i)
            v.push_back(i / 100.0);
        return v;
    };
    const Vector none, one(1, 1.0), two(2, 1.0);
    const std::vector<Grouping> cases = {
        {"no rows", {}, {}, {}, 0},
        {"one row", {1}, {0.5}, {1}, 1},
        {"two rows", {1, 0}, {0.2, 0.3}, {5, 5}, 2},
        {"weights below 5 in all", Vector(20, 0.0), rising(20), Vector(20, 0.2), 11},
        {"equal values but for the last", Vector(30, 1.0), Vector(30, 0.5), Vector(30, 1.0), 2},
        {"even groups of ten", Vector(100, 0.0), rising(100), Vector(100, 1.0), 10},
        // 2 + 3 of a size of 5 fit; 4 more would be 9, with half of them 7: a new group
        {"a row that outweighs closes before itself", {0, 0, 0, 0}, {1, 2, 3, 4}, {2, 3, 4, 41}, 3},
        // 4 + 3 of a size of 6 is over, with half of them 5.5 not: the group takes the row, then one is empty
        {"a row that fits by half closes after itself", {0, 0, 0}, {1, 2, 3}, {4, 3, 53}, 3},
        {"not numbers", {kNaN, 0, 1, 0}, {kNaN, kNaN, 0.1, 0.2}, {1, kNaN, 1, 1}, 3},
        {"the same with a size", {kNaN, 0, 1, 0}, {kNaN, kNaN, 0.1, 0.2}, {1, 30, 1, 1}, 3}};
    for (const Grouping& c : cases) {
        SCOPED_TRACE(c.name);
        const Table table = HosmerOf(c.observed, c.expected, c.weights);
        EXPECT_EQ(table(kHosmerDf), c.groups - 2);
        if (c.groups > 2) continue;
        EXPECT_EQ(table(kHosmerPValue), kMissing) << "no degree of freedom";
    }
}

// Groups after the eleventh are lost, whole weights are cut, and a perfect fit has no p-value.
TEST(HosmerLemeshow, WhatCounts)
{
    Vector observed(14, 0.5), expected(14, 0.5), w(14, 1.9);
    for (size_t i = 0; i < 14; ++i)
        expected[i] += 0.001 * static_cast<double>(i);
    w.back() = 1000.0;  // a size of 102: one group and the last
    ExpectClose(
        HosmerOf(observed, expected, w)(kHosmerStatistic),
        0.078 * 0.078 / (6.578 * (1.0 - 6.578 / 24.0)) + 0.013 * 0.013 / (0.513 * (1.0 - 0.513 / 1000.0)),
        1E-12);
    const Table perfect = HosmerOf({0.5, 1}, {0.5, 1}, {2, 3});
    EXPECT_EQ(CellsOf(perfect), (Vector{kMissing, 0, kMissing}));
    Vector spread(20), far12(20, 0.0), ones(20, 0.2);
    for (size_t i = 0; i < 20; ++i)
        spread[i] = 0.001 * static_cast<double>(i + 1);
    const double eleven = HosmerOf(far12, spread, ones)(kHosmerDf);
    far12[15] = 1E6;
    EXPECT_EQ(eleven, 9.0);
    EXPECT_EQ(HosmerOf(far12, spread, ones)(kHosmerStatistic),
              HosmerOf(Vector(20, 0.0), spread, ones)(kHosmerStatistic));
}

// ---- marginal effects

struct Effects
{
    int p, link = 0;
    double mortality = 0.0, alpha = 0.05;
    Vector coefficients{}, covariance{}, means{};
    Integers active{}, type{}, nbVars{}, listVars{}, nbSub{}, removed{}, cleaned{};

    Table Run() const
    {
        Effects q = *this;
        Table table(p, 6);
        const int nf = static_cast<int>(type.size()), order = static_cast<int>(listVars.size()) / nf;
        Cpp_GetLogMarginalEffects(q.coefficients.data(),
                                  p,
                                  q.covariance.data(),
                                  q.means.data(),
                                  order,
                                  nf,
                                  mortality,
                                  link,
                                  alpha,
                                  q.active.data(),
                                  q.type.data(),
                                  q.nbVars.data(),
                                  q.listVars.data(),
                                  q.nbSub.data(),
                                  q.removed.data(),
                                  q.cleaned.data(),
                                  table.cells.data());
        ExpectIntact(table);
        return table;
    }

    /** Effect, then the derivatives, of a column whose numbers are given. */
    Vector Derivatives(int idx, int jdx, Integers removedInit, Integers parents) const
    {
        Effects q = *this;
        Table vector(p + 1, 1);
        const int nf = static_cast<int>(type.size()), order = static_cast<int>(listVars.size()) / nf;
        Vector result(1,
                      Cpp_GetLogDerivX(idx,
                                       0,
                                       jdx,
                                       q.coefficients.data(),
                                       p,
                                       static_cast<int>(parents.size()),
                                       q.means.data(),
                                       order,
                                       mortality,
                                       link,
                                       nf,
                                       q.active.data(),
                                       q.type.data(),
                                       q.nbVars.data(),
                                       q.listVars.data(),
                                       q.nbSub.data(),
                                       q.removed.data(),
                                       q.cleaned.data(),
                                       removedInit.data(),
                                       parents.data(),
                                       vector.cells.data()));
        ExpectIntact(vector);
        for (const double cell : vector.Column(1))
            result.push_back(cell);
        return result;
    }

    Integers Parents() const
    {
        Integers parents;
        for (size_t f = 0; f < type.size(); ++f)
            if (active[f] == 1)
                parents.insert(parents.end(), static_cast<size_t>(nbSub[f]), static_cast<int>(f) + 1);
        return parents;
    }
};

Effects EffectsOf(const Case& c)
{
    Effects q{.p = c["means"].rows,
              .link = static_cast<int>(Number(c["link"])),
              .mortality = Number(c["mortality"])};
    q.alpha = Number(c["alpha"]);
    q.coefficients = c["coefficients"].Numbers();
    q.covariance = c["covariance"].Numbers();
    q.means = c["means"].Numbers();
    q.type = WholeNumbers(c["type"]);
    q.nbVars = WholeNumbers(c["nbvars"]);
    q.nbSub = WholeNumbers(c["nbsub"]);
    q.listVars = WholeNumbers(c["listvars"]);
    q.removed = WholeNumbers(c["removed"]);
    q.active.assign(q.type.size(), 1);
    for (const int removed : q.removed)  // states of the design table: a dropped level is not cleaned out
        q.cleaned.push_back(removed == 0 ? 0 : 40000);
    return q;
}

// Mortality scales the effect and not its standard error, and the derivative by the intercept is the logit's: the
// reference says so where it is marked.
TEST(MarginalEffects, AgreeWithR)
{
    for (const Case& c : CasesOf("effects_")) {
        SCOPED_TRACE(c.name);
        const Effects q = EffectsOf(c);
        const Table table = q.Run();
        const Scale errors = [&](int r, int) { return table(r, kMarginalStdError); };
        ExpectTable(table, c["table"], "effects", errors);
        for (int j = 1; j <= q.p; ++j) {
            if (q.removed[At(j)] != 0) continue;
            const Vector got = q.Derivatives(j, j, q.removed, q.Parents()), want = c["derivatives"].Column(j);
            ExpectClose(got[0], table(j, kMarginalEffect), kExact);
            for (size_t k = 0; k < want.size(); ++k)
                EXPECT_NEAR(got[k + 1], want[k], 1E-9) << "column " << j << ", derivative " << k + 1;
        }
    }
}

// One covariate, and a factor of three levels whose first is dropped.
Effects Few()
{
    Effects q{.p = 4, .coefficients = {-0.5, -0.8, 0, 1.2, 0.4}, .means = {1.5, 0.3, 0.3, 0.4}};
    q.covariance.assign(25, 0.0);
    for (size_t k = 0; k < 5; ++k)
        q.covariance[6 * k] = k == 1 ? 0.0 : 0.04;
    q.active = {1, 1};
    q.type = {1, 2};
    q.nbVars = {1, 1};
    q.listVars = {1, 2};
    q.nbSub = {1, 3};
    q.removed = {0, 1, 0, 0};
    q.cleaned = {0, 0, 0, 0};
    return q;
}

TEST(MarginalEffects, MortalityScalesTheEffectAlone)
{
    Effects q = Few();
    const Table plain = q.Run();
    q.mortality = 0.25;
    const Table reduced = q.Run();
    for (int j : {1, 3, 4}) {
        ExpectClose(reduced(j, kMarginalEffect), 0.75 * plain(j, kMarginalEffect), kRoundoff);
        EXPECT_EQ(reduced(j, kMarginalStdError), plain(j, kMarginalStdError));
    }
}

TEST(MarginalEffects, InterceptEntryIsTheLogits)
{
    Effects q = Few();
    q.link = kCloglogLink;
    const double eta = -0.5 - 0.8 * 1.5 + 1.2 * 0.3 + 0.4 * 0.4, t = std::exp(eta), F = 1 - std::exp(-t);
    const Vector d = q.Derivatives(1, 1, q.removed, q.Parents());
    ExpectClose(d[5], (1 - 2 * F) * -0.8 * t * std::exp(-t), kRoundoff * 10);
    ExpectClose(d[1], 1.5 * (1 - t) * t * std::exp(-t) * -0.8 + t * std::exp(-t), kRoundoff * 10);
}

TEST(MarginalEffects, OneSidedTail)
{
    const Table table = Few().Run();
    EXPECT_LT(table(1, kMarginalZ), -1.0);
    EXPECT_GT(table(1, kMarginalPValue), 0.8);
    EXPECT_GT(table(3, kMarginalZ), 1.0);
    EXPECT_LT(table(3, kMarginalPValue), 0.1);
}

// Cleaned columns: with cells of their own they are skipped, and without the others close up.
TEST(MarginalEffects, CleanedColumns)
{
    const Effects q = Few();
    const Table whole = q.Run();
    Effects marked = q;
    marked.coefficients[2] = 99.0;  // of a column at mean 0
    marked.means[1] = 0.0;
    marked.cleaned = {0, 50000, 0, 0};
    const Table skipped = marked.Run();
    Effects closed = q;
    closed.p = 3;
    closed.coefficients.erase(closed.coefficients.begin() + 2);
    closed.means.erase(closed.means.begin() + 1);
    closed.removed.erase(closed.removed.begin() + 1);
    closed.cleaned = {0, 50000, 0, 0};
    closed.covariance.assign(16, 0.0);
    for (size_t k = 0; k < 4; ++k)
        closed.covariance[5 * k] = 0.04;
    const Table shorter = closed.Run();
    for (int c = 1; c <= 6; ++c) {
        EXPECT_TRUE(skipped.Kept(2, c));
        EXPECT_EQ(whole(2, c), c == kMarginalEffect ? 0.0 : kMissing);
        for (int row : {1, 3, 4}) {
            ExpectClose(skipped(row, c), whole(row, c), kRoundoff * 10);
            ExpectClose(shorter(row == 1 ? 1 : row - 1, c), whole(row, c), kRoundoff * 10);
        }
    }
    const Vector full = q.Derivatives(4, 4, {0, 40000, 0, 0}, q.Parents()),
                 few = closed.Derivatives(3, 4, {0, 50000, 0, 0}, q.Parents());
    EXPECT_EQ(few, (Vector{full[0], full[1], full[3], full[4], full[5]}));
}

// A later column that shares the level but is not in the model keeps its mean, and with it what its slope adds.
TEST(MarginalEffects, RemovedColumnsAreNotCleared)
{
    Effects q{.p = 5, .coefficients = {0.2, 0.3, -0.6, 0, 0.7, 0}, .means = {1.5, 0.4, 0.6, 0.5, 1}};
    q.covariance.assign(36, 0.0);
    q.active = {1, 1, 1};
    q.type = {1, 2, 5};
    q.nbVars = {1, 1, 2};
    q.listVars = {1, 2, 1, 0, 0, 2};
    q.nbSub = {1, 2, 2};
    q.cleaned.assign(5, 0);
    const double eta = 0.2 + 0.3 * 1.5, product = 0.7 * 0.5;
    const auto F = [](double x) { return 1.0 / (1.0 + std::exp(-x)); };
    for (int removed : {0, 1}) {
        q.removed = {0, 0, 0, removed, 0};
        ExpectClose(q.Run()(2, kMarginalEffect),
                    F(eta - 0.6 + product) - F(removed == 1 ? eta + product : eta),
                    kRoundoff * 10);
    }
}

TEST(MarginalEffects, NoHarmFromBadNumbers)
{
    Effects q = Few();
    EXPECT_EQ(q.Derivatives(0, 1, q.removed, q.Parents()), Vector(6, 0.0));
    EXPECT_EQ(q.Derivatives(5, 1, q.removed, q.Parents()), Vector(6, 0.0));
    EXPECT_EQ(q.Derivatives(1, 5, q.removed, q.Parents()), Vector(6, 0.0));
    q.Derivatives(2, 2, q.removed, {9, -1, 0, 2});
    q.nbSub = {1, -4};
    EXPECT_TRUE(q.Run().Kept(2, 1));
    q.nbSub = {1, 2};
    q.covariance[0] = kNaN;
    const Table table = q.Run();
    EXPECT_EQ(table(1, kMarginalStdError), kMissing);
    EXPECT_TRUE(table.Kept(4, 1));
    q.type = {1, 4};  // an interaction of variables that are none
    q.nbVars = {1, 7};
    q.listVars = {1, 44};
    q.Run();
    q.nbVars = {1, 1};
    q.Run();
    q.p = 0;
    q.Run();
}

// ---- combined coefficients

struct Combined
{
    int m, p;
    Vector L, coefficients{}, mean{}, sd{}, covariance{};
    double sdY = 2.0, alpha = 0.05;
    bool normed = false;

    std::pair<Table, Table> Run() const
    {
        Combined q = *this;
        std::pair<Table, Table> tables{{m + 1, 6}, {m, 6}};
        ComputeCoeffStatsLog(q.L.data(),
                             m,
                             p,
                             q.coefficients.data(),
                             q.mean.data(),
                             q.sd.data(),
                             sdY,
                             normed ? -1 : 0,
                             q.covariance.data(),
                             alpha,
                             tables.first.cells.data(),
                             tables.second.cells.data());
        ExpectIntact(tables.first, tables.second);
        return tables;
    }
};

TEST(CombinedCoefficients, AgreeWithR)
{
    for (const Case& c : CasesOf("combined_")) {
        SCOPED_TRACE(c.name);
        Combined q{.m = c["L"].rows, .p = c["L"].cols, .L = c["L"].Numbers()};
        q.coefficients = c["coefficients"].Numbers();
        q.mean = c["mean"].Numbers();
        q.sd = c["sd"].Numbers();
        q.covariance = c["covariance"].Numbers();
        q.sdY = Number(c["sdy"]);
        q.normed = Number(c["normed"]) == 1.0;
        const auto [stats, beta] = q.Run();
        ExpectTable(stats, c["stats"], "combined", [&](int r, int col) {
            return col > 4 ? stats(r, 2) : 0.0;
        });
        ExpectTable(beta, c["beta"], "combined beta", [&](int r, int col) {
            return col > 4 ? beta(r, 2) : 0.0;
        });
    }
}

// Rows without a standard error have a value alone; the two tables differ in what counts as one.
TEST(CombinedCoefficients, WithoutStandardError)
{
    Combined q{.m = 2, .p = 1, .L = {1, 0}, .coefficients = {3, 1, 0}, .mean = {0, 0}, .sd = {1, 1}};
    q.covariance = {1E-32, 0, 0, 0, -1, 0, 0, 0, 0};
    q.sdY = 1.0;
    const auto [stats, beta] = q.Run();
    const Vector gone = {kMissing, kMissing, kMissing, kMissing};
    for (int c = 3; c <= 6; ++c) {
        EXPECT_EQ(stats(1, c), kMissing);  // a negative variance
        EXPECT_NE(stats(2, c), kMissing);
        EXPECT_EQ(stats(3, c), kMissing);
        EXPECT_EQ(beta(1, c), kMissing);
        EXPECT_EQ(beta(2, c), kMissing);
    }
    EXPECT_EQ(stats(1, kCombinedValue), 1.0);
    EXPECT_EQ(stats(1, kCombinedStdError), 0.0);
    ExpectClose(stats(2, kCombinedStdError), 1E-16, kRoundoff);
    q.m = 0;
    q.Run();
}

}  // namespace
}  // namespace logistic_test
