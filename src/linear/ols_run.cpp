#include "linear/ols_run.h"

#include <algorithm>

#include "linear/forced_pass.h"
#include "linear/ols_state.h"
#include "linear/ols_tables.h"

namespace korvenrg::linear {

namespace {

constexpr int kDone = 0;
constexpr int kNoModel = -5;

// Positions of the option vector.
enum OptionPosition
{
    kOptFixedIntercept = 1,
    kOptInterceptValue = 2,
    kOptTolerance = 3,
    kOptMethod = 5,
    kOptCriterion = 6,
    kOptPEnter = 7,
    kOptPRemove = 8,
    kOptMinVars = 9,
    kOptMaxVars = 10,
    kOptAlpha = 11,
    kOptTypeI = 12,
    kOptTypeII = 13,
    kOptTypeIII = 14,
    kOptConstraint = 15,
    kOptTypeIV = 16,
    kOptKeepRawCov = 17
};

// Truncated to an integer; a value that no integer holds reads as the largest one of its sign, NaN as 0.
int Truncated(double value)
{
    constexpr double kLimit = 2147483647.0;
    return value != value ? 0 : static_cast<int>(std::clamp(value, -kLimit, kLimit));
}

OlsOptions ReadOlsOptions(const matrix<double>& info)
{
    return {.fixedIntercept = IsOn(info.vbget(kOptFixedIntercept)),
            .interceptValue = info.vbget(kOptInterceptValue),
            .tolerance = info.vbget(kOptTolerance),
            .method = info.vbget(kOptMethod),
            .criterion = info.vbget(kOptCriterion),
            .pEnter = info.vbget(kOptPEnter),
            .pRemove = info.vbget(kOptPRemove),
            .minVars = info.vbget(kOptMinVars),
            .maxVars = info.vbget(kOptMaxVars),
            .alpha = info.vbget(kOptAlpha),
            .withTypeI = IsOn(info.vbget(kOptTypeI)),
            .withTypeII = IsOn(info.vbget(kOptTypeII)),
            .withTypeIII = IsOn(info.vbget(kOptTypeIII)),
            .withTypeIV = IsOn(info.vbget(kOptTypeIV)),
            .constraint = Truncated(info.vbget(kOptConstraint)),
            .keepsRawCov = info.vbget(kOptKeepRawCov) == 0.0};
}

matrix<double> AsDoubles(const matrix<int>& integers, int n)
{
    matrix<double> doubles(n, 1);
    for (int i = 1; i <= n; ++i) {
        doubles.vbset(i, integers.vbget(i));
    }
    return doubles;
}

// Stepwise and forward selection start from what any column with a pivot above 0 explains.
double ForcedTolerance(const OlsOptions& options)
{
    const bool startsEmpty = options.method == double{kStepwise} || options.method == double{kForward};
    return startsEmpty ? 0.0 : options.tolerance;
}

// Sweeps in the model as asked for. False when no column can enter.
bool SweepForcedModel(OlsRun& run)
{
    *run.out.pFinal = 0;
    OLSForcedSelection(run.data.p,
                       ForcedTolerance(run.options),
                       run.InterceptDf(),
                       run.data.sumW,
                       run.StDevY(),
                       &run.packed,
                       run.factors.nbFactors,
                       run.factors.active,
                       run.factors.type,
                       run.factors.subParents,
                       run.factors.subRemoved,
                       run.out.pFinal,
                       &run.mseFull,
                       &run.bestFactor,
                       run.out.models);
    return *run.out.pFinal > 0;
}

// A factor none of whose columns is in the model is not active any more.
void DropEmptyFactors(OlsRun& run)
{
    for (int f = 1; f <= run.factors.nbFactors; ++f) {
        if (!run.factors.IsActive(f)) continue;
        bool holdsColumn = false;
        for (int i = 1; i <= run.data.p && !holdsColumn; ++i) {
            holdsColumn = run.factors.FactorOf(i) == f && run.factors.InModel(i);
        }
        if (!holdsColumn) run.factors.active->vbset(f, 0);
    }
}

void UnpackSweptMatrix(OlsRun& run)
{
    for (int i = 1; i <= run.data.p + 1; ++i) {
        for (int j = 1; j <= i; ++j) {
            run.out.sweptMatrix->vbset(i, j, run.Packed(i, j));
            run.out.sweptMatrix->vbset(j, i, run.Packed(i, j));
        }
    }
}

// Parameters, degrees of freedom and sum of squares of the final model.
void CountModel(OlsRun& run)
{
    const double sY = run.StDevY();
    run.k = *run.out.pFinal + run.InterceptDf();
    run.dfE = run.data.sumWc - run.k;
    run.sse = (run.data.sumWc - 1.0) * run.ResidualTerm() * sY * sY;
}

}  // namespace

}  // namespace korvenrg::linear

// The run:
//   - prepare the weights
//   - form means, standard deviations and correlations
//   - flag constant columns
//   - pack the correlations
//   - sweep the model in; stop when no column can enter
//   - select variables
//   - drop factors without a column
//   - unpack the swept matrix
//   - coefficients of the fitted columns, predictions and residuals
//   - ANOVA table and fit statistics
//   - covariance, reported and standardised parameters
//   - leverages and case statistics
//   - type tables
int cRunOLS1(int n,
             int p,
             matrix<double>* Y,
             matrix<double>* X,
             matrix<double>* Wc,
             matrix<double>* Wr,
             int NbFactors,
             [[maybe_unused]] int NbActiveFactors,
             matrix<int>* FactType,
             matrix<int>* FactActive,
             matrix<int>* FactNbVars,
             matrix<int>* FactListVars,
             matrix<int>* FactNbSub,
             matrix<int>* FactSubParents,
             matrix<double>* FactSubDesign,
             matrix<double>* InputInfo,
             int* pFinal,
             matrix<double>* oModels,
             int* oBestID,
             matrix<int>* ioFactSubRemoved,
             matrix<double>* oFitCoeffs,
             matrix<double>* oANOVATable,
             matrix<double>* oTypeISSTable,
             matrix<double>* oTypeIISSTable,
             matrix<double>* oTypeIIISSTable,
             matrix<double>* oRCoeffs,
             matrix<double>* oCoeffs,
             matrix<double>* oStdevCoeffs,
             matrix<double>* oBetaCoeffs,
             matrix<double>* oVarCovCoef,
             matrix<double>* oYPred,
             matrix<double>* oStDevYPred,
             matrix<double>* oResiduals,
             matrix<double>* oCooksD,
             matrix<double>* oAdjPred,
             matrix<double>* oRMat,
             matrix<double>* oMean,
             matrix<double>* oStDev)
{
    using namespace korvenrg::linear;
    if (n < 0 || p < 0) {
        *pFinal = 0;
        return kNoModel;
    }
    OlsRun run{
        .options = ReadOlsOptions(*InputInfo),
        .data = {.n = n,
                 .p = p,
                 .columns = {*X, n, p},
                 .response = Y,
                 .fittedResponse = {},
                 .caseWeights = Wc,
                 .regressionWeights = Wr,
                 .weights = {}},
        .factors = {.nbFactors = NbFactors,
                    .type = FactType,
                    .active = FactActive,
                    .nbVars = FactNbVars,
                    .listVars = FactListVars,
                    .nbSub = FactNbSub,
                    .subParents = FactSubParents,
                    .subDesign = FactSubDesign,
                    .subRemoved = ioFactSubRemoved},
        .out = {.pFinal = pFinal,
                .models = oModels,
                .bestId = oBestID,
                .fit = oFitCoeffs,
                .anova = oANOVATable,
                .typeI = oTypeISSTable,
                .typeII = oTypeIISSTable,
                .typeIII = oTypeIIISSTable,
                .rawCoefficients = oRCoeffs,
                .coefficients = oCoeffs,
                .parameters = oStdevCoeffs,
                .standardised = oBetaCoeffs,
                .covariance = oVarCovCoef,
                .prediction = oYPred,
                .predictionErrors = oStDevYPred,
                .residuals = oResiduals,
                .cooksD = oCooksD,
                .leaveOneOut = oAdjPred,
                .sweptMatrix = oRMat,
                .mean = oMean,
                .stDev = oStDev},
        .correlation = {},
        .packed = {static_cast<int>(korvenrg::linalg::PackedSize(static_cast<std::size_t>(p) + 1)), 1},
        .unswept = {static_cast<int>(korvenrg::linalg::PackedSize(static_cast<std::size_t>(p) + 1)), 1},
        .askedFor = AsDoubles(*FactActive, NbFactors),
        .prediction = {},
        .residual = {}};

    PrepareWeights(run);
    FormMoments(run);
    FlagConstantColumns(run);
    PackCorrelations(run);
    std::copy_n(run.packed.data, run.packed.total, run.unswept.data);
    if (!SweepForcedModel(run)) return kNoModel;
    SelectVariables(run);
    DropEmptyFactors(run);
    UnpackSweptMatrix(run);
    CountModel(run);
    ComputeRawCoefficients(run);
    PredictRows(run);
    WriteAnovaTable(run);
    WriteFitStatistics(run);
    FillCpOfModels(run);
    WriteParameterTables(run);
    WriteCaseStatistics(run);
    WriteTypeTables(run);
    return kDone;
}
