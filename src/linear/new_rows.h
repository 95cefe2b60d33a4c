/** A fitted model on rows that it has not seen: predictions, intervals, and the statistics of a validation sample. */
#pragma once

#include <cmath>
#include <vector>

#include "core/matrix.h"
#include "linear/ols_tables.h"

namespace korvenrg::linear {

/** What the rows need of a finished fit, read from column 1 of its fit table. */
struct FitSummary
{
    double sumWc;  ///< observations, as a sum of case weights
    double sumW;
    double dfE;
    double mse;
    double rmse;
    bool fixedIntercept;
    double tq;  ///< quantile of the intervals

    double Sse() const
    {
        return mse * dfE;
    }

    /** Number of parameters of the fit. */
    double Parameters() const
    {
        return sumWc - dfE;
    }
};

FitSummary ReadFitSummary(const matrix<double>& fit, double alpha, bool fixedIntercept);

/** The columns of the model as the fit left them. */
struct FittedColumns
{
    int p;
    double intercept;
    const matrix<double>* coefficients;  ///< p
    const matrix<int>* states;           ///< p, ColumnState
    const matrix<double>* swept;         ///< p x p or larger; its lower triangle is read
    const matrix<double>* mean;          ///< p
    const matrix<double>* stDev;         ///< p
};

/** The rows with their results. Only validation rows have weights, a response and the last four tables. */
struct NewRows
{
    int n;
    bool isValidation;
    const matrix<double>* x;  ///< n x p
    matrix<double>* caseWeights;
    const matrix<double>* regressionWeights;
    matrix<double>* response;
    matrix<double>* errors;     ///< n x 6, PredictionCol
    matrix<double>* residuals;  ///< n x 3, ResidualCol
    matrix<double>* cooksD;
    matrix<double>* adjusted;
    matrix<double>* fit;             ///< 15 x 2, FitStatistic
    std::vector<double> prediction;  ///< n
};

/** Predictions of the rows: the intercept plus all columns times their coefficients. */
void ApplyModel(const FittedColumns& model, NewRows& rows);

/** Errors and bounds of each row's prediction; for validation rows also residuals, Cook's distances and the validation
 * column of the fit table. */
void WriteNewRows(const FitSummary& fit, const FittedColumns& model, NewRows& rows);

}  // namespace korvenrg::linear
