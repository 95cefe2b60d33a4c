/** Calls of the doors of category means and LS means, with what a fit hands on to them. */
#pragma once

#include <numeric>

#include "comparisons/category_means_table.h"
#include "comparisons/contrast_columns.h"
#include "linear/design_fixture.h"

namespace comparisons_test {

using namespace linear_test;
using namespace korvenrg::comparisons;
using korvenrg::comparisons::kContrastVariance;

/** A model with its parameters, and the factor asked for. */
struct MeansProblem
{
    int n = 0, p = 0, interlevel = 1, factor = 1;
    Vector x, w, stats, covariance;
    Integers type, active, nbSubInit, nbSub, states, cleaned, listVars, nbVars, parents, removed;
    double alpha = 0.05, df = 0.0;

    int CategoryCount() const
    {
        return nbSub[At(factor)];
    }
};

struct MeansResults
{
    Table means, contrasts, ranks;
    GuardedArray<int> nbNull{1};
    MeansResults(int categories, int rows) : means(categories, 4), contrasts(rows, 10), ranks(categories, 1)
    {
    }

    int Id(int rank) const
    {
        return static_cast<int>(ranks(rank));
    }
    int RankOf(int category) const
    {
        int rank = 1;
        while (Id(rank) != category)
            ++rank;
        return rank;
    }
    /** A cell of a category. */
    double Mean(int category, int column = kMean) const
    {
        return means(RankOf(category), column);
    }
};

inline Integers CountsOf(const Integers& parents, size_t factors)
{
    Integers counts(factors, 0);
    for (const int f : parents)
        ++counts[At(f)];
    return counts;
}

/** Coefficients and covariance of a run: those of the fitted columns, or the reported ones. Cells that the run left are 0. */
inline MeansProblem MeansOf(OlsProblem q, bool fitted)
{
    q.options[kKeepRawCov] = fitted ? 0.0 : 1.0;
    const OlsResults r = RunOls(q);
    EXPECT_EQ(r.code, 0);
    MeansProblem m;
    m.n = q.n;
    m.p = q.p;
    m.interlevel = q.interlevel;
    m.x = q.x;
    m.w = r.wr;
    for (size_t i = 0; i < m.w.size(); ++i)
        m.w[i] *= q.wc[i];
    m.stats = (fitted ? r.raw : r.reported).Column(1);
    for (int j = 1; j <= q.p + 1; ++j)
        for (int i = 1; i <= q.p + 1; ++i)
            m.covariance.push_back(r.covariance.Kept(i, j) ? 0.0 : r.covariance(i, j));
    m.type = q.type;
    m.active = q.active;
    m.parents = q.parents;
    m.nbSub = m.nbSubInit = CountsOf(q.parents, q.type.size());
    m.states = m.cleaned = r.states;
    m.listVars = q.listVars;
    m.nbVars = q.nbVars;
    m.df = r.fit(kFitDf);
    return m;
}

inline int PairsOf(int categories)
{
    return categories * (categories - 1) / 2;
}

/** The cells that neither kind of contrasts writes, and the guards. */
inline void ExpectUntouched(const MeansResults& r)
{
    EXPECT_TRUE(r.means.cells.IntactGuards() && r.contrasts.cells.IntactGuards() &&
                r.ranks.cells.IntactGuards());
    EXPECT_TRUE(r.nbNull.IntactGuards());
    for (int row = 1; row <= r.contrasts.rows; ++row)
        for (const int column : {kContrastCritical, kContrastP, kContrastLevel})
            EXPECT_TRUE(r.contrasts.Kept(row, column)) << row << " " << column;
}

/** The means with contrasts, and the same means from the door without. */
inline MeansResults FittedMeans(MeansProblem m, int rows = -1)
{
    const int k = m.CategoryCount(), nf = static_cast<int>(m.type.size());
    if (m.removed.empty()) m.removed.assign(static_cast<size_t>(k), 0);
    const MeansProblem given = m;
    MeansResults r(k, rows < 0 ? PairsOf(k) : rows);
    Table means(k, 4), ids(k, 1);
    // clang-format off
    Cpp_GetMeansContrastsStatVar2(m.x.data(), m.w.data(), m.n, m.p, r.contrasts.rows, nf, m.interlevel, m.factor,
        m.type[At(m.factor)], m.nbSub.data(), m.parents.data(), m.removed.data(), m.stats.data(), m.covariance.data(),
        m.alpha, m.df, r.means.cells.data(), r.contrasts.cells.data(), r.ranks.cells.data(), r.nbNull.data());
    Cpp_GetCategoryMeans2(m.x.data(), m.w.data(), m.n, m.p, nf, m.interlevel, m.factor, m.type.data(), m.active.data(),
        m.nbSubInit.data(), m.nbSub.data(), m.listVars.data(), m.nbVars.data(), m.parents.data(), m.removed.data(),
        m.stats.data(), m.covariance.data(), m.alpha, m.df, means.cells.data(), ids.cells.data());
    // clang-format on
    ExpectUntouched(r);
    EXPECT_TRUE(SameBytes(CellsOf(means), CellsOf(r.means)) && SameBytes(CellsOf(ids), CellsOf(r.ranks)));
    EXPECT_TRUE(means.cells.IntactGuards() && ids.cells.IntactGuards());
    EXPECT_TRUE(SameBytes(m.x, given.x) && SameBytes(m.covariance, given.covariance));
    return r;
}

/** The LS means with contrasts, and the same LS means from the door without. */
inline MeansResults LsMeans(MeansProblem m, int rows = -1)
{
    const int k = m.CategoryCount(), nf = static_cast<int>(m.type.size());
    if (m.removed.empty()) m.removed.assign(static_cast<size_t>(k), 0);
    const MeansProblem given = m;
    MeansResults r(k, rows < 0 ? PairsOf(k) : rows);
    Table means(k, 4), ids(k, 1);
    // clang-format off
    GetLSMeansContrastsStatVar(m.x.data(), m.w.data(), m.n, m.p, m.p + 1, r.contrasts.rows, nf, m.interlevel, m.factor,
        m.type.data(), m.active.data(), m.nbSubInit.data(), m.nbSub.data(), m.states.data(), m.cleaned.data(),
        m.listVars.data(), m.nbVars.data(), m.parents.data(), m.removed.data(), m.stats.data(), m.covariance.data(),
        m.alpha, m.df, r.means.cells.data(), r.contrasts.cells.data(), r.ranks.cells.data(), r.nbNull.data());
    Cpp_GetCategoryLSMeans(m.x.data(), m.w.data(), m.n, m.p, m.p + 1, nf, m.interlevel, m.factor, m.type.data(),
        m.active.data(), m.nbSubInit.data(), m.nbSub.data(), m.states.data(), m.cleaned.data(), m.listVars.data(),
        m.nbVars.data(), m.parents.data(), m.removed.data(), m.stats.data(), m.covariance.data(), m.alpha, m.df,
        means.cells.data(), ids.cells.data());
    // clang-format on
    ExpectUntouched(r);
    EXPECT_TRUE(SameBytes(CellsOf(means), CellsOf(r.means)) && SameBytes(CellsOf(ids), CellsOf(r.ranks)));
    EXPECT_TRUE(means.cells.IntactGuards() && ids.cells.IntactGuards());
    EXPECT_TRUE(SameBytes(m.x, given.x) && SameBytes(m.covariance, given.covariance));
    return r;
}

}  // namespace comparisons_test
