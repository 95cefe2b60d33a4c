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
    kExpectedUpper = 8
};

struct LogitFit
{
    LogitFit(std::size_t n, std::size_t p, std::size_t factors);

    std::vector<int> states;        ///< p, see ColumnState; 1: refused by tolerance
    std::vector<int> factorActive;  ///< factors
    double mortality = 0.0;
    bool separated = false;  ///< a category has one response only, which switched Firth's penalty on
    double heterogeneity = 1.0;
    double area = kMissing;      ///< under the ROC curve
    NumberTable statistics;      ///< 10 x 2: independent model, fitted model
    NumberTable tests;           ///< 3 x 3: likelihood ratio, score, Wald; DF, chi-square, Pr
    NumberTable parameters;      ///< (p + 1) x 11, intercept first
    NumberTable standardised;    ///< p x 8
    NumberTable covariance;      ///< (p + 2) x (p + 2): slopes, intercept, mortality
    NumberTable predictions;     ///< n x 9, see LogitPredictionColumn
    NumberTable classification;  ///< 3 x 4: observed by predicted; total, share correct
    NumberTable roc;             ///< (n + 1) x 2: false-positive rate, sensitivity
    NumberTable doses;           ///< 13 x 6
    NumberTable hosmer;          ///< 3 x 1: chi-square, DF, Pr
};

/** Throws UserError when the response is none of a logistic model or the fit fails. */
LogitFit FitLogit(const ModelData& data, const Design& design, const Options& options);

}  // namespace korvenrg::frontend

#endif
