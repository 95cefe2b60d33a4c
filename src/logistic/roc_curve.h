/** The ROC curve of a score against two classes. */
#pragma once

#include "core/matrix.h"

namespace korvenrg::logistic {

/** Columns of oROCTable; row 1 is the threshold below all scores, row i + 1 the one at the i-th score. */
enum RocCol
{
    kRocFalsePositives = 1,
    kRocSensitivity = 2
};

/** Column of the score matrix that is read. */
inline constexpr int kScoreCol = 2;

}  // namespace korvenrg::logistic

/**
 * ROC curve and its area. The threshold rises through the sorted scores; each observation takes its share off the
 * false-positive rate and the sensitivity. The area adds up rectangles below each step. Equal scores are not grouped:
 * they count one by one in the order of their rows. An observation whose class is missing (or NaN) is skipped; its row
 * of the table is (0, 0), from which the next observation goes on.
 *
 * Source of the method: Hanley and McNeil 1982, "The meaning and use of the area under a receiver operating
 * characteristic (ROC) curve".
 *
 * @param scores  n x 2 or more; column 2 is the score of class 1. Not changed
 * @param codes   n, 0 or 1; without the flag the number of events among the weight's trials. Not changed
 * @param weights n, case weights or trials. Not changed
 * @param Total1  weight of class 0; 0 gives cells that are not finite
 * @param Total2  weight of class 1
 * @param flag    -1: the codes are binary
 * @param table   n + 1 x 2, RocCol
 * @param area    area under the curve; 0 for n below 1
 */
KORVENRG_API void ROCCurve(matrix<double>* scores,
                           matrix<double>* codes,
                           matrix<double>* weights,
                           int n,
                           double Total1,
                           double Total2,
                           short flag,
                           matrix<double>* table,
                           double& area);
