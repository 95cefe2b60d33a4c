#include "linear/design_table.h"

#include <algorithm>

#include "core/limits.h"
#include "linear/design_state.h"

namespace korvenrg::linear {

namespace {

// Constraint code that leaves indicators at 0 and 1.
constexpr int kPlainCode = kLastLevel;
constexpr int kPlainMode = 0;

bool AnyQualitativeFactor(const DesignBuild& build)
{
    for (int f = 1; f <= build.nbFactors; ++f) {
        if (build.active->vbget(f) == 1 && isQuali(build.type->vbget(f)) == -1) return true;
    }
    return false;
}

matrix<double> IndicatorTable(const DesignBuild& build, RowSet& rows, int constraint)
{
    const Categories& categories = build.categories;
    matrix<double> table(rows.n, categories.ColumnsBefore(categories.pQ + 1));
    BuildDisjunctiveTable(*rows.q,
                          rows.n,
                          categories.pQ,
                          categories.maxCat,
                          *categories.nbCat,
                          *categories.texts,
                          *categories.frequencies,
                          table,
                          constraint,
                          kPlainMode);
    return table;
}

// Indicator tables of each row set: one coded by the constraint and, where interactions of several variables
// can occur, a plain one for their products.
void BuildIndicators(DesignBuild& build)
{
    if (!AnyQualitativeFactor(build)) return;
    const bool needsPlain = build.categories.pQ >= 2 && build.nbFactors >= 2 && build.interlevel >= 2 &&
                            !build.multipliesCodedColumns;
    for (RowSet* rows : build.rowSets) {
        rows->indicators.emplace(IndicatorTable(build, *rows, build.constraint));
        if (needsPlain) rows->plain.emplace(IndicatorTable(build, *rows, kPlainCode));
    }
}

void ClearDesign(DesignBuild& build)
{
    std::fill_n(build.out.design->data, build.out.design->total, 0.0);
    if (build.out.parentsList != nullptr) {
        std::fill_n(build.out.parentsList->data, build.out.parentsList->total, 0);
    }
}

// One quantitative column: the product, from 1.0, of the factor's variables. A main effect has one variable.
void AddQuantitative(DesignBuild& build, int factor)
{
    const int count = build.type->vbget(factor) == kQuantitative ? 1 : build.nbVars->vbget(factor);
    std::wstring label;
    for (int i = 1; i <= count; ++i) {
        if (i > 1) label += kPartSeparator;
        label += build.labelX->vbget(build.listVars->vbget(factor, i));
    }
    const int column = build.OpenColumn(factor, label, label, 0.0, kInModel);
    build.SetDesign(column, column, 1.0);
    for (RowSet* rows : build.rowSets) {
        for (int r = 1; r <= rows->n; ++r) {
            double product = 1.0;
            for (int i = 1; i <= count; ++i) {
                product *= rows->x->vbget(r, build.listVars->vbget(factor, i));
            }
            rows->coded->vbset(r, column, product);
        }
    }
}

// One column per category, coded by the constraint, and the constraint's rows of the design map.
void AddQualitative(DesignBuild& build, int factor)
{
    const int qualitative = build.QualitativeNumber(build.listVars->vbget(factor, 1));
    const int count = build.categories.CountOf(qualitative);
    const int before = build.categories.ColumnsBefore(qualitative);
    const int first = build.columns;
    for (int j = 1; j <= count; ++j) {
        const std::wstring category = build.CategoryText(qualitative, j);
        const int column = build.OpenColumn(factor,
                                            build.labelQ->vbget(qualitative) + kCategorySeparator + category,
                                            category,
                                            build.categories.frequencies->vbget(qualitative, j),
                                            build.StateOfCategory(qualitative, j));
        for (RowSet* rows : build.rowSets) {
            for (int r = 1; r <= rows->n; ++r) {
                rows->coded->vbset(r, column, rows->indicators->vbget(r, before + j));
            }
        }
    }
    matrix<double> block(count, count);
    FillConstraintBlock(build, qualitative, block);
    for (int j = 1; j <= count; ++j) {
        for (int i = 1; i <= count; ++i) {
            build.SetDesign(first + i, first + j, block.vbget(i, j));
        }
    }
}

void AddFactor(DesignBuild& build, int factor)
{
    switch (build.type->vbget(factor)) {
        case kQualitative:
            AddQualitative(build, factor);
            break;
        case kQualitativeInteraction:
        case kMixedInteraction:
            AddInteraction(build, factor);
            break;
        default:
            AddQuantitative(build, factor);
    }
}

void AddFactors(DesignBuild& build)
{
    for (int f = 1; f <= build.nbFactors; ++f) {
        const int before = build.columns;
        if (build.active->vbget(f) == 1) AddFactor(build, f);
        if (build.out.nbSub != nullptr) build.out.nbSub->vbset(f, build.columns - before);
        if (build.out.parentsList == nullptr) continue;
        for (int column = before + 1; column <= build.columns; ++column) {
            build.out.parentsList->vbset(f, column - before, column);
        }
    }
}

bool IsConstant(const RowSet& rows, int column)
{
    for (int r = 2; r <= rows.n; ++r) {
        if (rows.coded->vbget(r, column) != rows.coded->vbget(1, column)) return false;
    }
    return true;
}

// Flags columns that carry nothing, such as empty cells of an interaction. Returns how many columns are left.
int CleanColumns(const DesignBuild& build)
{
    const int made = std::min(build.columns, build.out.removed->rows);
    int left = 0;
    for (int column = 1; column <= made; ++column) {
        int state = build.out.removed->vbget(column);
        if (state == kInModel && IsConstant(*build.rowSets.front(), column)) state = kConstant;
        build.out.cleaned->vbset(column, state);
        if (state == kInModel) left += 1;
    }
    return left;
}

}  // namespace

int DesignBuild::OpenColumn(int factor,
                            const std::wstring& label,
                            const std::wstring& simpleLabel,
                            double frequency,
                            int state)
{
    columns += 1;
    out.labels->vbset(columns, label);
    if (out.simpleLabels != nullptr) out.simpleLabels->vbset(columns, simpleLabel);
    out.parents->vbset(columns, factor);
    out.frequencies->vbset(columns, frequency);
    out.removed->vbset(columns, state);
    return columns;
}

void FillConstraintBlock(const DesignBuild& build, int qualitative, matrix<double>& block)
{
    const int count = build.categories.CountOf(qualitative);
    for (int j = 1; j <= count; ++j) {
        block.vbset(j, j, 1.0);
    }
    for (int j = 1; j < count; ++j) {
        if (build.constraint == kSumOfEffects) block.vbset(count, j, -1.0);
        if (build.constraint == kWeightedSum) {
            const matrix<double>& frequencies = *build.categories.frequencies;
            block.vbset(count,
                        j,
                        -(frequencies.vbget(qualitative, j) / frequencies.vbget(qualitative, count)));
        }
    }
}

}  // namespace korvenrg::linear

namespace {

using korvenrg::kTrue;
using namespace korvenrg::linear;

// Model rows and, where their flags are on, validation and prediction rows.
std::vector<RowSet*> RowSetsOf(RowSet& model,
                               RowSet& valid,
                               short withValid,
                               RowSet& predict,
                               short withPredict)
{
    std::vector<RowSet*> sets{&model};
    if (withValid == kTrue) sets.push_back(&valid);
    if (withPredict == kTrue) sets.push_back(&predict);
    return sets;
}

// The build:
//   - indicator tables
//   - columns, factor by factor
void BuildDesign(DesignBuild& build)
{
    ClearDesign(build);
    BuildIndicators(build);
    AddFactors(build);
}

}  // namespace

int cBuildModelTable(matrix<double>* X,
                     int n,
                     int pX,
                     matrix<std::wstring>* q,
                     int pQ,
                     matrix<double>* W,
                     matrix<std::wstring>* LabelX,
                     matrix<std::wstring>* LabelQ,
                     int Interlevel,
                     int iConstraintType,
                     short UseHProduct,
                     int NbFactors,
                     matrix<std::wstring>* FactSubLabels,
                     matrix<int>* FactSubParents,
                     matrix<double>* FactSubFreq,
                     matrix<int>* FactSubRemoved,
                     matrix<int>* FactType,
                     matrix<int>* FactListVars,
                     matrix<int>* FactNbVars,
                     matrix<int>* FactActive,
                     matrix<double>* FactSubDesign,
                     short NestedOption,
                     matrix<int>* FactNested,
                     int NbMaxCat,
                     [[maybe_unused]] int NbCatTotal,
                     matrix<int>* NbCat,
                     matrix<std::wstring>* Cat,
                     matrix<double>* iFreqCat,
                     short WithValid,
                     matrix<double>* XValid,
                     matrix<std::wstring>* QValid,
                     int nValid,
                     short WithPredict,
                     matrix<double>* XPred,
                     matrix<std::wstring>* QPred,
                     int nPred,
                     matrix<double>* XModel,
                     matrix<double>* XModelValid,
                     matrix<double>* XModelPred,
                     int* pMod)
{
    RowSet model{n, X, q, XModel, {}, {}};
    RowSet valid{nValid, XValid, QValid, XModelValid, {}, {}};
    RowSet predict{nPred, XPred, QPred, XModelPred, {}, {}};
    const bool nests = NestedOption == kTrue;
    DesignBuild build{.pX = pX,
                      .interlevel = Interlevel,
                      .constraint = iConstraintType,
                      .multipliesCodedColumns = UseHProduct == kTrue,
                      .nbFactors = NbFactors,
                      .type = FactType,
                      .listVars = FactListVars,
                      .nbVars = FactNbVars,
                      .active = FactActive,
                      .weights = W,
                      .labelX = LabelX,
                      .labelQ = LabelQ,
                      .categories = {pQ, NbMaxCat, NbCat, Cat, iFreqCat},
                      .nesting = {.cells = nullptr,
                                  .nested = nests ? FactNested->vbget(1) : 0,
                                  .nesting = nests ? FactNested->vbget(2) : 0},
                      .rowSets = RowSetsOf(model, valid, WithValid, predict, WithPredict),
                      .out = {.labels = FactSubLabels,
                              .simpleLabels = nullptr,
                              .parents = FactSubParents,
                              .parentsList = nullptr,
                              .nbSub = nullptr,
                              .frequencies = FactSubFreq,
                              .removed = FactSubRemoved,
                              .cleaned = nullptr,
                              .design = FactSubDesign}};
    BuildDesign(build);
    *pMod = build.columns;
    return 0;
}

int cBuildModelTable2(matrix<double>* X,
                      int n,
                      int pX,
                      matrix<std::wstring>* q,
                      int pQ,
                      matrix<double>* W,
                      matrix<std::wstring>* LabelX,
                      matrix<std::wstring>* LabelQ,
                      int Interlevel,
                      int iConstraintType,
                      int NbFactors,
                      matrix<std::wstring>* FactSubLabels,
                      matrix<std::wstring>* FactSubLabelsSimple,
                      matrix<int>* FactSubParents,
                      matrix<int>* FactSubParentsList,
                      matrix<int>* FactNbSub,
                      matrix<double>* FactSubFreq,
                      matrix<int>* FactSubRemoved,
                      matrix<int>* FactSubCleaned,
                      matrix<int>* FactType,
                      matrix<int>* FactListVars,
                      matrix<int>* FactNbVars,
                      matrix<int>* FactActive,
                      matrix<double>* FactSubDesign,
                      matrix<int>* FactNested,
                      matrix<int>* iFactNestedMat,
                      int NbMaxCat,
                      [[maybe_unused]] int NbCatTotal,
                      matrix<int>* NbCat,
                      matrix<std::wstring>* Cat,
                      matrix<double>* iFreqCat,
                      short WithValid,
                      matrix<double>* XValid,
                      matrix<std::wstring>* QValid,
                      int nValid,
                      short WithPredict,
                      matrix<double>* XPred,
                      matrix<std::wstring>* QPred,
                      int nPred,
                      matrix<double>* XModel,
                      matrix<double>* XModelValid,
                      matrix<double>* XModelPred,
                      int* pMod,
                      int* pMod2)
{
    RowSet model{n, X, q, XModel, {}, {}};
    RowSet valid{nValid, XValid, QValid, XModelValid, {}, {}};
    RowSet predict{nPred, XPred, QPred, XModelPred, {}, {}};
    DesignBuild build{
        .pX = pX,
        .interlevel = Interlevel,
        .constraint = iConstraintType,
        .multipliesCodedColumns = false,
        .nbFactors = NbFactors,
        .type = FactType,
        .listVars = FactListVars,
        .nbVars = FactNbVars,
        .active = FactActive,
        .weights = W,
        .labelX = LabelX,
        .labelQ = LabelQ,
        .categories = {pQ, NbMaxCat, NbCat, Cat, iFreqCat},
        .nesting = {.cells = iFactNestedMat, .nested = FactNested->vbget(1), .nesting = FactNested->vbget(2)},
        .rowSets = RowSetsOf(model, valid, WithValid, predict, WithPredict),
        .out = {.labels = FactSubLabels,
                .simpleLabels = FactSubLabelsSimple,
                .parents = FactSubParents,
                .parentsList = FactSubParentsList,
                .nbSub = FactNbSub,
                .frequencies = FactSubFreq,
                .removed = FactSubRemoved,
                .cleaned = FactSubCleaned,
                .design = FactSubDesign}};
    BuildDesign(build);
    *pMod = build.columns;
    *pMod2 = CleanColumns(build);
    return 0;
}
