#include "logistic/logit_entry_statistics.h"

#include <algorithm>

#include "kernel/distributions/chi_square.h"
#include "kernel/linalg/elimination.h"
#include "kernel/linalg/inverse_products.h"
#include "kernel/linalg/products.h"
#include "kernel/linalg/vectors.h"
#include "kernel/linalg/weighted_products.h"

namespace korvenrg::logistic {

namespace {

// Pivot limit of the inverse of A.
constexpr double kPivotLimit = 1E-12;

using ColumnList = std::vector<const double*>;

ColumnList PointersTo(const LogitModel& model, const std::vector<int>& columns)
{
    ColumnList pointers;
    for (const int column : columns) {
        pointers.push_back(model.columns[static_cast<std::size_t>(column - 1)]);
    }
    return pointers;
}

// The columns in the model.
ColumnList FreeColumns(const LogitRun& run)
{
    std::vector<int> columns;
    for (int j = 1; j <= run.fit.layout.columns; ++j) {
        if (run.fit.IsFree(j)) columns.push_back(j);
    }
    return PointersTo(run.model, columns);
}

matrix<double> CrossProducts(const ColumnList& columns, const std::vector<double>& weights)
{
    const int q = static_cast<int>(columns.size());
    matrix<double> products(q, q);
    std::vector<double> sums(columns.size());
    linalg::WeightedProducts(columns,
                             static_cast<int>(weights.size()),
                             nullptr,
                             weights.data(),
                             {.slopes = nullptr, .constants = sums.data(), .products = products.data});
    return products;
}

// X'FZ.
matrix<double> MixedProducts(const ColumnList& X, const ColumnList& Z, const std::vector<double>& F)
{
    matrix<double> products(static_cast<int>(X.size()), static_cast<int>(Z.size()));
    std::vector<double> weighted(F.size());
    for (std::size_t j = 0; j < Z.size(); ++j) {
        for (std::size_t i = 0; i < F.size(); ++i) {
            weighted[i] = F[i] * Z[j][i];
        }
        linalg::ColumnProducts(X, static_cast<int>(F.size()), weighted.data(), products.data + j * X.size());
    }
    return products;
}

// The columns of the model with the intercept, and X'FX. The weights of the observations are not in F as they would be in
// the information, and the first factor is not adjusted for the intercept. Pinned by
// LogitSelectionReference.HistoriesAndTypeIII.
struct ModelInformation
{
    ColumnList columns;
    matrix<double> products;

    explicit ModelInformation(const LogitRun& run)
        : columns(WithIntercept(run)), products(CrossProducts(columns, run.work.density))
    {
    }

    static ColumnList WithIntercept(const LogitRun& run)
    {
        ColumnList columns = FreeColumns(run);
        if (!columns.empty() && run.fitOptions.estimatesIntercept) columns.push_back(run.work.ones.data());
        return columns;
    }
};

// g' A^-1 g; 0 without an inverse.
double ScoreForm(matrix<double>& gradient, matrix<double>& A)
{
    matrix<double> inverse(A.rows, A.cols);
    matrix<double>* target = &inverse;
    short failed = 0;
    if (InverseWithTolerance(&A, target, failed, kPivotLimit) != 0) return 0.0;
    return M_ProductTrVBV(&gradient, A.rows, &inverse);
}

FactorTest ScoreTest(const LogitRun& run, ModelInformation& model, int factor)
{
    const std::vector<int> columns = ColumnsToEnter(run.factors, run.fit.layout.columns, factor);
    const int df = static_cast<int>(columns.size());
    if (df == 0) return {};
    const ColumnList Z = PointersTo(run.model, columns);
    const int q = static_cast<int>(model.columns.size());
    matrix<double> A = CrossProducts(Z, run.work.density);
    if (q > 0) {
        matrix<double> mixed = MixedProducts(model.columns, Z, run.work.density);
        matrix<double> explained(df, df);
        if (M_ProductTrAinvBA(&mixed, q, df, &model.products, kTrue, &explained) != 0) return {};
        matrix<double>* target = &A;
        M_Sums1As2B(&A, df, df, &explained, 1.0, -1.0, target);
    }
    matrix<double> gradient(df, 1);
    for (int i = 1; i <= df; ++i) {
        gradient.vbset(i, run.fit.gradient.vbget(columns[static_cast<std::size_t>(i - 1)]));
    }
    const double statistic = ScoreForm(gradient, A);
    return {statistic, pValChiSq(statistic, df), df};
}

// The score statistic of a multinomial logit of these columns. It looks at slopes of 0 alone, so no fit is made.
double MultinomialScore(const LogitRun& run, const ColumnList& columns)
{
    LogitModel model = run.model;
    model.layout.columns = static_cast<int>(columns.size());
    model.columns = columns;
    model.form = kMultinomial;
    model.link = kLogit;
    FitOptions options = run.fitOptions;
    options.firth = false;
    LogitFit fit(model.layout);
    for (int k = 1; k <= model.layout.blocks; ++k) {
        fit.fixedMask.vbset(model.layout.Intercept(k), options.estimatesIntercept ? kFree : kFixed);
        fit.fixedMask.vbset(model.layout.Mortality(k), options.estimatesMortality ? kFree : kFixed);
    }
    return LogitScoreStat(model, options, fit);
}

// A qualitative factor is judged by its columns alone, a quantitative one by a test of all columns in the model on one
// degree of freedom. Neither counts the blocks. Pinned by
// LogitSelectionReference.HistoriesAndTypeIII.
FactorTest MultinomialEntry(const LogitRun& run, const ColumnList& inModel, int factor)
{
    const std::vector<int> columns = ColumnsToEnter(run.factors, run.fit.layout.columns, factor);
    if (columns.empty()) return {};
    const bool qualitative = run.factors.HoldsQualitative(factor);
    ColumnList design = qualitative ? ColumnList{} : inModel;
    const ColumnList own = PointersTo(run.model, columns);
    design.insert(design.end(), own.begin(), own.end());
    const double statistic = MultinomialScore(run, design);
    const int df = qualitative ? static_cast<int>(columns.size()) : 1;
    return {statistic, pValChiSq(statistic, df), df};
}

// Considers every active factor outside the model.
template <typename Test>
EntryChoice BestOf(const LogitRun& run, const FactorFlags& inModel, Test test)
{
    EntryChoice best;
    for (int f = 1; f <= run.factors.nbFactors; ++f) {
        if (run.factors.IsActive(f) && !inModel[static_cast<std::size_t>(f - 1)]) best.Consider(f, test(f));
    }
    return best;
}

}  // namespace

std::vector<int> ColumnsToEnter(const FactorDescription& factors, int p, int factor)
{
    std::vector<int> columns;
    for (int j = 1; j <= p; ++j) {
        if (factors.FactorOf(j) != factor || factors.subRemoved->vbget(j) >= kExcluded) continue;
        columns.push_back(j);
        if (!factors.HoldsQualitative(factor)) break;
    }
    return columns;
}

void EntryChoice::Consider(int candidate, const FactorTest& test)
{
    if (!(test.statistic > 0.0)) return;
    const bool larger = test.df > largestDf;
    largestDf = std::max(largestDf, test.df);
    const bool wins = larger ? test.p < p : test.statistic > statistic;
    if (!wins) return;
    factor = candidate;
    statistic = test.statistic;
    p = test.p;
}

FactorTest GetVariableScoreStat(const LogitRun& run, int factor)
{
    ModelInformation model(run);
    return ScoreTest(run, model, factor);
}

EntryChoice GetBestScore(const LogitRun& run, const FactorFlags& inModel)
{
    ModelInformation model(run);
    return BestOf(run, inModel, [&](int factor) { return ScoreTest(run, model, factor); });
}

EntryChoice GetVariableScoreMulti(const LogitRun& run, const FactorFlags& inModel)
{
    const ColumnList free = FreeColumns(run);
    return BestOf(run, inModel, [&](int factor) { return MultinomialEntry(run, free, factor); });
}

}  // namespace korvenrg::logistic
