/** One least squares fit through RunOLS1: the arrays that it fills, by columns. */
#ifndef KORVENRG_FRONTEND_FIT_H
#define KORVENRG_FRONTEND_FIT_H

#include <bit>
#include <cstddef>
#include <cstdint>
#include <vector>

#include "design.h"

namespace korvenrg::frontend {

/** Stands in each result cell that has no value. */
inline constexpr double kMissing = std::bit_cast<double>(std::uint64_t{0xFFEFFFFFFFFFFFE2});

inline bool IsMissing(double value)
{
    return value <= kMissing;
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
    Fit(std::size_t n, std::size_t p);

    std::vector<int> states;  ///< p, see ColumnState
    NumberTable statistics;   ///< 15 x 2
    NumberTable anova;        ///< 3 x 5: model, error, total; DF, sum of squares, mean square, F, Pr > F
    NumberTable
        parameters;  ///< (p + 1) x 6, intercept first: value, standard error, t, Pr > |t|, lower, upper
    NumberTable standardised;   ///< p x 6, the same columns
    NumberTable covariance;     ///< (p + 1) x (p + 1) of the reported parameters, intercept last
    NumberTable predictions;    ///< n x 1
    NumberTable intervals;      ///< n x 6: mean's standard error, lower, upper; observation's
    NumberTable residuals;      ///< n x 3: raw, standardised, studentised
    NumberTable cooksDistance;  ///< n x 1
    NumberTable leaveOneOut;    ///< n x 1
};

/** Throws UserError when no column can enter the model. */
Fit FitModel(const ModelData& data, const Design& design, const Options& options);

}  // namespace korvenrg::frontend

#endif
