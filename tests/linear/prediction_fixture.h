/** Calls of the prediction door as a client makes them: sentinel-filled, guarded outputs. */
#pragma once

#include "ols_fixture.h"

namespace linear_test {

/** New rows for a fit. */
struct NewRowsProblem
{
    int nPred = 0;
    Vector x, y, wc, wr;
    double alpha = 0.05;
    short fixedIntercept = 0, isValid = 0;
};

struct NewRowsResults
{
    int n;
    Table predictions{n, 1}, errors{n, 6}, residuals{n, 3}, cook{n, 1}, adjusted{n, 1}, fit{15, 2};
};

/** What a fit hands on. */
struct Fitted
{
    int n = 0, p = 0, pFinal = 0;
    Integers states;
    Vector raw, swept, means, deviations, fit;  // fit: column 1
};

inline Fitted HandOn(const OlsResults& r)
{
    return {r.n,
            r.p,
            r.pFinal[0],
            r.states,
            CellsOf(r.raw),
            CellsOf(r.swept),
            CellsOf(r.means),
            CellsOf(r.deviations),
            r.fit.Column(1)};
}

/** Runs the door. Fails when a guard cell, an input, or a table that the call has no business with changed. */
inline NewRowsResults Predict(const Fitted& given, const NewRowsProblem& rows)
{
    Fitted f = given;
    NewRowsProblem q = rows;
    NewRowsResults r{std::max(q.nPred, 0)};
    for (size_t i = 0; i < f.fit.size(); ++i)
        r.fit.cells[i] = f.fit[i];
    // clang-format off
    OLSPredict(f.n, q.nPred, f.p, f.pFinal, q.x.data(), f.raw.data(), q.alpha, q.fixedIntercept, f.states.data(),
        r.errors.cells.data(), f.swept.data(), f.means.data(), f.deviations.data(), q.wc.data(), q.wr.data(),
        r.predictions.cells.data(), q.isValid, r.fit.cells.data(), q.y.data(), r.residuals.cells.data(),
        r.cook.cells.data(), r.adjusted.cells.data());
    // clang-format on
    for (const Table* table : {&r.predictions, &r.errors, &r.residuals, &r.cook, &r.adjusted, &r.fit})
        EXPECT_TRUE(table->cells.IntactGuards());
    for (size_t i = 0; i < f.fit.size(); ++i)
        EXPECT_TRUE(std::memcmp(&r.fit.cells[i], &f.fit[i], sizeof(double)) == 0);
    EXPECT_TRUE(SameBytes(f.raw, given.raw) && SameBytes(f.swept, given.swept) &&
                SameBytes(f.means, given.means));
    EXPECT_TRUE(SameBytes(q.x, rows.x) && SameBytes(q.y, rows.y) && SameBytes(q.wc, rows.wc));
    EXPECT_TRUE(SameBytes(q.wr, rows.wr) && f.states == given.states);
    if (q.isValid != -1) {
        for (const Table* table : {&r.residuals, &r.cook, &r.adjusted})
            EXPECT_EQ(table->cells.CountChanged(), 0u);
        for (int i = 1; i <= 15; ++i)
            EXPECT_TRUE(r.fit.Kept(i, kFitValidation));
    }
    return r;
}

}  // namespace linear_test
