/** Calls of the least squares door as a client makes them: sentinel-filled, guarded outputs. */
#pragma once

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <vector>

#include "korvenrg.h"
#include "linear/ols_tables.h"
#include "support/result_table.h"
#include "support/tolerances.h"

namespace linear_test {

using namespace korvenrg::linear;
using namespace korvenrg::test;
using korvenrg::kMissing;

/** Positions of the option vector, from 0. */
inline constexpr size_t kFixedIntercept = 0, kInterceptValue = 1, kTolerance = 2, kMethod = 4, kCriterion = 5,
                        kPEnter = 6, kPRemove = 7, kMinVars = 8, kMaxVars = 9, kAlpha = 10, kTypeI = 11,
                        kTypeII = 12, kTypeIII = 13, kConstraint = 14, kTypeIV = 15, kKeepRawCov = 16;
/** States of a column. */
inline constexpr int kIn = 0, kCandidate = -1, kDropped = 40000, kConstant = 50000, kRefused = 60000;

struct OlsProblem
{
    int n = 0, p = 0, interlevel = 1;
    Vector y, x, wc, wr, design;
    Integers type, active, nbVars, listVars, nbSub, parents, states;
    std::array<double, 17> options{0, 0, 1E-4, 0, -1, 0, 0.05, 0.1, 1, 1, 0.05, 0, 0, 0, 0, 0, 1};
};

struct OlsResults
{
    int n, p, nf, code = 0;
    Integers states{}, active{};
    Vector wr{};
    GuardedArray<int> pFinal{1}, bestId{1};
    Table models{2 * p, nf + 12}, fit{15, 2}, anova{3, 5}, type1{nf, 5}, type2{nf, 5}, type3{nf, 5},
        type4{nf, 5}, raw{p + 1, 1}, reported{p + 1, 1}, parameters{p + 1, 6}, beta{p, 6},
        covariance{p + 1, p + 1}, predictions{n, 1}, errors{n, 6}, residuals{n, 3}, cook{n, 1},
        leaveOneOut{n, 1}, swept{p + 1, p + 1}, means{p + 1, 1}, deviations{p + 1, 1};

    std::vector<const Table*> Tables() const
    {
        return {&models,    &fit,      &anova,       &type1, &type2,      &type3,       &type4,
                &raw,       &reported, &parameters,  &beta,  &covariance, &predictions, &errors,
                &residuals, &cook,     &leaveOneOut, &swept, &means,      &deviations};
    }
};

/** Runs the door. Fails when a guard cell, an input, the second fit column or a table without content
 * changed. */
inline OlsResults RunOls(OlsProblem q)
{
    const OlsProblem given = q;
    const int nf = static_cast<int>(q.type.size());
    OlsResults r{q.n, q.p, nf};
    Vector freq(static_cast<size_t>(q.p), 1.0);
    // clang-format off
    r.code = RunOLS1(q.n, q.p, q.y.data(), q.x.data(), q.wc.data(), q.wr.data(), nf, q.interlevel, nf, q.type.data(),
        q.active.data(), q.nbVars.data(), q.listVars.data(), q.nbSub.data(), q.parents.data(), freq.data(),
        q.design.data(), q.options.data(), r.pFinal.data(), r.models.cells.data(), r.bestId.data(), q.states.data(),
        r.fit.cells.data(), r.anova.cells.data(), r.type1.cells.data(), r.type2.cells.data(), r.type3.cells.data(),
        r.type4.cells.data(), r.raw.cells.data(), r.reported.cells.data(), r.parameters.cells.data(),
        r.beta.cells.data(), r.covariance.cells.data(), r.predictions.cells.data(), r.errors.cells.data(),
        r.residuals.cells.data(), r.cook.cells.data(), r.leaveOneOut.cells.data(), r.swept.cells.data(),
        r.means.cells.data(), r.deviations.cells.data());
    // clang-format on
    for (const Table* table : r.Tables())
        EXPECT_TRUE(table->cells.IntactGuards());
    const bool withTypes = std::any_of(given.options.begin() + kTypeI,
                                       given.options.begin() + kTypeIII + 1,
                                       [](double option) { return option == 1.0; });
    for (const Table* table : {&r.type1, &r.type2, &r.type3, &r.type4})
        EXPECT_TRUE(withTypes || table->cells.CountChanged() == 0u);
    EXPECT_TRUE(r.pFinal.IntactGuards() && r.bestId.IntactGuards());
    EXPECT_TRUE(given.options[kMethod] == 0.0 || r.bestId.IsSentinel(0));
    for (int i = 1; i <= 15; ++i)
        EXPECT_TRUE(r.fit.Kept(i, kFitValidation)) << "fit row " << i;
    EXPECT_TRUE(SameBytes(q.y, given.y) && SameBytes(q.x, given.x) && SameBytes(q.wc, given.wc));
    EXPECT_TRUE(SameBytes(q.type, given.type) && SameBytes(q.parents, given.parents));
    EXPECT_TRUE(SameBytes(q.design, given.design));
    r.states = q.states;
    r.active = q.active;
    r.wr = q.wr;
    return r;
}

/** A problem of quantitative columns; factorOf gives each column's factor, by default one factor a column. */
inline OlsProblem Regression(const Vector& y, const std::vector<Vector>& columns, Integers factorOf = {})
{
    OlsProblem q;
    q.n = static_cast<int>(y.size());
    q.p = static_cast<int>(columns.size());
    q.y = y;
    for (int j = static_cast<int>(factorOf.size()) + 1; j <= q.p; ++j)
        factorOf.push_back(j);
    for (const Vector& column : columns)
        q.x.insert(q.x.end(), column.begin(), column.end());
    const auto nf = static_cast<size_t>(*std::max_element(factorOf.begin(), factorOf.end())),
               p = columns.size();
    q.wc.assign(y.size(), 1.0);
    q.wr.assign(y.size(), 1.0);
    q.type.assign(nf, 1);
    q.active.assign(nf, 1);
    q.nbVars.assign(nf, 1);
    q.nbSub.assign(nf, 0);
    for (int f : factorOf)
        ++q.nbSub[At(f)];
    for (size_t f = 1; f <= nf; ++f)
        q.listVars.push_back(static_cast<int>(f));
    q.parents = factorOf;
    q.states.assign(p, kIn);
    q.design.assign(p * p, 0.0);
    for (size_t j = 0; j < p; ++j)
        q.design[j * p + j] = 1.0;
    return q;
}

}  // namespace linear_test
