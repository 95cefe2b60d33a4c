#include "logistic/roc_curve.h"

#include <algorithm>

#include "core/limits.h"
#include "kernel/linalg/columns.h"
#include "kernel/linalg/sorting.h"
#include "logistic/logit_state.h"

namespace korvenrg::logistic {

namespace {

// Observations in the order of their scores.
struct SortedClasses
{
    matrix<double> codes;
    matrix<double> weights;
};

matrix<double> CopyOfColumn(const matrix<double>& source, int n, int column)
{
    const linalg::ColumnsOf columns(source, n, column);
    matrix<double> copy(n, 1);
    std::copy_n(columns[static_cast<std::size_t>(column - 1)], n, copy.data);
    return copy;
}

SortedClasses SortByScore(const matrix<double>& scores,
                          const matrix<double>& codes,
                          const matrix<double>& weights,
                          int n)
{
    matrix<double> keys = CopyOfColumn(scores, n, kScoreCol);
    SortedClasses sorted{CopyOfColumn(codes, n, 1), CopyOfColumn(weights, n, 1)};
    SortQ(&sorted.codes, n, 1, 1, n, &keys, &sorted.weights, 1, kFalse, kTrue);
    return sorted;
}

void StartTable(matrix<double>& table, int n)
{
    for (int row = 1; row <= n + 1; ++row) {
        const double start = row == 1 ? 1.0 : 0.0;
        table.vbset(row, kRocFalsePositives, start);
        table.vbset(row, kRocSensitivity, start);
    }
}

}  // namespace

void WriteRocCurve(LogitRun& run)
{
    if (!run.HasOneBlock()) return;
    const int n = run.data.n;
    const int total = run.options.categories + 1;
    matrix<double> scores(n, kScoreCol);
    std::copy_n(run.work.probability[0].begin(), n, scores.data + n);
    matrix<double> codes(n, 1, run.data.response.data(), true);
    matrix<double> weights(n, 1, run.data.caseWeights.data(), true);
    ROCCurve(&scores,
             &codes,
             &weights,
             n,
             run.out.classification->vbget(1, total),
             run.out.classification->vbget(2, total),
             AsFlag(run.model.form == kBinary),
             run.out.roc,
             *run.out.areaUnderCurve);
}

}  // namespace korvenrg::logistic

// The curve:
//   - observations in the order of their scores
//   - from (1, 1) one step down for each observation
//   - the area is that of the rectangles below the steps
void ROCCurve(matrix<double>* scores,
              matrix<double>* codes,
              matrix<double>* weights,
              int n,
              double Total1,
              double Total2,
              short flag,
              matrix<double>* table,
              double& area)
{
    using namespace korvenrg;
    using namespace korvenrg::logistic;
    const bool binary = flag == kTrue;
    const int rows = std::max(n, 0);
    const SortedClasses sorted = SortByScore(*scores, *codes, *weights, rows);
    StartTable(*table, rows);
    area = 0.0;
    for (int row = 1; row <= rows; ++row) {
        // A skipped row leaves (0, 0) behind, and the next step starts there. Pinned by RocCurve.SkipsMissingClasses.
        const double code = sorted.codes.vbget(row);
        if (!(code > kMissing)) continue;
        const double weight = sorted.weights.vbget(row);
        const double events = binary ? code * weight : code;
        const double others = binary ? (1.0 - code) * weight : weight - code;
        const double falsePositives = table->vbget(row, kRocFalsePositives);
        const double nextFalsePositives = falsePositives - others / Total1;
        const double nextSensitivity = table->vbget(row, kRocSensitivity) - events / Total2;
        table->vbset(row + 1, kRocFalsePositives, nextFalsePositives);
        table->vbset(row + 1, kRocSensitivity, nextSensitivity);
        area += (falsePositives - nextFalsePositives) * nextSensitivity;
    }
}
