/** All distributions and the functions beneath them. */
#pragma once

#include "kernel/distributions/binomial.h"
#include "kernel/distributions/chi_square.h"
#include "kernel/distributions/comparison_laws.h"
#include "kernel/distributions/fisher.h"
#include "kernel/distributions/gamma_functions.h"
#include "kernel/distributions/hypergeometric.h"
#include "kernel/distributions/incomplete_beta.h"
#include "kernel/distributions/incomplete_gamma.h"
#include "kernel/distributions/normal.h"
#include "kernel/distributions/student.h"
