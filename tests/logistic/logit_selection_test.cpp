/* Selections of variables: histories and type III tables against R, histories against runs without a selection, the
 * oddities of the rules, and data that cause trouble. */
#include <cmath>
#include <random>

#include "logit_fixture.h"
#include "support/reference_file.h"

namespace logistic_test {
namespace {

constexpr int kBest = 0, kStepForward = 1, kStepBackward = 2, kPureForward = 3, kPureBackward = 4;
constexpr int kRatio = 0, kWald = 1;

// What depends on where the iteration stopped agrees as far as estimates do (logit_reference_test.cpp says why).
constexpr double kSettled = 1E-8;

// The columns of a history that hardly depend on where the iteration stopped.
void ExpectCriteria(const LogitResults& r, const Reference& expected)
{
    for (int row = 1; row <= r.models.rows; ++row)
        for (int c :
             {kModelsMinus2LogLikelihood, kModelsLikelihoodRatioP, kModelsScoreP, kModelsAic, kModelsSchwarz})
        {
            const std::string& cell = expected.cells[r.models.Position(row, r.p + c)];
            if (cell != "kept") ExpectClose(r.models(row, r.p + c), std::stod(cell), kPrinted);
        }
}

// The relative error of a p-value is that of its statistic times the size of its logarithm.
Scale ByLogarithms(const Table& table, int first, int last)
{
    return [&table, first, last](int r, int c) {
        const double p = table(r, c);
        return c >= first && c <= last && p > 0.0 ? p * (1.0 - std::log(p)) : 0.0;
    };
}

Integers WholeNumbers(const Reference& table)
{
    Integers numbers;
    for (const double number : table.Numbers())
        numbers.push_back(static_cast<int>(number));
    return numbers;
}

LogitProblem ProblemOf(const Case& c)
{
    const Integers options = WholeNumbers(c["options"]);
    LogitProblem q;
    q.n = c["y"].rows;
    q.p = c["x"].cols;
    q.qualitative = options[0];
    q.categories = options[1];
    q.form = options[2];
    q.link = options[3];
    q.y = c["y"].Numbers();
    q.x = c["x"].Numbers();
    q.wc = c["wc"].Numbers();
    q.wr.assign(q.y.size(), 1.0);
    q.design.assign(static_cast<size_t>(q.p * q.p), 0.0);
    for (int j = 0; j < q.p; ++j)
        q.design[static_cast<size_t>(j * q.p + j)] = 1.0;
    q.mortality.assign(static_cast<size_t>(q.Blocks()), 0.0);
    q.type = WholeNumbers(c["type"]);
    q.parents = WholeNumbers(c["parents"]);
    q.states = WholeNumbers(c["states"]);
    q.active.assign(q.type.size(), 1);
    return q;
}

void SetSelection(LogitProblem& q, const Vector& run)
{
    q.selection = static_cast<int>(run[0]);
    q.criterion = static_cast<int>(run[1]);
    q.pIn = run[2];
    q.pOut = run[3];
    q.minSize = static_cast<int>(run[4]);
    q.maxSize = static_cast<int>(run[5]);
}

const std::vector<Case>& Cases()
{
    static const std::vector<Case> cases = ReadCases("logit_selection_values.txt");
    return cases;
}

LogitProblem CaseNamed(const std::string& name)
{
    for (const Case& c : Cases())
        if (c.name == name) return ProblemOf(c);
    ADD_FAILURE() << name;
    return {};
}

TEST(LogitSelectionReference, HistoriesAndTypeIII)
{
    int runs = 0;
    for (const Case& c : Cases()) {
        LogitProblem plain = ProblemOf(c);
        plain.info[kTypeIII] = 1;
        const LogitResults full = RunLogit(plain);
        SCOPED_TRACE(c.name);
        for (int col = kTypeIIIWald; col <= kTypeIIICols; ++col)
            EXPECT_EQ(full.typeIII(full.nf + 1, col), kMissing);
        EXPECT_TRUE(full.typeIII.Kept(full.nf + 1, kTypeIIIDf));
        Table table(full.nf, 5);
        for (int r = 1; r <= full.nf; ++r)
            for (int col = 1; col <= 5; ++col)
                table.cells[table.Position(r, col)] = full.typeIII(r, col);
        ExpectTable(table,
                    c["type_iii"],
                    "type_iii",
                    ByLogarithms(table, kTypeIIIWaldP, kTypeIIIWaldP),
                    kSettled);
        for (int i = 1; c.tables.contains(std::to_string(i) + "_run"); ++i, ++runs) {
            const std::string prefix = std::to_string(i);
            SCOPED_TRACE(prefix);
            LogitProblem q = ProblemOf(c);
            SetSelection(q, c[prefix + "_run"].Numbers());
            const LogitResults r = RunLogit(q);
            EXPECT_EQ(r.code, 0);
            ExpectTable(r.models,
                        c[prefix + "_models"],
                        "models",
                        ByLogarithms(r.models, q.p + kModelsLikelihoodRatioP, q.p + kModelsWaldP),
                        kSettled);
            ExpectCriteria(r, c[prefix + "_models"]);
            EXPECT_EQ(r.states, WholeNumbers(c[prefix + "_states"]));
        }
    }
    EXPECT_EQ(runs, 42);
}

// 600 rows of two columns with an effect and one without; a fifth of the responses is 1 whatever the columns are.
LogitProblem WithMortality()
{
    std::mt19937 generator(5);
    std::normal_distribution<double> normal;
    std::vector<Vector> x(3, Vector(600));
    Vector y;
    for (size_t i = 0; i < 600; ++i) {
        for (Vector& column : x)
            column[i] = normal(generator);
        const double eta = 3.0 * x[0][i] + 1.5 * x[2][i] + 0.5 * normal(generator) - 1.0;
        y.push_back(i % 5 == 0 || eta > 0.0 ? 1.0 : 0.0);
    }
    return Binary(y, x);
}

struct Setting
{
    const char* name;
    std::string data;
    int link;
    size_t option;
    double mortality;
    int selection, criterion;
    double pIn, pOut;
    int steps;  // rows at least, so that there is something to compare
};

// Each row of a history is the run of its columns, and a likelihood-ratio removal the difference of two such runs, also
// where R has no selection to compare with.
TEST(LogitSelectionInvariants, RowsAreRunsOfTheirColumns)
{
    const Setting settings[] = {
        {"log-log", "birthwt", kLoglogLink, kUseTolerance, 0.0, kStepForward, kRatio, 0.3, 0.1, 6},
        {"firth forward", "birthwt", kLogitLink, kFirth, 0.0, kStepForward, kRatio, 0.3, 0.1, 6},
        {"firth backward", "birthwt", kProbitLink, kFirth, 0.0, kPureBackward, kRatio, 0.05, 1E-4, 3},
        {"mortality", "", kLogitLink, kWithMortality, 0.2, kPureBackward, kRatio, 0.05, 0.01, 2},
        {"mortality", "", kLogitLink, kWithMortality, 0.2, kStepForward, kRatio, 0.5, 0.3, 2},
        {"fixed intercept", "birthwt", kLogitLink, kFixedIntercept, 0.0, kStepForward, kWald, 0.3, 0.1, 3},
        {"fixed intercept", "birthwt", kLogitLink, kFixedIntercept, 0.0, kStepBackward, kRatio, 0.01, 0.2, 3},
    };
    for (const Setting& s : settings) {
        SCOPED_TRACE(s.name);
        LogitProblem q = s.mortality > 0.0 ? WithMortality() : CaseNamed(s.data);
        q.link = s.link;
        q.info[s.option] = 1;
        q.mortality = {s.mortality};
        LogitProblem plain = q;
        SetSelection(q, {double(s.selection), double(s.criterion), s.pIn, s.pOut, 1, 1});
        const LogitResults r = RunLogit(q);
        ASSERT_EQ(r.code, 0);
        const int p = q.p;
        int rows = 0;
        double W = static_cast<double>(q.n);
        for (int row = 1; row <= r.models.rows && !r.models.Kept(row, kModelsFactors); ++row, ++rows) {
            SCOPED_TRACE(row);
            double free = 0.0;
            for (int j = 1; j <= p; ++j) {
                const double mask = r.models(row, kModelsMask + j - 1);
                free += 1.0 - mask;
                plain.states[At(j)] = mask == 1.0 ? std::max(q.states[At(j)], 1) : 0;
            }
            const LogitResults one = RunLogit(plain);
            const double minus2L = one.fit(kRowMinus2LogLikelihood, kFittedModel);
            const double parameters =
                free + (q.info[kFixedIntercept] == 1 ? 0 : 1) + (q.info[kWithMortality] == 1 ? 1 : 0);
            ExpectClose(r.models(row, p + kModelsMinus2LogLikelihood), minus2L, kPrinted);
            ExpectClose(r.models(row, p + kModelsAic), minus2L + 2.0 * parameters, kPrinted);
            ExpectClose(r.models(row, p + kModelsSchwarz), minus2L + std::log(W) * parameters, kPrinted);
            EXPECT_EQ(r.models(row, kModelsMask + p), q.info[kFixedIntercept]);
            EXPECT_EQ(r.models(row, kModelsMask + p + 1), 1 - q.info[kWithMortality]);
            // A fixed intercept takes a degree of freedom from the tests of a row, so one column has none.
            if (q.info[kFixedIntercept] == 1 && free == 1.0) {
                EXPECT_EQ(r.models(row, p + kModelsScoreP), kMissing);
            }
            // With an estimated intercept the tests have the degrees of freedom of the run.
            for (int test = kLikelihoodRatioTest; test <= kWaldTest && q.info[kFixedIntercept] == 0; ++test)
                ExpectClose(r.models(row, p + kModelsLikelihoodRatioP + test - 1),
                            one.tests(test, kTestP),
                            1E-5);
            const bool removedNext = row < r.models.rows && r.models(row + 1, kModelsStep) == 0.0;
            if (removedNext && q.criterion == kRatio) {
                EXPECT_NEAR(r.models(row, p + kModelsRemovalStatistic),
                            r.models(row + 1, p + kModelsMinus2LogLikelihood) - minus2L,
                            1E-7);
            }
        }
        EXPECT_GE(rows, s.steps);
        // The model that the run reports is that of the last row, or without a step the one without columns.
        ASSERT_GE(rows, 1);
        ExpectClose(r.fit(kRowMinus2LogLikelihood, kFittedModel),
                    r.models(rows, p + kModelsMinus2LogLikelihood),
                    kPrinted);
    }
}

// A response without a success and, below, a column that the likelihood does not see, or that it cannot bear.
TEST(LogitSelectionTrouble, FailedFits)
{
    LogitProblem q = CaseNamed("stand_in");
    std::fill(q.y.begin(), q.y.end(), 0.0);
    const int expected[] = {-7, -8, -5, -8, -5};
    for (int selection = kBest; selection <= kPureBackward; ++selection) {
        q.selection = selection;
        EXPECT_EQ(RunLogit(q).code, expected[selection]) << selection;
    }
    // Column 1 varies where Wr is 0 alone. Without variance its Wald test has no statistic and p = 0, so the factor of
    // two columns is removed; what is left cannot be fitted.
    LogitProblem w = CaseNamed("birthwt");
    const auto n = static_cast<size_t>(w.n);
    Vector x(w.x.begin() + 2 * w.n, w.x.begin() + 5 * w.n);
    std::fill_n(x.begin(), n, 0.0);
    x[0] = 1.0;
    x[1] = -1.0;
    w.x = x;
    w.p = 3;
    w.wr[0] = w.wr[1] = 0.0;
    w.type = {1, 2};
    w.active = {1, 1};
    w.parents = {1, 2, 2};
    w.states = {0, 0, 0};
    w.design.assign(9, 0.0);
    w.info[kFixedIntercept] = 1;
    SetSelection(w, {kPureBackward, kWald, 0.05, 0.0, 1, 1});
    const LogitResults r = RunLogit(w);
    EXPECT_EQ(r.code, -6);
    EXPECT_EQ(r.models(1, w.p + kModelsRemovalP) > 0.0, true);
    EXPECT_TRUE(r.models.Kept(2, kModelsFactors));
    EXPECT_EQ(r.fit.cells.CountChanged(), 0u);
    // Under the likelihood ratio the column has statistic 0 and leaves.
    w.criterion = kRatio;
    const LogitResults ratio = RunLogit(w);
    EXPECT_EQ(ratio.code, 0);
    EXPECT_EQ(ratio.states, (Integers{1, 0, 0}));
}

// Column 3 overflows the Hessian of every model that has it: subsets with its factor lose a column, and the factor no
// longer counts in their size.
TEST(LogitSelectionOddities, SubsetsWithoutSomeColumns)
{
    LogitProblem q;
    q.n = 40;
    q.p = 5;
    q.form = kBinomialForm;
    q.link = kProbitLink;
    q.qualitative = 4;
    q.x.assign(200, 0.0);
    std::mt19937 generator(2);
    std::normal_distribution<double> normal;
    for (size_t i = 0; i < 40; ++i) {
        q.x[i] = normal(generator);
        if (i % 4 < 3) q.x[40 * (1 + i % 4) + i] = 1.0;
        q.x[160 + i] = i % 3 == 0 ? 1.0 : 0.0;
        q.y.push_back(static_cast<double>(i % 5) * 4.0 + std::round(2.0 * q.x[i]) + 8.0);
    }
    q.wc.assign(40, 50.0);
    q.wr.assign(40, 1.0);
    q.wc[5] = 0.0;
    q.x[2 * 40 + 5] = 5E153;
    q.y[5] = 100.0;
    q.mortality = {0.0};
    q.type = {1, 2, 2};
    q.active = {1, 1, 1};
    q.parents = {1, 2, 2, 2, 3};
    q.states.assign(5, 0);
    q.design.assign(25, 0.0);
    SetSelection(q, {kBest, 0, 0, 0, 1, 3});
    const LogitResults r = RunLogit(q);
    ASSERT_EQ(r.code, 0);
    // Leaves: 1, 2, 3, 12, 13, 23, 123. Of size 1: 1, 3, and parts of 12 and 23; of size 2: 13 and a part of 123.
    EXPECT_EQ(r.models(1, kModelsStep), 4.0);
    EXPECT_EQ(r.models(2, kModelsStep), 2.0);
    EXPECT_EQ(r.models(2, kModelsFactor), 7.0);
    const Vector mask = {0, 0, 1, 0, 0, 0, 1};
    for (int j = 1; j <= 7; ++j) {
        EXPECT_EQ(r.models(2, kModelsMask + j - 1), mask[At(j)]);
        EXPECT_TRUE(r.models.Kept(3, j));
    }
    for (int c = kModelsMinus2LogLikelihood; c <= kModelsSchwarz; ++c)
        EXPECT_EQ(r.models(3, q.p + c), korvenrg::kLargest);
    EXPECT_EQ(r.states, (Integers{0, 0, 1, 0, 0}));
    EXPECT_EQ(r.nbActive, 3);
}

// Both factors enter, the first leaves and comes back, the second leaves: the selection is where it was after its first
// step and ends. The fifth step has no row.
TEST(LogitSelectionTrouble, ComesBackToAModel)
{
    LogitProblem q = Binary({0, 1, 0, 1}, {{0, 1, 0, 0}, {1, 0, 0, 0}, {0, 1, 0, 0}});
    q.link = kProbitLink;
    q.type = {4, 5};
    q.active = {1, 1};
    q.parents = {1, 1, 2};
    q.states = {40000, 0, 0};
    q.info[kFixedIntercept] = q.info[kFirth] = 1;
    q.convergence = 1E-8;
    q.maxIterations = 2;
    SetSelection(q, {kStepForward, kWald, 0.999, 0.5, 1, 1});
    const LogitResults r = RunLogit(q);
    EXPECT_EQ(r.code, 0);
    EXPECT_EQ(r.models.Column(kModelsFactors), (Vector{1, 2, 1, 2}));
    EXPECT_EQ(r.models.Column(kModelsStep), (Vector{1, 1, 0, 1}));
    EXPECT_EQ(r.models.Column(kModelsFactor), (Vector{1, 2, 1, 1}));
    EXPECT_EQ(r.states, (Integers{40000, 0, 1}));
}

TEST(LogitSelectionOddities, EdgesOfTheRules)
{
    // The last factor stays, whatever its test says, and is not tested.
    LogitProblem one = CaseNamed("stand_in");
    one.active = {1, 0, 0, 0};
    SetSelection(one, {kPureBackward, kWald, 0.05, -1.0, 1, 1});
    const LogitResults last = RunLogit(one);
    EXPECT_EQ(last.code, 0);
    EXPECT_EQ(last.states, (Integers{0, 1, 1, 1}));
    EXPECT_EQ(last.models(1, kModelsFactors), 1.0);
    EXPECT_EQ(last.models(1, kModelsFactor), kModelsStart);
    EXPECT_TRUE(last.models.Kept(1, 4 + kModelsRemovalP) && last.models.Kept(2, kModelsFactors));
    // Limits that everything passes: all factors enter, then none is left; all leave but one.
    LogitProblem q = CaseNamed("stand_in");
    SetSelection(q, {kPureForward, kRatio, 2.0, 1.0, 1, 1});
    EXPECT_EQ(RunLogit(q).nbActive, 4);
    SetSelection(q, {kPureBackward, kRatio, 2.0, 0.0, 1, 1});
    EXPECT_EQ(RunLogit(q).nbActive, 1);
    // p-values of 0 are equal: the first subset of the first size is the best.
    for (double& w : q.wc)
        w = 1E4;
    SetSelection(q, {kBest, 1, 0, 0, 1, 2});
    const LogitResults equal = RunLogit(q);
    EXPECT_EQ(equal.models(1, 4 + kModelsLikelihoodRatioP), 0.0);
    EXPECT_EQ(equal.states, (Integers{0, 1, 1, 1}));
    // An entry p-value of 0 is not below a limit of 0.
    SetSelection(q, {kPureForward, kRatio, 0.0, 0.1, 1, 1});
    const LogitResults none = RunLogit(q);
    EXPECT_TRUE(none.nbActive == 0 && none.code == 0);
    EXPECT_EQ(none.models.cells.CountChanged(), 0u);
    // The empty subset has no tests: it has a row, and by a p-value it is never the best.
    q = CaseNamed("stand_in");
    SetSelection(q, {kBest, 5, 0, 0, 0, 1});
    const LogitResults empty = RunLogit(q);
    EXPECT_EQ(empty.models(1, kModelsFactors), 0.0);
    EXPECT_EQ(empty.models(1, 4 + kModelsWaldP), kMissing);
    ExpectClose(empty.models(1, 4 + kModelsMinus2LogLikelihood),
                empty.fit(kRowMinus2LogLikelihood, 1),
                kPrinted);
    q.criterion = 3;
    const LogitResults tested = RunLogit(q);
    EXPECT_TRUE(tested.models.Kept(1, kModelsFactor));
    EXPECT_EQ(tested.nbActive, 1);
    // No size within the limits, or none with a criterion.
    q.minSize = 3;
    q.maxSize = 2;
    EXPECT_EQ(RunLogit(q).code, -7);
    q.minSize = q.maxSize = 0;
    EXPECT_EQ(RunLogit(q).code, -7);
}

}  // namespace
}  // namespace logistic_test
