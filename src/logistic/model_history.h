/** The rows of oModels; columns in logit_tables.h. */
#pragma once

#include <array>

#include "logistic/logit_model.h"
#include "logistic/logit_tables.h"

namespace korvenrg::logistic {

/** What is known of one model, by the codes of iCriterionType: -2 log-likelihood, p-values of likelihood ratio, score and
 * Wald test, AIC, Schwarz's criterion. The smaller the better. */
using ModelStatistics = std::array<double, 6>;

/** What a row charges a model with. */
struct ModelPenalty
{
    double df;       ///< of the tests; at 0 or below their p-values are missing
    double aic;      ///< added to -2 log-likelihood
    double schwarz;  ///< times the logarithm of the sum of the case weights
};

ModelStatistics StatisticsOf(const FitStatistics& fit, double nullLogLikelihood, const ModelPenalty& penalty);

/** Rows count from 1; what the table has no row for is dropped. */
class ModelHistory
{
  public:
    ModelHistory(matrix<double>& table, int p) : table_(table), p_(p) {}

    void Set(int row, ModelsCol column, double value);
    void Set(int row, ModelsOffset offset, double value);

    /** The mask of the first block, in p + 2 cells. */
    void SetMask(int row, const LogitFit& fit);

    void SetStatistics(int row, const ModelStatistics& statistics);

    int Rows() const
    {
        return table_.rows;
    }

  private:
    void SetCell(int row, int column, double value);

    matrix<double>& table_;
    int p_;
};

}  // namespace korvenrg::logistic
