/** What the means of a factor's categories share, whatever the combination of coefficients that makes them. */
#pragma once

#include <cmath>

#include "core/limits.h"
#include "core/matrix.h"

namespace korvenrg::comparisons {

/** oMeans, K x 4, by column. */
enum MeanCol
{
    kMean = 1,
    kMeanStdError,
    kMeanLower,
    kMeanUpper,
    kMeanCols = kMeanUpper
};

/** The coded rows of the model. */
struct ModelRows
{
    matrix<double>* x;        ///< n x p
    matrix<double>* weights;  ///< n
    int n;
    int p;
};

/** A fit: p coefficients, then the intercept. */
struct FittedModel
{
    int p;
    matrix<double>* coefficients;  ///< p + 1
    matrix<double>* covariance;    ///< (p + 1) x (p + 1)
    double alpha;
    double dfErrors;
};

/** The categories of one factor. */
struct FactorCategories
{
    int count;
    matrix<int>* removed;  ///< above 0: out of the model

    bool HasMean(int category) const
    {
        return removed->vbget(category) == 0;
    }

    int CountRemoved() const;
};

/** The value, or the marker where no number came out. */
inline double FiniteOrMissing(double value)
{
    return std::isfinite(value) ? value : kMissing;
}

/** The number of a factor's categories, 0 when the list does not have it. */
int CategoryCountOf(const matrix<int>* nbSub, int factor);

/**
 * Means, standard errors and confidence limits of linear combinations of a fit, in the order of the categories.
 *
 * @param combinations  p x K, the coefficient of each parameter in the mean of each category; the intercept has 1
 * @param table         K x 4, MeanCol. A category without a mean has four missing cells; a negative variance gives no
 *                      standard error, and no degrees of freedom give no limits
 */
void CategoryMeansTable(const FittedModel& fit,
                        const FactorCategories& categories,
                        const matrix<double>& combinations,
                        matrix<double>& table);

/** The table and the identifiers 1..K ranked by ascending mean. */
enum class MissingMeans
{
    kFirst,
    kLast
};
struct RankedMeans
{
    matrix<double> table;        ///< K x 4
    matrix<double> identifiers;  ///< K
};
RankedMeans RankCategories(const FittedModel& fit,
                           const FactorCategories& categories,
                           const matrix<double>& combinations,
                           MissingMeans missing);

/** Hands the ranked means to the caller's arrays. */
void WriteRankedMeans(RankedMeans& ranked, int count, matrix<double>* means, matrix<double>* identifiers);

}  // namespace korvenrg::comparisons
