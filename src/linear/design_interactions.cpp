#include <algorithm>
#include <cstdint>
#include <limits>

#include "kernel/linalg/products.h"
#include "kernel/linalg/qualitative.h"
#include "linear/design_state.h"

namespace korvenrg::linear {

namespace {

// An interaction: its variables in their order, and those of them that are qualitative.
struct Interaction
{
    int factor;
    std::vector<int> variables;
    std::vector<int> qualitative;  // numbers among the qualitative variables
    std::vector<int> counts;       // their category counts
    int columns;                   // product of the counts
};

Interaction DescribeInteraction(const DesignBuild& build, int factor)
{
    Interaction interaction{factor, {}, {}, {}, 1};
    std::int64_t columns = 1;
    for (int i = 1; i <= build.nbVars->vbget(factor); ++i) {
        const int variable = build.listVars->vbget(factor, i);
        interaction.variables.push_back(variable);
        if (!build.IsQualitativeVariable(variable)) continue;
        const int qualitative = build.QualitativeNumber(variable);
        interaction.qualitative.push_back(qualitative);
        interaction.counts.push_back(build.categories.CountOf(qualitative));
        columns =
            std::min<std::int64_t>(columns * interaction.counts.back(), std::numeric_limits<int>::max());
    }
    interaction.columns = static_cast<int>(columns);
    return interaction;
}

// Categories, from 1, of a column counted from 0: the first variable changes slowest.
std::vector<int> CategoriesOfColumn(const Interaction& interaction, int column)
{
    std::vector<int> categories(interaction.counts.size());
    for (std::size_t k = categories.size(); k-- > 0;) {
        categories[k] = column % interaction.counts[k] + 1;
        column /= interaction.counts[k];
    }
    return categories;
}

// Whether another variable of the interaction is nested in this one. Its levels then only hold the nested
// ones: none of them is dropped, and its block of the design map is the identity.
bool HoldsNestedVariable(const DesignBuild& build, const Interaction& interaction, int qualitative)
{
    const int variable = qualitative + build.pX;
    return std::any_of(interaction.variables.begin(), interaction.variables.end(), [&](int other) {
        return other != variable && build.nesting.IsNested(other, variable);
    });
}

std::vector<int> StatesOfVariable(const DesignBuild& build, const Interaction& interaction, int qualitative)
{
    const bool container = HoldsNestedVariable(build, interaction, qualitative);
    std::vector<int> states;
    for (int j = 1; j <= build.categories.CountOf(qualitative); ++j) {
        states.push_back(container ? kInModel : build.StateOfCategory(qualitative, j));
    }
    return states;
}

// Columns of one row set: the quantitative values' product times the indicators of each qualitative variable
// in turn.
matrix<double> MultiplyColumns(const DesignBuild& build,
                               const Interaction& interaction,
                               RowSet& rows,
                               matrix<int>& states)
{
    matrix<double> table(rows.n, interaction.columns);
    for (int r = 1; r <= rows.n; ++r) {
        double product = 1.0;
        for (const int variable : interaction.variables) {
            if (!build.IsQualitativeVariable(variable)) product *= rows.x->vbget(r, variable);
        }
        table.vbset(r, 1, product);
    }
    states.vbset(1, kInModel);
    matrix<double> work(rows.n, 1);
    int columns = 1;
    for (std::size_t k = 0; k < interaction.qualitative.size(); ++k) {
        const int qualitative = interaction.qualitative[k];
        const int count = interaction.counts[k];
        matrix<double> indicators(rows.n, count);
        const int before = build.categories.ColumnsBefore(qualitative);
        for (int j = 1; j <= count; ++j) {
            for (int r = 1; r <= rows.n; ++r) {
                indicators.vbset(r, j, rows.ForInteractions().vbget(r, before + j));
            }
        }
        const std::vector<int> variableStates = StatesOfVariable(build, interaction, qualitative);
        for (int j = 1; j <= count; ++j) {
            states.vbset(columns + j, variableStates[static_cast<std::size_t>(j - 1)]);
        }
        M_ProductDesignAB2(&table, rows.n, &columns, &indicators, count, interaction.columns, &work, &states);
    }
    return table;
}

// Kronecker product: cell ((i - 1) k + j, (a - 1) k + b) = left(i, a) * right(j, b), k the size of the right
// block.
matrix<double> KroneckerProduct(const matrix<double>& left, const matrix<double>& right)
{
    matrix<double> product(left.rows * right.rows, left.cols * right.cols);
    for (int a = 1; a <= left.cols; ++a) {
        for (int b = 1; b <= right.cols; ++b) {
            for (int i = 1; i <= left.rows; ++i) {
                for (int j = 1; j <= right.rows; ++j) {
                    product.vbset((i - 1) * right.rows + j,
                                  (a - 1) * right.cols + b,
                                  left.vbget(i, a) * right.vbget(j, b));
                }
            }
        }
    }
    return product;
}

// Square design block of the qualitative variables from number k on, each with the block of its main effect.
matrix<double> DesignBlock(const DesignBuild& build,
                           const Interaction& interaction,
                           const matrix3D<matrix<double>>& blocks,
                           std::size_t k)
{
    if (k == interaction.qualitative.size()) return matrix<double>(1, 1, 1.0);
    return KroneckerProduct(*blocks.vbget(static_cast<int>(k) + 1),
                            DesignBlock(build, interaction, blocks, k + 1));
}

matrix<double> DesignOf(const DesignBuild& build, const Interaction& interaction)
{
    const int count = static_cast<int>(interaction.qualitative.size());
    matrix<int> sizes(count, 1);
    for (int k = 1; k <= count; ++k) {
        sizes.vbset(k, interaction.counts[static_cast<std::size_t>(k - 1)]);
    }
    const matrix3D<matrix<double>> blocks(count, &sizes, 0.0);
    for (int k = 1; k <= count; ++k) {
        const int qualitative = interaction.qualitative[static_cast<std::size_t>(k - 1)];
        if (HoldsNestedVariable(build, interaction, qualitative)) {
            for (int j = 1; j <= sizes.vbget(k); ++j) {
                blocks.vbget(k)->vbset(j, j, 1.0);
            }
        } else {
            FillConstraintBlock(build, qualitative, *blocks.vbget(k));
        }
    }
    return DesignBlock(build, interaction, blocks, 0);
}

// Weighted frequency of each combination of categories over the model rows.
std::vector<double> CellFrequencies(const DesignBuild& build, const Interaction& interaction)
{
    const RowSet& rows = *build.rowSets.front();
    std::vector<double> frequencies(static_cast<std::size_t>(interaction.columns));
    std::vector<std::vector<int>> codes;
    for (std::size_t k = 0; k < interaction.qualitative.size(); ++k) {
        codes.push_back(linalg::CategoryCodes(*rows.q,
                                              rows.n,
                                              interaction.qualitative[k],
                                              *build.categories.texts,
                                              std::min(interaction.counts[k], build.categories.maxCat)));
    }
    for (int r = 1; r <= rows.n; ++r) {
        int cell = 0;
        bool known = true;
        for (std::size_t k = 0; k < codes.size(); ++k) {
            const int code = codes[k][static_cast<std::size_t>(r - 1)];
            known = known && code > 0;
            cell = cell * interaction.counts[k] + code - 1;
        }
        if (known) frequencies[static_cast<std::size_t>(cell)] += build.weights->vbget(r);
    }
    return frequencies;
}

struct Labels
{
    std::wstring full;
    std::wstring simple;
};

// Parts in the order of the variables, joined: the name of a quantitative one, name and category of a
// qualitative one.
Labels LabelsOf(const DesignBuild& build, const Interaction& interaction, const std::vector<int>& categories)
{
    Labels labels;
    std::size_t next = 0;
    for (std::size_t i = 0; i < interaction.variables.size(); ++i) {
        const int variable = interaction.variables[i];
        if (i > 0) {
            labels.full += kPartSeparator;
            labels.simple += kPartSeparator;
        }
        if (!build.IsQualitativeVariable(variable)) {
            labels.full += build.labelX->vbget(variable);
            labels.simple += build.labelX->vbget(variable);
            continue;
        }
        const int qualitative = build.QualitativeNumber(variable);
        const std::wstring category = build.CategoryText(qualitative, categories[next++]);
        labels.full += build.labelQ->vbget(qualitative) + kCategorySeparator + category;
        labels.simple += category;
    }
    return labels;
}

}  // namespace

void AddInteraction(DesignBuild& build, int factor)
{
    const Interaction interaction = DescribeInteraction(build, factor);
    if (interaction.columns == 0) return;
    const int first = build.columns;

    // States need room for those of the running columns with those of the next variable behind them.
    const int widest = interaction.counts.empty() ? 1 : *std::ranges::max_element(interaction.counts);
    matrix<int> states(interaction.columns + widest, 1);
    const std::vector<double> frequencies = CellFrequencies(build, interaction);
    for (RowSet* rows : build.rowSets) {
        const matrix<double> table = MultiplyColumns(build, interaction, *rows, states);
        for (int column = 1; column <= interaction.columns; ++column) {
            for (int r = 1; r <= rows->n; ++r) {
                rows->coded->vbset(r, first + column, table.vbget(r, column));
            }
        }
    }
    for (int column = 1; column <= interaction.columns; ++column) {
        const Labels labels = LabelsOf(build, interaction, CategoriesOfColumn(interaction, column - 1));
        build.OpenColumn(factor,
                         labels.full,
                         labels.simple,
                         frequencies[static_cast<std::size_t>(column - 1)],
                         states.vbget(column));
    }
    const matrix<double> design = DesignOf(build, interaction);
    for (int j = 1; j <= interaction.columns; ++j) {
        for (int i = 1; i <= interaction.columns; ++i) {
            build.SetDesign(first + i, first + j, design.vbget(i, j));
        }
    }
}

}  // namespace korvenrg::linear
