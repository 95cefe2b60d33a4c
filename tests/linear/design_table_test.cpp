/** The design table: coded columns, their description, and the same coding for validation and prediction
 * rows. */
#include <gtest/gtest.h>

#include <functional>

#include "design_fixture.h"

namespace linear_test {
namespace {

enum Factor
{
    kHeight = 1,
    kWidth,
    kColour,
    kSize,
    kHeightWidth,
    kColourSize,
    kHeightColour,
    kWidthColourSize
};

const Text kColours{L"blue", L"green", L"red"}, kSizes{L"L", L"S"};
// Weighted frequencies: blue 3, green 6, red 4; L 8, S 5.
const Text kColourOf{L"red", L"blue", L"green", L"green", L"blue", L"red", L"green"};
const Text kSizeOf{L"L", L"S", L"L", L"S", L"L", L"S", L"L"};
const Vector kWeights{3, 1, 1, 3, 2, 1, 2};
const Vector kHeights{1.5, 2, 3, 5, 7, 11, 13}, kWidths{-1, 4, 9, 16, 25, 36, 49};

DesignProblem Problem(int constraint)
{
    DesignProblem d;
    d.model = {{kHeights, kWidths}, {kColourOf, kSizeOf}, 7};
    d.valid = d.model;
    d.predict = {{{2, 3, 5}, {7, 11, 13}}, {{L"green", L"violet", L"red"}, {L"S", L"L", L""}}, 3};
    d.w = kWeights;
    d.labelX = {L"height", L"width"};
    d.labelQ = {L"colour", L"size"};
    d.categories = {kColours, kSizes};
    d.factors = {{1}, {2}, {3}, {4}, {1, 2}, {3, 4}, {1, 3}, {2, 3, 4}};
    d.type = {1, 1, 2, 2, 3, 4, 5, 5};
    d.constraint = constraint;
    return d;
}

/** What a column must be, from its factor and its levels (from 1, 0 none). */
struct Column
{
    int factor, colour, size;
    std::wstring label, simple;
};

std::vector<Column> ExpectedColumns()
{
    std::vector<Column> columns{{kHeight, 0, 0, L"height", L"height"}, {kWidth, 0, 0, L"width", L"width"}};
    const auto colour = [](int a) { return kColours[At(a)]; };
    const auto size = [](int b) { return kSizes[At(b)]; };
    for (int a = 1; a <= 3; ++a)
        columns.push_back({kColour, a, 0, L"colour-" + colour(a), colour(a)});
    for (int b = 1; b <= 2; ++b)
        columns.push_back({kSize, 0, b, L"size-" + size(b), size(b)});
    columns.push_back({kHeightWidth, 0, 0, L"height*width", L"height*width"});
    for (int a = 1; a <= 3; ++a)
        for (int b = 1; b <= 2; ++b)
            columns.push_back({kColourSize,
                               a,
                               b,
                               L"colour-" + colour(a) + L"*size-" + size(b),
                               colour(a) + L"*" + size(b)});
    for (int a = 1; a <= 3; ++a)
        columns.push_back({kHeightColour, a, 0, L"height*colour-" + colour(a), L"height*" + colour(a)});
    for (int a = 1; a <= 3; ++a)
        for (int b = 1; b <= 2; ++b)
            columns.push_back({kWidthColourSize,
                               a,
                               b,
                               L"width*colour-" + colour(a) + L"*size-" + size(b),
                               L"width*" + colour(a) + L"*" + size(b)});
    return columns;
}

bool IsInteraction(const Column& c)
{
    return c.factor > kSize;
}

double Level(const Text& of, size_t row, const Text& levels, int level)
{
    return of[row] == levels[At(level)] ? 1.0 : 0.0;
}

/** Reported effect i of a variable in terms of its fitted columns. */
double DesignCell(int constraint, const Vector& freq, int i, int j)
{
    const int last = static_cast<int>(freq.size());
    if (i == j) return 1.0;
    if (i != last) return 0.0;
    if (constraint == 2) return -1.0;
    return constraint == 3 ? -(freq[At(j)] / freq.back()) : 0.0;
}

bool IsDroppedLevel(int constraint, int levels, int level)
{
    if (constraint == 0) return level == 1;
    return constraint >= 1 && constraint <= 3 && level == levels;
}

class DesignTable : public ::testing::TestWithParam<int>
{
};

TEST_P(DesignTable, DescribesAndCodesEveryColumn)
{
    const int constraint = GetParam();
    const Vector colourFreq{3, 6, 4}, sizeFreq{8, 5};
    const auto expected = ExpectedColumns();
    for (const Form form : {Form::kNewer, Form::kOlder}) {
        SCOPED_TRACE(form == Form::kNewer ? "newer form" : "older form");
        const DesignResults d = BuildDesign(Problem(constraint), form);
        EXPECT_EQ(d.code, 0);
        ASSERT_EQ(d.p, 23);  // GetXModelSize
        ASSERT_EQ(d.pMod, 23);
        int left = 0;
        for (int j = 1; j <= 23; ++j) {
            const auto at = At(j);
            const Column& c = expected[at];
            SCOPED_TRACE(::testing::Message() << "column " << j);
            EXPECT_EQ(d.labels[at], c.label);
            EXPECT_EQ(d.parents[at], c.factor);
            const bool dropped = (c.colour > 0 && IsDroppedLevel(constraint, 3, c.colour)) ||
                                 (c.size > 0 && IsDroppedLevel(constraint, 2, c.size));
            EXPECT_EQ(d.removed[at], dropped ? kDropped : kIn);

            double freq = 0;
            for (size_t i = 0; i < 7; ++i) {
                double product = 1.0;
                if (c.factor == kHeight || c.factor == kHeightWidth || c.factor == kHeightColour)
                    product *= kHeights[i];
                if (c.factor == kWidth || c.factor == kHeightWidth || c.factor == kWidthColourSize)
                    product *= kWidths[i];
                double cell = 1.0, folded = 0.0;
                if (c.colour > 0) cell *= Level(kColourOf, i, kColours, c.colour);
                if (c.size > 0) cell *= Level(kSizeOf, i, kSizes, c.size);
                if (c.factor == kColour && c.colour < 3)
                    folded =
                        DesignCell(constraint, colourFreq, 3, c.colour) * Level(kColourOf, i, kColours, 3);
                if (c.factor == kSize && c.size < 2)
                    folded = DesignCell(constraint, sizeFreq, 2, c.size) * Level(kSizeOf, i, kSizes, 2);
                freq += kWeights[i] * cell;
                EXPECT_EQ(d.model(static_cast<int>(i) + 1, j), product * (cell + folded)) << "row " << i + 1;
                EXPECT_EQ(d.valid(static_cast<int>(i) + 1, j), product * (cell + folded)) << "row " << i + 1;
            }
            EXPECT_EQ(d.freq(j), c.colour + c.size > 0 ? freq : 0.0);

            for (int k = 1; k <= 23; ++k) {
                const Column& o = expected[At(k)];
                double cell = o.factor == c.factor ? 1.0 : 0.0;
                if (cell != 0.0 && c.colour > 0)
                    cell *= DesignCell(constraint, colourFreq, c.colour, o.colour);
                if (cell != 0.0 && c.size > 0) cell *= DesignCell(constraint, sizeFreq, c.size, o.size);
                EXPECT_EQ(d.design(j, k), cell) << "design column " << k;
            }
            if (form == Form::kNewer) {
                // No small red heights or the like: each cell is filled, only none at all would be constant.
                EXPECT_EQ(d.simpleLabels[at], c.simple);
                EXPECT_EQ(d.cleaned[at], d.removed[at]);
                left += dropped ? 0 : 1;
            }
        }
        // Prediction rows: green and S; a colour that the model rows lack; red and no size.
        for (int j = 1; j <= 23; ++j) {
            const Column& c = expected[At(j)];
            if (!IsInteraction(c)) continue;
            SCOPED_TRACE(::testing::Message() << "prediction column " << j);
            const auto value = [&](double h, double w) {
                return c.factor == kHeightWidth    ? h * w
                       : c.factor == kHeightColour ? h
                       : c.factor == kColourSize   ? 1.0
                                                   : w;
            };
            EXPECT_EQ(d.predict(1, j), c.colour == 0 || (c.colour == 2 && c.size != 1) ? value(2, 7) : 0.0);
            EXPECT_EQ(d.predict(2, j), c.colour == 0 ? value(3, 11) : 0.0);
            EXPECT_EQ(d.predict(3, j), c.colour == 0 || (c.colour == 3 && c.size == 0) ? value(5, 13) : 0.0);
        }
        for (int j = 3; j <= 5; ++j)
            EXPECT_EQ(d.predict(2, j), 0.0);
        for (int j = 6; j <= 7; ++j)
            EXPECT_EQ(d.predict(3, j), 0.0);
        if (form == Form::kNewer) {
            EXPECT_EQ(d.pMod2, left);
            const int columns[] = {1, 1, 3, 2, 1, 6, 3, 6};
            for (int f = 1, next = 1; f <= 8; ++f) {
                EXPECT_EQ(d.nbSub[At(f)], columns[f - 1]);
                for (int k = 1; k <= 23; ++k)
                    EXPECT_EQ(d.parentsList[static_cast<size_t>(8 * (k - 1) + f - 1)],
                              k <= columns[f - 1] ? next++ : 0);
            }
        }
    }
}

INSTANTIATE_TEST_SUITE_P(Constraints, DesignTable, ::testing::Values(0, 1, 2, 3, 4, -1));

TEST(DesignProducts, TakeCodedColumnsWithOneTextVariableOrOnRequest)
{
    DesignProblem one = Problem(2);
    for (Rows* rows : {&one.model, &one.valid, &one.predict})
        rows->q.resize(1);
    one.labelQ.resize(1);
    one.categories.resize(1);
    one.factors = {{1}, {2}, {3}, {1, 3}};
    one.type = {1, 1, 2, 5};
    const DesignResults alone = BuildDesign(one), requested = BuildDesign(Problem(2), Form::kOlderProducts);
    for (int i = 1; i <= 7; ++i) {
        const auto row = At(i);
        for (int a = 1; a <= 2; ++a) {
            const double coded = Level(kColourOf, row, kColours, a) - Level(kColourOf, row, kColours, 3);
            EXPECT_EQ(alone.model(i, 5 + a), kHeights[row] * coded);
            EXPECT_EQ(requested.model(i, 14 + a), kHeights[row] * coded);
            const double size = Level(kSizeOf, row, kSizes, 1) - Level(kSizeOf, row, kSizes, 2);
            EXPECT_EQ(requested.model(i, 8 + 2 * (a - 1) + 1), coded * size);
        }
    }
    EXPECT_EQ(alone.predict(2, 6), 0.0);
}

TEST(DesignNesting, TheNestingVariableKeepsAllItsLevels)
{
    for (const int constraint : {0, 1, 2, 3}) {
        SCOPED_TRACE(constraint);
        const Vector colourFreq{3, 6, 4}, sizeFreq{8, 5};
        struct
        {
            std::vector<Integers> nested;
            bool colourKept, sizeKept;
        } const cases[] = {{{{kColour, kSize}}, false, true}, {{{kSize, kColour}}, true, false}};
        for (const auto& c : cases) {
            DesignProblem problem = Problem(constraint);
            problem.nested = c.nested;
            const DesignResults d = BuildDesign(problem);
            for (int i = 0; i < 6; ++i) {
                const int a = i / 2 + 1, b = i % 2 + 1;
                const bool dropped = (!c.colourKept && IsDroppedLevel(constraint, 3, a)) ||
                                     (!c.sizeKept && IsDroppedLevel(constraint, 2, b));
                EXPECT_EQ(d.removed[static_cast<size_t>(8 + i)], dropped ? kDropped : kIn) << i;
                for (int k = 0; k < 6; ++k) {
                    const int a2 = k / 2 + 1, b2 = k % 2 + 1;
                    const double colour = DesignCell(c.colourKept ? 0 : constraint, colourFreq, a, a2);
                    const double size = DesignCell(c.sizeKept ? 0 : constraint, sizeFreq, b, b2);
                    EXPECT_EQ(d.design(9 + i, 9 + k), colour * size) << i << " " << k;
                }
            }
            // The main effects keep their constraint.
            for (int a = 1; a <= 3; ++a)
                EXPECT_EQ(d.removed[static_cast<size_t>(1 + a)],
                          IsDroppedLevel(constraint, 3, a) ? kDropped : kIn);
        }
    }
}

TEST(DesignCleaning, ConstantColumnsAreMarked)
{
    DesignProblem d = Problem(1);
    d.model.q[1] = {L"L", L"S", L"L", L"L", L"S", L"L", L"L"};  // green, red only L; blue only S
    d.model.x[1].assign(7, 4.0);
    const DesignResults r = BuildDesign(d);
    EXPECT_EQ(r.cleaned[1], kConstant);  // width
    EXPECT_EQ(r.removed[1], kIn);
    EXPECT_EQ(r.cleaned[8], kConstant);  // blue L: an empty cell
    EXPECT_EQ(r.cleaned[10], kIn);       // green L
    int left = 0;
    for (size_t j = 0; j < 23; ++j)
        left += r.cleaned[j] == kIn ? 1 : 0;
    EXPECT_EQ(r.pMod2, left);
    EXPECT_EQ(r.pMod, 23);
}

TEST(DesignExtents, InactiveFactorsAndRoomAsReserved)
{
    DesignProblem d = Problem(0);
    d.active = {1, 0, 1, 1, 0, 1, 0, 0};
    const DesignResults some = BuildDesign(d);
    EXPECT_EQ(some.pMod, 12);
    EXPECT_EQ(some.nbSub[1], 0);
    EXPECT_EQ(some.labels[1], L"colour-blue");
    for (size_t j = 0; j < 12; ++j)
        EXPECT_NE(some.parents[j], kWidth);
    for (int i = 1; i <= 7; ++i)
        EXPECT_EQ(some.model(i, 2), Level(kColourOf, At(i), kColours, 1));

    // Too little room writes nothing outside (BuildDesign looks at the guards), and what fits is the same.
    const DesignResults whole = BuildDesign(Problem(2));
    for (const int reserved : {1, 4, 10, 22}) {
        DesignProblem small = Problem(2);
        small.reserved = reserved;
        for (const Form form : {Form::kNewer, Form::kOlder}) {
            const DesignResults r = BuildDesign(small, form);
            EXPECT_EQ(r.code, 0);
            EXPECT_EQ(r.model(7, 1), whole.model(7, 1));
        }
    }
    DesignProblem large = Problem(2);
    large.reserved = 30;
    const DesignResults roomy = BuildDesign(large);
    EXPECT_EQ(roomy.pMod, 23);
    for (int i = 1; i <= 7; ++i)
        EXPECT_EQ(roomy.model(i, 23), whole.model(i, 23));

    // Without validation and prediction rows those tables stay.
    DesignProblem modelOnly = Problem(1);
    modelOnly.valid = modelOnly.predict = Rows{};
    EXPECT_EQ(BuildDesign(modelOnly).pMod, 23);
}

TEST(DesignExtents, NumberOfColumns)
{
    // Variables: 1, 2 quantitative; 3 with three, 4 with four categories. Main effects are factors 1 to 4.
    int nbCat[] = {3, 4};
    struct
    {
        int type, active;
        Integers variables;
        int columns;
    } const cases[] = {
        {3, 1, {1, 2, 0}, 1},
        {4, 1, {3, 4, 0}, 12},
        {4, 1, {4, 3, 0}, 12},
        {5, 1, {1, 4, 0}, 4},
        {5, 1, {1, 3, 4}, 12},
        {5, 1, {1, 2, 0}, 1},
        {4, 0, {3, 4, 0}, 0},
        {4, -1, {3, 4, 0}, 0},
        {4, 1, {3, 0, 0}, 3},
    };
    for (const auto& c : cases) {
        Integers type{1, 1, 2, 2, c.type}, active{1, 1, 1, 1, c.active}, nbVars{1, 1, 1, 1, 0};
        Integers list(15, 0);
        for (size_t f = 0; f < 4; ++f)
            list[f] = static_cast<int>(f) + 1;
        for (size_t v = 0; v < 3; ++v) {
            list[5 * v + 4] = c.variables[v];
            nbVars[4] += c.variables[v] > 0 ? 1 : 0;
        }
        EXPECT_EQ(GetXModelSize(5, 2, 2, 3, nbCat, type.data(), list.data(), nbVars.data(), active.data()),
                  9 + c.columns)
            << ::testing::PrintToString(c.variables);
    }
    EXPECT_EQ(GetXModelSize(0, 2, 2, 3, nbCat, nullptr, nullptr, nullptr, nullptr), 0);
}

}  // namespace
}  // namespace linear_test
