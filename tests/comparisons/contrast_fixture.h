/** Calls of the comparison door as a client makes them: sentinel-filled, guarded tables. */
#pragma once

#include "comparisons/contrast_columns.h"
#include "linear/reference_cases.h"

namespace comparison_test {

using namespace korvenrg::comparisons;
using namespace korvenrg::test;
using korvenrg::kMissing;
using linear_test::At;
using linear_test::Case;
using linear_test::Integers;
using linear_test::ReadCases;
using linear_test::Table;
using linear_test::Vector;

/** What the caller knows of a contrast. */
struct Contrast
{
    double difference, variance;
    int firstRank, secondRank, firstId, secondId;
};

/** A one-way layout and its contrasts; the other cells of the contrast table hold the sentinel. */
struct Layout
{
    int k = 0, control = 1;
    double df = 0, alpha = 0.05, harmonic = 0;
    short useHarmonic = 0;
    Vector sizes = {}, variances = {};
    std::vector<Contrast> contrasts = {};

    int Rows() const
    {
        return static_cast<int>(contrasts.size());
    }
    Table ContrastTable() const
    {
        Table table(Rows(), kContrastCols);
        for (int r = 1; r <= Rows(); ++r) {
            const Contrast& c = contrasts[At(r)];
            const std::pair<int, double> given[] = {{kContrastDifference, c.difference},
                                                    {kContrastVariance, c.variance},
                                                    {kContrastFirstRank, c.firstRank},
                                                    {kContrastSecondRank, c.secondRank},
                                                    {kContrastFirstId, c.firstId},
                                                    {kContrastSecondId, c.secondId}};
            for (const auto& [column, cell] : given)
                table.cells[table.Position(r, column)] = cell;
        }
        return table;
    }
};

inline Layout LayoutOf(const Case& c)
{
    const Vector setup = c["setup"].Numbers();
    Layout layout{static_cast<int>(setup[0]), static_cast<int>(setup[3]), setup[1], setup[2]};
    layout.sizes = c["sizes"].Numbers();
    layout.variances = c["variances"].Numbers();
    Table table(c["contrasts"].rows, kContrastCols);
    for (int i = 0; i < table.rows * table.cols; ++i) {
        const std::string& cell = c["contrasts"].cells[static_cast<size_t>(i)];
        if (cell != "kept") table.cells[static_cast<size_t>(i)] = std::stod(cell);
    }
    const auto number = [&](int r, int column) { return static_cast<int>(table(r, column)); };
    for (int r = 1; r <= table.rows; ++r)
        layout.contrasts.push_back({table(r, kContrastDifference),
                                    table(r, kContrastVariance),
                                    number(r, kContrastFirstRank),
                                    number(r, kContrastSecondRank),
                                    number(r, kContrastFirstId),
                                    number(r, kContrastSecondId)});
    return layout;
}

struct Compared
{
    Table contrasts;
    GuardedArray<double> level{1};
    GuardedArray<int> verdicts;

    explicit Compared(const Layout& layout)
        : contrasts(layout.ContrastTable()), verdicts(static_cast<size_t>(layout.Rows()))
    {
    }
    Integers Verdicts() const
    {
        Integers all;
        for (size_t i = 0; i < verdicts.size(); ++i)
            all.push_back(verdicts[i]);
        return all;
    }
};

/** Runs the door on a table, which may hold more than the layout says, and checks that the caller's columns stay. */
inline Compared& RunInto(Compared& r, const Layout& layout, int procedure)
{
    const Compared before = r;
    Vector sizes = layout.sizes, variances = layout.variances;
    MCATest(layout.k,
            sizes.data(),
            variances.data(),
            layout.harmonic,
            layout.useHarmonic,
            r.contrasts.cells.data(),
            layout.Rows(),
            procedure,
            layout.df,
            layout.alpha,
            r.level.data(),
            r.verdicts.data());
    EXPECT_TRUE(r.contrasts.cells.IntactGuards() && r.verdicts.IntactGuards() && r.level.IntactGuards());
    for (const int column : {1, 2, 3, 4, 9, 10})
        EXPECT_EQ(r.contrasts.Column(column), before.contrasts.Column(column));
    return r;
}

inline Compared Compare(const Layout& layout, int procedure)
{
    Compared r(layout);
    return RunInto(r, layout, procedure);
}

}  // namespace comparison_test
