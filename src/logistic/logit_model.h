/**
 * What a logit model is fitted to, and what a fit consists of: the state that probabilities, derivatives, the Newton
 * iteration, selection and the result tables share.
 *
 * Notation: n observations, p columns, K response categories without the reference, b_k and a_k slopes and intercept of
 * block k, c_k its natural mortality (Abbott 1925, "A method of computing the effectiveness of an insecticide").
 */
#pragma once

#include <vector>

#include "core/matrix.h"
#include "kernel/linalg/columns.h"

namespace korvenrg::logistic {

/** Form of the response. */
enum ResponseForm
{
    kBinary = 0,      ///< 0 or 1
    kBinomial = 1,    ///< successes out of Wc trials
    kMultinomial = 2  ///< category code from 0
};

/** Link between the linear predictor and the probability; a model of several blocks is always a logit. */
enum LinkCode
{
    kLogit = 0,
    kProbit = 1,
    kComplementaryLogLog = 2,
    kLogLog = 3
};

/** Marks of a fixed mask. */
enum MaskMark
{
    kFree = 0,
    kFixed = 1
};

/**
 * Positions of the parameters, from 1: K blocks, each with p slopes, the intercept and the mortality. Gradient, mask,
 * Hessian and covariance have the same order.
 */
struct ParameterLayout
{
    int columns;  ///< p
    int blocks;   ///< K

    int BlockLength() const
    {
        return columns + 2;
    }

    int Length() const
    {
        return blocks * BlockLength();
    }

    int Slope(int block, int column) const
    {
        return (block - 1) * BlockLength() + column;
    }

    int Intercept(int block) const
    {
        return Slope(block, columns + 1);
    }

    int Mortality(int block) const
    {
        return Slope(block, columns + 2);
    }
};

/** A design with its response and weights. A view: all arrays belong to the caller and outlive it. */
struct LogitModel
{
    int n;
    ParameterLayout layout;
    linalg::Columns columns;    ///< p columns of the design
    const double* response;     ///< Y; of one block alone
    const double* isReference;  ///< 1 where Y is the reference category; of several blocks alone
    linalg::Columns
        indicators;  ///< K columns, 1 where Y is the category of the block; of several blocks alone
    const double* caseWeights;     ///< Wc, or trials
    const double* secondWeights;   ///< Wr, rescaled
    int form;                      ///< ResponseForm
    int link;                      ///< LinkCode; kLogit when there are several blocks
    const double* givenMortality;  ///< K cells, as the caller gave them

    bool IsMultinomial() const
    {
        return layout.blocks > 1;
    }

    /** Wr takes no part in the derivatives of a binomial response. */
    bool IsBinomial() const
    {
        return form == kBinomial;
    }
};

/** How a fit iterates and what it estimates. */
struct FitOptions
{
    double convergence;  ///< limit on the change of the log-likelihood
    int maxIterations;
    bool firth;  ///< penalised likelihood; of one block alone
    bool estimatesIntercept;
    bool estimatesMortality;
};

/** What a fit says of itself. */
struct FitStatistics
{
    double logLikelihood = 0.0;
    double pearson = 0.0;               ///< chi-square; 0 of several blocks
    double residualSumOfSquares = 0.0;  ///< of a binary response, otherwise 0
    double score = 0.0;
    double wald = 0.0;
    double sumOfCaseWeights = 0.0;
    int iterations = 0;  ///< of the last phase
};

/**
 * One fit. `parameters` and `fixedMask` go in and out of OptimizeLogitModel: slopes start where they stand, intercepts
 * and mortalities at `intercepts` and `mortality`, which receive the estimates. Copies are deep.
 */
struct LogitFit
{
    ParameterLayout layout;
    matrix<double> parameters;
    matrix<int> fixedMask;  ///< MaskMark
    std::vector<double> intercepts;
    std::vector<double> mortality;

    // At the point that the last evaluation was made at.
    matrix<double> gradient;
    matrix<double> hessian;

    matrix<double> covariance;  ///< inverse Hessian over the free parameters: negative definite
    matrix<double> variances;   ///< of the last Newton step; a cell not above 0: the parameter has none
    FitStatistics statistics;

    /** All parameters 0 and free, start values 0. */
    explicit LogitFit(ParameterLayout shape)
        : layout(shape),
          parameters(shape.Length(), 1),
          fixedMask(shape.Length(), 1),
          intercepts(static_cast<std::size_t>(shape.blocks)),
          mortality(static_cast<std::size_t>(shape.blocks)),
          gradient(shape.Length(), 1),
          hessian(shape.Length(), shape.Length()),
          covariance(shape.Length(), shape.Length()),
          variances(shape.Length(), 1)
    {
    }

    bool IsFree(int position) const
    {
        return fixedMask.vbget(position) == kFree;
    }

    /** Columns whose slope is free, by the mask of the first block. */
    int CountFreeColumns() const
    {
        int count = 0;
        for (int j = 1; j <= layout.columns; ++j) {
            count += IsFree(j) ? 1 : 0;
        }
        return count;
    }

    /** Frees or fixes the slope of a column in every block. */
    void MarkColumn(int column, MaskMark mark)
    {
        for (int k = 1; k <= layout.blocks; ++k) {
            fixedMask.vbset(layout.Slope(k, column), mark);
        }
    }

    /** Fixes the slope of a column at 0 in every block. */
    void RemoveColumn(int column)
    {
        MarkColumn(column, kFixed);
        for (int k = 1; k <= layout.blocks; ++k) {
            parameters.vbset(layout.Slope(k, column), 0.0);
        }
    }
};

/** Overwrites one fit by another of the same layout. */
void CopyFit(const LogitFit& source, LogitFit& target);

/** What each observation brings to the derivatives, n cells each: x times `slope` to the gradient, x x' times `curvature`
 * to the Hessian. Filled and read by LogitDerivatives. */
struct RowWeights
{
    std::vector<double> slope;
    std::vector<double> curvature;
    std::vector<double> third;           ///< third derivative of the log-likelihood, for Firth's correction
    std::vector<double> mortalitySlope;  ///< x times this to the Hessian of slope and mortality
    double mortalityGradient = 0.0;
    double mortalityCurvature = 0.0;
};

/** What is known of each observation at the point evaluated last. Vectors of n cells, one per block where nested. */
struct LogitWork
{
    std::vector<std::vector<double>> predictor;    ///< eta_k
    std::vector<std::vector<double>> probability;  ///< P_k, mortality included, clamped
    std::vector<double> reference;  ///< probability of the reference category; of several blocks alone
    std::vector<double> natural;    ///< F, without mortality and unclamped; of one block alone
    std::vector<double> density;    ///< dP / d eta; of one block alone, filled by LogitDerivatives

    std::vector<double> ones;  ///< the column of the intercept

    RowWeights rowWeights;  ///< scratch of LogitDerivatives

    LogitWork(int n, int blocks);
};

}  // namespace korvenrg::logistic
