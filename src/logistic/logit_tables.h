/** Layout of the result tables of a logit run, cell by cell, from 1. */
#pragma once

namespace korvenrg::logistic {

/** oTestStats, 3 x 3. */
enum GlobalTest
{
    kLikelihoodRatioTest = 1,
    kScoreTest,
    kWaldTest
};

enum GlobalTestCol
{
    kTestDf = 1,
    kTestStatistic,
    kTestP
};

/** oFitCoeffs, 10 x 2: the independent model in column 1, the fitted one in column 2. */
enum FitRow
{
    kRowObservations = 1,  ///< sum of the case weights
    kRowSumOfWeights,      ///< sum of Wc * Wr as given
    kRowDf,
    kRowMinus2LogLikelihood,
    kRowMcFadden,
    kRowCoxSnell,
    kRowNagelkerke,
    kRowAic,
    kRowSchwarz,
    kRowIterations  ///< column 1 is not written
};

enum FitModelCol
{
    kIndependentModel = 1,
    kFittedModel
};

/** oStdevCoefficients, (p+1)K x 11, and, without odds ratios, oBetaCoefficients, pK x 8. */
enum CoefficientCol
{
    kCoefValue = 1,
    kCoefStdError,
    kCoefWald,
    kCoefP,
    kCoefLower,
    kCoefUpper,
    kCoefProfileLower,  ///< with profile intervals; otherwise the odds ratios start here
    kCoefProfileUpper,
    kBetaCols = kCoefProfileUpper,
    kCoefCols = 11
};

/** Odds ratios behind the last column before them. */
enum OddsRatioOffset
{
    kOddsRatio = 1,
    kOddsLower,
    kOddsUpper
};

/** oPredResid of one block, n x 9. Counts are Wc times a probability where the response is binomial. */
enum PredictionCol
{
    kPredObservedCount = 1,
    kPredExpectedCount,
    kPredIndependentCount,
    kPredObserved,
    kPredExpected,
    kPredResidual,             ///< Pearson, against the fitted model
    kPredIndependentResidual,  ///< Pearson, against the independent model
    kPredLower,
    kPredUpper
};

/** oPredResid of several blocks: the probabilities of the other categories follow. */
enum CategoryPredictionCol
{
    kCatObserved = 1,
    kCatPredicted,
    kCatReference
};

/** NewPred of one block, nPred x 4. */
enum NewPredictionCol
{
    kNewExpected = 1,
    kNewIndependent,
    kNewLower,
    kNewUpper
};

/** NewPred of several blocks: two columns a category. */
enum NewCategoryOffset
{
    kNewCategoryExpected = 1,
    kNewCategoryIndependent,
    kNewCategoryCols = kNewCategoryIndependent
};

/** oProbaTable1, 13 x 6. */
enum DoseCol
{
    kDoseProbability = 1,
    kDoseValue,
    kDoseLower,
    kDoseUpper,
    kDoseHeteroLower,  ///< with heterogeneity
    kDoseHeteroUpper,
    kDoseRows = 13
};

/** oProbaTable2, 99 x 5. */
enum DoseCurveCol
{
    kCurveLower = 1,
    kCurveUpper,
    kCurveHeteroLower,  ///< with heterogeneity
    kCurveHeteroUpper,
    kCurveProbability,
    kCurveRows = 99
};

/** Columns of oModels beside the p columns of the design: of best subsets and of the other selections. */
enum ModelsWidth
{
    kSubsetModelCols = 11,
    kStepModelCols = 15
};

/** First columns of oModels. */
enum ModelsCol
{
    kModelsFactors = 1,  ///< factors in the model; of best subsets the size
    kModelsStep,         ///< ModelsStep; of best subsets the number of models fitted
    kModelsFactor,       ///< the factor concerned; of best subsets the number of the best subset
    kModelsMask          ///< mask of the first block: p slopes, intercept, mortality
};

/** kModelsStep of a row. */
enum ModelsStep
{
    kStepRemoval = 0,  ///< or the start of a backward selection
    kStepEntry = 1
};

/** Columns of oModels behind column p. */
enum ModelsOffset
{
    kModelsMinus2LogLikelihood = 6,
    kModelsLikelihoodRatioP,
    kModelsScoreP,
    kModelsWaldP,
    kModelsAic,
    kModelsSchwarz,
    kModelsEntryStatistic,  ///< here and below not of best subsets
    kModelsEntryP,
    kModelsRemovalStatistic,
    kModelsRemovalP
};

/** kModelsFactor of rows without a factor. */
inline constexpr int kModelsStart = -1;
inline constexpr int kModelsCircle = 0;  ///< the factor would have gone back where it came from

/** oANOVATable, (NbActiveFactors + 1) x 5, one row for each active factor. */
enum TypeIIICol
{
    kTypeIIIDf = 1,
    kTypeIIIWald,
    kTypeIIIWaldP,
    kTypeIIILikelihoodRatio,
    kTypeIIILikelihoodRatioP,
    kTypeIIICols = kTypeIIILikelihoodRatioP
};

}  // namespace korvenrg::logistic
