/*
 * One-way analysis of variance from C, as a front end runs it: a text column is coded into a design table
 * (BuildModelTable2), the table is fitted (RunOLS1), the ANOVA table is printed.
 *
 * Three groups of three with means 2, 3 and 6 and one unit of variance each: the sum of squares between them
 * is 26 on 2 degrees of freedom, within them 6 on 6, so F = 13 and Pr > F = (1 + 2 F / 6)^-3 = 27 / 4096.
 */
#include <korvenrg.h>

#include <math.h>
#include <stdio.h>

enum
{
    kRows = 9,
    kLevels = 3,
    kColumns = kLevels, /* one 0/1 column for each level */
    kTableRows = 3      /* of the ANOVA table: model, error, corrected total */
};

/* The design table of one text column and the description of its columns. */
struct Design
{
    double X[kRows * kColumns];
    BSTR labels[kColumns];
    BSTR shortLabels[kColumns];
    int columnsOf[kColumns];
    int columnCount;
    int parents[kColumns];
    int removed[kColumns];
    int cleaned[kColumns];
    double frequencies[kColumns];
    double map[kColumns * kColumns];
};

static int factorType = 2; /* qualitative */
static int variableOfFactor = 1;
static int variableCount = 1;
static int active = 1;
static double weights[kRows] = {1, 1, 1, 1, 1, 1, 1, 1, 1};

static int BuildDesign(BSTR* groups, struct Design* design)
{
    BSTR levels[kLevels] = {groups[0], groups[3], groups[6]};
    double levelFrequencies[kLevels] = {3, 3, 3};
    int levelCount = kLevels;
    BSTR name = SysAllocString(L"group");
    BSTR noLabel[kLevels] = {0};
    int notNested[2] = {0, 0};
    int nesting = 0;
    double noNumber = 0.0;
    BSTR noText = 0;
    double noTable[kColumns] = {0};
    int columns =
        GetXModelSize(1, 0, 1, 1, &levelCount, &factorType, &variableOfFactor, &variableCount, &active);
    int columnsLeft = 0;
    if (columns != kColumns) return 1;

    const int outcome = BuildModelTable2(
        /* data */ &noNumber,
        kRows,
        0,
        groups,
        1,
        weights,
        /* names */ noLabel,
        &name,
        /* model: first level as the reference */ 1,
        0,
        1,
        /* columns */ design->labels,
        design->shortLabels,
        design->parents,
        design->columnsOf,
        &design->columnCount,
        design->frequencies,
        design->removed,
        design->cleaned,
        /* factors */ &factorType,
        &variableOfFactor,
        &variableCount,
        &active,
        design->map,
        notNested,
        &nesting,
        /* levels */ kLevels,
        kLevels,
        &levelCount,
        levels,
        levelFrequencies,
        /* no validation rows */ VARIANT_FALSE,
        &noNumber,
        &noText,
        0,
        /* no prediction rows */ VARIANT_FALSE,
        &noNumber,
        &noText,
        0,
        /* tables */ design->X,
        noTable,
        noTable,
        &columns,
        &columnsLeft);
    SysFreeString(name);
    return outcome;
}

static int Fit(double* y, struct Design* design, double* anova, double* coefficients)
{
    double options[17] = {0};
    options[2] = 1E-4;  /* tolerance */
    options[4] = -1.0;  /* no selection */
    options[10] = 0.05; /* alpha of the intervals */
    options[16] = 1.0;  /* covariance of the reported parameters */

    double regressionWeights[kRows];
    for (int i = 0; i < kRows; ++i) {
        regressionWeights[i] = 1.0;
    }
    int used, bestRow;
    double models[2 * kColumns * (1 + 12)], fit[15 * 2], typeTable[4][5], raw[kColumns + 1],
        reported[kColumns + 1];
    double standardised[kColumns * 6], covariance[(kColumns + 1) * (kColumns + 1)];
    double predictions[kRows], intervals[kRows * 6], residuals[kRows * 3], cook[kRows], adjusted[kRows];
    double swept[(kColumns + 1) * (kColumns + 1)], means[kColumns + 1], deviations[kColumns + 1];

    return RunOLS1(kRows,
                   kColumns,
                   y,
                   design->X,
                   weights,
                   regressionWeights,
                   /* factors */ 1,
                   1,
                   1,
                   &factorType,
                   &active,
                   &variableCount,
                   &variableOfFactor,
                   &design->columnCount,
                   design->parents,
                   design->frequencies,
                   design->map,
                   options,
                   /* models */ &used,
                   models,
                   &bestRow,
                   design->removed,
                   /* tables */ fit,
                   anova,
                   typeTable[0],
                   typeTable[1],
                   typeTable[2],
                   typeTable[3],
                   /* parameters */ raw,
                   reported,
                   coefficients,
                   standardised,
                   covariance,
                   /* rows */ predictions,
                   intervals,
                   residuals,
                   cook,
                   adjusted,
                   swept,
                   means,
                   deviations);
}

static int Near(double actual, double expected)
{
    return fabs(actual - expected) <= 1E-12 * fabs(expected);
}

int main(void)
{
    double y[kRows] = {1, 2, 3, 2, 3, 4, 5, 6, 7};
    const OLECHAR* names[kLevels] = {L"low", L"middle", L"high"};
    BSTR groups[kRows];
    for (int i = 0; i < kRows; ++i) {
        groups[i] = SysAllocString(names[i / 3]);
    }

    struct Design design = {0};
    double anova[kTableRows * 5], coefficients[(kColumns + 1) * 6];
    int outcome = BuildDesign(groups, &design);
    if (outcome == 0) outcome = Fit(y, &design, anova, coefficients);

    int right = outcome == 0;
    if (right) {
        const double* df = anova;
        const double* squares = anova + kTableRows;
        const double f = anova[3 * kTableRows];
        const double p = anova[4 * kTableRows];
        printf("%-10s %4s %10s\n", "", "DF", "Squares");
        printf("%-10s %4g %10g   F = %g, Pr > F = %g\n", "Group", df[0], squares[0], f, p);
        printf("%-10s %4g %10g\n", "Error", df[1], squares[1]);
        printf("%-10s %4g %10g\n", "Total", df[2], squares[2]);
        for (int j = 0; j < kColumns; ++j) {
            printf("%ls: %g\n", design.labels[j], coefficients[1 + j]);
        }
        right = df[0] == 2.0 && df[1] == 6.0 && Near(squares[0], 26.0) && Near(squares[1], 6.0) &&
                Near(f, 13.0) && Near(p, 27.0 / 4096.0) && Near(coefficients[0], 2.0) &&
                Near(coefficients[2], 1.0) && Near(coefficients[3], 4.0);
    }

    for (int j = 0; j < kColumns; ++j) {
        SysFreeString(design.labels[j]);
        SysFreeString(design.shortLabels[j]);
    }
    for (int i = 0; i < kRows; ++i) {
        SysFreeString(groups[i]);
    }
    return right ? 0 : 1;
}
