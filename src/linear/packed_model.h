/** A model on the packed correlations: what it explains, and what can be swept into it. */
#pragma once

#include <cmath>

#include "core/limits.h"
#include "kernel/linalg/sweep.h"

namespace korvenrg::linear {

/** The packed vector of p columns and a response with the scale of its residual term. */
struct PackedModel
{
    int p;
    double tol;  ///< tolerance that a column must exceed
    double c;    ///< 1.0 with an estimated intercept, 0.0 with a fixed one
    double S;    ///< sum of weights
    double sY;   ///< standard deviation of the response
    matrix<double>* packed;

    double Cell(int i, int j) const
    {
        return packed->vbget(static_cast<int>(linalg::PackedPosition(i, j)));
    }

    /** 1 - R squared of the model swept in. */
    double ResidualTerm() const
    {
        return Cell(p + 1, p + 1);
    }

    double Sse(double r) const
    {
        return (S - 1.0) * r * sY * sY;
    }

    /** Degrees of freedom of the error with q columns in the model. */
    double ErrorDf(double q) const
    {
        return S - q - c;
    }

    bool Passes(int column) const
    {
        return OLSCheckIfIn(packed, p, column, tol) > tol;
    }

    void Sweep(int column) const
    {
        M_Sweep(packed, p + 1, column);
    }
};

/** AIC and SBC of a model of q columns; the missing marker for both when nothing is left to explain. */
struct InformationCriteria
{
    double aic;
    double sbc;
};

inline InformationCriteria InformationCriteriaOf(const PackedModel& model, double q, double sse)
{
    if (!(sse > kEps)) return {kMissing, kMissing};
    const double deviance = std::log(sse / model.S) * model.S;
    return {(q + model.c) * 2.0 + deviance, std::log(model.S) * (q + model.c) + deviance};
}

}  // namespace korvenrg::linear
