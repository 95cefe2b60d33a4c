/** The design table: coded columns, their description, and the same coding for validation and prediction
 * rows. */
#include <gtest/gtest.h>

#include "design_fixture.h"

namespace linear_test {
namespace {

const Text kColours{L"blue", L"green", L"red"}, kSizes{L"L", L"S"};
const Text kColourOf{L"red", L"blue", L"green", L"green", L"blue", L"red", L"green"};
const Text kSizeOf{L"L", L"S", L"L", L"S", L"L", L"S", L"L"};
const Vector kWeights{3, 1, 1, 3, 2, 1, 2}, kColourFreq{3, 6, 4}, kSizeFreq{8, 5};
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

/** The variables of each factor: height, width, colour, size. */
constexpr bool kHas[8][4] = {{1, 0, 0, 0},
                             {0, 1, 0, 0},
                             {0, 0, 1, 0},
                             {0, 0, 0, 1},
                             {1, 1, 0, 0},
                             {0, 0, 1, 1},
                             {1, 0, 1, 0},
                             {0, 1, 1, 1}};

/** What a column must be, from its factor and its levels (from 1, 0 none). */
struct Column
{
    int factor, colour, size;
    std::wstring label, simple;
};

std::vector<Column> ExpectedColumns()
{
    std::vector<Column> columns;
    for (int f = 1; f <= 8; ++f) {
        const auto& has = kHas[f - 1];
        for (int a = has[2]; a <= 3 * has[2]; ++a)
            for (int b = has[3]; b <= 2 * has[3]; ++b) {
                Column c{f, a, b, L"", L""};
                const auto append = [&](const std::wstring& variable, const std::wstring& category) {
                    c.label += (c.label.empty() ? L"" : L"*") + variable + (category.empty() ? L"" : L"-") +
                               category;
                    c.simple += (c.simple.empty() ? L"" : L"*") + (category.empty() ? variable : category);
                };
                if (has[0]) append(L"height", L"");
                if (has[1]) append(L"width", L"");
                if (has[2]) append(L"colour", kColours[At(a)]);
                if (has[3]) append(L"size", kSizes[At(b)]);
                columns.push_back(c);
            }
    }
    return columns;
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

double Is(const std::wstring& category, const Text& levels, int level)
{
    return category == levels[At(level)] ? 1.0 : 0.0;
}

/** A cell of the table: the last level of a main effect is folded into the others. */
double Coded(const Column& c, int constraint, const Rows& rows, int i)
{
    const auto& has = kHas[c.factor - 1];
    const std::wstring &colour = rows.q[0][At(i)], &size = rows.q[1][At(i)];
    double cell = 1.0;
    if (has[2]) cell *= Is(colour, kColours, c.colour);
    if (has[3]) cell *= Is(size, kSizes, c.size);
    if (c.factor == 3 && c.colour < 3)
        cell += DesignCell(constraint, kColourFreq, 3, c.colour) * Is(colour, kColours, 3);
    if (c.factor == 4 && c.size < 2)
        cell += DesignCell(constraint, kSizeFreq, 2, c.size) * Is(size, kSizes, 2);
    if (has[0]) cell *= rows.x[0][At(i)];
    if (has[1]) cell *= rows.x[1][At(i)];
    return cell;
}

class DesignTable : public ::testing::TestWithParam<int>
{
};

TEST_P(DesignTable, DescribesAndCodesEveryColumn)
{
    const int constraint = GetParam();
    const DesignProblem problem = Problem(constraint);
    const auto expected = ExpectedColumns();
    for (const Form form : {Form::kNewer, Form::kOlder}) {
        SCOPED_TRACE(form == Form::kNewer ? "newer form" : "older form");
        const DesignResults d = BuildDesign(problem, form);
        EXPECT_EQ(d.code, 0);
        ASSERT_EQ(d.p, 23);  // GetXModelSize
        ASSERT_EQ(d.pMod, 23);
        int left = 0, first = 1;
        for (int j = 1; j <= 23; ++j) {
            const Column& c = expected[At(j)];
            SCOPED_TRACE(::testing::Message() << "column " << j);
            EXPECT_EQ(d.labels[At(j)], c.label);
            EXPECT_EQ(d.parents[At(j)], c.factor);
            const bool dropped = (c.colour > 0 && IsDroppedLevel(constraint, 3, c.colour)) ||
                                 (c.size > 0 && IsDroppedLevel(constraint, 2, c.size));
            EXPECT_EQ(d.removed[At(j)], dropped ? kDropped : kIn);
            left += dropped ? 0 : 1;

            double freq = 0;
            for (int i = 1; i <= 7; ++i) {
                EXPECT_EQ(d.model(i, j), Coded(c, constraint, problem.model, i)) << "row " << i;
                EXPECT_EQ(d.valid(i, j), d.model(i, j)) << "row " << i;
                if (c.colour > 0 && kColourOf[At(i)] != kColours[At(c.colour)]) continue;
                if (c.size > 0 && kSizeOf[At(i)] != kSizes[At(c.size)]) continue;
                freq += kWeights[At(i)];
            }
            EXPECT_EQ(d.freq(j), c.colour + c.size > 0 ? freq : 0.0);
            for (int i = 1; i <= 3; ++i)
                EXPECT_EQ(d.predict(i, j), Coded(c, constraint, problem.predict, i)) << "row " << i;

            for (int k = 1; k <= 23; ++k) {
                const Column& o = expected[At(k)];
                double cell = o.factor == c.factor ? 1.0 : 0.0;
                if (cell != 0.0 && c.colour > 0)
                    cell *= DesignCell(constraint, kColourFreq, c.colour, o.colour);
                if (cell != 0.0 && c.size > 0) cell *= DesignCell(constraint, kSizeFreq, c.size, o.size);
                EXPECT_EQ(d.design(j, k), cell) << "design column " << k;
            }
            if (form == Form::kOlder) continue;
            EXPECT_EQ(d.simpleLabels[At(j)], c.simple);
            EXPECT_EQ(d.cleaned[At(j)], d.removed[At(j)]);  // every cell has rows
            if (j > 1 && expected[At(j - 1)].factor != c.factor) first = j;
            EXPECT_EQ(d.parentsList[At(8 * (j - first) + c.factor)], j);
            if (j == 23 || expected[At(j + 1)].factor != c.factor) {
                EXPECT_EQ(d.nbSub[At(c.factor)], j - first + 1);
                for (int k = j - first + 1; k < 23; ++k)
                    EXPECT_EQ(d.parentsList[At(8 * k + c.factor)], 0);
            }
        }
        if (form == Form::kNewer) {
            EXPECT_EQ(d.pMod2, left);
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
    for (int i = 1; i <= 7; ++i)
        for (int a = 1; a <= 2; ++a) {
            const double coded = Is(kColourOf[At(i)], kColours, a) - Is(kColourOf[At(i)], kColours, 3);
            EXPECT_EQ(alone.model(i, 5 + a), kHeights[At(i)] * coded);
            EXPECT_EQ(requested.model(i, 14 + a), kHeights[At(i)] * coded);
            const double size = Is(kSizeOf[At(i)], kSizes, 1) - Is(kSizeOf[At(i)], kSizes, 2);
            EXPECT_EQ(requested.model(i, 8 + 2 * (a - 1) + 1), coded * size);
        }
    EXPECT_EQ(alone.predict(2, 6), 0.0);
}

TEST(DesignNesting, TheNestingVariableKeepsAllItsLevels)
{
    for (const int constraint : {0, 1, 2, 3})
        for (const bool colourInSize : {true, false}) {
            SCOPED_TRACE(::testing::Message() << constraint << colourInSize);
            DesignProblem problem = Problem(constraint);
            problem.nested = {colourInSize ? Integers{3, 4} : Integers{4, 3}};
            const DesignResults d = BuildDesign(problem);
            const int ofColour = colourInSize ? constraint : -1, ofSize = colourInSize ? -1 : constraint;
            for (int i = 0; i < 6; ++i) {
                const int a = i / 2 + 1, b = i % 2 + 1;
                const bool dropped = IsDroppedLevel(ofColour, 3, a) || IsDroppedLevel(ofSize, 2, b);
                EXPECT_EQ(d.removed[At(9 + i)], dropped ? kDropped : kIn) << i;
                for (int k = 0; k < 6; ++k)
                    EXPECT_EQ(d.design(9 + i, 9 + k),
                              DesignCell(ofColour, kColourFreq, a, k / 2 + 1) *
                                  DesignCell(ofSize, kSizeFreq, b, k % 2 + 1))
                        << i << " " << k;
            }
            for (int a = 1; a <= 3; ++a)  // the main effects keep their constraint
                EXPECT_EQ(d.removed[At(2 + a)], IsDroppedLevel(constraint, 3, a) ? kDropped : kIn);
        }
}

TEST(DesignCleaning, ConstantColumnsAreMarked)
{
    DesignProblem d = Problem(1);
    d.model.q[1] = {L"L", L"S", L"L", L"L", L"S", L"L", L"L"};  // green, red only L; blue only S
    d.model.x[1].assign(7, 4.0);
    d.model.q[0][0] = L"violet";  // in no category: counts nowhere
    const DesignResults r = BuildDesign(d);
    EXPECT_EQ(r.cleaned[1], kConstant);  // width
    EXPECT_EQ(r.removed[1], kIn);
    EXPECT_EQ(r.cleaned[8], kConstant);  // blue L: an empty cell
    EXPECT_EQ(r.cleaned[10], kIn);       // green L
    EXPECT_EQ(r.freq(13), 1.0);          // red L, without row 1
    EXPECT_EQ(r.model(1, 13), 0.0);
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
        EXPECT_NE(some.parents[j], 2);
    for (int i = 1; i <= 7; ++i)
        EXPECT_EQ(some.model(i, 2), Is(kColourOf[At(i)], kColours, 1));

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
        // clang-format off
        {3, 1, {1, 2, 0}, 1}, {4, 1, {3, 4, 0}, 12}, {4, 1, {4, 3, 0}, 12}, {5, 1, {1, 4, 0}, 4}, {5, 1, {1, 3, 4}, 12},
        {5, 1, {1, 2, 0}, 1}, {4, 0, {3, 4, 0}, 0}, {4, -1, {3, 4, 0}, 0}, {4, 1, {3, 0, 0}, 3},
        // clang-format on
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
