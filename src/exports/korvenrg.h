/**
 * KORVENRG: all flat doors of the statistical modelling engine, in C.
 *
 * An array is a pointer to its first element, by columns (element (i, j) of an r x c array stands at r * (j - 1) + i - 1).
 * No array carries its size and no size is checked: each shape below is what the door reads or writes. Codes, factor
 * and column numbers count from 1. Two values recur:
 *
 *   missing   -1.79769313486231E+308 (bit pattern 0xFFEFFFFFFFFFFFE2), in each result cell that has no value
 *   boolean   16 bits, -1 true, 0 false; a 1 counts as false. A flag inside an option vector is on at exactly 1.0
 *
 * Text comes in as platform strings (null is empty) and goes out as new ones, which the caller owns; what an output
 * array of text held before is not freed. On platforms without automation strings the library exports the functions
 * that make and free them (core/platform.h).
 *
 * Each parameter is documented once: [direction; shape] meaning, allowed values, when it is ignored.
 */
#ifndef KORVENRG_H
#define KORVENRG_H

#include "core/platform.h"

#ifdef __cplusplus
extern "C" {
#endif

/* ---- frame ---- */

/**
 * Plain sum of an array, from 0.0, in its order. The missing marker is not skipped.
 * Returns the sum; 0.0 for no elements.
 */
KORVENRG_API double Cpp_SUM(
    double* A, /**< [in; size] values */
    int size   /**< [in] number of elements; 0 or less gives 0.0 */
);

/**
 * Counts the texts equal to "Vexa", case counting. The high byte of each character is dropped before the comparison.
 * Returns the count; -1 for an empty array.
 */
KORVENRG_API int Cpp_Count(
    BSTR* A, /**< [in; size] texts */
    int size /**< [in] number of elements; 0 gives -1 */
);

/**
 * Counts the texts equal to "1" up to the first that is neither "0" nor "1".
 * Returns the count so far; 0 for no elements.
 */
KORVENRG_API int Cpp_CheckBoolean(
    BSTR* A, /**< [in; size] texts */
    int size /**< [in] number of elements; 0 or less gives 0 */
);

/* ---- linear models ---- */

/**
 * One weighted least squares fit of a model design table, with everything that a regression or ANOVA report shows.
 *
 * The correlation matrix of the columns and the response is swept, column by column in the order of the factors
 * (Goodnight 1979, "A tutorial on the SWEEP operator"). A column whose tolerance is too low stays out.
 *
 * InputInfo, by position from 1; a flag is on at exactly 1.0:
 *    1 fixed intercept (flag)      2 its value                  3 tolerance a column must exceed
 *    4 unused                      5 method: negative fits all active factors; 0 best subset, 1 stepwise, 2 forward,
 *                                    3 backward
 *    6 criterion of best subsets: 0 adjusted R squared, 1 MSE, 2 Cp, 3 AIC, 4 SBC, 5 PC; 2 fills the Cp column of oModels
 *                                    for any method
 *    7 probability to enter        8 to be removed, of methods 1 to 3
 *    9 smallest number of factors 10 largest, of best subsets
 *   11 alpha of the intervals     12, 13, 14 fill the Type I, II, III table (flags)
 *   15 constraint code of the design table; 2 or more: dropped levels get derived coefficients
 *   16 copies the Type II table into the Type III table (flag)
 *   17 exactly 0.0: oVarCovCoef stays on the fitted columns; otherwise it is mapped through FactSubDesign
 *
 * Column states (ioFactSubRemoved): 0 in the model, -1 candidate, 40000 dropped by a constraint, 50000 constant,
 * 60000 refused by tolerance, other positive values: excluded by the caller.
 *
 * Returns 0, or -5 when no column can enter; then only oMean, oStDev, pFinal, ioFactSubRemoved, FactActive, oModels
 * and Wr have been touched.
 */
KORVENRG_API int RunOLS1(
    int n,                     /**< [in] number of observations */
    int p,                     /**< [in] number of coded columns of X */
    double* Y,                 /**< [in; n x 1] response */
    double* X,                 /**< [in; n x p] coded columns */
    double* Wc,                /**< [in; n x 1] case weights; their sum counts the observations */
    double* Wr,                /**< [inout; n x 1] regression weights; rescaled when the sum of Wc * Wr is at most 1 */
    int NbFactors,             /**< [in] number of factors */
    int Interlevel,            /**< [in] highest number of variables in one factor */
    int NbActiveFactors,       /**< [in] ignored */
    int* FactType,             /**< [in; NbFactors] 1 quantitative, 2 qualitative, 3, 4, 5 interactions */
    int* FactActive,           /**< [inout; NbFactors] 1: in the model; 0 afterwards for a factor without columns in it */
    int* FactNbVars,           /**< [in; NbFactors] number of variables of each factor */
    int* FactListVars,         /**< [in; NbFactors x Interlevel] variables of each factor */
    int* FactNbSub,            /**< [in; NbFactors] number of columns of each factor */
    int* FactSubParents,       /**< [in; p] factor of each column */
    double* FactSubFreq,       /**< [in; unused, may be p] ignored */
    double* FactSubDesign,     /**< [in; p x p] map from fitted columns to reported parameters */
    double* InputInfo,         /**< [in; 17] options, see above */
    int* pFinal,               /**< [out; 1] number of columns in the final model */
    double* oModels,           /**< [out; 2p x (NbFactors+12)] one row per factor entered, per step, or per subset size:
                                    1 row number, number of factors, or size, 2 columns, 3 +1 entered, -1 removed, 0 a
                                    subset, 4 the factor, 5.. indicators of the factors in the model, then SSE, MSE,
                                    R squared, adjusted R squared, Cp, AIC, SBC, PC. Without a selection other rows stay;
                                    with one they are 0 */
    int* oBestID,              /**< [out; 1] row of the best model; written when best-subset selection finds one */
    int* ioFactSubRemoved,     /**< [inout; p] state of each column */
    double* oFitCoeffs,        /**< [out; 15 x 2] column 1: observations, sum of weights, DF, R squared, adjusted
                                    R squared, MSE, RMSE, MAPE, Durbin-Watson, Cp, AIC, SBC, PC, PRESS, Q squared;
                                    column 2 stays */
    double* oANOVATable,       /**< [out; 3 x 5] rows model, error, corrected total; columns DF, sum of squares, mean
                                    square, F, Pr > F */
    double* oTypeISSTable,     /**< [out; NbFactors x 5] sequential tests: DF, sum of squares, mean square, F, Pr > F; a row
                                    for each factor active or asked for, from the top; other rows stay */
    double* oTypeIISSTable,    /**< [out; NbFactors x 5] the same given all but containing factors; written for 13 or 14 */
    double* oTypeIIISSTable,   /**< [out; NbFactors x 5] the same by estimable functions, or by sweeping under constraint
                                    2 and 3; written for 14 or 16 */
    double* oTypeIVSSTable,    /**< [out; unused, may be NbFactors x 5] ignored */
    double* oRCoeffs,          /**< [out; p+1] coefficients of the fitted columns, the intercept last */
    double* oCoeffs,           /**< [out; p+1] reported parameters, the intercept last */
    double* oStdevCoeffs,      /**< [out; (p+1) x 6] row 1 intercept, row i+1 column i: value, standard error, t,
                                    Pr > |t|, lower bound, upper bound */
    double* oBetaCoeffs,       /**< [out; p x 6] the same for the standardised coefficients, no intercept */
    double* oVarCovCoef,       /**< [out; (p+1) x (p+1)] covariance of the coefficients, intercept last; cells of
                                    columns outside the model stay when InputInfo(17) is 0.0 */
    double* oYPred,            /**< [out; n] predictions */
    double* oStDevYPred,       /**< [out; n x 6] standard error of the mean, its bounds; of an observation, its bounds */
    double* oResiduals,        /**< [out; n x 3] raw, standardised, studentised; the last stays at leverage 1 */
    double* oCooksD,           /**< [out; n] Cook's distance; stays at leverage 1 */
    double* oAdjPred,          /**< [out; n] leave-one-out prediction */
    double* oRMat,             /**< [out; (p+1) x (p+1)] the final swept matrix, symmetric */
    double* oMean,             /**< [out; p+1] weighted means of the columns and of Y */
    double* oStDev             /**< [out; p+1] standard deviations in the same order */
);

/**
 * Codes quantitative and text columns into one design table and describes its columns, for the model rows and with the
 * same coding for validation and prediction rows. Older form of BuildModelTable2.
 *
 * Factor types: 1 quantitative, 2 qualitative, 3 interaction of quantitative variables, 4 of qualitative ones, 5 mixed.
 * Variables are numbered 1..pX (quantitative), then pX+1..pX+pQ; each has its main effect as the factor of its number.
 * Returns 0.
 */
KORVENRG_API int BuildModelTable(
    double* X,                 /**< [in; n x pX] quantitative variables */
    int n,                     /**< [in] number of model rows */
    int pX,                    /**< [in] number of quantitative variables */
    BSTR* q,                   /**< [in; n x pQ] qualitative variables */
    int pQ,                    /**< [in] number of qualitative variables */
    double* W,                 /**< [in; n] weights of the rows, for the frequencies */
    BSTR* LabelX,              /**< [in; pX+NbCatTotal] names of the quantitative variables; the rest is ignored */
    BSTR* LabelQ,              /**< [in; pQ] names of the qualitative variables */
    int Interlevel,            /**< [in] highest number of variables in one factor */
    int iConstraintType,       /**< [in] 0 first level, 1 last level, 2 sum of effects 0, 3 weighted sum 0; any other
                                    value keeps all columns */
    VARIANT_BOOL UseHProduct,  /**< [in] -1: interactions multiply the main effects' constraint-coded columns; else plain
                                    0/1 indicators */
    int NbFactors,             /**< [in] number of factors */
    BSTR* FactSubLabels,       /**< [out; p] label of each column: "-" joins a variable and its category, "*" the parts
                                    of an interaction */
    int* FactSubParents,       /**< [out; p] factor of each column */
    double* FactSubFreq,       /**< [out; p] weighted frequency of the column's category or cell; 0 for quantitative
                                    columns */
    int* FactSubRemoved,       /**< [out; p] 40000 for a level dropped by the constraint, else 0 */
    int* FactType,             /**< [in; NbFactors] type of each factor */
    int* FactListVars,         /**< [in; NbFactors x Interlevel] variables of each factor */
    int* FactNbVars,           /**< [in; NbFactors] number of variables of each factor */
    int* FactActive,           /**< [in; NbFactors] 1: the factor gets columns */
    double* FactSubDesign,     /**< [out; p x p] map from fitted columns to reported parameters */
    VARIANT_BOOL NestedOption, /**< [in] -1: FactNested holds */
    int* FactNested,           /**< [in; 2] variable nested, variable it is nested in; 0 none */
    int NbMaxCat,              /**< [in] largest number of categories of a variable */
    int NbCatTotal,            /**< [in] total number of categories; only shapes LabelX */
    int* NbCat,                /**< [in; pQ] number of categories of each qualitative variable */
    BSTR* Cat,                 /**< [in; pQ x NbMaxCat] categories, in the order of the columns */
    double* iFreqCat,          /**< [in; pQ x NbMaxCat] their weighted frequencies */
    VARIANT_BOOL WithValid,    /**< [in] -1: code the validation rows */
    double* XValid,            /**< [in; nValid x pX] quantitative variables of the validation rows */
    BSTR* QValid,              /**< [in; nValid x pQ] qualitative ones; an unknown category gives zeros */
    int nValid,                /**< [in] number of validation rows */
    VARIANT_BOOL WithPredict,  /**< [in] -1: code the prediction rows */
    double* XPred,             /**< [in; nPred x pX] quantitative variables of the prediction rows */
    BSTR* QPred,               /**< [in; nPred x pQ] qualitative ones; an unknown category gives zeros */
    int nPred,                 /**< [in] number of prediction rows */
    double* XModel,            /**< [out; n x p] coded model rows */
    double* XModelValid,       /**< [out; nValid x p] coded validation rows */
    double* XModelPred,        /**< [out; nPred x p] coded prediction rows */
    int* pMod                  /**< [inout; 1] in: columns reserved, the p of all shapes; out: columns made */
);

/**
 * Codes quantitative and text columns into one design table and describes its columns, for the model rows and with the
 * same coding for validation and prediction rows.
 *
 * Parameters as in BuildModelTable; interactions multiply plain 0/1 indicators.
 * Returns 0.
 */
KORVENRG_API int BuildModelTable2(
    double* X,                 /**< [in; n x pX] quantitative variables */
    int n,                     /**< [in] number of model rows */
    int pX,                    /**< [in] number of quantitative variables */
    BSTR* q,                   /**< [in; n x pQ] qualitative variables */
    int pQ,                    /**< [in] number of qualitative variables */
    double* W,                 /**< [in; n] weights of the rows, for the frequencies */
    BSTR* LabelX,              /**< [in; pX+NbCatTotal] names of the quantitative variables; the rest is ignored */
    BSTR* LabelQ,              /**< [in; pQ] names of the qualitative variables */
    int Interlevel,            /**< [in] highest number of variables in one factor */
    int iConstraintType,       /**< [in] 0 first level, 1 last level, 2 sum of effects 0, 3 weighted sum 0; any other
                                    value keeps all columns */
    int NbFactors,             /**< [in] number of factors */
    BSTR* FactSubLabels,       /**< [out; p] label of each column: "-" joins a variable and its category, "*" the parts
                                    of an interaction */
    BSTR* FactSubLabelsSimple, /**< [out; p] the label without the names of qualitative variables */
    int* FactSubParents,       /**< [out; p] factor of each column */
    int* FactSubParentsList,   /**< [out; NbFactors x p: row f lists the columns of factor f, 0 after the last] columns
                                    by factor */
    int* FactNbSub,            /**< [out; NbFactors] number of columns of each factor */
    double* FactSubFreq,       /**< [out; p] weighted frequency of the column's category or cell; 0 for quantitative
                                    columns */
    int* FactSubRemoved,       /**< [out; p] 40000 for a level dropped by the constraint, else 0 */
    int* FactSubCleaned,       /**< [out; p] the state with 50000 added for a column that is constant over the model rows */
    int* FactType,             /**< [in; NbFactors] type of each factor */
    int* FactListVars,         /**< [in; NbFactors x Interlevel] variables of each factor */
    int* FactNbVars,           /**< [in; NbFactors] number of variables of each factor */
    int* FactActive,           /**< [in; NbFactors] 1: the factor gets columns */
    double* FactSubDesign,     /**< [out; p x p] map from fitted columns to reported parameters */
    int* FactNested,           /**< [in; 2] variable nested, variable it is nested in; 0 none */
    int* iFactNestedMat,       /**< [in; NbFactors x NbFactors] cell (a, b) is 1 when variable a is nested in b */
    int NbMaxCat,              /**< [in] largest number of categories of a variable */
    int NbCatTotal,            /**< [in] total number of categories; only shapes LabelX */
    int* NbCat,                /**< [in; pQ] number of categories of each qualitative variable */
    BSTR* Cat,                 /**< [in; pQ x NbMaxCat] categories, in the order of the columns */
    double* iFreqCat,          /**< [in; pQ x NbMaxCat] their weighted frequencies */
    VARIANT_BOOL WithValid,    /**< [in] -1: code the validation rows */
    double* XValid,            /**< [in; nValid x pX] quantitative variables of the validation rows */
    BSTR* QValid,              /**< [in; nValid x pQ] qualitative ones; an unknown category gives zeros */
    int nValid,                /**< [in] number of validation rows */
    VARIANT_BOOL WithPredict,  /**< [in] -1: code the prediction rows */
    double* XPred,             /**< [in; nPred x pX] quantitative variables of the prediction rows */
    BSTR* QPred,               /**< [in; nPred x pQ] qualitative ones; an unknown category gives zeros */
    int nPred,                 /**< [in] number of prediction rows */
    double* XModel,            /**< [out; n x p] coded model rows */
    double* XModelValid,       /**< [out; nValid x p] coded validation rows */
    double* XModelPred,        /**< [out; nPred x p] coded prediction rows */
    int* pMod,                 /**< [inout; 1] in: columns reserved, the p of all shapes; out: columns made */
    int* pMod2                 /**< [out; 1: columns left after cleaning] columns whose cleaned state is 0 */
);

/**
 * Number of columns that the builders make.
 * Returns the count; 0 for no factors.
 */
KORVENRG_API int GetXModelSize(
    int NbFactors,     /**< [in] number of factors */
    int pX,            /**< [in] number of quantitative variables */
    int pQ,            /**< [in] number of qualitative variables */
    int Interlevel,    /**< [in] highest number of variables in one factor */
    int* NbCat,        /**< [in; pQ] number of categories of each qualitative variable */
    int* FactType,     /**< [in; NbFactors] type of each factor */
    int* FactListVars, /**< [in; NbFactors x Interlevel] variables of each factor */
    int* FactNbVars,   /**< [in; NbFactors] number of variables of each factor */
    int* FactActive    /**< [in; NbFactors] 1: the factor gets columns */
);

/**
 * Number of combinations of the levels of n factors.
 *
 * Returns the product of the n sizes; 1 for n below 1. A product that no int holds gives the nearest int.
 */
KORVENRG_API int NumberNuplets(
    int n,           /**< [in] number of factors */
    int* SampleSizes /**< [in; n] number of levels of each */
);

/**
 * Full factorial: every combination of the levels of n factors, one a row. The first column changes slowest. Nothing is
 * written when a size is below 1 or no int holds the number of rows.
 */
KORVENRG_API void GenerateNuplets(
    int* oNUplets,   /**< [out; N x n, N = product of the sizes] levels from 1 */
    int n,           /**< [in] number of factors */
    int* SampleSizes /**< [in; n] number of levels of each */
);

/**
 * Says which variables of a factor are nested in others.
 *
 * Returns -1 when the nesting matrix has a variable of the factor nested in another, 0 otherwise.
 */
KORVENRG_API VARIANT_BOOL Cpp_GetNestedVars(
    int i,               /**< [in] the factor */
    int pX,              /**< [in] number of quantitative variables */
    int pQ,              /**< [in] number of qualitative variables */
    int NbFactors,       /**< [in] number of factors */
    int Interlevel,      /**< [in] highest number of variables in one factor; below 1: nothing is done */
    int* iFactListVars,  /**< [in; NbFactors x Interlevel] variables of each factor */
    int* iFactNestedMat, /**< [in; pQ x pQ] cell (a, b) is 1 when qualitative variable a is nested in b */
    int* oFNested,       /**< [out; Interlevel] each variable of the factor as its number among the qualitative ones,
                              0 in place of one that another is nested in; quantitative ones and empty places are
                              below 1 */
    int* oFNesting       /**< [out; Interlevel] number of the variable that another is nested in, in its own place;
                              the other places stay */
);

/**
 * Tests the nesting factor of a type table against the mean square of the nested one: its F and Pr > F are written
 * anew. Both are missing when that mean square is at most 2.220446049250313E-16. Nothing changes when the nesting
 * factor, or the factor that joins the two, is not active.
 */
KORVENRG_API void Cpp_NestedTypeTable(
    double* ioSSTable, /**< [inout; iNbFactors x 5] type table, one row per active factor; DF, sum of squares, mean
                            square, F, Pr > F */
    int iNbFactors,    /**< [in] number of factors */
    int iInterlevel,   /**< [in] highest number of variables in one factor */
    int* iFactActive,  /**< [in; iNbFactors] 1: the factor has a row */
    int* iFactNested,  /**< [in; 2] the nested variable and the one it is nested in, whose main effect is tested; the
                            row of the factor whose first two variables are these, in either order, gives the error */
    int* iFactListVars /**< [in; iNbFactors x iInterlevel] variables of each factor */
);

/**
 * Flags the columns of qualitative interactions whose combination of categories has no observation. Columns are counted
 * as in BuildModelTable2, with the categories of each variable in the order of their characters' codes; a category
 * without observations counts behind the others.
 *
 * Returns the number of columns flagged.
 */
KORVENRG_API int Cpp_GetMissingInteractions(
    BSTR* q,           /**< [in; n x pQ] qualitative variables */
    int n,             /**< [in] number of observations */
    int NbFactors,     /**< [in] number of factors */
    int pX,            /**< [in] number of quantitative variables */
    int pQ,            /**< [in] number of qualitative variables */
    int Interlevel,    /**< [in] highest number of variables in one factor */
    int* NbCat,        /**< [in; pQ] number of categories of each qualitative variable */
    int* FactType,     /**< [in; NbFactors] type of each factor */
    int* FactListVars, /**< [in; NbFactors x Interlevel] variables of each factor */
    int* FactNbVars,   /**< [in; NbFactors] number of variables of each factor */
    int* FactActive,   /**< [in; NbFactors] 1: the factor has columns */
    int* oMissing      /**< [inout; GetXModelSize columns: 1 where the column's combination of categories has no
                            observation] 0 for the other columns of these interactions; the columns of all other
                            factors stay */
);

/**
 * Says whether a group of interaction cells is filled in part. At each cell of frequency 0 one neighbour of the same
 * group is looked at: the cell before it, or, when that belongs to another group or does not exist, the one behind it.
 *
 * Returns -1 when such a neighbour has a frequency above 0, 0 otherwise and for an empty list.
 */
KORVENRG_API VARIANT_BOOL Cpp_CheckInteractions(
    int* FactNbVars,     /**< [in; *n] group of each cell; cells of a group stand together */
    double* Frequencies, /**< [in; *n] frequency of each cell */
    int* n               /**< [in; 1] number of cells */
);

/**
 * Applies a fit of RunOLS1 to new rows: predictions with standard errors and intervals, and, for a validation sample,
 * residuals, Cook's distances and column 2 of the fit table.
 *
 * A prediction row counts as one of weight 1. For a validation row of weight w, leverage h, and d the part of h that
 * the columns bring, the error of the mean prediction is sqrt(h MSE / w), with d in place of h when the intercept is
 * fixed; the studentised residual is e / sqrt((1 + h) MSE / w); Cook's distance is that of a row added to the fit.
 * Where the fit has no MSE, or a validation row has the weight 0, the cells that need it are missing.
 *
 * Column 2 of the fit table, by row: 1 sum of Wc, 2 sum of Wc * Wr, 3 row 1 less the parameters of the fit, 4 squared
 * rank correlation of response and prediction under Wc, 5 missing, 6 sum of squared errors / row 3, 7 its square root
 * (both missing when row 3 is not above 0). The other rows stay.
 *
 * A negative nPred or p: nothing is done.
 */
KORVENRG_API void OLSPredict(
    int n,                       /**< [in] ignored */
    int nPred,                   /**< [in] number of new rows */
    int p,                       /**< [in] number of coded columns */
    int pFinal,                  /**< [in] number of columns in the model; 0: each prediction is the intercept */
    double* XPred,               /**< [in; nPred x p] coded columns of the new rows */
    double* iCoeffs,             /**< [in; p+1] oRCoeffs of the fit, the intercept last */
    double alpha,                /**< [in] 1 less the level of the intervals */
    VARIANT_BOOL InterceptFixed, /**< [in] -1: the intercept was fixed */
    int* ioFactSubRemoved,       /**< [in; p] states of the columns after the fit; those in state 0 have leverage */
    double* oStDevYPred,         /**< [out; nPred x 6] standard error of the mean, its bounds; of an observation, its
                                      bounds */
    double* RTilda,              /**< [in; (p+1) x (p+1)] oRMat of the fit */
    double* Mean,                /**< [in; p+1] oMean of the fit */
    double* Stdev,               /**< [in; p+1] oStDev of the fit; a pair of columns whose product is at most 1E-12
                                      sets the leverage of the pairs before it to 0 */
    double* Wc,                  /**< [in; nPred] case weights; read for a validation sample only */
    double* Wr,                  /**< [in; nPred] regression weights; read for a validation sample only */
    double* oYPred,              /**< [out; nPred] predictions */
    VARIANT_BOOL iIsValid,       /**< [in] -1: the rows are a validation sample; otherwise the last four arrays are
                                      not touched, and ioFitCoeffs stays */
    double* ioFitCoeffs,         /**< [inout; 15 x 2] oFitCoeffs of the fit; column 1 is read, column 2 written */
    double* iYValid,             /**< [in; nPred] response of the validation rows */
    double* oResiduals,          /**< [out; nPred x 3] raw, standardised, studentised */
    double* oCooksD,             /**< [out; nPred] Cook's distance */
    double* oAdjPredValid        /**< [out; nPred] the predictions again */
);

/**
 * The report of RunOLS1 for a polynomial or mixture design whose predictions, coefficients and swept matrix were
 * computed elsewhere.
 *
 * The design has T terms: the p variables, their squares, and so on to the highest degree, then with iInteract2 the
 * products of variables 1 and 2, 1 and 3, ..., 2 and 3, ..., and the constant, which stands last in iRCoeffs and where
 * the response stands in iRMat, iMean and iStDev. A term is in the model when its diagonal cell of iRMat is below 0.
 * The model has T - iMixedDesign parameters, one of them for the mean of the response. The error is the weighted sum of
 * squared errors of the points of the fit; Cp is that of the model beside itself. Points outside the fit get the
 * validation statistics of OLSPredict, and column 2 of the fit table is written for them; without such points it stays.
 *
 * Returns 0. A negative p or iPolydegree, or no point of the fit: nothing is done.
 */
KORVENRG_API int Cpp_OLSStats(
    int n,                        /**< [in] number of points */
    int p,                        /**< [in] number of variables */
    double* Y,                    /**< [in; n] response */
    double* X,                    /**< [in; n x p] variables */
    double* W,                    /**< [in; n] case weights */
    double* iYPred,               /**< [in; n] predictions */
    double* iPointType,           /**< [in; n] 1.0: a point of the fit; otherwise of the validation sample */
    double* iRCoeffs,             /**< [in; T] coefficients of the terms, the intercept last */
    double* iRMat,                /**< [in; T x T] swept correlation matrix of the terms and, last, the response; its
                                       lower triangle is read */
    double* iMean,                /**< [in; T] means of the terms and of the response */
    double* iStDev,               /**< [in; T] standard deviations in the same order */
    int iPolydegree,              /**< [in] highest power of the variables */
    int iMixedDesign,             /**< [in] parameters less than terms: 1 for a mixture design, whose variables add
                                       to a constant, else 0 */
    VARIANT_BOOL iInteract2,      /**< [in] -1: with the products of two variables */
    VARIANT_BOOL iInterceptFixed, /**< [in] -1: the intercept was fixed */
    double iTolerance,            /**< [in] ignored */
    double alpha,                 /**< [in] 1 less the level of the intervals */
    double* oFitCoeffs,           /**< [out; 15 x 2] rows as in RunOLS1 */
    double* oANOVATable,          /**< [out; 3 x 5] rows model, error, corrected total; columns DF, sum of squares,
                                       mean square, F, Pr > F */
    double* oCoeffs,              /**< [out; T] the coefficients again */
    double* oStdevCoeffs,         /**< [out; T x 6] row 1 intercept, row i+1 term i: value, standard error, t, Pr >
                                       |t|, lower bound, upper bound */
    double* oBetaCoeffs,          /**< [out; (T-1) x 6] the same for the standardised coefficients, no intercept */
    double* oVarCovCoef,          /**< [out; T x T] covariance of the coefficients, intercept last; row and column of
                                       a fixed intercept stay */
    double* oStDevYPred,          /**< [out; n x 6] standard error of the mean, its bounds; of an observation, its
                                       bounds */
    double* oResiduals,           /**< [out; n x 3] raw, standardised, studentised; the last stays at leverage 1 */
    double* oCooksD,              /**< [out; n] Cook's distance; stays at leverage 1 */
    double* oAdjPred              /**< [out; n] leave-one-out prediction; outside the fit the prediction */
);

/**
 * Completes the PRESS statistics of a fit table of 16 cells: cell 15 is cell 14 squared times cell 3, and cell 16 is 1
 * - cell 15 / total sum of squares. Cell 15 is missing when cell 3 is not above 0 or cell 14 is missing; cell 16 then
 * too, and when the total is not above 0.
 *
 * Returns 0.
 */
KORVENRG_API int Cpp_UpdateGOF(
    double* ANOVATable, /**< [in; 3 x 5] the total sum of squares, cell (3, 2), is read */
    double* FitCoeffs   /**< [inout; 16] 3 degrees of freedom and 14 root mean squared PRESS are read, 15 PRESS and
                             16 Q squared written */
);

/**
 * Total line and residuals of repeated measures in a model without fixed effects.
 */
KORVENRG_API void Cpp_NoFixedComput(
    int n,             /**< [in] number of rows */
    int p,             /**< [in] number of measures */
    double* iY,        /**< [in; n x p] measures */
    double* oBetTable, /**< [out; 5] cell 1: n - 1; cell 2: sum of squares of the row sums about their mean; the rest
                            stays */
    double* oResMat    /**< [out; n x p] each measure less the mean of its column */
);

/**
 * Replaces the variance of each contrast of two categories by the one that these two groups give alone, instead of the
 * pooled error: var(response) (1 - r^2) / var(first) / (2m - 2), with m = n / p rounded down, the rows of a group in a
 * balanced table, r the correlation of the response with the indicator of the second group, and first the indicator of
 * the first. Rows of the two groups beyond 2m are left out.
 */
KORVENRG_API void Cpp_ModifyStdDev(
    int n,                   /**< [in] number of observations */
    int NbContrasts,         /**< [in] number of contrasts */
    int p,                   /**< [in] number of categories */
    double* ioContrastsStat, /**< [inout; NbContrasts x 10] columns 9 and 10: numbers of the two categories; column
                                  2: the variance, written; missing when m is at most 1 or the first group is empty */
    double* iX,              /**< [in; n x p] 0/1 indicators of the categories */
    double* iY,              /**< [in; n] response */
    double* iW               /**< [in; n] weights; those of the first 2m observations count, whichever rows the
                                  groups hold */
);

/* ---- logistic models ---- */

/**
 * The ROC curve of a score and the area under it. The threshold rises through the sorted scores: row 1 is (1, 1), and
 * each observation takes its weight off the false-positive rate (class 0) or the sensitivity (class 1). The area adds up
 * the rectangles below the steps. Equal scores count one by one, in the order of their rows. An observation whose class
 * is missing or NaN is skipped: its row is (0, 0), and the next one goes on from there.
 *
 * Source of the method: Hanley and McNeil 1982, "The meaning and use of the area under a receiver operating
 * characteristic (ROC) curve".
 */
KORVENRG_API void VB_ROCCurve(
    double* iProb,              /**< [in; n x iNbClass] scores; column 2 is read, that of class 1 */
    double* iClassCode,         /**< [in; n] class, 0 or 1; for grouped data the events among the trials of W */
    double* W,                  /**< [in; n] weights or trials */
    int n,                      /**< [in] number of observations; below 1 the curve is its first row and the area 0 */
    int p,                      /**< [in] ignored */
    double iCutPoint,           /**< [in] ignored */
    int iNbClass,               /**< [in] columns of iProb; below 2 all scores count as equal */
    double Total1,              /**< [in] weight of class 0; 0 gives cells that are not finite */
    double Total2,              /**< [in] weight of class 1; 0 gives cells that are not finite */
    VARIANT_BOOL iCodeIsBinary, /**< [in] -1: iClassCode is 0 or 1; otherwise events */
    double* oROCTable,          /**< [out; (n+1) x 2] false-positive rate, sensitivity */
    double* oAOC                /**< [out; 1] area under the curve */
);

/**
 * One logistic regression: binary, binomial (grouped) or multinomial response; logit, probit, complementary log-log or
 * log-log link; with a natural mortality, Firth's penalised likelihood, a selection of variables and the tables of a
 * report. K is NbCategY - 1, the number of response categories beside the reference.
 *
 * The columns are standardised under Wc and screened by tolerance; the likelihood is maximised by Newton steps with a
 * line search. A level of a qualitative variable (a column at 1) that no observation of some category has is reported
 * in oSeparate: with one block Firth's penalty is then switched on, with several the run ends.
 *
 * InputInfo, positions from 0, on at exactly 1: 0 doses are logarithms to base 10 and come back as powers; 1 ignored; 2
 * the intercept is not estimated: each category starts from probability 1/NbCategY and keeps its intercept; 3 the model
 * has a natural mortality; 4 it is given in ioMortality, not estimated; 5 probabilities are those observed, mortality
 * included: predictions are not corrected for it and doses are solved with it; 6 profile intervals (K = 1); 7 Firth's
 * penalty (K = 1); 8 type III table; 9 dose tables (K = 1 and one column in the model); 10 the tolerance screen applies
 * iTolerance even with qualitative columns (without them it always does); otherwise it refuses exact dependence alone.
 *
 * The mortality enters the probability as c + (1 - c) F(eta) (Abbott 1925). Columns of the coefficient tables: value,
 * standard error, Wald chi-square, Pr > chi-square (both stay without a standard error), lower and upper bound, then
 * with profile intervals lower and upper profile bound, then odds ratio and its bounds, which are missing where an
 * upper bound reaches 702. The row of a column outside the model holds 0, 0 and missing cells; under iConstraintType
 * above 1 the last column of a factor in the model is derived through FactSubDesign instead. oTestStats has the rows
 * likelihood ratio, score, Wald and the columns degrees of freedom, chi-square, Pr > chi-square (missing without a
 * column in the model). oFitCoeffs has the independent model in column 1 and the fitted one in column 2, by row: sum of
 * Wc, sum of Wc * Wr, degrees of freedom, -2 log-likelihood, McFadden's, Cox and Snell's and Nagelkerke's R squared,
 * AIC, Schwarz's criterion, number of iterations (column 2 alone).
 *
 * Prediction columns with K = 1, corrected for the mortality: 1 observed, 2 expected, 3 independent (counts for
 * binomial responses), 4 and 5 observed and expected probability, 6 and 7 Pearson residual against the fitted and the
 * independent model (missing without variance), 8 and 9 bounds of the expected value. With several: 1 observed and 2
 * predicted category, counted from 1 with the reference as 1 in the second; 3 probability of the reference, then those
 * of the others; the remaining columns stay.
 *
 * Returns 0; -5, -6, -7, -8 when the first fit, the backward, best-subset or forward selection failed (data that are
 * not finite, a constant response, n below 1, NbCategY below 2); -10 with K above 1 and an empty level. A negative
 * result leaves the tables that were not reached. That the iteration limit was reached shows in oFitCoeffs alone.
 */
KORVENRG_API int Cpp_RunMLOG(
    int n, /**< [in] number of observations */
    int p, /**< [in] number of coded columns */
    int pQ, /**< [in] number of qualitative columns; whether it is 0 is read */
    int NbCategY, /**< [in] number of response categories, at least 2 */
    double* Y, /**< [in; n] response: 0 or 1; successes; or category code from 0 */
    double* X, /**< [in; n x p] coded columns */
    double* Wc, /**< [in; n] case weights; trials of a binomial response */
    double* Wr, /**< [inout; n] second weights; rescaled so that Wc * Wr adds up to Wc */
    double alpha, /**< [in] 1 less the level of all intervals */
    int nValid, /**< [in] validation observations; 0: none, and their tables stay */
    double* YValid, /**< [in; max(1,nValid)] their response */
    double* XValid, /**< [in; max(1,nValid) x p] their coded columns */
    double* WcValid, /**< [in; max(1,nValid)] their case weights or trials */
    double* oPredResidValid, /**< [out; max(1,nValid) x 9K] their prediction table */
    double* oClassTableValid, /**< [out; (NbCategY+1) x (NbCategY+2)] their classification table */
    int nPred, /**< [in] new observations; 0: none, and their table stays */
    double* XPred, /**< [in; max(1,nPred) x p] their coded columns */
    double* NewPred, /**< [out; max(1,nPred) x 4K] K = 1: expected and independent probability, lower and upper bound;
    otherwise expected and independent probability of each category but the reference, the rest stays */
    int NbFactors, /**< [in] number of factors */
    int* NbActiveFactors, /**< [inout; 1] factors in the model */
    int* FactType, /**< [in; NbFactors] type of each factor; 2, 4 and 5 are qualitative */
    int* FactActive, /**< [inout; NbFactors] 1: the factor is in the model; columns of others are left out */
    int* FactNbVars, /**< [in; unused] ignored, may be null */
    int* FactSubParents, /**< [in; p] factor of each column */
    double* FactSubFreq, /**< [in; unused] ignored, may be null */
    double* FactSubDesign, /**< [in; p x p] map from fitted columns to reported coefficients */
    int* InputInfo, /**< [in; 11] options, see above */
    int iVarType, /**< [in] 0 binary, 1 binomial, 2 multinomial */
    int iModelType, /**< [in] link: 0 logit, 1 probit, 2 complementary log-log, 3 log-log; read with K = 1 alone */
    double iConvergence, /**< [in] limit on the change of the log-likelihood */
    int iMaxIter, /**< [in] iteration limit; 0 still makes one iteration */
    double iTolerance, /**< [in] tolerance of the screen */
    int iConstraintType, /**< [in] coding of qualitative factors; above 1 the last level of each is reported */
    int iConstrYType, /**< [in] code of the reference category, from 0; read with K above 1 alone */
    int iSelectionType, /**< [in] -1 none: all columns that pass the screen; other values fit nothing */
    int iCriterionType, /**< [in] ignored without a selection */
    double PrIn, /**< [in] ignored without a selection */
    double PrOut, /**< [in] ignored without a selection */
    int iMinNbVar, /**< [in] ignored without a selection */
    int iMaxNbVar, /**< [in] ignored without a selection */
    double iCutPoint, /**< [in] probability from which an observation is classified as 1; K = 1 */
    double* ioMortality, /**< [inout; K] natural mortality of each block: start or given value, then the estimate */
    double* oModels, /**< [out; iSelectionType 0: (iMaxNbVar-iMinNbVar+1) x (p+11), >=1: 2*NbActiveFactors x (p+15), <0: 1 x (p+15)] not written without a selection */
    int* ioFactSubRemoved, /**< [inout; p] above 0: the column is left out and keeps its state; on return 0: in the model, 1: refused by the screen or of a factor outside the model */
    double* oStdevCoefficients, /**< [out; (p+1)K x 11] for each block the intercept and the p columns, on the scale of
    the data; without profile intervals columns 10 and 11 of rows in the model stay */
    double* oBetaCoefficients, /**< [out; pK x 8] standardised coefficients of each block, no odds ratios; profile
    bounds are 0 when not asked for and missing with several blocks */
    double* oVarCov, /**< [out; (p+2) x (p+2)] covariance of the reported slopes, intercept and mortality of the first
    block */
    double* oFitCoeffs, /**< [out; 10 x 2] goodness of fit */
    double* oTestStats, /**< [out; 3 x 3] global tests */
    double* oANOVATable, /**< [out; (NbActiveFactors+1) x 5] not written */
    double* oPredResid, /**< [out; n x 9K] prediction table */
    double* oHetero, /**< [out; 1] Pearson's chi-square over its degrees of freedom; 1 unless its p-value is at most
    0.1 */
    double* oIndepVal, /**< [out; K] probability of each category but the reference in the independent model */
    double* oClassTable, /**< [out; (NbCategY+1) x (NbCategY+2)] rows observed, columns predicted; then totals and
    percent correct as a share of 1. K = 1: counts under Wc. Otherwise rows are weighted and column totals count
    observations; the last cell is the mean of the percents */
    double* oROCTable, /**< [out; (n+1) x 2] K = 1: ROC curve of the fitted probabilities, as VB_ROCCurve writes it */
    double* oAOC, /**< [out; 1] K = 1: area under the curve */
    double* oProbaTable1, /**< [out; 13 x 6] probability (1, 5, 10, 20 .. 90, 95, 99 percent), dose, Fieller's bounds
    (missing unless the dose lies between them), and, unless oHetero is 1, bounds under heterogeneity. A probability
    below the mortality gives missing cells */
    double* oProbaTable2, /**< [out; 99 x 5] for 1 to 99 percent: Fieller's bounds with the heterogeneity, the same with
    the multiplier of column 5 of oProbaTable1 (stay when oHetero is 1), probability */
    VARIANT_BOOL* oSeparate /**< [out; 1] -1: a level is empty in some category */
);

/**
 * Hosmer-Lemeshow test of fit. Observations in the order of their expected values are gathered in groups of about a tenth
 * of the weight, equal expected values together; a group's chi-square is (o - e)^2 / ((1 - e/m) e) with its observed and
 * expected sums and its weight m, cut to a whole number. Weights are not sorted with the rows: weight i counts for the
 * i-th sorted row. Groups after the eleventh are not kept; groups without expected value add nothing.
 *
 * Source of the method: Hosmer and Lemeshow 1980, "Goodness of fit tests for the multiple logistic regression model".
 */
KORVENRG_API void Cpp_HLTest(
    int n,             /**< [in] number of observations; below 1 there is no group */
    double* iProba,    /**< [in; n x 2] observed and expected value (counts for grouped data) */
    double* iWc,       /**< [in; n] case weights or trials */
    double* oTestTable /**< [out; 3] chi-square, number of groups less 2, Pr > chi-square; the first and third are missing
                            when the chi-square is at most 1E-12 or not a number */
);

/**
 * Marginal effects of the columns of a logistic model at the means, with standard errors by the delta method.
 *
 * The effect of a quantitative column is (1 - c) b f(eta), with c the mortality, b its slope and f the density of the
 * link; that of a column of a qualitative factor (type 2 or 4) is (1 - c) times the difference of F between the means
 * with the column at 1, and the means with it and all later columns that share one of its levels at 0. Derivatives are
 * taken by the coefficients in the model and leave the factor 1 - c out; that of a quantitative effect by the intercept
 * is (1 - 2F) b f for every link.
 *
 * Columns stand in the order of the active factors. A column is cleaned out when its state in iFactSubCleaned is neither
 * 0 nor 40000. Where iFactNbSubInit counts p columns in active factors, cleaned ones keep their cells in the arrays of p,
 * and their rows of the table stay; where it counts more, iFactSubCleaned has a state for each of them, and the arrays of
 * p hold the columns that are not cleaned.
 *
 * Source of the method: Greene 2012, "Econometric Analysis", chapter 17.
 */
KORVENRG_API void Cpp_GetLogMarginalEffects(
    double* iCoefficients,   /**< [in; p+1, intercept first] intercept, then slopes */
    int p,                   /**< [in] number of columns; below 1 nothing is done */
    double* iVarCov,         /**< [in; (p+1) x (p+1)] covariance of the slopes, then the intercept */
    double* iMeans,          /**< [in; p] means of the columns */
    int iInterlevel,         /**< [in] columns of iFactListVars; interactions of more variables share no level */
    int iNbFactors,          /**< [in] number of factors */
    double iMortality,       /**< [in] natural mortality */
    int iModelType,          /**< [in] link: 0 logit, 1 probit, 2 complementary log-log, 3 log-log; others as 0 */
    double alpha,            /**< [in] 1 less the level of the intervals */
    int* iFactActive,        /**< [in; iNbFactors] 1: the factor has columns */
    int* iFactType,          /**< [in; iNbFactors] type of each factor */
    int* iFactNbVars,        /**< [in; iNbFactors] number of variables of each factor */
    int* iFactListVars,      /**< [in; iNbFactors x iInterlevel] their numbers */
    int* iFactNbSubInit,     /**< [in; iNbFactors] columns of each factor before cleaning */
    int* iFactSubRemoved,    /**< [in; p] 0: the column is in the model */
    int* iFactSubCleaned,    /**< [in; p] states after cleaning, see above */
    double* oMarginalEffects /**< [out; p x 6] effect, standard error, z, upper tail of z (one-sided, so close to 1 for a
                                  negative effect), lower and upper bound; all but the effect are missing where the
                                  variance is at most eps, and for a removed column, whose effect is 0 */
);

/**
 * The marginal effect of one column at the means, as Cpp_GetLogMarginalEffects defines it, with its derivatives by the
 * coefficients.
 *
 * Columns before cleaning number pInit. Where that is more than p, those with state 50000 in iFactSubRemovedInit have no
 * cell in the arrays of p; otherwise cleaned columns keep theirs and are told by iFactSubCleaned.
 *
 * Returns the effect; 0, with derivatives of 0, when idx is not within 1 and p or jdx not within 1 and pInit.
 */
KORVENRG_API double Cpp_GetLogDerivX(
    int idx,                  /**< [in] number of the column among the p, from 1 */
    int idxclean,             /**< [in] its number among the columns in the model; follows from idx and is not read */
    int jdx,                  /**< [in] its number before cleaning, from 1 */
    double* iCoefficients,    /**< [in; p+1] intercept, then slopes */
    int p,                    /**< [in] number of columns */
    int pInit,                /**< [in] number of columns before cleaning */
    double* iMeans,           /**< [in; p] means of the columns */
    int iInterlevel,          /**< [in] columns of iFactListVars; interactions of more variables share no level */
    double iMortality,        /**< [in] natural mortality */
    int iModelType,           /**< [in] link, as in Cpp_GetLogMarginalEffects */
    int iNbFactors,           /**< [in] number of factors */
    int* iFactActive,         /**< [in; iNbFactors] 1: the factor is in the model */
    int* iFactType,           /**< [in; iNbFactors] type of each factor; 2 and 4 are qualitative */
    int* iFactNbVars,         /**< [in; iNbFactors] number of variables of each factor */
    int* iFactListVars,       /**< [in; iNbFactors x iInterlevel] their numbers */
    int* iFactNbSubInit,      /**< [in; iNbFactors] columns of each factor before cleaning */
    int* iFactSubRemoved,     /**< [in; p] 0: the column is in the model */
    int* iFactSubCleaned,     /**< [in; p] states after cleaning; read when pInit is at most p */
    int* iFactSubRemovedInit, /**< [in; pInit] states before cleaning; above 0: not in the model, 50000: cleaned out */
    int* iFactSubParentsInit, /**< [in; pInit] factor of each column before cleaning */
    double* oVectDxDy         /**< [out; p+1] derivatives by the slopes, 0 outside the model, then by the intercept */
);

/**
 * The coefficients of a logistic model for new variables that are linear combinations of its columns, such as those
 * behind principal components: c = L b, divided by Stdev under Normed, and the intercept a - sum of Mean * c.
 *
 * Both tables have the columns value, standard error, Wald chi-square, Pr > chi-square, lower and upper bound. A
 * variance that is not positive counts as 0.
 */
KORVENRG_API void ComputeCoeffStatsLog(
    double* LCombines,       /**< [in; nVar x p] the combinations */
    int nVar,                /**< [in] number of new variables */
    int p,                   /**< [in] number of slopes */
    double* Coefficients,    /**< [in; p+2] slopes, intercept, mortality (not read) */
    double* Mean,            /**< [in; nVar] means of the new variables */
    double* Stdev,           /**< [in; nVar] their standard deviations; 0 under Normed gives cells that are not finite */
    double StdevY,           /**< [in] divisor of the standardised coefficients, c * Stdev / StdevY */
    VARIANT_BOOL Normed,     /**< [in] -1: the combinations are of variables divided by Stdev */
    double* VarCov,          /**< [in; (p+2) x (p+2)] covariance of Coefficients */
    double alpha,            /**< [in] 1 less the level of the intervals */
    double* NewCoefStats,    /**< [out; (nVar+1) x 6] intercept, then the new variables; columns 3 to 6 are missing
                                  without a standard error */
    double* BetaCoefficients /**< [out; nVar x 6] standardised coefficients; the same for a standard error of at most
                                  eps */
);

#ifdef __cplusplus
}
#endif

#endif
