/** One run of binary, binomial or multinomial logistic regression. */
#pragma once

#include "core/matrix.h"

namespace korvenrg::logistic {

/** Rows and columns of oModels. */
struct ModelsShape
{
    int rows;
    int cols;
};

/** Best subsets: a row for each size; other selections: two for each factor; without a selection one. */
ModelsShape ShapeOfModels(int p, int selection, int minFactors, int maxFactors, int nbActiveFactors);

}  // namespace korvenrg::logistic

/**
 * Fits a logit, probit or log-log model, or a multinomial logit, and writes the tables of tests, fit, coefficients,
 * predictions, classification and doses.
 *
 * Parameters are those of the door Cpp_RunMLOG (exports/korvenrg.h documents shapes, options and results) without
 * FactNbVars and FactSubFreq; table layouts are in logistic/logit_tables.h. A matrix that is smaller than its shape reads
 * as outOfRange where it lacks cells and drops what is written there. Y, X and Wc are not changed; Wr is rescaled.
 *
 * Source of the method: McCullagh and Nelder 1989, "Generalized Linear Models"; Firth 1993, "Bias reduction of maximum
 * likelihood estimates"; Venzon and Moolgavkar 1988, "A method for computing profile-likelihood-based confidence
 * intervals"; Finney 1971, "Probit Analysis", for mortality and doses.
 *
 * @return 0; -5, -6, -7, -8 when the first fit, backward, best-subset or forward selection failed; -10 for several
 *         response categories beside the reference with a level of a qualitative variable empty in one of them. A
 *         negative result leaves the tables that were not reached.
 */
KORVENRG_API int RunMLOG(int n,
                         int p,
                         int pQ,
                         int NbCategY,
                         matrix<double>* Y,
                         matrix<double>* X,
                         matrix<double>* Wc,
                         matrix<double>* Wr,
                         double alpha,
                         int nValid,
                         matrix<double>* YValid,
                         matrix<double>* XValid,
                         matrix<double>* WcValid,
                         matrix<double>* oPredResidValid,
                         matrix<double>* oClassTableValid,
                         int nPred,
                         matrix<double>* XPred,
                         matrix<double>* NewPred,
                         int NbFactors,
                         int* NbActiveFactors,
                         matrix<int>* FactType,
                         matrix<int>* FactActive,
                         matrix<int>* FactSubParents,
                         matrix<double>* FactSubDesign,
                         matrix<int>* InputInfo,
                         int iVarType,
                         int iModelType,
                         double iConvergence,
                         int iMaxIter,
                         double iTolerance,
                         int iConstraintType,
                         int iConstrYType,
                         int iSelectionType,
                         int iCriterionType,
                         double PrIn,
                         double PrOut,
                         int iMinNbVar,
                         int iMaxNbVar,
                         double iCutPoint,
                         matrix<double>* ioMortality,
                         matrix<double>* oModels,
                         matrix<int>* ioFactSubRemoved,
                         matrix<double>* oStdevCoefficients,
                         matrix<double>* oBetaCoefficients,
                         matrix<double>* oVarCov,
                         matrix<double>* oFitCoeffs,
                         matrix<double>* oTestStats,
                         matrix<double>* oANOVATable,
                         matrix<double>* oPredResid,
                         double& oHetero,
                         matrix<double>* oIndepVal,
                         matrix<double>* oClassTable,
                         matrix<double>* oROCTable,
                         double& oAOC,
                         matrix<double>* oProbaTable1,
                         matrix<double>* oProbaTable2,
                         short& oSeparate);
