/** Weighted means, variances and correlations of the columns of a table. */
#pragma once

#include <vector>

#include "core/matrix.h"
#include "kernel/linalg/columns.h"
#include "kernel/linalg/cross_products.h"

namespace korvenrg::linalg {

/** Weights of the rows: W, with 0 for the rows that a mask flags. */
class RowWeights
{
  public:
    /**
     * @param W     n weights, or null for weights of 1; cells that it does not have read as its outOfRange value
     * @param mask  n flags, or null: rows whose flag is not 0 get the weight 0
     */
    RowWeights(const matrix<double>* W, int n, const short* mask);
    RowWeights(const RowWeights&) = delete;
    RowWeights& operator=(const RowWeights&) = delete;

    /** n weights, or null when all are 1. */
    const double* Data() const
    {
        return data_;
    }
    /** Sum of the weights, in order. */
    double Total() const
    {
        return total_;
    }

  private:
    const double* data_ = nullptr;
    double total_;
    std::vector<double> copy_;
};

/** Sum of w (x - centre)^2 of each column, with the mean of the centred cells, which is nothing but the rounding of the
 * centre, taken out. */
std::vector<double> SumsOfSquares(Columns columns, int n, const double* weights, const Centres& centres);

/** Correlation from a cross-product and the two sums of squares: exactly 1 or -1 for proportional columns and where
 * rounding takes it past them; 0 when a sum of squares is 0. */
double CorrelationOf(double product, double squareA, double squareB);

/** Correlations from centred cross-products (q x q by columns): 0 for a column without spread, with itself too, exactly
 * 1 for any other column with itself. */
std::vector<double> CorrelationsOf(const std::vector<double>& products, std::size_t q);

/** Moments of q columns; the divisor of the variances is the sum of weights minus 1. */
struct Moments
{
    std::vector<double> mean;
    std::vector<double> standardDeviation;
    std::vector<double> variance;
    std::vector<double> correlation;  ///< q x q by columns; empty when not asked for
};

/**
 * Means, variances and correlations by two passes, centred on means of two doubles.
 *
 * A constant column has a standard deviation of exactly 0 and correlations of 0, with itself too; any other
 * column has exactly 1 with itself.
 *
 * @param weights  n weights, or null for weights of 1; rows of weight 0 are not looked at
 */
Moments CorrelationMoments(Columns columns, int n, const double* weights);

/**
 * Mean products about zero, scaled by the standard deviations about the means: cell (i, j) of `correlation`
 * is sum of w x_i x_j / (sum of weights - 1) / s, with s = sd(i) sd(j), and 0 where s is at most eps.
 */
Moments MomentsAboutZero(Columns columns, int n, const double* weights);

/** Each column centred on its plain mean and divided by its plain standard deviation, into `out` (n x q by
 * columns); a column of zero variance is only centred. */
void StandardizeColumns(Columns columns, int n, double* out);

}  // namespace korvenrg::linalg
