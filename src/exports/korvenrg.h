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

/* ---- comparisons and means ---- */

/**
 * Multiple comparisons of categories: tests each pairwise difference of a contrast table by one procedure.
 *
 * Columns of ioContrastsStats:
 *    1 difference d of two categories     2 its variance; 0 or less: the row cannot be tested
 *    3, 4 ranks of the two categories among the sorted means
 *    5 t = d / root of its variance       6 critical value on the scale of t        7 p-value
 *    8 level at which codes 5 to 7 judged the row                                   9, 10 identifiers, from 1
 *
 * TestType:
 *    1 Tukey       2 Fisher LSD    3 Bonferroni    4 Dunn-Sidak    5 Newman-Keuls    6 Duncan    7 REGWQ
 *    9 Games-Howell               10 Tamhane T2   11 Dunnett C     others: nothing is computed
 *
 * Columns 5, 6 and 7 are written; column 7 is missing for code 11, and the p-values of codes 3 and 4 are those of the
 * single comparison. A row is significant when |t| is above column 6. Codes 1 to 8 take the variance from column 2, or
 * iHarmoSpp for every row with iUseHarmonic; codes 9 to 11 that of the two groups' own variances, and Welch's degrees
 * of freedom (9, 10). A row with a group of one observation keeps those of the row before. Codes below 1, 8 and above
 * 11 write column 5 and compare it with what column 6 holds.
 *
 * Codes 1, 9 and 11 take the studentized range by a fixed quadrature that serves from about 5 to 25000 degrees of
 * freedom, and p-values down to about 1E-14; docs/accuracy.md has its errors. The other codes are exact to rounding.
 *
 * Codes 5 to 7 go by the number of means that a row spans, m = |column 3 - column 4| + 1, and write columns 6, 7 and 8.
 * The rows are taken as they are given; hand them over with the ranges falling along each first rank: (1, k), (1, k-1),
 * ..., (1, 2), (2, k), ... A row is tested unless it spans fewer means than the last non-significant row. It is
 * significant when column 7 is below column 8. A row that is not tested has missing markers in columns 6 to 8, is not
 * significant, and counts as the last such row. The critical values of code 7 never rise from one row to the next:
 * a row takes level and critical value of a later one that are larger.
 *
 * Sources: Hochberg and Tamhane 1987, Multiple Comparison Procedures; Welsch 1977, Stepwise multiple comparison
 * procedures (7); Games and Howell 1976, Pairwise multiple comparison procedures with unequal n's and/or variances (9);
 * Tamhane 1979, A comparison of procedures for multiple comparisons of means with unequal variances (10); Dunnett 1980,
 * Pairwise multiple comparisons in the unequal variance case (11).
 */
KORVENRG_API void MCATest(
    int NbClasses,             /**< [in] number of categories, k */
    double* ni,                /**< [in; NbClasses] group sizes, by identifier; codes 9 to 11 */
    double* si2,               /**< [in; NbClasses] group variances, by identifier; codes 9 to 11 */
    double iHarmoSpp,          /**< [in] common variance of a difference, with iUseHarmonic: 2 MSE / harmonic mean of
                                    the group sizes */
    VARIANT_BOOL iUseHarmonic, /**< [in] -1: iHarmoSpp is the variance of every difference */
    double* ioContrastsStats,  /**< [inout; NbContrasts x 10] the contrast table. A row that cannot be tested has
                                    missing markers in columns 5 to 7, those of codes 5 to 7 in column 8 too */
    int NbContrasts,           /**< [in] number of rows */
    int TestType,              /**< [in] code of the procedure */
    double DFErrors,           /**< [in] degrees of freedom of the error; codes 1 to 7 */
    double alpha,              /**< [in] significance level, in 0..1 */
    double* newalpha,          /**< [out; 1] adjusted level: codes 3 and 4, and that of the last tested row for code
                                    6; otherwise it stays */
    int* oSignif               /**< [out; NbContrasts] 1 significant, 0 not, -1 not testable */
);

/**
 * Comparisons of all categories with a control by Dunnett's test. The rows of the contrast table with the control are
 * taken in their order.
 *
 * A row whose variance is at most 2.220446049250313E-16 has missing markers in columns 1 to 5 of oMat. Its verdict is
 * -1; when the variance is above 0 it is 1 in a two-sided test and 0 in others.
 *
 * Source: Dunnett 1955, A multiple comparison procedure for comparing several treatments with a control; Dunnett 1964,
 * New tables for multiple comparisons with a control.
 */
KORVENRG_API void MCBTest(
    int NbClasses,            /**< [in] number of categories, k */
    int ControlID,            /**< [in] identifier of the control */
    int nnm1,                 /**< [in] rows of the result, k - 1; contrasts beyond them are left out */
    double* sqrni,            /**< [in; nnm1] correlation factors, one per category other than the control:
                                   1 / sqrt(n_control / n_i + 1) */
    double* ioContrastsStats, /**< [inout; NbContrasts x 10] contrast table as in MCATest; columns 1, 2, 5, 9 and 10 are
                                   read, nothing is written */
    int NbContrasts,          /**< [in] rows of the contrast table */
    double DFErrors,          /**< [in] degrees of freedom of the error */
    double alpha,             /**< [in] significance level, in 0..1 */
    double* oMat,             /**< [out; nnm1 x 7] columns: 1 difference control minus other, 2 its t, 3 critical value, 4
                                   critical difference, 5 p-value, 6 identifier of the control, 7 of the other */
    int* oSignif,             /**< [out; nnm1] 1 significant, 0 not, -1 not testable */
    int Tail                  /**< [in] 0 two-sided; -1 lower tail: the control is smaller; otherwise upper tail. The
                                   critical value has the sign of Tail, so 1 is the code for the upper tail: a code
                                   below -1 compares with a negative one */
);

/**
 * Student's t test of each contrast.
 */
KORVENRG_API void TestContrasts(
    int iNbContrasts,         /**< [in] number of contrasts */
    double DFErrors,          /**< [in] degrees of freedom of the error */
    double* ioContrastsStats, /**< [inout; iNbContrasts x 7] columns: 1 estimate and 2 its variance, read; 5 t and 6
                                   two-sided p-value, written; both missing when the variance is at most
                                   2.220446049250313E-16. The other columns stay */
    double alpha,             /**< [in] significance level, in 0..1 */
    int* oSignif              /**< [out; iNbContrasts] 1 when the p-value is below alpha, else 0 */
);

/**
 * Rejections and adjusted p-values that control the false discovery rate.
 *
 * With the p-values sorted, the first p_(i) above i alpha / p ends the walk, and those before it are rejected; later ones
 * that would pass are not. Adjusted: p_(i) p / i, at most 1 and at most the adjusted one behind it. A missing marker
 * sorts first, counts as rejected and stays at or below the marker.
 *
 * Source: Benjamini and Hochberg 1995, Controlling the false discovery rate.
 */
KORVENRG_API void Cpp_BenjaminiHochBerg(
    double* ioPValues, /**< [inout; p x 10] table whose column idx holds the p-values; the adjusted ones replace them */
    int idx,           /**< [in] column of the p-values, from 1; 7 in a contrast table */
    int p,             /**< [in] number of p-values */
    double alpha,      /**< [in] rate to keep, in 0..1 */
    int* oSignif       /**< [out; p] 1 rejected, 0 not */
);

/**
 * Tukey's test of one difference: Student's t for two categories, otherwise the studentized range by a fixed quadrature
 * that serves from about 5 to 25000 degrees of freedom (docs/accuracy.md has its errors). Its search for the critical
 * value stops at 0.0001; without a result the value is -1 / sqrt(2).
 *
 * oldDF, oldk and oldCrit are a memo of one entry: when oldDF and oldk equal the arguments, the critical value is
 * taken from oldCrit; after each call they hold the arguments and the value. Start them at 0, and again for a new alpha.
 */
KORVENRG_API void VB_MCATestTukey(
    double DFErrors,  /**< [in] degrees of freedom of the error */
    double k,         /**< [in] number of categories */
    double Diff,      /**< [in] absolute standardised difference */
    double alpha,     /**< [in] significance level, in 0..1 */
    double* oCritVal, /**< [out; 1] critical value on the scale of Diff */
    double* pVal,     /**< [out; 1] p-value */
    double* oldDF,    /**< [inout; 1] memo: degrees of freedom */
    double* oldk,     /**< [inout; 1] memo: number of categories */
    double* oldCrit   /**< [inout; 1] memo: critical value */
);

/**
 * Fisher's least significant difference for one difference: Student's t. The memo is that of VB_MCATestTukey, on the
 * degrees of freedom alone.
 */
KORVENRG_API void VB_MCATestFischerLSD(
    double DFErrors,  /**< [in] degrees of freedom of the error */
    double Diff,      /**< [in] absolute standardised difference */
    double alpha,     /**< [in] significance level, in 0..1 */
    double* oCritVal, /**< [out; 1] critical value on the scale of Diff */
    double* pVal,     /**< [out; 1] two-sided p-value */
    double* oldDF,    /**< [inout; 1] memo: degrees of freedom */
    double* oldCrit   /**< [inout; 1] memo: critical value */
);

/**
 * Bonferroni's test of one difference: Student's t at newalpha. The memo is that of VB_MCATestTukey.
 */
KORVENRG_API void VB_MCATestBonferroni(
    double DFErrors,  /**< [in] degrees of freedom of the error */
    double k,         /**< [in] number of categories */
    double Diff,      /**< [in] absolute standardised difference */
    double alpha,     /**< [in] significance level, in 0..1 */
    double* newalpha, /**< [out; 1] 2 alpha / (k (k - 1)) */
    double* oCritVal, /**< [out; 1] critical value on the scale of Diff */
    double* pVal,     /**< [out; 1] two-sided p-value of the single comparison, to be compared with newalpha */
    double* oldDF,    /**< [inout; 1] memo: degrees of freedom */
    double* oldk,     /**< [inout; 1] memo: number of categories */
    double* oldCrit   /**< [inout; 1] memo: critical value */
);

/**
 * Dunn and Sidak's test of one difference: Student's t at newalpha.
 */
KORVENRG_API void VB_MCATestDunnSidak(
    double DFErrors,  /**< [in] degrees of freedom of the error */
    double k,         /**< [in] number of categories */
    double Diff,      /**< [in] absolute standardised difference */
    double alpha,     /**< [in] significance level, in 0..1 */
    double* newalpha, /**< [out; 1] 1 - (1 - alpha)^(2 / (k (k - 1))) */
    double* oCritVal, /**< [out; 1] critical value on the scale of Diff */
    double* pVal      /**< [out; 1] two-sided p-value of the single comparison, to be compared with newalpha */
);

/**
 * Newman and Keuls' test of one difference: the studentized range of m means. NaN when m is below 2 or above k.
 */
KORVENRG_API void VB_MCATestNewmanKeuls(
    double DFErrors,  /**< [in] degrees of freedom of the error */
    double m,         /**< [in] number of means spanned, 2 to k */
    double k,         /**< [in] number of categories */
    double Diff,      /**< [in] absolute standardised difference */
    double alpha,     /**< [in] significance level, in 0..1 */
    double* oCritVal, /**< [out; 1] critical value on the scale of Diff */
    double* pVal      /**< [out; 1] p-value */
);

/**
 * Duncan's test of one difference: the studentized range of m means at newalpha. NaN when m is below 2 or above k.
 */
KORVENRG_API void VB_MCATestDuncan(
    double DFErrors,  /**< [in] degrees of freedom of the error */
    double m,         /**< [in] number of means spanned, 2 to k */
    double k,         /**< [in] number of categories */
    double Diff,      /**< [in] absolute standardised difference */
    double alpha,     /**< [in] significance level, in 0..1 */
    double* newalpha, /**< [out; 1] 1 - (1 - alpha)^(m - 1) */
    double* oCritVal, /**< [out; 1] critical value on the scale of Diff */
    double* pVal      /**< [out; 1] p-value, to be compared with newalpha */
);

/**
 * The test of Ryan, Einot, Gabriel and Welsch for one difference: the studentized range of m means at newalpha. NaN when
 * m is below 2 or above k.
 */
KORVENRG_API void VB_MCATestREGWQ(
    double DFErrors,    /**< [in] degrees of freedom of the error */
    double m,           /**< [in] number of means spanned, 2 to k */
    double k,           /**< [in] number of categories */
    double Diff,        /**< [in] absolute standardised difference */
    double alpha,       /**< [in] significance level, in 0..1 */
    VARIANT_BOOL Quick, /**< [in] -1: level and critical value alone; otherwise the p-value alone. The rest stays */
    double* newalpha,   /**< [out; 1] alpha when m is k or k - 1, otherwise 1 - (1 - alpha)^(m / k) */
    double* oCritVal,   /**< [out; 1] critical value on the scale of Diff */
    double* pVal        /**< [out; 1] p-value, to be compared with newalpha */
);

/**
 * Letter groups of categories: two share a letter exactly when their difference is not significant.
 *
 * The groups are all those to which no category can be added, as insert and absorb makes them (Piepho 2004, An algorithm
 * for a letter-based representation of all-pairwise comparisons). Groups that hold the first rows come first: with sorted
 * rows the letters are in the order of the means. They are called A to Z, AA to AZ, BA, ...
 *
 * Returns -1, or 0 when no grouping could be made: a pair was not tested (verdict -1, or no contrast of it), or there
 * would be more than 256 groups. Leave a removed category and its contrasts out of the arrays.
 */
KORVENRG_API VARIANT_BOOL Cpp_BuildGroupingForDiffs(
    double* iVect,         /**< [inout; p x nbcols] table of the categories, means in column 1; its rows are sorted when
                                asked for */
    int nbcols,            /**< [in] columns of iVect */
    double* ContrastsStats, /**< [in; p(p-1)/2 x max(ID1,ID2)] contrast table; columns ID1 and ID2 are read */
    int p,                 /**< [in] number of categories */
    int* Signif,           /**< [in; p(p-1)/2] verdicts: 1 significant, 0 not, -1 not tested */
    BSTR* GTable,          /**< [out; p x 256] column g is group g: its letter in the rows that belong to it, empty
                                text in the others and in all unused columns. Every cell is a new text */
    int* pG,               /**< [out; 1] number of groups; 0 when there is no grouping */
    double* Ranks,         /**< [inout; p] identifier of the category in each row; moves with the rows of iVect */
    int ID1,               /**< [in] column of the first category's identifier, from 1; 9 in a contrast table */
    int ID2,               /**< [in] column of the second category's; 10 in a contrast table */
    VARIANT_BOOL* iSort,   /**< [in; 1] -1: iVect and Ranks are sorted by column 1 of iVect first */
    VARIANT_BOOL iSortDown /**< [in] -1: from the largest mean down, otherwise from the smallest up */
);

/**
 * Differences between the reported parameters of one factor, all pairs i < j of its m parameters in their order, with
 * the variances that a fit gives them: the first columns of a table for TestContrasts.
 */
KORVENRG_API void GetContrastsStatVar(
    int p,                  /**< [in] number of coded columns */
    int NbParams,           /**< [in] number of parameters, p + 1: the columns', then the intercept */
    int Interlevel,         /**< [in] ignored */
    int FactID,             /**< [in] the factor, from 1 */
    int* FactSubParents,    /**< [in; p] factor of each column; those of one factor are contiguous */
    double* iStats,         /**< [in; NbParams] reported parameters, oCoeffs of RunOLS1 */
    double* iVarCov,        /**< [in; NbParams x NbParams] their covariance, oVarCovCoef of RunOLS1 */
    int iNbContrasts,       /**< [in] rows of the table; contrasts beyond it are left out */
    int* NbContrasts,       /**< [out; 1] m (m - 1) / 2 */
    double* oContrastsStats /**< [out; iNbContrasts x 5] 1 parameter i less parameter j, 2 variance, 3 i, 4 j, from 1;
                                 column 5 stays */
);

/**
 * Means of the fitted values within the categories of one factor, ranked, and their contrasts.
 *
 * A mean is that of the model at the weighted means of all columns over the rows of the category, with the error and
 * the limits of Student's law. The rows of a category of a qualitative factor are those above 0 in its column that
 * are not below 0 in this or a later column of the factor; of a mixed interaction, those not 0 in its column; a quantitative
 * factor has all rows. A category without weight has the intercept as its mean.
 *
 * The coefficients have to be those of the fitted columns: oRCoeffs of RunOLS1 with the covariance that it gives under
 * InputInfo(17) = 0.0, in an array that held 0 before the run. The step-down tests of MCATest want the rows of the contrast
 * table in another order, with the ranges falling along each first rank.
 */
KORVENRG_API void Cpp_GetMeansContrastsStatVar2(
    double* X,               /**< [in; n x p] coded columns */
    double* W,               /**< [in; n] weights */
    int n,                   /**< [in] number of rows */
    int p,                   /**< [in] number of columns */
    int NbContrasts,         /**< [in] rows of the contrast table, K (K - 1) / 2; contrasts beyond it are left out */
    int NbFactors,           /**< [in] number of factors */
    int Interlevel,          /**< [in] ignored */
    int FactID,              /**< [in] the factor, from 1 */
    int FactType,            /**< [in] its type, 1 to 5 */
    int* FactNbSub,          /**< [in; NbFactors] columns of each factor; K, the number of categories, is that of FactID */
    int* FactSubParents,     /**< [in; p] factor of each column; those of one factor are contiguous */
    int* RemovedVect,        /**< [in; K] 0, or above 0 for a category that is out of the model */
    double* iStats,          /**< [in; p+1] coefficients of the fitted columns, the intercept last */
    double* iVarCov,         /**< [in; (p+1) x (p+1)] their covariance; 0 for columns outside the model */
    double alpha,            /**< [in] 1 less the level of the limits */
    double DFErrors,         /**< [in] degrees of freedom of the error */
    double* oMeans,          /**< [out; K x 4] mean, standard error, lower and upper limit, by ascending mean; removed
                                  categories come first, with missing cells */
    double* oContrastsStats, /**< [out; NbContrasts x 10] pairs of ranks i < j, j rising: 1 mean of rank i less that of
                                  rank j, 2 variance, 3 i, 4 j, 5 difference / root of the variance, 9, 10 the two
                                  categories; 5 is missing without variance, 1, 2 and 5 with a removed category; the
                                  other columns stay */
    double* Ranks,           /**< [out; K] category of each row of oMeans, from 1 */
    int* NbNull              /**< [out; 1] number of removed categories */
);

/**
 * Least-squares means of the categories of one factor, ranked, and their contrasts (Searle, Speed and Milliken 1980,
 * "Population marginal means in the linear model: an alternative to least squares means").
 *
 * A mean is the model with the category's own parameter, the parameters of each interaction with the category in equal
 * shares, those of each other qualitative factor in equal shares of the parameters that are not constant, and each
 * covariate, and each column of a mixed interaction that goes with the category, at its weighted mean over all rows. A
 * factor goes with the category through the variables it has in common with FactID. An empty cell of an interaction counts
 * in the shares, with the coefficient 0.
 *
 * The parameters have to be the reported ones: oCoeffs of RunOLS1 with the covariance that it gives under InputInfo(17)
 * other than 0.0.
 */
KORVENRG_API void GetLSMeansContrastsStatVar(
    double* X,               /**< [in; n x p] coded columns */
    double* W,               /**< [in; n] weights */
    int n,                   /**< [in] number of rows */
    int p,                   /**< [in] number of columns */
    int NbParams,            /**< [in] ignored: p + 1 */
    int NbContrasts,         /**< [in] rows of the contrast table, K (K - 1) / 2; contrasts beyond it are left out */
    int NbFactors,           /**< [in] number of factors */
    int Interlevel,          /**< [in] highest number of variables in one factor */
    int FactID,              /**< [in] the factor, from 1 */
    int* FactType,           /**< [in; NbFactors] 1 quantitative, 2 qualitative, 3, 4, 5 interactions */
    int* FactActive,         /**< [in; NbFactors] ignored: a factor is in the model when FactSubParents has it */
    int* FactNbSubInit,      /**< [in; NbFactors] columns of each factor in a table of all factors, so that each variable
                                  has its number of categories, whether or not its main effect is in the model */
    int* FactNbSub,          /**< [in; NbFactors] columns of each factor; K, the number of categories, is that of FactID */
    int* FactSubRemoved,     /**< [in; p] states of the columns; 50000 (constant) is left out of the equal shares */
    int* FactSubCleaned,     /**< [in; p] ignored: all columns of the table keep their place */
    int* FactListVars,       /**< [in; NbFactors x Interlevel] variables of each factor */
    int* FactNbVars,         /**< [in; NbFactors] number of variables of each factor */
    int* FactSubParents,     /**< [in; p] factor of each column; those of one factor are contiguous, in the order of the
                                  design table */
    int* RemovedVect,        /**< [in; K] 0, or above 0 for a category that is out of the model */
    double* iStats,          /**< [in; p+1] reported parameters, the intercept last */
    double* iVarCov,         /**< [in; (p+1) x (p+1)] their covariance */
    double alpha,            /**< [in] 1 less the level of the limits */
    double DFErrors,         /**< [in] degrees of freedom of the error */
    double* oMeans,          /**< [out; K x 4] mean, standard error, lower and upper limit, by ascending mean; removed
                                  categories come last, with missing cells */
    double* oContrastsStats, /**< [out; NbContrasts x 10] as in Cpp_GetMeansContrastsStatVar2; the pairs with a removed
                                  category come last */
    double* Ranks,           /**< [out; K] category of each row of oMeans, from 1 */
    int* NbNull              /**< [out; 1] number of removed categories */
);

/**
 * Means of the fitted values within the categories of one factor, ranked: Cpp_GetMeansContrastsStatVar2 without
 * contrasts. The coefficients are those of the fitted columns.
 */
KORVENRG_API void Cpp_GetCategoryMeans2(
    double* X,           /**< [in; n x p] coded columns */
    double* W,           /**< [in; n] weights */
    int n,               /**< [in] number of rows */
    int p,               /**< [in] number of columns */
    int NbFactors,       /**< [in] number of factors */
    int Interlevel,      /**< [in] highest number of variables in one factor */
    int FactID,          /**< [in] the factor, from 1 */
    int* FactType,       /**< [in; NbFactors] type of each factor */
    int* FactActive,     /**< [in; NbFactors] ignored */
    int* FactNbSubInit,  /**< [in; NbFactors] ignored */
    int* FactNbSub,      /**< [in; NbFactors] columns of each factor; K, the number of categories, is that of FactID */
    int* FactListVars,   /**< [in; NbFactors x Interlevel] ignored */
    int* FactNbVars,     /**< [in; NbFactors] ignored */
    int* FactSubParents, /**< [in; p] factor of each column; those of one factor are contiguous */
    int* RemovedVect,    /**< [in; K] 0, or above 0 for a category that is out of the model */
    double* iStats,      /**< [in; p+1] coefficients of the fitted columns, the intercept last */
    double* iVarCov,     /**< [in; (p+1) x (p+1)] their covariance; 0 for columns outside the model */
    double alpha,        /**< [in] 1 less the level of the limits */
    double DFErrors,     /**< [in] degrees of freedom of the error */
    double* oMeans,      /**< [out; K x 4] mean, standard error, lower and upper limit, by ascending mean; removed
                              categories come first, with missing cells */
    double* oMeanIDs     /**< [out; K] category of each row of oMeans, from 1 */
);

/**
 * Least-squares means of the categories of one factor, ranked: GetLSMeansContrastsStatVar without contrasts. The
 * parameters are the reported ones.
 */
KORVENRG_API void Cpp_GetCategoryLSMeans(
    double* X,           /**< [in; n x p] coded columns */
    double* W,           /**< [in; n] weights */
    int n,               /**< [in] number of rows */
    int p,               /**< [in] number of columns */
    int NbParams,        /**< [in] ignored: p + 1 */
    int NbFactors,       /**< [in] number of factors */
    int Interlevel,      /**< [in] highest number of variables in one factor */
    int FactID,          /**< [in] the factor, from 1 */
    int* FactType,       /**< [in; NbFactors] type of each factor */
    int* FactActive,     /**< [in; NbFactors] ignored */
    int* FactNbSubInit,  /**< [in; NbFactors] columns of each factor in a table of all factors */
    int* FactNbSub,      /**< [in; NbFactors] columns of each factor; K, the number of categories, is that of FactID */
    int* FactSubRemoved, /**< [in; p] states of the columns; 50000 (constant) is left out of the equal shares */
    int* FactSubCleaned, /**< [in; p] ignored */
    int* FactListVars,   /**< [in; NbFactors x Interlevel] variables of each factor */
    int* FactNbVars,     /**< [in; NbFactors] number of variables of each factor */
    int* FactSubParents, /**< [in; p] factor of each column; those of one factor are contiguous, in the order of the
                              design table */
    int* RemovedVect,    /**< [in; K] 0, or above 0 for a category that is out of the model */
    double* iStats,      /**< [in; p+1] reported parameters, the intercept last */
    double* iVarCov,     /**< [in; (p+1) x (p+1)] their covariance */
    double alpha,        /**< [in] 1 less the level of the limits */
    double DFErrors,     /**< [in] degrees of freedom of the error */
    double* oMeans,      /**< [out; K x 4] mean, standard error, lower and upper limit, by ascending mean; removed
                              categories come last, with missing cells */
    double* oMeanIDs     /**< [out; K] category of each row of oMeans, from 1 */
);

/**
 * Flags the columns in state 50000 (constant: an empty cell, a category without rows) and, in the main effects, the
 * category of each of their variables: the place of a column in its factor is read as a number whose digits are the categories,
 * the first variable changing slowest. Variables with one column have no category, main effects outside the table no
 * column to flag.
 */
KORVENRG_API void Cpp_identifyRemoved(
    int* iFactActive,        /**< [in; NbFactors] ignored */
    int NbFactors,           /**< [in] number of factors */
    int p,                   /**< [in] number of columns */
    int Interlevel,          /**< [in] highest number of variables in one factor */
    int* iFactSubParents,    /**< [in; p] factor of each column */
    int* iFactListVars,      /**< [in; NbFactors x Interlevel] variables of each factor, 0 behind the last */
    int* iFactNbSub,         /**< [in; NbFactors] columns of each factor; of a variable's main effect, its categories */
    int* iFactSubRemoved,    /**< [in; p] states of the columns */
    int* oFactRemovedParents /**< [out; p] 1 for a flagged column; the other cells stay */
);

/**
 * Cpp_identifyRemoved without a list of parents: the active factors stand one after the other with their columns of
 * iFactNbSubInit. A column is removed when its state or its cleaned state is 50000. Quantitative variables have no
 * category.
 */
KORVENRG_API void Cpp_identifyRemoved2(
    int* iFactActive,        /**< [in; NbFactors] 1: the factor has columns in the table */
    int NbFactors,           /**< [in] number of factors */
    int p,                   /**< [in] number of columns */
    int Interlevel,          /**< [in] highest number of variables in one factor */
    int* iFactType,          /**< [in; NbFactors] type of each factor */
    int* iFactListVars,      /**< [in; NbFactors x Interlevel] variables of each factor, 0 behind the last */
    int* iFactNbSubInit,     /**< [in; NbFactors] columns of each factor; of a variable's main effect, its categories, in
                                  the table or not */
    int* iFactSubRemoved,    /**< [in; p] states of the columns */
    int* iFactSubCleaned,    /**< [in; p] states after cleaning, of BuildModelTable2 */
    int* oFactRemovedParents /**< [out; p] 1 for a flagged column; the other cells stay */
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
 * Selections take whole factors in and out. oModels has a row for each step: 1 factors in the model, 2 1 for an entry, 0
 * for a removal or the start of a backward selection, 3 the factor (-1 at the start; 0 when the selection ends because
 * the factor would go back where it came from), 4 to p+5 marks of the slopes, the intercept and the mortality that are
 * not estimated, p+6 -2 log-likelihood, p+7 to p+9 p-values of the likelihood-ratio, score and Wald test of the model,
 * p+10 AIC, p+11 Schwarz's criterion, p+12 and p+13 statistic and p-value of the entry test (missing otherwise), p+14 and
 * p+15 those of the candidate for the next removal. Of best subsets a row for each size: 1 the size, 2 models fitted, 3
 * number of the best one (subsets are counted from the smallest size, within it in the order of their factors), 4 to p+11
 * as before; p+6 to p+11 are the largest number where no model was fitted. Rows that no step reached stay.
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
    int iSelectionType, /**< [in] -1 none: all columns that pass the screen; 0 best subsets of factors; 1 stepwise forward, 2
    stepwise backward, 3 forward, 4 backward; other values fit nothing */
    int iCriterionType, /**< [in] tests for removal: 0 likelihood ratio, others Wald. Best subsets: 0 -2 log-likelihood, p-value
    of the 1 likelihood-ratio, 2 score, 3 Wald test, 4 AIC, 5 Schwarz's criterion; others as 0 */
    double PrIn, /**< [in] a factor enters while the p-value of its score test is below; not of best subsets */
    double PrOut, /**< [in] a factor leaves while the p-value of its test is above; not of best subsets */
    int iMinNbVar, /**< [in] best subsets: smallest number of factors; below 0 counts as 0 */
    int iMaxNbVar, /**< [in] best subsets: largest number; both are cut to the factors in the model */
    double iCutPoint, /**< [in] probability from which an observation is classified as 1; K = 1 */
    double* ioMortality, /**< [inout; K] natural mortality of each block: start or given value, then the estimate */
    double* oModels, /**< [out; iSelectionType 0: (iMaxNbVar-iMinNbVar+1) x (p+11), >=1: 2*NbActiveFactors x (p+15), <0: 1 x (p+15)]
    history of the selection, see above; not written without one */
    int* ioFactSubRemoved, /**< [inout; p] above 0: the column is left out and keeps its state; on return 0: in the model, 1: refused by the screen or of a factor outside the model */
    double* oStdevCoefficients, /**< [out; (p+1)K x 11] for each block the intercept and the p columns, on the scale of
    the data; without profile intervals columns 10 and 11 of rows in the model stay */
    double* oBetaCoefficients, /**< [out; pK x 8] standardised coefficients of each block, no odds ratios; profile
    bounds are 0 when not asked for and missing with several blocks */
    double* oVarCov, /**< [out; (p+2) x (p+2)] covariance of the reported slopes, intercept and mortality of the first
    block */
    double* oFitCoeffs, /**< [out; 10 x 2] goodness of fit */
    double* oTestStats, /**< [out; 3 x 3] global tests */
    double* oANOVATable, /**< [out; (NbActiveFactors+1) x 5] type III table: a row for each factor in the model with degrees of
    freedom, Wald chi-square, Pr > chi-square, likelihood-ratio chi-square, Pr > chi-square; of other rows columns 2 to 5 are
    missing */
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
