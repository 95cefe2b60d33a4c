#include <cmath>
#include <vector>

#include "kernel/linalg/products.h"
#include "kernel/linalg/vector_moments.h"
#include "linear/ols_state.h"
#include "linear/ols_tables.h"
#include "linear/type_iii_estimable.h"
#include "linear/type_tables.h"

namespace korvenrg::linear {

namespace {

double ErrorDfOf(const OlsRun& run)
{
    return run.out.anova->vbget(kAnovaError, kAnovaDf);
}

double ErrorMeanSquareOf(const OlsRun& run)
{
    return run.out.anova->vbget(kAnovaError, kAnovaMeanSquare);
}

void WriteTypeI(OlsRun& run)
{
    OLSGetTypeITable(run.data.p,
                     run.data.sumWc,
                     run.StDevY(),
                     run.varY,
                     ErrorDfOf(run),
                     ErrorMeanSquareOf(run),
                     &run.unswept,
                     run.factors.nbFactors,
                     run.factors.active,
                     &run.askedFor,
                     run.factors.subParents,
                     run.factors.subRemoved,
                     run.out.typeI);
}

void WriteTypeII(OlsRun& run, short keepContaining, matrix<double>* table)
{
    OLSGetTypeIITable(run.data.p,
                      run.data.sumWc,
                      run.varY,
                      ErrorDfOf(run),
                      ErrorMeanSquareOf(run),
                      &run.packed,
                      keepContaining,
                      run.factors.nbFactors,
                      run.factors.active,
                      &run.askedFor,
                      run.factors.type,
                      run.factors.nbVars,
                      run.factors.listVars,
                      run.factors.subParents,
                      run.factors.subRemoved,
                      table);
}

void CopyTypeIIToTypeIII(OlsRun& run)
{
    for (int i = 1; i <= run.factors.nbFactors; ++i) {
        for (int j = 1; j <= kTypeCols; ++j) {
            run.out.typeIII->vbset(i, j, run.out.typeII->vbget(i, j));
        }
    }
}

std::vector<int> ColumnsOf(const OlsRun& run, int factor)
{
    std::vector<int> columns;
    for (int i = 1; i <= run.data.p; ++i) {
        if (run.factors.FactorOf(i) == factor) columns.push_back(i);
    }
    return columns;
}

double SumOfColumn(const OlsRun& run, int column)
{
    double sum = 0.0;
    for (int r = 0; r < run.data.n; ++r) {
        sum += run.data.columns[static_cast<std::size_t>(column - 1)][r];
    }
    return sum;
}

// Whether an active factor asks for more than the copy of the Type II table. A qualitative one does when the leverage term
// that the last row left differs from the sum of its first column (from 0 under a sum-type constraint): nearly always.
// It stays: TypeTables.LastLeverageTermTriggers.
bool Triggers(const OlsRun& run, int factor)
{
    const int type = run.factors.type->vbget(factor);
    if (!run.factors.IsActive(factor)) return false;
    if (type == kMixedInteraction) return true;
    if (type != kQualitative && type != kQualitativeInteraction) return false;
    const std::vector<int> columns = ColumnsOf(run, factor);
    if (columns.size() < 2) return false;
    const double expected = run.options.DerivesDroppedLevels() ? 0.0 : SumOfColumn(run, columns.front());
    return std::fabs(run.lastLeverageTerm - expected) > kGuard;
}

bool AnyFactorTriggers(const OlsRun& run)
{
    for (int f = 1; f <= run.factors.nbFactors; ++f) {
        if (Triggers(run, f)) return true;
    }
    return false;
}

// Column of ones, the columns of X, the standardised response; columns of factors that a selection left out are 0.
matrix<double> DesignOfCrossProducts(const OlsRun& run)
{
    const int n = run.data.n;
    const int p = run.data.p;
    matrix<double> design(n, p + 2);
    const bool takesAll = run.options.method == double{kBestSubset};
    const double scale = std::sqrt(run.varY);
    for (int r = 1; r <= n; ++r) {
        design.vbset(r, 1, 1.0);
        design.vbset(r, p + 2, (run.data.response->vbget(r) - run.meanY) / scale);
    }
    for (int i = 1; i <= p; ++i) {
        const int factor = run.factors.FactorOf(i);
        if (!takesAll && !run.factors.IsActive(factor)) continue;
        const bool isScaled =
            run.factors.IsActive(factor) && run.factors.type->vbget(factor) == kQuantitative;
        for (int r = 1; r <= n; ++r) {
            const double x = run.data.columns[static_cast<std::size_t>(i - 1)][r - 1];
            design.vbset(r, i + 1, isScaled ? (x - run.MeanOf(i)) / run.StDevOf(i) : x);
        }
    }
    return design;
}

// The columns of a mixed interaction are centred and scaled by the moments of their sum.
void ScaleMixedInteraction(const OlsRun& run, int factor, matrix<double>* weights, matrix<double>& design)
{
    const std::vector<int> columns = ColumnsOf(run, factor);
    matrix<double> sums(run.data.n, 1);
    for (int r = 1; r <= run.data.n; ++r) {
        double sum = 0.0;
        for (const int i : columns) {
            sum += design.vbget(r, i + 1);
        }
        sums.vbset(r, sum);
    }
    double mean = 0.0;
    double deviation = 0.0;
    V_MeanStdev(&sums, run.data.n, mean, deviation, nullptr, weights, kTrue, kTrue);
    for (const int i : columns) {
        for (int r = 1; r <= run.data.n; ++r) {
            design.vbset(r, i + 1, (design.vbget(r, i + 1) - mean) / deviation);
        }
    }
}

void WriteEstimableTypeIII(OlsRun& run)
{
    matrix<double> weights(run.data.n, 1, run.data.weights.data(), false);
    matrix<double> design = DesignOfCrossProducts(run);
    for (int f = 1; f <= run.factors.nbFactors; ++f) {
        if (!run.factors.IsActive(f) || run.factors.type->vbget(f) != kMixedInteraction) continue;
        ScaleMixedInteraction(run, f, &weights, design);
    }
    const int size = run.data.p + 2;
    matrix<double> crossProducts(size, size);
    M_ProductTrADiagVA(&design, run.data.n, size, &weights, &crossProducts);
    OLSGetTypeIIIEstimable(&crossProducts,
                           run.data.p,
                           run.varY,
                           ErrorDfOf(run),
                           ErrorMeanSquareOf(run),
                           run.factors.nbFactors,
                           run.factors.active,
                           &run.askedFor,
                           run.factors.type,
                           run.factors.nbVars,
                           run.factors.listVars,
                           run.factors.subParents,
                           run.out.typeIII);
}

// The Type III table starts as a copy of the Type II table. When a factor triggers, a sum-type constraint lets the sweeps
// answer, with containing factors kept; otherwise estimable functions do.
void WriteTypeIII(OlsRun& run)
{
    CopyTypeIIToTypeIII(run);
    if (!AnyFactorTriggers(run)) return;
    if (run.options.DerivesDroppedLevels()) {
        if (!run.options.withTypeII) WriteTypeII(run, kTrue, run.out.typeIII);
    } else if (run.options.withTypeIII) {
        WriteEstimableTypeIII(run);
    }
}

}  // namespace

void WriteTypeTables(OlsRun& run)
{
    if (run.options.withTypeI) WriteTypeI(run);
    if (run.options.withTypeII || run.options.withTypeIII) WriteTypeII(run, kFalse, run.out.typeII);
    if (run.options.withTypeIII || run.options.withTypeIV) WriteTypeIII(run);
}

}  // namespace korvenrg::linear
