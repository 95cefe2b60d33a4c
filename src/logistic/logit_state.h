/** What the steps of a logit run share: the caller's arrays by role, the options, and what the run finds. */
#pragma once

#include <vector>

#include "core/limits.h"
#include "core/matrix.h"
#include "linear/factor_description.h"
#include "logistic/logit_fit.h"
#include "logistic/logit_model.h"

namespace korvenrg::logistic {

using linear::FactorDescription;

/** iSelectionType. Other values fit nothing. */
enum SelectionType
{
    kNoSelection = -1,
    kBestSubsets = 0,
    kStepwiseForward = 1,
    kStepwiseBackward = 2,
    kForward = 3,
    kBackward = 4
};

/** Results of a run. */
enum RunResult
{
    kFinished = 0,
    kFirstFitFailed = -5,
    kBackwardFailed = -6,
    kBestSubsetsFailed = -7,
    kForwardFailed = -8,
    kEmptyCell = -10  ///< several blocks, and a level of a qualitative variable empty in some category
};

/** The options of a run, read once. */
struct LogitOptions
{
    bool logDoses;       ///< doses are returned as powers of 10
    bool hasMortality;   ///< the model has a natural mortality
    bool observedScale;  ///< probabilities include the mortality
    bool withProfile;    ///< profile intervals; of one block alone
    bool withTypeIII;
    bool withDoses;         ///< dose tables; of one block alone
    bool appliesTolerance;  ///< of the screen; otherwise it refuses exact dependence alone
    double tolerance;
    double alpha;
    int categories;         ///< NbCategY
    int referenceCategory;  ///< iConstrYType
    int constraint;         ///< linear::Constraint
    double cutPoint;
    int selection;  ///< SelectionType
    int criterion;
    double pEnter;
    double pRemove;
    int minFactors;
    int maxFactors;

    /** The last level of a factor is reported though it has no column in the model. */
    bool DerivesLastLevels() const
    {
        return constraint > linear::kLastLevel;
    }
};

/** Observations with their response and weights, as the tables by observation take them. */
struct LogitSample
{
    int n;
    linalg::Columns columns;  ///< standardised
    const double* response;   ///< null for new observations
    const double* caseWeights;
};

/** The caller's arrays of a second sample. */
struct SampleArrays
{
    int n;
    matrix<double>* response;
    matrix<double>* X;
    matrix<double>* caseWeights;
    matrix<double>* predictions;
    matrix<double>* classification;
};

/** The caller's result arrays; layouts in logit_tables.h. */
struct LogitOutputs
{
    int* nbActiveFactors;
    matrix<double>* mortality;
    matrix<double>* models;
    matrix<double>* coefficients;
    matrix<double>* standardised;
    matrix<double>* covariance;
    matrix<double>* fit;
    matrix<double>* tests;
    matrix<double>* typeIII;
    matrix<double>* predictions;
    double* heterogeneity;
    matrix<double>* marginal;
    matrix<double>* classification;
    matrix<double>* roc;
    double* areaUnderCurve;
    matrix<double>* doses;
    matrix<double>* doseCurve;
    short* separated;
};

/** The data as the run sees them. */
struct LogitData
{
    int n;
    linalg::ColumnsOf raw;              ///< X
    std::vector<double> response;       ///< Y
    std::vector<double> caseWeights;    ///< Wc
    std::vector<double> secondWeights;  ///< Wr, rescaled by PrepareData
    matrix<double> indicators;        ///< n x categories, then without the reference; of several blocks alone
    std::vector<double> isReference;  ///< of several blocks alone
    matrix<double> design;            ///< X, standardised by PrepareData
    matrix<double> correlation;       ///< p x p
    matrix<double> mean;              ///< p
    matrix<double> stDev;             ///< p
    double sumWc = 0.0;
    double sumWcWr = 0.0;  ///< before Wr is rescaled
};

/** One run. */
struct LogitRun
{
    LogitOptions options;
    FitOptions fitOptions;
    FactorDescription factors;
    LogitOutputs out;
    LogitData data;
    SampleArrays validation;
    SampleArrays prediction;

    linalg::ColumnsOf designColumns;     ///< of data.design
    linalg::ColumnsOf indicatorColumns;  ///< of data.indicators; of several blocks alone
    LogitModel model;                    ///< on the standardised columns
    LogitFit fit;
    LogitWork work;

    // independent model
    std::vector<double> marginal;         ///< pi_k, mortality included
    double referenceMarginal = 0.0;       ///< 1 - sum of pi_k
    std::vector<double> startIntercepts;  ///< intercepts that every fit of the run starts from
    std::vector<double> startMortality;
    double nullLogLikelihood = 0.0;

    // fitted model
    double parameters = 0.0;  ///< q: free columns, a mortality and an intercept
    double z = 0.0;           ///< normal quantile of the intervals

    double InterceptDf() const
    {
        return fitOptions.estimatesIntercept ? 1.0 : 0.0;
    }

    double Blocks() const
    {
        return model.layout.blocks;
    }

    bool HasOneBlock() const
    {
        return model.layout.blocks == 1;
    }

    /** What predictions are corrected for: the fitted mortality, or 0 on the observed scale. */
    double CorrectedMortality() const
    {
        return options.hasMortality && !options.observedScale
                   ? fit.parameters.vbget(model.layout.Mortality(1))
                   : 0.0;
    }
};

// Steps, in the order of the run.
bool CheckSeparation(LogitRun& run);  ///< false: the run cannot go on
void StandardiseColumns(LogitRun& run);
void RescaleWeights(LogitRun& run, matrix<double>& Wr);
void ComputeMarginals(LogitRun& run);
void PutStartValues(LogitRun& run);
void ComputeNullLogLikelihood(LogitRun& run);
void ScreenColumns(LogitRun& run);
int SelectLogitVariables(
    LogitRun& run);  ///< iSelectionType 0 to 4: the final model in run.fit, or a RunResult
void RecountModel(LogitRun& run);
void WriteTestStatistics(LogitRun& run);
void WriteFitStatistics(LogitRun& run);
void ComputeHeterogeneity(LogitRun& run);
void WriteTypeIIITable(LogitRun& run);  ///< of the fit in run.fit, which does not change
void WriteCoefficientTables(LogitRun& run);
void WritePredictions(LogitRun& run, const LogitSample& sample, const LogitWork& work, matrix<double>& table);
void WriteClassification(LogitRun& run,
                         const LogitSample& sample,
                         const LogitWork& work,
                         matrix<double>& table);
void WriteRocCurve(LogitRun& run);  ///< of the fitted probabilities; needs the classification table
void WriteNewPredictions(LogitRun& run,
                         const LogitSample& sample,
                         const LogitWork& work,
                         matrix<double>& table);
void PredictOtherSamples(LogitRun& run);
void WriteDoseTables(LogitRun& run);

}  // namespace korvenrg::logistic
