#include "logistic/logit_run.h"

#include <algorithm>

#include "kernel/distributions/normal.h"
#include "kernel/linalg/copies.h"
#include "logistic/logit_state.h"
#include "logistic/logit_tables.h"

namespace korvenrg::logistic {

namespace {

// Positions of the option vector.
enum OptionPosition
{
    kOptLogDoses = 1,
    kOptFixedIntercept = 3,
    kOptMortality = 4,
    kOptGivenMortality = 5,
    kOptObservedScale = 6,
    kOptProfile = 7,
    kOptFirth = 8,
    kOptTypeIII = 9,
    kOptDoses = 10,
    kOptTolerance = 11
};

bool IsSet(const matrix<int>& info, OptionPosition position)
{
    return info.vbget(position) == 1;
}

std::vector<double> CellsOf(const matrix<double>& source, int n)
{
    const linalg::ColumnsOf cells(source, n, 1);
    return {cells[0], cells[0] + n};
}

matrix<double> CopyOf(const matrix<double>& source, int rows, int cols)
{
    const bool fits = source.rows == rows && source.cols >= cols;
    if (fits) return {rows, cols, source.data, false};
    const linalg::ColumnsOf columns(source, rows, cols);
    matrix<double> copy(rows, cols);
    for (int j = 0; j < cols; ++j) {
        std::copy_n(columns[static_cast<std::size_t>(j)], rows, copy.data + CountOfCells(rows, j));
    }
    return copy;
}

// One indicator column for each category but the reference. Without several blocks there is none.
matrix<double> IndicatorsOf(const std::vector<double>& response, int categories, int reference)
{
    const int n = static_cast<int>(response.size());
    matrix<double> indicators(categories > 2 ? n : 0, categories);
    if (categories < 3) return indicators;
    for (int i = 1; i <= n; ++i) {
        for (int code = 0; code < categories; ++code) {
            indicators.vbset(i, code + 1, response[static_cast<std::size_t>(i - 1)] == code ? 1.0 : 0.0);
        }
    }
    matrix<double>* target = &indicators;
    M_RemoveCols2(target, n, categories, reference + 1, reference + 1);
    return indicators;
}

std::vector<double> ReferenceMarks(const std::vector<double>& response, int categories, int reference)
{
    std::vector<double> marks(categories < 3 ? 0 : response.size());
    for (std::size_t i = 0; i < marks.size(); ++i) {
        marks[i] = response[i] == reference ? 1.0 : 0.0;
    }
    return marks;
}

// Fits as iSelectionType asks for.
int FitModel(LogitRun& run)
{
    if (run.options.selection != kNoSelection) return SelectLogitVariables(run);
    return OptimizeLogitModel(run.model, run.fitOptions, run.fit, run.work) == kFitted ? kFinished
                                                                                       : kFirstFitFailed;
}

LogitSample SampleOf(const LogitRun& run)
{
    return {.n = run.data.n,
            .columns = run.designColumns,
            .response = run.data.response.data(),
            .caseWeights = run.data.caseWeights.data()};
}

void WriteMortality(LogitRun& run)
{
    for (int k = 1; k <= run.model.layout.blocks; ++k) {
        run.out.mortality->vbset(k, run.fit.mortality[static_cast<std::size_t>(k - 1)]);
    }
}

}  // namespace

ModelsShape ShapeOfModels(int p, int selection, int minFactors, int maxFactors, int nbActiveFactors)
{
    if (selection == kBestSubsets) return {maxFactors - minFactors + 1, p + kSubsetModelCols};
    return {selection > kBestSubsets ? 2 * nbActiveFactors : 1, p + kStepModelCols};
}

}  // namespace korvenrg::logistic

// The run:
//   - look for levels that are empty in a category
//   - standardise the columns, rescale the weights
//   - marginal probabilities, start values and the log-likelihood of the independent model
//   - screen the columns and mark what is fixed
//   - fit, with or without a selection of variables
//   - count what is in the model
//   - tests, fit statistics, heterogeneity, type III table
//   - coefficients with their intervals
//   - predictions, classification, ROC curve
//   - validation and prediction samples
//   - dose tables
int RunMLOG(int n,
            int p,
            int pQ,
            int NbCategY,
            matrix<double>* Y,
            matrix<double>* X,
            matrix<double>* Wc,
            matrix<double>* Wr,
            double alpha,
            int nValid,
            matrix<double>* YValid,
            matrix<double>* XValid,
            matrix<double>* WcValid,
            matrix<double>* oPredResidValid,
            matrix<double>* oClassTableValid,
            int nPred,
            matrix<double>* XPred,
            matrix<double>* NewPred,
            int NbFactors,
            int* NbActiveFactors,
            matrix<int>* FactType,
            matrix<int>* FactActive,
            matrix<int>* FactSubParents,
            matrix<double>* FactSubDesign,
            matrix<int>* InputInfo,
            int iVarType,
            int iModelType,
            double iConvergence,
            int iMaxIter,
            double iTolerance,
            int iConstraintType,
            int iConstrYType,
            int iSelectionType,
            int iCriterionType,
            double PrIn,
            double PrOut,
            int iMinNbVar,
            int iMaxNbVar,
            double iCutPoint,
            matrix<double>* ioMortality,
            matrix<double>* oModels,
            matrix<int>* ioFactSubRemoved,
            matrix<double>* oStdevCoefficients,
            matrix<double>* oBetaCoefficients,
            matrix<double>* oVarCov,
            matrix<double>* oFitCoeffs,
            matrix<double>* oTestStats,
            matrix<double>* oANOVATable,
            matrix<double>* oPredResid,
            double& oHetero,
            matrix<double>* oIndepVal,
            matrix<double>* oClassTable,
            matrix<double>* oROCTable,
            double& oAOC,
            matrix<double>* oProbaTable1,
            matrix<double>* oProbaTable2,
            short& oSeparate)
{
    using namespace korvenrg;
    using namespace korvenrg::logistic;
    if (n < 1 || p < 0 || NbCategY < 2) return kFirstFitFailed;
    const ParameterLayout layout{.columns = p, .blocks = NbCategY - 1};
    const bool severalBlocks = layout.blocks > 1;
    LogitRun run{
        .options = {.logDoses = IsSet(*InputInfo, kOptLogDoses),
                    .hasMortality = IsSet(*InputInfo, kOptMortality),
                    .observedScale = IsSet(*InputInfo, kOptObservedScale),
                    .withProfile = IsSet(*InputInfo, kOptProfile) && !severalBlocks,
                    .withTypeIII = IsSet(*InputInfo, kOptTypeIII),
                    .withDoses = IsSet(*InputInfo, kOptDoses) && !severalBlocks,
                    .appliesTolerance = IsSet(*InputInfo, kOptTolerance) || pQ == 0,
                    .tolerance = iTolerance,
                    .alpha = alpha,
                    .categories = NbCategY,
                    .referenceCategory = iConstrYType,
                    .constraint = iConstraintType,
                    .cutPoint = iCutPoint,
                    .selection = iSelectionType,
                    .criterion = iCriterionType,
                    .pEnter = PrIn,
                    .pRemove = PrOut,
                    .minFactors = iMinNbVar,
                    .maxFactors = iMaxNbVar},
        .fitOptions = {.convergence = iConvergence,
                       .maxIterations = iMaxIter,
                       .firth = IsSet(*InputInfo, kOptFirth) && !severalBlocks,
                       .estimatesIntercept = !IsSet(*InputInfo, kOptFixedIntercept),
                       .estimatesMortality =
                           IsSet(*InputInfo, kOptMortality) && !IsSet(*InputInfo, kOptGivenMortality)},
        .factors = {.nbFactors = NbFactors,
                    .type = FactType,
                    .active = FactActive,
                    .nbVars = nullptr,
                    .listVars = nullptr,
                    .nbSub = nullptr,
                    .subParents = FactSubParents,
                    .subDesign = FactSubDesign,
                    .subRemoved = ioFactSubRemoved},
        .out = {.nbActiveFactors = NbActiveFactors,
                .mortality = ioMortality,
                .models = oModels,
                .coefficients = oStdevCoefficients,
                .standardised = oBetaCoefficients,
                .covariance = oVarCov,
                .fit = oFitCoeffs,
                .tests = oTestStats,
                .typeIII = oANOVATable,
                .predictions = oPredResid,
                .heterogeneity = &oHetero,
                .marginal = oIndepVal,
                .classification = oClassTable,
                .roc = oROCTable,
                .areaUnderCurve = &oAOC,
                .doses = oProbaTable1,
                .doseCurve = oProbaTable2,
                .separated = &oSeparate},
        .data = {.n = n,
                 .raw = {*X, n, p},
                 .response = CellsOf(*Y, n),
                 .caseWeights = CellsOf(*Wc, n),
                 .secondWeights = CellsOf(*Wr, n),
                 .indicators = IndicatorsOf(run.data.response, NbCategY, iConstrYType),
                 .isReference = ReferenceMarks(run.data.response, NbCategY, iConstrYType),
                 .design = CopyOf(*X, n, p),
                 .correlation = {p, p},
                 .mean = {p, 1},
                 .stDev = {p, 1}},
        .validation = {nValid, YValid, XValid, WcValid, oPredResidValid, oClassTableValid},
        .prediction = {nPred, nullptr, XPred, nullptr, NewPred, nullptr},
        .designColumns = {run.data.design, n, p},
        .indicatorColumns = {run.data.indicators, severalBlocks ? n : 0, severalBlocks ? layout.blocks : 0},
        .model = {.n = n,
                  .layout = layout,
                  .columns = run.designColumns,
                  .response = run.data.response.data(),
                  .isReference = run.data.isReference.data(),
                  .indicators = run.indicatorColumns,
                  .caseWeights = run.data.caseWeights.data(),
                  .secondWeights = run.data.secondWeights.data(),
                  .form = iVarType,
                  .link = severalBlocks ? int{kLogit} : iModelType,
                  .givenMortality = run.startMortality.data()},
        .fit = LogitFit(layout),
        .work = {n, layout.blocks},
        .marginal = {},
        .startIntercepts = {},
        .startMortality = CellsOf(*ioMortality, layout.blocks)};
    run.model.givenMortality = run.startMortality.data();
    run.z = InvCDFNormalStd(1.0 - alpha / 2.0);

    if (!CheckSeparation(run)) return kEmptyCell;
    StandardiseColumns(run);
    RescaleWeights(run, *Wr);
    ComputeMarginals(run);
    PutStartValues(run);
    ComputeNullLogLikelihood(run);
    ScreenColumns(run);
    if (const int result = FitModel(run); result != kFinished) return result;
    WriteMortality(run);
    RecountModel(run);
    WriteTestStatistics(run);
    WriteFitStatistics(run);
    ComputeHeterogeneity(run);
    WriteTypeIIITable(run);
    WriteCoefficientTables(run);
    WritePredictions(run, SampleOf(run), run.work, *oPredResid);
    WriteClassification(run, SampleOf(run), run.work, *oClassTable);
    WriteRocCurve(run);
    PredictOtherSamples(run);
    WriteDoseTables(run);
    return kFinished;
}
