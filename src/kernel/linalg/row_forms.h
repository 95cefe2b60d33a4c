/** Quantities of each row of a table: linear combinations and quadratic forms. */
#pragma once

#include "kernel/linalg/columns.h"

namespace korvenrg::linalg {

/** out(r) = constant + sum over the columns of x_j(r) * coefficients[j], for n rows. */
void LinearCombination(Columns columns, int n, const double* coefficients, double constant, double* out);

/**
 * out(r) = z' M z with z the r-th row of the columns, centred.
 *
 * M is given by columns, q x q. When it is symmetric and positive definite the form is a sum of squares over
 * its Cholesky factor, which halves the work and cannot cancel; any other M (the symmetric part counts) is
 * summed as it stands.
 *
 * @param centres  one per column
 */
void QuadraticForms(Columns columns, int n, const double* centres, const double* form, double* out);

}  // namespace korvenrg::linalg
