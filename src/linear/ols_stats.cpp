#include "linear/ols_stats.h"

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <limits>
#include <vector>

#include "kernel/distributions/student.h"
#include "kernel/linalg/column_moments.h"
#include "kernel/linalg/vector_moments.h"
#include "linear/new_rows.h"
#include "linear/ols_state.h"
#include "linear/ols_tables.h"

namespace korvenrg::linear {

int CountTerms(int p, int degree, short interact2)
{
    if (p < 0 || degree < 0) return 0;
    const std::int64_t variables = p;
    const std::int64_t products = interact2 == kTrue ? variables * (variables - 1) / 2 : 0;
    const std::int64_t powers = variables * degree;
    const std::int64_t terms = powers + products + 1;
    return terms > std::numeric_limits<int>::max() ? 0 : static_cast<int>(terms);
}

namespace {

// The design as the caller describes it.
struct PolynomialDesign
{
    int p;
    int degree;
    short interact2;
    int terms;       ///< the constant counted
    int parameters;  ///< terms less those that a mixture takes away
    bool fixedIntercept;
};

// Terms of some rows, the constant left out: all variables, all squares, ..., then the products in pairs.
matrix<double> TermsOf(const PolynomialDesign& design, const matrix<double>& x, const std::vector<int>& rows)
{
    const auto n = static_cast<int>(rows.size());
    matrix<double> terms(n, design.terms - 1);
    for (int i = 1; i <= n; ++i) {
        const int row = rows[static_cast<std::size_t>(i - 1)];
        int column = 0;
        for (int d = 1; d <= design.degree; ++d) {
            for (int j = 1; j <= design.p; ++j) {
                column += 1;
                const double lower = d == 1 ? 1.0 : terms.vbget(i, column - design.p);
                terms.vbset(i, column, lower * x.vbget(row, j));
            }
        }
        for (int a = 1; design.interact2 == kTrue && a <= design.p; ++a) {
            for (int b = a + 1; b <= design.p; ++b) {
                column += 1;
                terms.vbset(i, column, x.vbget(row, a) * x.vbget(row, b));
            }
        }
    }
    return terms;
}

matrix<double> RowsOf(const matrix<double>& table, const std::vector<int>& rows, int cols)
{
    const auto n = static_cast<int>(rows.size());
    matrix<double> picked(n, cols);
    for (int j = 1; j <= cols; ++j) {
        for (int i = 1; i <= n; ++i) {
            picked.vbset(i, j, table.vbget(rows[static_cast<std::size_t>(i - 1)], j));
        }
    }
    return picked;
}

void PutRows(const matrix<double>& picked, const std::vector<int>& rows, matrix<double>& table)
{
    for (int j = 1; j <= picked.cols; ++j) {
        for (int i = 1; i <= picked.rows; ++i) {
            table.vbset(rows[static_cast<std::size_t>(i - 1)], j, picked.vbget(i, j));
        }
    }
}

// The caller's tables with one line per row.
struct CaseTables
{
    matrix<double>* errors;
    matrix<double>* residuals;
    matrix<double>* cooksD;
    matrix<double>* adjusted;
};

// Some rows of the data with their results, apart from the others. Results start as the caller's cells.
struct Sample
{
    std::vector<int> rows;
    matrix<double> terms;
    matrix<double> y;
    matrix<double> weights;
    matrix<double> ones;
    matrix<double> prediction;
    matrix<double> errors;
    matrix<double> residuals;
    matrix<double> cooksD;
    matrix<double> adjusted;

    int Size() const
    {
        return static_cast<int>(rows.size());
    }
};

Sample SampleOf(std::vector<int> rows,
                matrix<double> terms,
                const matrix<double>& y,
                const matrix<double>& w,
                const matrix<double>& prediction,
                const CaseTables& out)
{
    const auto n = static_cast<int>(rows.size());
    return {.rows = rows,
            .terms = terms,
            .y = RowsOf(y, rows, 1),
            .weights = RowsOf(w, rows, 1),
            .ones = {n, 1, 1.0},
            .prediction = RowsOf(prediction, rows, 1),
            .errors = RowsOf(*out.errors, rows, kPredCols),
            .residuals = RowsOf(*out.residuals, rows, kResStudentised),
            .cooksD = RowsOf(*out.cooksD, rows, 1),
            .adjusted = RowsOf(*out.adjusted, rows, 1)};
}

void PutSample(const Sample& sample, const CaseTables& out)
{
    PutRows(sample.errors, sample.rows, *out.errors);
    PutRows(sample.residuals, sample.rows, *out.residuals);
    PutRows(sample.cooksD, sample.rows, *out.cooksD);
    PutRows(sample.adjusted, sample.rows, *out.adjusted);
}

// A swept column holds the negative inverse, so its diagonal cell is below 0.
matrix<int> StatesOf(const matrix<double>& swept, int q)
{
    matrix<int> states(q, 1);
    for (int j = 1; j <= q; ++j) {
        states.vbset(j, swept.vbget(j, j) < 0.0 ? kInModel : kAliased);
    }
    return states;
}

matrix<double> Identity(int q)
{
    matrix<double> identity(q, q);
    for (int j = 1; j <= q; ++j) {
        identity.vbset(j, j, 1.0);
    }
    return identity;
}

// Puts what was computed elsewhere where the steps of a run look for it.
void TakeFit(OlsRun& run,
             const PolynomialDesign& design,
             Sample& sample,
             const matrix<double>& swept,
             double alpha)
{
    const int q = run.data.p;
    for (int i = 1; i <= q + 1; ++i) {
        for (int j = 1; j <= i; ++j) {
            run.packed.vbset(static_cast<int>(linalg::PackedPosition(i, j)), swept.vbget(i, j));
        }
    }
    for (int r = 1; r <= run.data.n; ++r) {
        const double w = sample.weights.vbget(r);
        const double e = sample.y.vbget(r) - sample.prediction.vbget(r);
        run.data.weights.push_back(w);
        run.data.sumWc += w;
        run.prediction.push_back(sample.prediction.vbget(r));
        run.residual.push_back(e);
        run.sse += w * e * e;
    }
    run.data.sumW = run.data.sumWc;
    run.k = design.parameters;
    run.dfE = run.data.sumWc - run.k;
    run.mseFull = run.HasErrorDf() ? run.sse / run.dfE : kMissing;
    run.tq = std::fabs(InvCDFStudent(alpha * 0.5, run.dfE));

    double mean = 0.0;
    const double total = GetSSE(&sample.y, run.data.n, &sample.weights, &mean);
    run.meanY = mean;
    run.varY = total / (run.data.sumWc - 1.0);
}

void WriteResiduals(OlsRun& run)
{
    const bool hasScale = !run.IsPerfect() && run.dfE > 0.0;
    const double scale = std::sqrt(std::fabs(run.sse / run.dfE));
    for (int r = 1; r <= run.data.n; ++r) {
        const double e = run.residual[static_cast<std::size_t>(r - 1)];
        run.out.residuals->vbset(r, kResRaw, e);
        run.out.residuals->vbset(r, kResStandardised, hasScale ? e / scale : 0.0);
    }
}

// A model without a degree of freedom has no mean square to test.
void ClearModelTest(OlsRun& run)
{
    if (*run.out.pFinal > 0) return;
    for (const int column : {kAnovaMeanSquare, kAnovaF, kAnovaP}) {
        run.out.anova->vbset(kAnovaModel, column, kMissing);
    }
}

// The points outside the fit, as a validation sample of weight 1 each.
void Validate(const FitSummary& fit, const FittedColumns& model, Sample& sample, matrix<double>& fitTable)
{
    NewRows rows{.n = sample.Size(),
                 .isValidation = true,
                 .x = &sample.terms,
                 .caseWeights = &sample.weights,
                 .regressionWeights = &sample.ones,
                 .response = &sample.y,
                 .errors = &sample.errors,
                 .residuals = &sample.residuals,
                 .cooksD = &sample.cooksD,
                 .adjusted = &sample.adjusted,
                 .fit = &fitTable,
                 .prediction = {sample.prediction.data, sample.prediction.data + sample.prediction.total}};
    WriteNewRows(fit, model, rows);
}

}  // namespace

}  // namespace korvenrg::linear

// The report:
//   - part the points of the fit from the others and form their terms
//   - take predictions, coefficients and swept matrix as they come
//   - ANOVA table, fit statistics, parameters and covariance, as after a run
//   - leverages and case statistics about the means of the terms
//   - the other points as a validation sample
int OLSStats(int n,
             int p,
             matrix<double>* Y,
             matrix<double>* X,
             matrix<double>* W,
             matrix<double>* iYPred,
             matrix<double>* iPointType,
             matrix<double>* iRCoeffs,
             matrix<double>* iRMat,
             matrix<double>* iMean,
             matrix<double>* iStDev,
             int iPolydegree,
             int iMixedDesign,
             short iInteract2,
             short iInterceptFixed,
             double alpha,
             matrix<double>* oFitCoeffs,
             matrix<double>* oANOVATable,
             matrix<double>* oCoeffs,
             matrix<double>* oStdevCoeffs,
             matrix<double>* oBetaCoeffs,
             matrix<double>* oVarCovCoef,
             matrix<double>* oStDevYPred,
             matrix<double>* oResiduals,
             matrix<double>* oCooksD,
             matrix<double>* oAdjPred)
{
    using namespace korvenrg::linear;
    const int terms = CountTerms(p, iPolydegree, iInteract2);
    std::vector<int> fitRows;
    std::vector<int> otherRows;
    for (int r = 1; r <= n; ++r) {
        (iPointType->vbget(r) == 1.0 ? fitRows : otherRows).push_back(r);
    }
    if (terms == 0 || fitRows.empty()) return 0;

    const PolynomialDesign design{.p = p,
                                  .degree = iPolydegree,
                                  .interact2 = iInteract2,
                                  .terms = terms,
                                  .parameters = terms - std::clamp(iMixedDesign, 0, terms),
                                  .fixedIntercept = iInterceptFixed == korvenrg::kTrue};
    const CaseTables caseTables{oStDevYPred, oResiduals, oCooksD, oAdjPred};
    const int q = terms - 1;
    Sample sample = SampleOf(fitRows, TermsOf(design, *X, fitRows), *Y, *W, *iYPred, caseTables);
    matrix<int> states = StatesOf(*iRMat, q);
    matrix<int> none(1, 1);
    matrix<double> identity = Identity(q);
    matrix<double> termMeans(q, 1);
    matrix<double>* means = &termMeans;
    M_Mean2(&sample.terms, sample.Size(), q, &sample.weights, means);

    int modelDf = design.parameters - 1;
    const auto packedSize = static_cast<int>(korvenrg::linalg::PackedSize(static_cast<std::size_t>(terms)));
    OlsRun run{.options = {.fixedIntercept = design.fixedIntercept,
                           .interceptValue = iRCoeffs->vbget(terms),
                           .tolerance = 0.0,
                           .method = -1.0,
                           .criterion = 0.0,
                           .pEnter = 0.0,
                           .pRemove = 0.0,
                           .minVars = 0.0,
                           .maxVars = 0.0,
                           .alpha = alpha,
                           .withTypeI = false,
                           .withTypeII = false,
                           .withTypeIII = false,
                           .withTypeIV = false,
                           .constraint = kFirstLevel,
                           .keepsRawCov = false},
               .data = {.n = sample.Size(),
                        .p = q,
                        .columns = {sample.terms, sample.Size(), q},
                        .response = &sample.y,
                        .fittedResponse = {},
                        .caseWeights = &sample.weights,
                        .regressionWeights = &sample.ones,
                        .weights = {}},
               .factors = {.nbFactors = 0,
                           .type = &none,
                           .active = &none,
                           .nbVars = &none,
                           .listVars = &none,
                           .nbSub = &none,
                           .subParents = &none,
                           .subDesign = &identity,
                           .subRemoved = &states},
               .out = {.pFinal = &modelDf,
                       .models = nullptr,
                       .bestId = nullptr,
                       .fit = oFitCoeffs,
                       .anova = oANOVATable,
                       .typeI = nullptr,
                       .typeII = nullptr,
                       .typeIII = nullptr,
                       .rawCoefficients = iRCoeffs,
                       .coefficients = oCoeffs,
                       .parameters = oStdevCoeffs,
                       .standardised = oBetaCoeffs,
                       .covariance = oVarCovCoef,
                       .prediction = &sample.prediction,
                       .predictionErrors = &sample.errors,
                       .residuals = &sample.residuals,
                       .cooksD = &sample.cooksD,
                       .leaveOneOut = &sample.adjusted,
                       .sweptMatrix = iRMat,
                       .mean = iMean,
                       .stDev = iStDev},
               .correlation = {},
               .packed = {packedSize, 1},
               .unswept = {1, 1},
               .askedFor = {1, 1},
               .prediction = {},
               .residual = {}};
    TakeFit(run, design, sample, *iRMat, alpha);
    WriteResiduals(run);
    WriteAnovaTable(run);
    ClearModelTest(run);
    WriteFitStatistics(run);
    WriteParameterTables(run);
    run.out.mean = means;
    WriteCaseStatistics(run);
    PutSample(sample, caseTables);
    if (otherRows.empty()) return 0;

    Sample others = SampleOf(otherRows, TermsOf(design, *X, otherRows), *Y, *W, *iYPred, caseTables);
    const FittedColumns model{.p = q,
                              .intercept = iRCoeffs->vbget(terms),
                              .coefficients = iRCoeffs,
                              .states = &states,
                              .swept = iRMat,
                              .mean = means,
                              .stDev = iStDev};
    Validate(ReadFitSummary(*oFitCoeffs, alpha, design.fixedIntercept), model, others, *oFitCoeffs);
    PutSample(others, caseTables);
    return 0;
}
