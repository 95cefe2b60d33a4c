#include "logistic/hosmer_lemeshow.h"

#include <algorithm>
#include <array>
#include <cmath>

#include "core/limits.h"
#include "kernel/distributions/chi_square.h"
#include "kernel/linalg/columns.h"
#include "kernel/linalg/sorting.h"

namespace korvenrg::logistic {

namespace {

constexpr int kMostGroups = 11;
constexpr double kWantedGroups = 10.0;

// Sums of a group, or of the rows gathered for the next one.
struct GroupSums
{
    double weight = 0.0;
    double observed = 0.0;
    double expected = 0.0;

    void Add(const GroupSums& row)
    {
        weight += row.weight;
        observed += row.observed;
        expected += row.expected;
    }
};

struct Groups
{
    std::array<GroupSums, kMostGroups> sums;
    int count = 0;

    void Close(const GroupSums& group)
    {
        if (count == kMostGroups) return;
        sums[static_cast<std::size_t>(count)] = group;
        ++count;
    }
};

// Rows in the order of their expected values. The weights are not sorted with them: weight i counts for sorted row i.
// Pinned by HosmerLemeshow.WeightsStayInStorageOrder.
struct SortedRows
{
    linalg::ColumnsOf values;
    linalg::ColumnsOf weights;

    GroupSums operator()(int row) const
    {
        const auto i = static_cast<std::size_t>(row - 1);
        return {weights[0][i], values[kHosmerObserved - 1][i], values[kHosmerExpected - 1][i]};
    }
};

matrix<double> SortedCopy(const matrix<double>& source, int n)
{
    const linalg::ColumnsOf columns(source, n, kHosmerExpected);
    matrix<double> copy(n, kHosmerExpected);
    for (std::size_t j = 0; j < kHosmerExpected; ++j) {
        std::copy_n(columns[j], n, copy.data + j * static_cast<std::size_t>(n));
    }
    SortQMatrixCol(&copy, n, kHosmerExpected, kHosmerExpected, 1, n, kFalse);
    return copy;
}

// A tenth of the sum of weights, rounded to a whole number.
double GroupSizeOf(const linalg::ColumnsOf& weights, int n)
{
    double sum = 0.0;
    for (std::size_t i = 0; i < static_cast<std::size_t>(n); ++i) {
        sum += weights[0][i];
    }
    return std::trunc(sum / kWantedGroups + 0.5);
}

Groups GatherGroups(const SortedRows& rows, int n, double size)
{
    Groups groups;
    GroupSums running = rows(1);
    for (int i = 2; i < n; ++i) {
        const GroupSums row = rows(i);
        const bool fits = running.weight + row.weight <= size;
        const bool tied = row.expected - rows(i - 1).expected <= kEps;
        if (fits || tied) {
            running.Add(row);
        } else if (running.weight + row.weight / 2.0 > size) {
            groups.Close(running);
            running = row;
        } else {
            running.Add(row);
            groups.Close(running);
            running = {};
        }
    }
    if (n == 1) {
        groups.Close(running);
        return groups;
    }
    const GroupSums last = rows(n);
    const bool standsAlone = running.weight + last.weight > size && running.weight + last.weight / 2.0 > size;
    if (standsAlone) {
        groups.Close(running);
        running = {};
    }
    running.Add(last);
    groups.Close(running);
    return groups;
}

// Sum of (o - e)^2 / ((1 - e/n) e) with whole n.
double ChiSquareOf(const Groups& groups)
{
    double chiSquare = 0.0;
    for (int k = 0; k < groups.count; ++k) {
        const GroupSums& group = groups.sums[static_cast<std::size_t>(k)];
        if (!(group.expected > kEps)) continue;
        const double difference = group.observed - group.expected;
        const double share = group.expected / std::trunc(group.weight);
        chiSquare += difference * difference / ((1.0 - share) * group.expected);
    }
    return chiSquare;
}

}  // namespace

}  // namespace korvenrg::logistic

// The test:
//   - rows in the order of their expected values
//   - groups of about a tenth of the weight
//   - observed against expected sums of the groups
void HLTest(int n, matrix<double>* iProba, matrix<double>* iWc, matrix<double>* oTestTable)
{
    using namespace korvenrg;
    using namespace korvenrg::logistic;
    Groups groups;
    if (n > 0) {
        const matrix<double> sorted = SortedCopy(*iProba, n);
        const SortedRows rows{{sorted, n, kHosmerExpected}, {*iWc, n, 1}};
        groups = GatherGroups(rows, n, GroupSizeOf(rows.weights, n));
    }
    const double chiSquare = ChiSquareOf(groups);
    const double df = groups.count - 2;
    const bool tested = chiSquare > kGuard;
    oTestTable->vbset(kHosmerStatistic, tested ? chiSquare : kMissing);
    oTestTable->vbset(kHosmerDf, df);
    oTestTable->vbset(kHosmerPValue, tested && df > 0 ? pValChiSq(chiSquare, df) : kMissing);
}
