/** Category means, LS means and contrasts against R on real data, through the engine's own fits. */
#include <gtest/gtest.h>

#include "linear/reference_cases.h"
#include "means_fixture.h"

namespace comparisons_test {
namespace {

class MeansReference : public ::testing::TestWithParam<Case>
{
};

// A difference has the error of the means that it is taken from.
void ExpectResults(const MeansResults& r, const Case& c, const std::string& prefix)
{
    const double size = std::abs(r.means(1, kMean));
    EXPECT_EQ(r.nbNull[0], 0);
    ExpectTable(r.ranks, c[prefix + "_ids"], "ids");
    ExpectTable(r.means, c[prefix + "_means"], "means");
    ExpectTable(r.contrasts, c[prefix + "_contrasts"], "contrasts", [&](int row, int column) {
        if (column == kContrastDifference) return size;
        return column == kContrastStandardised ? size / std::sqrt(r.contrasts(row, kContrastVariance)) : 0.0;
    });
}

TEST_P(MeansReference, EveryTableAgreesWithR)
{
    const Case& c = GetParam();
    const Vector options = c["options"].Numbers();
    DesignProblem d = DesignOf(c);
    const bool interactions = options[1] > 1.0;
    for (const int constraint : {0, 1, 2, 3}) {
        // Sum-type constraints with interactions: products of the coded main effects. The shares of an empty cell, and the slopes
        // at the means of their columns, depend on the constraint; their values are those of the first level.
        const bool dependent = c.name == "birthwt_empty_cell" || c.name == "birthwt_slopes";
        if (dependent && constraint > 0) continue;
        SCOPED_TRACE(constraint);
        d.constraint = constraint;
        const Form form = interactions && constraint > 1 ? Form::kOlderProducts : Form::kNewer;
        OlsProblem q = FitOf(BuildDesign(d, form), c["y"].Numbers(), constraint);
        q.wr = c["wr"].Numbers();
        q.options[kTolerance] = 1E-8;
        q.nbSub = CountsOf(q.parents, q.type.size());
        MeansProblem fitted = MeansOf(q, true), reported = MeansOf(q, false);
        fitted.alpha = reported.alpha = options[2];
        EXPECT_EQ(reported.df, options[3]);
        for (const double id : c["ids"].Numbers()) {
            SCOPED_TRACE(id);
            fitted.factor = reported.factor = static_cast<int>(id);
            const std::string factor = std::to_string(static_cast<int>(id));
            if (c.tables.contains("fitted" + factor + "_means") &&
                (form == Form::kNewer || fitted.type[At(fitted.factor)] == 2))
                ExpectResults(FittedMeans(fitted), c, "fitted" + factor);
            ExpectResults(LsMeans(reported), c, "ls" + factor);
        }
    }
}

INSTANTIATE_TEST_SUITE_P(Comparisons,
                         MeansReference,
                         ::testing::ValuesIn(ReadCases("means_values.txt")),
                         [](const auto& c) { return c.param.name; });

}  // namespace
}  // namespace comparisons_test
