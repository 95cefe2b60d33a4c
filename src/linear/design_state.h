/** What the steps of the design table share. */
#pragma once

#include <optional>
#include <string>
#include <vector>

#include "core/matrix.h"
#include "core/matrix3d.h"
#include "linear/factor_description.h"

namespace korvenrg::linear {

/** Joins a variable's name and its category. */
inline constexpr wchar_t kCategorySeparator[] = L"-";

/** Joins the parts of an interaction. */
inline constexpr wchar_t kPartSeparator[] = L"*";

/** One set of rows: model, validation or prediction. All are coded alike, column by column. */
struct RowSet
{
    int n;
    matrix<double>* x;                         ///< n x pX
    matrix<std::wstring>* q;                   ///< n x pQ
    matrix<double>* coded;                     ///< n x p, out
    std::optional<matrix<double>> indicators;  ///< one column per category, coded by the constraint
    std::optional<matrix<double>>
        plain;  ///< the same with 0/1 alone, for interactions; absent when not needed

    /** Indicators that interactions multiply. */
    matrix<double>& ForInteractions()
    {
        return plain ? *plain : *indicators;
    }
};

/** Qualitative variables: their categories and frequencies. */
struct Categories
{
    int pQ;
    int maxCat;
    matrix<int>* nbCat;           ///< pQ
    matrix<std::wstring>* texts;  ///< pQ x maxCat
    matrix<double>* frequencies;  ///< pQ x maxCat

    int CountOf(int qualitative) const
    {
        return nbCat->vbget(qualitative) > 0 ? nbCat->vbget(qualitative) : 0;
    }

    /** Columns of the indicator table in front of a variable. */
    int ColumnsBefore(int qualitative) const
    {
        int columns = 0;
        for (int v = 1; v < qualitative; ++v) {
            columns += CountOf(v);
        }
        return columns;
    }
};

/** Which variables are nested in which. */
struct Nesting
{
    matrix<int>* cells = nullptr;  ///< NbFactors x NbFactors, (a, b) is 1 when a is nested in b; null: none
    int nested = 0;                ///< one more pair; 0: none
    int nesting = 0;

    bool IsNested(int a, int b) const
    {
        return (cells != nullptr && cells->vbget(a, b) == 1) || (a > 0 && a == nested && b == nesting);
    }
};

/** The caller's description of columns. Members that one form of the builder does not have are null. */
struct ColumnDescription
{
    matrix<std::wstring>* labels;
    matrix<std::wstring>* simpleLabels;
    matrix<int>* parents;
    matrix<int>* parentsList;
    matrix<int>* nbSub;
    matrix<double>* frequencies;
    matrix<int>* removed;
    matrix<int>* cleaned;
    matrix<double>* design;
};

/** One build. */
struct DesignBuild
{
    int pX;
    int interlevel;
    int constraint;
    bool multipliesCodedColumns;  ///< interactions multiply the constraint-coded columns
    int nbFactors;
    matrix<int>* type;
    matrix<int>* listVars;
    matrix<int>* nbVars;
    matrix<int>* active;
    matrix<double>* weights;
    matrix<std::wstring>* labelX;
    matrix<std::wstring>* labelQ;
    Categories categories;
    Nesting nesting;
    std::vector<RowSet*> rowSets;  ///< the model rows first
    ColumnDescription out;
    int columns = 0;  ///< made so far

    bool IsQualitativeVariable(int variable) const
    {
        return type->vbget(variable) == kQualitative;
    }

    /** Number of a qualitative variable among the qualitative ones. */
    int QualitativeNumber(int variable) const
    {
        return variable - pX;
    }

    std::wstring CategoryText(int qualitative, int category) const
    {
        return categories.texts->vbget(qualitative, category);
    }

    /** State of a category of a qualitative variable under the constraint. */
    int StateOfCategory(int qualitative, int category) const
    {
        const int dropped = constraint == kFirstLevel ? 1 : categories.CountOf(qualitative);
        const bool drops = constraint >= kFirstLevel && constraint <= kWeightedSum;
        return drops && category == dropped ? kDroppedLevel : kInModel;
    }

    /** Writes a cell of the design map; cells beyond the reserved columns are dropped. */
    void SetDesign(int i, int j, double value)
    {
        if (i <= out.design->rows && j <= out.design->cols) out.design->vbset(i, j, value);
    }

    /** Opens the next column of a factor. Returns its number. */
    int OpenColumn(int factor,
                   const std::wstring& label,
                   const std::wstring& simpleLabel,
                   double frequency,
                   int state);
};

/** Design block of a qualitative variable's main effect, k x k, into `block`: the identity, but for the last
 * row under a sum-type constraint. */
void FillConstraintBlock(const DesignBuild& build, int qualitative, matrix<double>& block);

/** Puts the columns of an interaction of qualitative variables, or a mixed one, into the table. */
void AddInteraction(DesignBuild& build, int factor);

}  // namespace korvenrg::linear
