/** One least squares fit through RunOLS1: the arrays that it fills, by columns. */
#ifndef KORVENRG_FRONTEND_FIT_H
#define KORVENRG_FRONTEND_FIT_H

#include <bit>
#include <cmath>
#include <cstddef>
#include <cstdint>
#include <vector>

#include "design.h"

namespace korvenrg::frontend {

/** Stands in each result cell that has no value. */
inline constexpr double kMissing = std::bit_cast<double>(std::uint64_t{0xFFEFFFFFFFFFFFE2});

/** A number that overflowed, or that came of 0 / 0, is no value either; some doors mark a cell with -kMissing. */
inline bool IsMissing(double value)
{
    return !(std::fabs(value) < -kMissing);
}

/** Rows x columns of numbers, by columns, filled with the missing marker. */
struct NumberTable
{
    NumberTable(std::size_t rowCount, std::size_t columnCount, double fill = kMissing)
        : rows(rowCount), columns(columnCount), cells(rowCount * columnCount, fill)
    {
    }

    double operator()(std::size_t row, std::size_t column) const
    {
        return cells[column * rows + row];
    }  ///< from 0
    double* data()
    {
        return cells.data();
    }

    std::size_t rows;
    std::size_t columns;
    std::vector<double> cells;
};

struct Fit
{
    Fit(std::size_t n, std::size_t p, std::size_t factors);

    std::vector<int> states;        ///< p, see ColumnState
    std::vector<int> factorActive;  ///< factors, 1 for those in the model
    int columnsInModel = 0;
    NumberTable models;   ///< 2p x (factors + 12), see SelectionColumn
    int bestModel = 0;    ///< row of the best subset, from 1
    NumberTable typeOne;  ///< a row for each term that was asked for, in order; columns as anova
    NumberTable typeTwo;
    NumberTable typeThree;
    NumberTable statistics;  ///< 15 x 2
    NumberTable anova;       ///< 3 x 5: model, error, total; DF, sum of squares, mean square, F, Pr > F
    NumberTable
        parameters;  ///< (p + 1) x 6, intercept first: value, standard error, t, Pr > |t|, lower, upper
    NumberTable standardised;  ///< p x 6, the same columns
    NumberTable covariance;    ///< (p + 1) x (p + 1) of the reported parameters, intercept last
    NumberTable reported;      ///< p + 1 reported parameters, intercept last
    NumberTable
        rawCovariance;  ///< (p + 1) x (p + 1) of the fitted columns' coefficients; only for category means
    NumberTable predictions;    ///< n x 1
    NumberTable intervals;      ///< n x 6: mean's standard error, lower, upper; observation's
    NumberTable residuals;      ///< n x 3: raw, standardised, studentised
    NumberTable cooksDistance;  ///< n x 1
    NumberTable leaveOneOut;    ///< n x 1

    NumberTable
        rawCoefficients;     ///< p + 1 of the fitted columns; with the next three what a prediction needs
    NumberTable swept;       ///< (p + 1) x (p + 1)
    NumberTable means;       ///< p + 1
    NumberTable deviations;  ///< p + 1
};

/** Positions in a row of the models, from 0: a selection's step, or its best subset of one size. The statistics
 * stand behind one indicator for each factor. */
enum SelectionColumn : std::size_t
{
    kStepNumber = 0,
    kStepColumns = 1,
    kStepMove = 2,
    kStepFactor = 3,
    kFirstIndicator = 4
};
inline constexpr std::size_t kModelStatistics = 8;

/** Throws UserError when no column can enter the model. */
Fit FitModel(const ModelData& data, const Design& design, const Options& options);

/** Regression weights of mean 1 over the rows of the fit; the same factor for other rows. */
std::vector<double> ScaledWeights(const ModelData& data, std::vector<double> weights);

}  // namespace korvenrg::frontend

#endif
