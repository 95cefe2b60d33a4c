/** Rows of the type tables. */
#pragma once

#include "core/limits.h"
#include "kernel/distributions/distributions.h"
#include "linear/ols_tables.h"

namespace korvenrg::linear {

/** A table of sums of squares by factor, filled from the top. */
struct TypeTable
{
    matrix<double>& cells;
    int row = 0;

    void Write(double df, double sumOfSquares, double meanSquare, double f, double p)
    {
        row += 1;
        cells.vbset(row, kTypeDf, df);
        cells.vbset(row, kTypeSumOfSquares, sumOfSquares);
        cells.vbset(row, kTypeMeanSquare, meanSquare);
        cells.vbset(row, kTypeF, f);
        cells.vbset(row, kTypeP, p);
    }

    /** A factor that has nothing to test. */
    void WriteEmpty()
    {
        Write(0.0, 0.0, kMissing, kMissing, kMissing);
    }

    /** The row of a factor that is out of the model: empty when it was asked for, none otherwise. */
    void WriteInactive(const matrix<double>& origActive, int factor)
    {
        if (origActive.vbget(factor) == 1.0) WriteEmpty();
    }

    /** A tested factor; F and Pr are missing when the error's mean square is not above `least`. */
    void WriteTest(double df, double sumOfSquares, double dfE, double mse, double least)
    {
        const double meanSquare = sumOfSquares / df;
        if (!(mse > least)) {
            Write(df, sumOfSquares, meanSquare, kMissing, kMissing);
            return;
        }
        const double f = meanSquare / mse;
        Write(df, sumOfSquares, meanSquare, f, pValFisher(f, df, dfE));
    }
};

}  // namespace korvenrg::linear
