/** Calls of the logit door as a client makes them: sentinel-filled, guarded outputs. */
#pragma once

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <vector>

#include "korvenrg.h"
#include "logistic/logit_tables.h"
#include "support/result_table.h"
#include "support/tolerances.h"

namespace logistic_test {

using namespace korvenrg::logistic;
using namespace korvenrg::test;
using korvenrg::kMissing;

/** Positions of the option vector, from 0. */
inline constexpr size_t kLogDoses = 0, kFixedIntercept = 2, kWithMortality = 3, kGivenMortality = 4,
                        kObservedScale = 5, kProfile = 6, kFirth = 7, kTypeIII = 8, kDoses = 9,
                        kUseTolerance = 10;
/** Forms of the response and links. */
inline constexpr int kBinaryForm = 0, kBinomialForm = 1, kMultinomialForm = 2;
inline constexpr int kLogitLink = 0, kProbitLink = 1, kCloglogLink = 2, kLoglogLink = 3;

struct Sample
{
    Vector y, x, wc;
};

struct LogitProblem
{
    int n = 0, p = 0, qualitative = 0, categories = 2, form = kBinaryForm, link = kLogitLink;
    Vector y, x, wc, wr, design, mortality;
    Integers type, active, parents, states;
    std::array<int, 11> info{};
    double alpha = 0.05, convergence = 1E-13, tolerance = 1E-9, cut = 0.5;
    int maxIterations = 100, constraint = 0, reference = 0, selection = -1;
    int criterion = 0, minSize = 1, maxSize = 1;
    double pIn = 0.05, pOut = 0.1;
    Sample valid{}, fresh{};

    int Blocks() const
    {
        return categories - 1;
    }
};

struct LogitResults
{
    int n, p, K, nf, nv, np, modelRows, modelCols, code = 0;
    Integers states{}, active{};
    Vector wr{}, mortality{};
    int nbActive = 0;
    Table predictions{n, 9 * K}, validPredictions{std::max(nv, 1), 9 * K},
        newPredictions{std::max(np, 1), 4 * K}, coefficients{(p + 1) * K, 11}, standardised{p * K, 8},
        covariance{p + 2, p + 2}, fit{10, 2}, tests{3, 3}, typeIII{nf + 1, 5}, marginal{K, 1},
        classification{K + 2, K + 3}, validClassification{K + 2, K + 3}, roc{n + 1, 2}, doses{13, 6},
        curve{99, 5}, models{modelRows, modelCols}, hetero{1, 1}, area{1, 1};
    GuardedArray<VARIANT_BOOL> separate{1};

    std::vector<const Table*> Tables() const
    {
        return {&predictions,
                &validPredictions,
                &newPredictions,
                &coefficients,
                &standardised,
                &covariance,
                &fit,
                &tests,
                &typeIII,
                &marginal,
                &classification,
                &validClassification,
                &roc,
                &doses,
                &curve,
                &models,
                &hetero,
                &area};
    }
};

/** Runs the door. Fails when a guard cell, an input or a table that nothing asks for changed. */
inline LogitResults RunLogit(LogitProblem q)
{
    const LogitProblem given = q;
    const int K = q.Blocks(), nf = static_cast<int>(q.type.size());
    const auto rows = [](const Sample& s) { return static_cast<int>(s.x.size()); };
    const int nv = q.p > 0 ? rows(q.valid) / q.p : 0, np = q.p > 0 ? rows(q.fresh) / q.p : 0;
    const bool subsets = q.selection == 0;
    const int modelRows = subsets ? q.maxSize - q.minSize + 1 : q.selection > 0 ? 2 * nf : 1;
    LogitResults r{q.n, q.p, K, nf, nv, np, modelRows, q.p + (subsets ? 11 : 15)};
    GuardedArray<double> wr(q.wr), mortality(q.mortality);
    GuardedArray<int> states(q.states), active(q.active);
    r.nbActive = nf;
    // clang-format off
    r.code = Cpp_RunMLOG(q.n, q.p, q.qualitative, q.categories, q.y.data(), q.x.data(), q.wc.data(), wr.data(),
        q.alpha, nv, q.valid.y.data(), q.valid.x.data(), q.valid.wc.data(), r.validPredictions.cells.data(),
        r.validClassification.cells.data(), np, q.fresh.x.data(), r.newPredictions.cells.data(), nf, &r.nbActive,
        q.type.data(), active.data(), nullptr, q.parents.data(), nullptr, q.design.data(), q.info.data(), q.form,
        q.link, q.convergence, q.maxIterations, q.tolerance, q.constraint, q.reference, q.selection,
        q.criterion, q.pIn, q.pOut, q.minSize, q.maxSize, q.cut, mortality.data(), r.models.cells.data(), states.data(), r.coefficients.cells.data(),
        r.standardised.cells.data(), r.covariance.cells.data(), r.fit.cells.data(), r.tests.cells.data(),
        r.typeIII.cells.data(), r.predictions.cells.data(), r.hetero.cells.data(), r.marginal.cells.data(),
        r.classification.cells.data(), r.roc.cells.data(), r.area.cells.data(), r.doses.cells.data(),
        r.curve.cells.data(), r.separate.data());
    // clang-format on
    for (const Table* table : r.Tables())
        EXPECT_TRUE(table->cells.IntactGuards());
    EXPECT_TRUE(wr.IntactGuards() && mortality.IntactGuards() && states.IntactGuards() &&
                active.IntactGuards());
    EXPECT_TRUE(r.separate.IntactGuards());
    EXPECT_TRUE(q.selection >= 0 || r.models.cells.CountChanged() == 0u);
    EXPECT_TRUE(given.info[kDoses] == 1 || r.doses.cells.CountChanged() + r.curve.cells.CountChanged() == 0u);
    EXPECT_TRUE(nv > 0 ||
                r.validPredictions.cells.CountChanged() + r.validClassification.cells.CountChanged() == 0u);
    EXPECT_TRUE(np > 0 || r.newPredictions.cells.CountChanged() == 0u);
    EXPECT_TRUE(SameBytes(q.y, given.y) && SameBytes(q.x, given.x) && SameBytes(q.wc, given.wc));
    r.states.assign(states.data(), states.data() + q.p);
    r.active.assign(active.data(), active.data() + nf);
    r.wr.assign(wr.data(), wr.data() + q.n);
    r.mortality.assign(mortality.data(), mortality.data() + K);
    return r;
}

/** A binary problem of quantitative columns, one factor a column, all weights 1. */
inline LogitProblem Binary(const Vector& y, const std::vector<Vector>& columns)
{
    LogitProblem q;
    q.n = static_cast<int>(y.size());
    q.p = static_cast<int>(columns.size());
    q.y = y;
    for (const Vector& column : columns)
        q.x.insert(q.x.end(), column.begin(), column.end());
    q.wc.assign(y.size(), 1.0);
    q.wr.assign(y.size(), 1.0);
    q.mortality.assign(1, 0.0);
    q.type.assign(columns.size(), 1);
    q.active.assign(columns.size(), 1);
    q.states.assign(columns.size(), 0);
    q.design.assign(columns.size() * columns.size(), 0.0);
    for (size_t j = 0; j < columns.size(); ++j) {
        q.parents.push_back(static_cast<int>(j) + 1);
        q.design[j * columns.size() + j] = 1.0;
    }
    return q;
}

}  // namespace logistic_test
