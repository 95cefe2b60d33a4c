#include "linear/fit_updates.h"

#include "core/limits.h"
#include "kernel/linalg/columns.h"
#include "kernel/linalg/moments.h"
#include "linear/ols_tables.h"

namespace {

using namespace korvenrg;
using namespace korvenrg::linear;

double MeanOfColumn(const matrix<double>& table, int n, int column)
{
    double sum = 0.0;
    for (int i = 1; i <= n; ++i) {
        sum += table.vbget(i, column);
    }
    return sum / n;
}

// Sum over the columns of each row.
matrix<double> RowSums(const matrix<double>& table, int n, int p)
{
    matrix<double> sums(n, 1);
    for (int j = 1; j <= p; ++j) {
        for (int i = 1; i <= n; ++i) {
            sums.vbset(i, sums.vbget(i) + table.vbget(i, j));
        }
    }
    return sums;
}

// The number of a category, truncated; 0 for what no integer holds.
int CategoryNumber(double cell)
{
    return cell >= 0.0 && cell < 2147483648.0 ? static_cast<int>(cell) : 0;
}

// Columns of the table of two groups.
enum GroupCol
{
    kInFirst = 1,
    kInSecond,
    kResponse,
    kGroupCols = kResponse
};

// The observations of two categories, one below the other; those beyond `rows` are left out.
matrix<double> TwoGroups(int n,
                         int rows,
                         int first,
                         int second,
                         const matrix<double>& x,
                         const matrix<double>& y)
{
    matrix<double> groups(rows, kGroupCols);
    int row = 1;
    const auto add = [&](int i, GroupCol group) {
        if (row <= rows) {
            groups.vbset(row, group, 1.0);
            groups.vbset(row, kResponse, y.vbget(i));
        }
        row += 1;
    };
    for (int i = 1; i <= n && row <= rows; ++i) {
        if (x.vbget(i, first) == 1.0) add(i, kInFirst);
        if (x.vbget(i, second) == 1.0) add(i, kInSecond);
    }
    return groups;
}

// Variance of the difference of two groups of `size` rows each; missing when they leave no degree of freedom or the
// first group is empty or full.
double VarianceOfDifference(const matrix<double>& groups, int size, const matrix<double>& w)
{
    const int rows = 2 * size;
    // The weights are those of the leading observations, whichever observations the two groups hold. It stays:
    // ModifyStdDev.TwoGroupsAlone.
    const linalg::RowWeights weights(&w, rows, nullptr);
    const linalg::Moments moments =
        linalg::CorrelationMoments(linalg::ColumnsOf(groups, rows, kGroupCols), rows, weights.Data());
    const double spread = moments.variance[kInFirst - 1];
    if (size <= 1 || spread == 0.0) return kMissing;
    const double rho = moments.correlation[(kResponse - 1) * kGroupCols + kInSecond - 1];
    return moments.variance[kResponse - 1] * (1.0 - rho * rho) / spread / (rows - 2);
}

}  // namespace

int UpdateGOF(matrix<double>* ANOVATable, matrix<double>* FitCoeffs)
{
    const double df = FitCoeffs->vbget(kCompletedDf);
    const double rmse = FitCoeffs->vbget(kCompletedPressRmse);
    const double press = df > 0.0 && !IsMissing(rmse) ? rmse * rmse * df : kMissing;
    FitCoeffs->vbset(kCompletedPress, press);

    const double total = ANOVATable->vbget(kAnovaTotal, kAnovaSumOfSquares);
    FitCoeffs->vbset(kCompletedQSquared, total > 0.0 && !IsMissing(press) ? 1.0 - press / total : kMissing);
    return 0;
}

void NoFixedComput(int n, int p, matrix<double>* iY, matrix<double>* oBetTable, matrix<double>* oResMat)
{
    for (int j = 1; j <= p; ++j) {
        const double mean = MeanOfColumn(*iY, n, j);
        for (int i = 1; i <= n; ++i) {
            oResMat->vbset(i, j, iY->vbget(i, j) - mean);
        }
    }

    const matrix<double> sums = RowSums(*iY, n, p);
    const double mean = MeanOfColumn(sums, n, 1);
    double total = 0.0;
    for (int i = 1; i <= n; ++i) {
        total += (sums.vbget(i) - mean) * (sums.vbget(i) - mean);
    }
    oBetTable->vbset(1, kBetweenDf, n - 1.0);
    oBetTable->vbset(1, kBetweenSumOfSquares, total);
}

void ModifyStdDev(int n,
                  int NbContrasts,
                  int p,
                  matrix<double>* ioContrastsStat,
                  matrix<double>* iX,
                  matrix<double>* iY,
                  matrix<double>* iW)
{
    const int size = n > 0 && p > 0 ? n / p : 0;  // of one group of a balanced table
    for (int c = 1; c <= NbContrasts; ++c) {
        const int first = CategoryNumber(ioContrastsStat->vbget(c, kContrastFirstCategory));
        const int second = CategoryNumber(ioContrastsStat->vbget(c, kContrastSecondCategory));
        const matrix<double> groups = TwoGroups(n, 2 * size, first, second, *iX, *iY);
        ioContrastsStat->vbset(c, kContrastVariance, VarianceOfDifference(groups, size, *iW));
    }
}
