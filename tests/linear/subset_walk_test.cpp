/** The two walks of the best-subset search, which are not behind a door. */
#include <gtest/gtest.h>

#include <cstring>
#include <random>
#include <vector>

#include "kernel/linalg/moments.h"
#include "kernel/linalg/sweep.h"
#include "linear/best_subset.h"

namespace {

using namespace korvenrg::linear;

using Column = std::vector<double>;
using Cells = std::vector<double>;
using Integers = std::vector<int>;

struct Problem
{
    std::vector<Column> columns;  // the response last
    Integers parents;
};

Problem Noise(std::size_t n, Integers parents, unsigned seed)
{
    std::mt19937 generator(seed);
    Problem problem{std::vector<Column>(parents.size() + 1, Column(n)), parents};
    for (Column& column : problem.columns) {
        for (double& cell : column) {
            cell = static_cast<double>(generator() % 2001) / 1000.0;
        }
    }
    for (std::size_t i = 0; i < n; ++i) {
        problem.columns.back()[i] += problem.columns[0][i] - problem.columns[2][i];
    }
    return problem;
}

matrix<double> PackedCorrelations(const Problem& problem)
{
    std::vector<const double*> columns;
    for (const Column& column : problem.columns) {
        columns.push_back(column.data());
    }
    const std::size_t q = columns.size();
    const auto n = static_cast<int>(problem.columns[0].size());
    const Cells correlations = korvenrg::linalg::CorrelationMoments(columns, n, nullptr).correlation;
    matrix<double> packed(static_cast<int>(korvenrg::linalg::PackedSize(q)), 1);
    int at = 0;
    for (std::size_t i = 0; i < q; ++i) {
        for (std::size_t j = 0; j <= i; ++j) {
            packed.vbset(++at, correlations[j * q + i]);
        }
    }
    return packed;
}

struct Found
{
    Cells packed, models;
    Integers states, active;
    int pFinal = 0, best = 0;
};

Found Search(const Problem& problem, double criterion, SubsetWalk walk)
{
    const int p = static_cast<int>(problem.parents.size());
    const int nf = problem.parents.back();
    matrix<double> packed = PackedCorrelations(problem);
    matrix<double> models(2 * p, nf + 12);
    matrix<int> active(nf, 1, 1);
    matrix<int> parents(p, 1, const_cast<int*>(problem.parents.data()), false);
    matrix<int> states(p, 1);
    Found found;
    SelectBestSubset(p,
                     1e-10,
                     1.0,
                     static_cast<double>(problem.columns[0].size()),
                     1.5,
                     &packed,
                     criterion,
                     1,
                     nf,
                     nf,
                     &active,
                     &parents,
                     &states,
                     &found.pFinal,
                     0.8,
                     &models,
                     &found.best,
                     walk);
    found.packed.assign(packed.data, packed.data + packed.total);
    found.models.assign(models.data, models.data + models.total);
    found.states.assign(states.data, states.data + p);
    found.active.assign(active.data, active.data + nf);
    return found;
}

bool SameBits(const Cells& a, const Cells& b)
{
    return a.size() == b.size() && std::memcmp(a.data(), b.data(), a.size() * sizeof(double)) == 0;
}

// Single columns, few rows, blocks of columns, and an aliased one.
TEST(SubsetWalk, SharedPrefixesGiveTheSameBits)
{
    Problem aliased = Noise(30, {1, 1, 2, 3, 3, 4, 5, 6}, 23);
    aliased.columns[5] = aliased.columns[0];
    for (const Problem& problem :
         {Noise(40, {1, 2, 3, 4, 5, 6, 7}, 29), Noise(7, {1, 2, 3, 4, 5, 6, 7}, 31), aliased})
    {
        for (const double criterion : {0.0, 1.0, 2.0, 3.0, 4.0, 5.0}) {
            const Found shared = Search(problem, criterion, SubsetWalk::kSharedPrefixes);
            const Found plain = Search(problem, criterion, SubsetWalk::kOneByOne);
            EXPECT_GT(plain.best, 0);
            EXPECT_TRUE(SameBits(shared.packed, plain.packed));
            EXPECT_TRUE(SameBits(shared.models, plain.models));
            EXPECT_EQ(shared.states, plain.states);
            EXPECT_EQ(shared.active, plain.active);
            EXPECT_EQ(shared.best, plain.best);
            EXPECT_EQ(shared.pFinal, plain.pFinal);
        }
    }
}

}  // namespace
