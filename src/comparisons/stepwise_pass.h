/** The pass of the stepwise procedures over the contrast table. */
#pragma once

#include "comparisons/comparison_run.h"

namespace korvenrg::comparisons {

/**
 * Judges the rows of a table whose differences are standardised, in their order, by the procedure of Newman and Keuls,
 * of Duncan, or REGWQ: critical value, p-value, level and verdict of each row. A row that spans fewer means than the
 * barrier of the last non-significant row is not tested: missing markers, and not significant.
 */
void JudgeStepwise(const ComparisonRun& run);

}  // namespace korvenrg::comparisons
