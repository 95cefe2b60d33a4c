/** One logistic fit through Cpp_RunMLOG: the arrays that it fills, by columns. */
#ifndef KORVENRG_FRONTEND_LOGIT_FIT_H
#define KORVENRG_FRONTEND_LOGIT_FIT_H

#include <vector>

#include "fit.h"

namespace korvenrg::frontend {

/** Columns of the prediction table, from 0. */
enum LogitPredictionColumn : std::size_t
{
    kExpectedValue = 1,
    kObservedShare = 3,
    kExpectedShare = 4,
    kPearsonResidual = 5,
    kExpectedLower = 7,
    kExpectedUpper = 8,
    kPredictedCategory = 1,     ///< with several categories, like the next one
    kCategoryProbabilities = 2  ///< the reference first
};

/** Columns of the type III table, from 0. */
inline constexpr std::size_t kLogitTypeThreeColumns = 5;

/** Columns of the history, from 0, and offsets behind the number of columns of the design. */
enum LogitHistoryColumn : std::size_t
{
    kHistoryTerms = 0,
    kHistoryFitted = 1,  ///< of best subsets
    kHistoryFactor = 2,
    kHistoryMask = 3,
    kHistoryStatistics = 5  ///< offset of -2 log-likelihood, three p-values, AIC, SBC and four of steps
};
inline constexpr std::size_t kSubsetStatistics = 6;
inline constexpr std::size_t kStepStatistics = 10;

/** p columns, and the K categories of the response beside the reference. */
struct LogitFit
{
    LogitFit(std::size_t n, std::size_t p, std::size_t factors, std::size_t categories);

    std::vector<int> states;        ///< p, see ColumnState; 1: refused by tolerance
    std::vector<int> factorActive;  ///< factors
    double mortality = 0.0;
    bool separated = false;  ///< a category has one response only, which switched Firth's penalty on
    double heterogeneity = 1.0;
    double area = kMissing;    ///< under the ROC curve
    NumberTable statistics;    ///< 10 x 2: independent model, fitted model
    NumberTable tests;         ///< 3 x 3: likelihood ratio, score, Wald; DF, chi-square, Pr
    NumberTable parameters;    ///< (p + 1) K x 11, in each block the intercept first
    NumberTable standardised;  ///< p K x 8
    NumberTable covariance;    ///< (p + 2) x (p + 2): slopes, intercept, mortality
    NumberTable
        predictions;  ///< n x 9 K, see LogitPredictionColumn; with several blocks observed and predicted
                      ///< category from 1, then the probability of each
    NumberTable classification;  ///< observed by predicted, and a total; total, share correct
    NumberTable roc;             ///< (n + 1) x 2: false-positive rate, sensitivity
    NumberTable doses;           ///< 13 x 6
    NumberTable hosmer;          ///< 3 x 1: chi-square, DF, Pr; not of several blocks
    NumberTable typeThree;       ///< factors x 5: DF, Wald chi-square, Pr, likelihood-ratio chi-square, Pr
    NumberTable models;  ///< history of the selection; first cell missing in a row without a step or subset
};

/** Throws UserError when the response is none of a logistic model or the fit fails. */
LogitFit FitLogit(const ModelData& data, const Design& design, const Options& options);

}  // namespace korvenrg::frontend

#endif
