// Prints what the doors compute on a small data set: one line for each cell, its name and its value to all digits.

#include <cstdio>
#include <vector>

#include "korvenrg.h"

namespace {

using Vector = std::vector<double>;
using Integers = std::vector<int>;

constexpr int kRows = 24;
constexpr int kColumns = 3;
constexpr std::size_t kN = kRows;
constexpr std::size_t kP = kColumns;

void Print(const char* table, int run, const Vector& cells)
{
    for (std::size_t k = 0; k < cells.size(); ++k) {
        std::printf("%s.%d(%zu) %.17g\n", table, run, k + 1, cells[k]);
    }
}

// Columns without pattern whose cells are quotients of small integers.
Vector DesignTable()
{
    Vector cells;
    for (int j = 1; j <= kColumns; ++j) {
        for (int i = 1; i <= kRows; ++i) {
            cells.push_back((i * j * 7 % 23 + i / 3.0) / (j + 1.0));
        }
    }
    return cells;
}

Vector Response(const Vector& x)
{
    Vector y;
    for (std::size_t i = 0; i < kN; ++i) {
        y.push_back(2.0 + x[i] - 0.5 * x[kN + i] + static_cast<double>(i * i % 7) / 4.0);
    }
    return y;
}

Vector RegressionWeights()
{
    Vector weights;
    for (std::size_t i = 0; i < kN; ++i) {
        weights.push_back(0.5 + static_cast<double>(i % 4) / 3.0);
    }
    return weights;
}

// One weighted fit, every table of it; `fixedIntercept` is the option of that name.
void PrintFit(int run, double fixedIntercept)
{
    Vector x = DesignTable();
    Vector y = Response(x);
    Vector caseWeights(kN, 1.0);
    Vector weights = RegressionWeights();
    Integers types(kP, 1), active(kP, 1), counts(kP, 1), variables{1, 2, 3}, columns(kP, 1), parents{1, 2, 3};
    Vector frequencies(kP);
    Vector map(kP * kP);
    map[0] = map[4] = map[8] = 1.0;
    Vector options{fixedIntercept, 0, 1e-12, 0, -1, 2, 0, 0, 0, 0, 0.05, 0, 0, 0, 0, 0, 1};
    int pFinal = 0;
    int best = 0;
    Integers states(kP, -1);
    Vector models(2 * kP * (kP + 12)), fit(30), anova(15), type1(15), type2(15), type3(15), type4(15);
    Vector fitted(kP + 1), reported(kP + 1), table(6 * (kP + 1)), beta(6 * kP),
        covariance((kP + 1) * (kP + 1));
    Vector predictions(kN), errors(6 * kN), residuals(3 * kN), cook(kN), leaveOneOut(kN);
    Vector swept((kP + 1) * (kP + 1)), means(kP + 1), deviations(kP + 1);
    const int outcome = RunOLS1(kRows,
                                kColumns,
                                y.data(),
                                x.data(),
                                caseWeights.data(),
                                weights.data(),
                                kColumns,
                                1,
                                kColumns,
                                types.data(),
                                active.data(),
                                counts.data(),
                                variables.data(),
                                columns.data(),
                                parents.data(),
                                frequencies.data(),
                                map.data(),
                                options.data(),
                                &pFinal,
                                models.data(),
                                &best,
                                states.data(),
                                fit.data(),
                                anova.data(),
                                type1.data(),
                                type2.data(),
                                type3.data(),
                                type4.data(),
                                fitted.data(),
                                reported.data(),
                                table.data(),
                                beta.data(),
                                covariance.data(),
                                predictions.data(),
                                errors.data(),
                                residuals.data(),
                                cook.data(),
                                leaveOneOut.data(),
                                swept.data(),
                                means.data(),
                                deviations.data());
    Print("outcome", run, {static_cast<double>(outcome), static_cast<double>(pFinal)});
    Print("oModels", run, models);
    Print("oFitCoeffs", run, fit);
    Print("oANOVATable", run, anova);
    Print("oStdevCoeffs", run, table);
    Print("oBetaCoeffs", run, beta);
    Print("oVarCovCoef", run, covariance);
    Print("oYPred", run, predictions);
    Print("oStDevYPred", run, errors);
    Print("oResiduals", run, residuals);
    Print("oCooksD", run, cook);
    Print("oAdjPred", run, leaveOneOut);
    Print("oRMat", run, swept);
}

// Ranked means of four categories of six rows, and each test of their differences.
void PrintComparisons()
{
    constexpr int kCategories = 4;
    constexpr int kPairs = 6;
    constexpr int kFirstTest = 1;
    constexpr int kLastTest = 11;
    Vector x(kN * kCategories), weights(kN, 1.0), sizes(kCategories, 6.0), variances{1.5, 0.25, 2.0, 1.0};
    for (std::size_t i = 0; i < kN; ++i) {
        x[kN * (i % kCategories) + i] = 1.0;
    }
    Vector coefficients{0.5, -1.25, 3.0, 0.0, 10.0}, covariance(25);
    for (std::size_t i = 0; i < 5; ++i) {
        for (std::size_t j = 0; j < 5; ++j) {
            covariance[5 * i + j] = i == j ? 0.4 : i == 4 || j == 4 ? -0.2 : 0.2;
        }
    }
    Integers columns{kCategories}, parents(kCategories, 1), removed(kCategories, 0), verdicts(kPairs);
    Vector means(4 * kCategories), contrasts(10 * kPairs), ranks(kCategories);
    int missing = 0;
    Cpp_GetMeansContrastsStatVar2(x.data(),
                                  weights.data(),
                                  kRows,
                                  kCategories,
                                  kPairs,
                                  1,
                                  1,
                                  1,
                                  2,
                                  columns.data(),
                                  parents.data(),
                                  removed.data(),
                                  coefficients.data(),
                                  covariance.data(),
                                  0.05,
                                  20.0,
                                  means.data(),
                                  contrasts.data(),
                                  ranks.data(),
                                  &missing);
    Print("oMeans", 1, means);
    Print("Ranks", 1, ranks);
    for (int test = kFirstTest; test <= kLastTest; ++test) {
        Vector tested = contrasts;
        double level = 0.0;
        MCATest(kCategories,
                sizes.data(),
                variances.data(),
                0.4,
                0,
                tested.data(),
                kPairs,
                test,
                20.0,
                0.05,
                &level,
                verdicts.data());
        Print("ioContrastsStats", test, tested);
        Print("newalpha", test, {level});
    }
}

}  // namespace

int main()
{
    PrintFit(1, 0.0);
    PrintFit(2, 1.0);
    PrintComparisons();
    return 0;
}
