#include "kernel/contingency/contingency_statistics.h"

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <vector>

#include "core/limits.h"
#include "kernel/distributions/chi_square.h"

namespace {

using namespace korvenrg::contingency;

/** A table without empty rows and columns. */
struct Counts
{
    std::size_t r = 0;
    std::size_t c = 0;
    std::vector<double> cells;  ///< by columns
    std::vector<double> rowTotals;
    std::vector<double> columnTotals;
    double n = 0.0;
    bool valid = true;  ///< no cell is negative, infinite or NaN

    double operator()(std::size_t i, std::size_t j) const
    {
        return cells[j * r + i];
    }
    double Expected(std::size_t i, std::size_t j) const
    {
        return rowTotals[i] * (columnTotals[j] / n);
    }
    bool TwoByTwo() const
    {
        return r == 2 && c == 2;
    }
    double DegreesOfFreedom() const
    {
        return (static_cast<double>(r) - 1.0) * (static_cast<double>(c) - 1.0);
    }
};

double CellOf(const matrix<double>& table, int i, int j)
{
    return i <= table.rows && j <= table.cols ? table.vbget(i, j) : 0.0;
}

std::vector<int> LinesInUse(const std::vector<double>& totals)
{
    std::vector<int> lines;
    for (std::size_t k = 0; k < totals.size(); ++k) {
        if (totals[k] > 0.0) lines.push_back(static_cast<int>(k) + 1);
    }
    return lines;
}

Counts ReadCounts(const matrix<double>& table, int r, int c)
{
    Counts counts;
    counts.rowTotals.resize(static_cast<std::size_t>(std::max(r, 0)));
    counts.columnTotals.resize(static_cast<std::size_t>(std::max(c, 0)));
    for (int j = 1; j <= c; ++j) {
        for (int i = 1; i <= r; ++i) {
            const double cell = CellOf(table, i, j);
            counts.valid = counts.valid && cell >= 0.0 && std::isfinite(cell);
            counts.rowTotals[static_cast<std::size_t>(i - 1)] += cell;
            counts.columnTotals[static_cast<std::size_t>(j - 1)] += cell;
            counts.n += cell;
        }
    }
    if (!counts.valid) return counts;
    const std::vector<int> rows = LinesInUse(counts.rowTotals);
    const std::vector<int> columns = LinesInUse(counts.columnTotals);
    for (const int j : columns) {
        for (const int i : rows) {
            counts.cells.push_back(CellOf(table, i, j));
        }
    }
    std::erase(counts.rowTotals, 0.0);
    std::erase(counts.columnTotals, 0.0);
    counts.r = rows.size();
    counts.c = columns.size();
    return counts;
}

// The sum of term(observed, expected) over the cells.
template <typename Term>
double SumOverCells(const Counts& counts, const Term& term)
{
    double sum = 0.0;
    for (std::size_t j = 0; j < counts.c; ++j) {
        for (std::size_t i = 0; i < counts.r; ++i) {
            sum += term(counts(i, j), counts.Expected(i, j));
        }
    }
    return sum;
}

double PearsonChiSquare(const Counts& counts)
{
    if (counts.DegreesOfFreedom() == 0.0) return 0.0;
    return SumOverCells(counts, [](double o, double e) { return (o - e) * (o - e) / e; });
}

double LikelihoodRatio(const Counts& counts)
{
    if (counts.DegreesOfFreedom() == 0.0) return 0.0;
    return 2.0 * SumOverCells(counts, [](double o, double e) { return o > 0.0 ? o * std::log(o / e) : 0.0; });
}

double YatesChiSquare(const Counts& counts)
{
    return SumOverCells(counts, [](double o, double e) {
        const double distance = std::max(std::fabs(o - e) - 0.5, 0.0);
        return distance * distance / e;
    });
}

double Ratio(double numerator, double denominator)
{
    return denominator > 0.0 ? numerator / denominator : korvenrg::kMissing;
}

double RootOfRatio(double numerator, double denominator)
{
    return denominator > 0.0 ? std::sqrt(numerator / denominator) : korvenrg::kMissing;
}

double Phi(const Counts& counts, double pearson)
{
    const double size = std::sqrt(pearson / counts.n);
    const bool negative = counts.TwoByTwo() && counts(0, 0) * counts(1, 1) < counts(0, 1) * counts(1, 0);
    return negative ? -size : size;
}

double SumOfSquares(const std::vector<double>& totals)
{
    double sum = 0.0;
    for (const double total : totals) {
        sum += total * total;
    }
    return sum;
}

/** What predicting one variable from the other gains. */
struct Prediction
{
    double bestKnowing = 0.0;   ///< observations right when the likeliest category of each line is named
    double bestBlind = 0.0;     ///< when the likeliest category of all is
    double drawnKnowing = 0.0;  ///< when categories are drawn with the frequencies of each line
    double drawnBlind = 0.0;    ///< with the frequencies of all
};

// Predicts the variable with `targetTotals` from the other one; cell(k, m) is target k on line m.
template <typename Cell>
Prediction Predict(const std::vector<double>& targetTotals,
                   const std::vector<double>& lineTotals,
                   double n,
                   const Cell& cell)
{
    Prediction prediction;
    for (std::size_t m = 0; m < lineTotals.size(); ++m) {
        double best = 0.0;
        for (std::size_t k = 0; k < targetTotals.size(); ++k) {
            best = std::max(best, cell(k, m));
            prediction.drawnKnowing += cell(k, m) * (cell(k, m) / lineTotals[m]);
        }
        prediction.bestKnowing += best;
    }
    prediction.bestBlind = *std::max_element(targetTotals.begin(), targetTotals.end());
    prediction.drawnBlind = SumOfSquares(targetTotals) / n;
    return prediction;
}

void WriteValue(matrix<double>& stats, Statistic row, double value)
{
    stats.vbset(row, kValue, value);
}

void WriteTest(matrix<double>& stats, Statistic row, double value, double df)
{
    stats.vbset(row, kValue, value);
    stats.vbset(row, kDegreesOfFreedom, df);
    if (df > 0.0) stats.vbset(row, kPValue, pValChiSq(value, df));
}

void WriteChiSquareFamily(const Counts& counts, matrix<double>& stats)
{
    const double df = counts.DegreesOfFreedom();
    const double pearson = PearsonChiSquare(counts);
    const double rowSteps = static_cast<double>(counts.r) - 1.0;
    const double columnSteps = static_cast<double>(counts.c) - 1.0;
    WriteTest(stats, kPearson, pearson, df);
    WriteTest(stats, kLikelihoodRatio, LikelihoodRatio(counts), df);
    if (counts.TwoByTwo()) WriteTest(stats, kYates, YatesChiSquare(counts), df);
    WriteValue(stats, kPhi, Phi(counts, pearson));
    WriteValue(stats, kContingency, std::sqrt(pearson / (pearson + counts.n)));
    WriteValue(stats, kCramer, RootOfRatio(pearson, counts.n * std::min(rowSteps, columnSteps)));
    WriteValue(stats, kTschuprow, RootOfRatio(pearson, counts.n * std::sqrt(df)));
}

void WritePredictions(const Counts& counts, matrix<double>& stats)
{
    const double n = counts.n;
    const Prediction rows =
        Predict(counts.rowTotals, counts.columnTotals, n, [&](std::size_t k, std::size_t m) {
            return counts(k, m);
        });
    const Prediction columns =
        Predict(counts.columnTotals, counts.rowTotals, n, [&](std::size_t k, std::size_t m) {
            return counts(m, k);
        });
    const double rowGain = rows.bestKnowing - rows.bestBlind;
    const double columnGain = columns.bestKnowing - columns.bestBlind;
    const double rowErrors = n - rows.bestBlind;
    const double columnErrors = n - columns.bestBlind;
    const bool rowsVary = counts.r > 1;
    const bool columnsVary = counts.c > 1;
    const auto write = [&](Statistic row, bool defined, double gain, double errors) {
        if (defined) WriteValue(stats, row, Ratio(gain, errors));
    };
    write(kLambdaRows, rowsVary, rowGain, rowErrors);
    write(kLambdaColumns, columnsVary, columnGain, columnErrors);
    write(kLambdaSymmetric, rowsVary || columnsVary, rowGain + columnGain, rowErrors + columnErrors);
    write(kTauRows, rowsVary, rows.drawnKnowing - rows.drawnBlind, n - rows.drawnBlind);
    write(kTauColumns, columnsVary, columns.drawnKnowing - columns.drawnBlind, n - columns.drawnBlind);
}

// P and Q are the weights of the pairs of observations in the same and in opposite order by both variables.
void WriteOrderMeasures(const Counts& counts, matrix<double>& stats)
{
    double same = 0.0;
    double opposite = 0.0;
    std::vector<double> before(counts.r);  // row sums of the columns before the current one
    for (std::size_t j = 0; j < counts.c; ++j) {
        double above = 0.0;
        double below = 0.0;
        for (const double sum : before) {
            below += sum;
        }
        for (std::size_t i = 0; i < counts.r; ++i) {
            below -= before[i];
            same += counts(i, j) * above;
            opposite += counts(i, j) * below;
            above += before[i];
        }
        for (std::size_t i = 0; i < counts.r; ++i) {
            before[i] += counts(i, j);
        }
    }
    WriteValue(stats, kGamma, Ratio(same - opposite, same + opposite));
    const double n = counts.n;
    const double rowPairs = (n * n - SumOfSquares(counts.rowTotals)) / 2.0;
    const double columnPairs = (n * n - SumOfSquares(counts.columnTotals)) / 2.0;
    if (counts.r < 2 || counts.c < 2) return;
    WriteValue(stats, kTauB, Ratio(same - opposite, std::sqrt(rowPairs * columnPairs)));
}

}  // namespace

int cGetContingencyStats(const matrix<double>* table, int r, int c, matrix<double>*& stats)
{
    if (stats == nullptr) {
        stats = new matrix<double>(kStatistics, kStatisticColumns);
    } else if (stats->rows != kStatistics || stats->cols != kStatisticColumns) {
        stats->Redim(kStatistics, kStatisticColumns);
    }
    std::fill_n(stats->data, stats->total, korvenrg::kMissing);
    const Counts counts = ReadCounts(*table, r, c);
    if (!counts.valid || !(counts.n > 0.0) || !std::isfinite(counts.n)) return kBadContingencyTable;
    WriteChiSquareFamily(counts, *stats);
    WritePredictions(counts, *stats);
    WriteOrderMeasures(counts, *stats);
    return kStatisticsDone;
}
