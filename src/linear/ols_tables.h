/** Layout of the result tables of a least squares run, cell by cell, from 1. */
#pragma once

namespace korvenrg::linear {

/** oANOVATable, 3 x 5. The mean square of the total, and F and Pr of error and total, hold the missing
 * marker. */
enum AnovaRow
{
    kAnovaModel = 1,
    kAnovaError,
    kAnovaTotal
};

enum AnovaCol
{
    kAnovaDf = 1,
    kAnovaSumOfSquares,
    kAnovaMeanSquare,
    kAnovaF,
    kAnovaP
};

/** oFitCoeffs, 15 x 2: the fit in column 1, a validation sample in column 2. */
enum FitStatistic
{
    kFitObservations = 1,  ///< sum of the case weights
    kFitSumOfWeights,      ///< sum of case weight times regression weight
    kFitDf,                ///< of the error
    kFitRSquared,
    kFitAdjustedRSquared,
    kFitMse,
    kFitRmse,
    kFitMape,  ///< in percent
    kFitDurbinWatson,
    kFitCp,
    kFitAic,
    kFitSbc,
    kFitPc,
    kFitPress,
    kFitQSquared
};

enum FitCol
{
    kFitSample = 1,
    kFitValidation
};

/** A fit table of 16 cells whose PRESS statistics are completed afterwards. */
enum CompletedFitStatistic
{
    kCompletedDf = 3,
    kCompletedPressRmse = 14,
    kCompletedPress,
    kCompletedQSquared
};

/** oStdevCoeffs, (p + 1) x 6 with the intercept first, and oBetaCoeffs, p x 6. */
enum ParameterCol
{
    kParValue = 1,
    kParStdError,
    kParT,
    kParP,
    kParLower,
    kParUpper
};

/** oStDevYPred, n x 6. */
enum PredictionCol
{
    kPredMeanError = 1,
    kPredMeanLower,
    kPredMeanUpper,
    kPredError,
    kPredLower,
    kPredUpper,
    kPredCols = kPredUpper
};

/** oResiduals, n x 3. */
enum ResidualCol
{
    kResRaw = 1,
    kResStandardised,
    kResStudentised
};

/** Type tables, NbFactors x 5. */
enum TypeTableCol
{
    kTypeDf = 1,
    kTypeSumOfSquares,
    kTypeMeanSquare,
    kTypeF,
    kTypeP,
    kTypeCols = kTypeP
};

/** ioContrastsStat, NbContrasts x 10: what the repair of a contrast's variance reads and writes. */
enum ContrastCol
{
    kContrastVariance = 2,
    kContrastFirstCategory = 9,
    kContrastSecondCategory = 10,
    kContrastCols = kContrastSecondCategory
};

/** oBetTable, 1 x 5. */
enum BetweenCol
{
    kBetweenDf = 1,
    kBetweenSumOfSquares
};

/** oModels, 2p x (NbFactors + 12): four cells, one indicator per factor, then the statistics. */
enum ModelsCol
{
    kModelNumber = 1,
    kModelColumns,
    kModelMove,    ///< +1 a factor entered, -1 a factor left
    kModelFactor,  ///< the factor of this step
    kModelFirstIndicator
};

/** Statistics of oModels: the column is NbFactors plus this. */
enum ModelsStatistic
{
    kModelSse = 5,
    kModelMse,
    kModelRSquared,
    kModelAdjustedRSquared,
    kModelCp,
    kModelAic,
    kModelSbc,
    kModelPc
};

}  // namespace korvenrg::linear
