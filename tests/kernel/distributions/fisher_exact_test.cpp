#include "kernel/distributions/fisher_exact.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <limits>
#include <numeric>
#include <vector>

#include "core/limits.h"
#include "kernel/distributions/chi_square.h"
#include "kernel/distributions/gamma_functions.h"
#include "support/tolerances.h"

namespace {

using namespace korvenrg::test;
using namespace korvenrg::distributions;

struct Reference
{
    const char* name;
    int r;
    int c;
    std::vector<double> cells;
    double exact;
    double hybrid;
};

const Reference kReferences[] = {
#include "reference/distributions/fisher_exact.inc"
};

double ExactOf(int r, int c, const std::vector<double>& cells)
{
    double p = 0.0;
    EXPECT_EQ(cfexact(r, c, cells.data(), r, -1.0, 100.0, 0.0, &p), kFisherDone);
    return p;
}

// R takes paths within 1e-7 as one, hence not the last digits. In the hybrid a path that a sharper bound
// would have decided goes to chi-square here; R's bounds are other ones.
TEST(FisherExact, AgreesWithRAndItsHybrid)
{
    for (const Reference& t : kReferences) {
        SCOPED_TRACE(t.name);
        ExpectClose(ExactOf(t.r, t.c, t.cells), t.exact, kPrinted);
        double hybrid = 0.0;
        EXPECT_EQ(cfexact(t.r, t.c, t.cells.data(), t.r, 5.0, 80.0, 1.0, &hybrid), kFisherDone);
        ExpectClose(hybrid, t.hybrid, 1e-4);
    }
}

/** Looks at every table with the margins, cell by cell. */
class Enumeration
{
  public:
    Enumeration(int r, int c, const std::vector<double>& cells)
        : r_(static_cast<std::size_t>(r)), rows_(r_), columns_(static_cast<std::size_t>(c))
    {
        for (std::size_t k = 0; k < cells.size(); ++k) {
            rows_[k % r_] += cells[k];
            columns_[k / r_] += cells[k];
            observed_ -= GammaLn(cells[k] + 1.0);
        }
        Fill(0, columns_[0], 0.0);
    }
    double Tail() const
    {
        return tail_ / all_;
    }
    double Probability() const
    {
        return std::exp(observed_) / all_;
    }

  private:
    void Fill(std::size_t k, double left, double logWeight)
    {
        if (k == r_ * columns_.size()) {
            all_ += std::exp(logWeight);
            if (logWeight <= observed_ + 1e-7) tail_ += std::exp(logWeight);
            return;
        }
        const bool lastOfColumn = k % r_ == r_ - 1;
        double& row = rows_[k % r_];
        for (double x = lastOfColumn ? left : 0.0; x <= std::min(left, row); x += 1.0) {
            row -= x;
            const std::size_t nextColumn = (k + 1) / r_;
            const double nextLeft = !lastOfColumn                  ? left - x
                                    : nextColumn < columns_.size() ? columns_[nextColumn]
                                                                   : 0.0;
            Fill(k + 1, nextLeft, logWeight - GammaLn(x + 1.0));
            row += x;
        }
    }

    std::size_t r_;
    std::vector<double> rows_;
    std::vector<double> columns_;
    double observed_ = 0.0;
    double tail_ = 0.0;
    double all_ = 0.0;
};

// Tables of many shapes: equal and unequal margins, extreme and typical cells, ties, against the plain sum.
TEST(FisherExact, AgreesWithTheSumOverAllTables)
{
    const int shapes[][2] = {{2, 2}, {2, 5}, {3, 3}, {3, 4}, {4, 3}, {4, 4}};
    for (unsigned table = 0; table < 36; ++table) {
        const auto& shape = shapes[table % 6];
        std::vector<double> cells;
        for (int k = 0; k < shape[0] * shape[1]; ++k) {
            const unsigned mixed = (table * 97U + static_cast<unsigned>(k) * 13U + 1U) * 2654435761U;
            const unsigned largest = shape[0] + shape[1] > 6 ? 3 : 6;
            const bool crowded = table % 4 == 3 && k % shape[0] == k / shape[0] % shape[0];
            cells.push_back(crowded ? largest + 1.0 : (mixed >> 20) % largest + (k == 0 ? 1 : 0));
        }
        const Enumeration all(shape[0], shape[1], cells);
        double p = 0.0;
        double probability = 0.0;
        ASSERT_EQ(cfexact(shape[0], shape[1], cells.data(), shape[0], 0.0, 0.0, 0.0, &p, &probability),
                  kFisherDone);
        ExpectClose(p, all.Tail(), 1e-11);  // the plain sums have up to a million terms

        ExpectClose(probability, all.Probability(), 1e-11);
    }
}

// Transposed, turned round, with empty lines put in and behind a leading dimension: always the same p.
TEST(FisherExact, OrderAndEmptyLinesDoNotMatter)
{
    const std::vector<double> cells = {0, 2, 8, 4, 4, 3, 2, 3, 5, 0, 1, 9};  // 3 x 4
    const double p = ExactOf(3, 4, cells);
    std::vector<double> turned(12);
    std::vector<double> spread(5 * 5, 0.0);
    for (std::size_t i = 0; i < 3; ++i) {
        for (std::size_t j = 0; j < 4; ++j) {
            turned[(2 - i) * 4 + j] = cells[j * 3 + i];
            spread[(j + (j > 1 ? 1 : 0)) * 5 + i + 1] = cells[j * 3 + i];
        }
    }
    ExpectClose(ExactOf(4, 3, turned), p, kRoundoff);
    double spreadP = 0.0;
    EXPECT_EQ(cfexact(4, 5, spread.data(), 5, 0.0, 0.0, 0.0, &spreadP), kFisherDone);
    ExpectClose(spreadP, p, kRoundoff);
}

// Ten by ten with about a thousand counts, all expected ones near 10: far beyond the limits, so chi-square
// for the whole, here against Pearson's.
TEST(FisherExact, HybridOfAHugeTableIsChiSquare)
{
    std::vector<double> cells;
    for (int k = 0; k < 100; ++k) {
        cells.push_back(7 + (k * k / 3 + k / 10) % 8);
    }
    std::vector<double> rows(10);
    std::vector<double> columns(10);
    for (std::size_t k = 0; k < 100; ++k) {
        rows[k % 10] += cells[k];
        columns[k / 10] += cells[k];
    }
    const double total = std::accumulate(rows.begin(), rows.end(), 0.0);
    double pearson = 0.0;
    for (std::size_t k = 0; k < 100; ++k) {
        const double expected = rows[k % 10] * columns[k / 10] / total;
        pearson += (cells[k] - expected) * (cells[k] - expected) / expected;
    }
    double p = 0.0;
    EXPECT_EQ(cfexact(10, 10, cells.data(), 10, 5.0, 80.0, 1.0, &p), kFisherDone);
    ExpectClose(p, pValChiSq(pearson, 81.0), 0.1);  // two forms of one limit law
}

struct BadCall
{
    int r;
    int c;
    int leadingDimension;
    std::vector<double> cells;
    int code;
};

TEST(FisherExact, CodesOfBadTables)
{
    const double nan = std::numeric_limits<double>::quiet_NaN();
    const BadCall calls[] = {{0, 2, 2, {1, 2, 3, 4}, kFisherBadSize},
                             {2, 0, 2, {1, 2, 3, 4}, kFisherBadSize},
                             {2, 2, 1, {1, 2, 3, 4}, kFisherBadSize},
                             {2, 2, 2, {1, -1, 3, 4}, kFisherBadTable},
                             {2, 2, 2, {1, 2.5, 3, 4}, kFisherBadTable},
                             {2, 2, 2, {1, nan, 3, 4}, kFisherBadTable},
                             {2, 2, 2, {0, 0, 0, 0}, kFisherBadTable},
                             {2, 2, 2, {1e7, 1, 3, 4}, kFisherWorkLimit},
                             {2, 2, 2, {1e300, 1, 3, 4}, kFisherWorkLimit}};
    for (const BadCall& call : calls) {
        double p = 0.5;
        double probability = 0.5;
        const int code =
            cfexact(call.r, call.c, call.cells.data(), call.leadingDimension, 5, 80, 1, &p, &probability);
        EXPECT_EQ(code, call.code);
        EXPECT_EQ(p, korvenrg::kMissing);
        EXPECT_EQ(probability, korvenrg::kMissing);
    }
    EXPECT_EQ(ExactOf(2, 2, {4, 0, 9, 0}), 1.0);
    ExpectClose(ExactOf(2, 2, {3.0 + 4e-10, 1, 1, 3}), 34.0 / 70.0, kRoundoff);
}

}  // namespace
