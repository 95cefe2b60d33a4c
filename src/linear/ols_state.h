/** What the steps of a least squares run share: the caller's arrays by role, the options, and what the run
 * finds. */
#pragma once

#include <vector>

#include "core/limits.h"
#include "core/matrix.h"
#include "kernel/linalg/columns.h"
#include "kernel/linalg/sweep.h"
#include "linear/factor_description.h"

namespace korvenrg::linear {

/** Ways to select variables. Negative values fit all active factors. */
enum SelectionMethod : int
{
    kBestSubset = 0,
    kStepwise = 1,
    kForward = 2,
    kBackward = 3
};

/** The option vector of a run, read once. */
struct OlsOptions
{
    bool fixedIntercept;
    double interceptValue;
    double tolerance;
    double method;     ///< SelectionMethod
    double criterion;  ///< of best subsets
    double pEnter;     ///< of stepwise and forward selection
    double pRemove;    ///< of stepwise and backward selection
    double minVars;    ///< smallest and largest number of factors of best subsets
    double maxVars;
    double alpha;
    bool withTypeI;
    bool withTypeII;
    bool withTypeIII;
    bool withTypeIV;
    int constraint;    ///< Constraint
    bool keepsRawCov;  ///< the covariance stays on the fitted columns

    bool DerivesDroppedLevels() const
    {
        return constraint > kLastLevel;
    }
};

/** The data as the run sees them. */
struct OlsData
{
    int n;
    int p;
    linalg::ColumnsOf columns;           ///< X
    matrix<double>* response;            ///< Y as the caller gave it
    std::vector<double> fittedResponse;  ///< Y less a fixed intercept
    matrix<double>* caseWeights;         ///< Wc
    matrix<double>* regressionWeights;   ///< Wr
    std::vector<double> weights;         ///< W = Wc * Wr
    double sumWc = 0.0;
    double sumW = 0.0;
};

/** The caller's result arrays; layouts in ols_tables.h. */
struct OlsOutputs
{
    int* pFinal;
    matrix<double>* models;
    int* bestId;
    matrix<double>* fit;
    matrix<double>* anova;
    matrix<double>* typeI;
    matrix<double>* typeII;
    matrix<double>* typeIII;
    matrix<double>* rawCoefficients;
    matrix<double>* coefficients;
    matrix<double>* parameters;
    matrix<double>* standardised;
    matrix<double>* covariance;
    matrix<double>* prediction;
    matrix<double>* predictionErrors;
    matrix<double>* residuals;
    matrix<double>* cooksD;
    matrix<double>* leaveOneOut;
    matrix<double>* sweptMatrix;
    matrix<double>* mean;
    matrix<double>* stDev;
};

/** One run. */
struct OlsRun
{
    OlsOptions options;
    OlsData data;
    FactorDescription factors;
    OlsOutputs out;

    // moments
    double meanY = 0.0;
    double varY = 0.0;
    std::vector<double> correlation;  ///< (p+1) x (p+1), the response last
    matrix<double> packed;            ///< its lower triangle by rows; swept as the run goes on
    matrix<double> unswept;           ///< the same before any sweep
    matrix<double> askedFor;          ///< FactActive as the caller gave it

    // model
    double mseFull = kMissing;  ///< Mallows' reference, left by the forced pass
    int bestFactor = 0;

    // fit
    double k = 0.0;    ///< number of parameters
    double dfE = 0.0;  ///< degrees of freedom of the error
    double sse = 0.0;
    double tq = 0.0;  ///< quantile of the intervals
    std::vector<double> prediction;
    std::vector<double> residual;
    double lastLeverageTerm = 0.0;  ///< the last row's leverage from its columns

    double StDevOf(int column) const
    {
        return out.stDev->vbget(column);
    }

    double MeanOf(int column) const
    {
        return out.mean->vbget(column);
    }

    double StDevY() const
    {
        return StDevOf(data.p + 1);
    }

    /** 1.0 with an estimated intercept, 0.0 with a fixed one. */
    double InterceptDf() const
    {
        return options.fixedIntercept ? 0.0 : 1.0;
    }

    /** Cell of the packed matrix. */
    double Packed(int i, int j) const
    {
        return packed.vbget(static_cast<int>(linalg::PackedPosition(i, j)));
    }

    /** 1 - R squared of the model swept in. */
    double ResidualTerm() const
    {
        return Packed(data.p + 1, data.p + 1);
    }

    bool HasErrorDf() const
    {
        return dfE > kGuard;
    }

    /** Nothing is left to explain. */
    bool IsPerfect() const
    {
        return sse <= kEps;
    }
};

// Steps, in the order of the run.
void PrepareWeights(OlsRun& run);
void FormMoments(OlsRun& run);
void FlagConstantColumns(OlsRun& run);
void PackCorrelations(OlsRun& run);
void SelectVariables(OlsRun& run);
void ComputeRawCoefficients(OlsRun& run);
void PredictRows(OlsRun& run);
void WriteAnovaTable(OlsRun& run);
void WriteFitStatistics(OlsRun& run);
void FillCpOfModels(OlsRun& run);
void WriteParameterTables(OlsRun& run);
void WriteCaseStatistics(OlsRun& run);
void WriteTypeTables(OlsRun& run);

}  // namespace korvenrg::linear
