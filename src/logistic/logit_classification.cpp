// Observed against predicted categories.
#include <cmath>

#include "logistic/logit_state.h"

namespace korvenrg::logistic {

namespace {

// Cells of a classification table of C categories: counts in C x C, then row totals and percent correct as columns,
// column totals as the last row.
struct ClassificationTable
{
    matrix<double>& cells;
    int categories;

    int Total() const
    {
        return categories + 1;
    }

    int Percent() const
    {
        return categories + 2;
    }

    void Clear()
    {
        for (int j = 1; j <= Percent(); ++j) {
            for (int i = 1; i <= Total(); ++i) {
                cells.vbset(i, j, 0.0);
            }
        }
    }

    void Add(int row, int column, double count)
    {
        cells.vbset(row, column, cells.vbget(row, column) + count);
    }

    double SumOfRow(int row) const
    {
        double sum = 0.0;
        for (int j = 1; j <= categories; ++j) {
            sum += cells.vbget(row, j);
        }
        return sum;
    }

    double SumOfColumn(int column) const
    {
        double sum = 0.0;
        for (int i = 1; i <= categories; ++i) {
            sum += cells.vbget(i, column);
        }
        return sum;
    }
};

double SumOfWeights(const LogitSample& sample)
{
    double sum = 0.0;
    for (int i = 0; i < sample.n; ++i) {
        sum += sample.caseWeights[i];
    }
    return sum;
}

double Share(double part, double whole)
{
    return whole == 0.0 ? kMissing : part / whole;
}

void ClassifyTwo(const LogitRun& run,
                 const LogitSample& sample,
                 const LogitWork& work,
                 ClassificationTable table)
{
    for (std::size_t i = 0; i < static_cast<std::size_t>(sample.n); ++i) {
        const int predicted = work.probability[0][i] >= run.options.cutPoint ? 2 : 1;
        table.Add(1, predicted, sample.caseWeights[i] - sample.response[i]);
        table.Add(2, predicted, sample.response[i]);
    }
    for (int i = 1; i <= table.categories; ++i) {
        const double total = table.SumOfRow(i);
        table.cells.vbset(i, table.Total(), total);
        table.cells.vbset(i, table.Percent(), Share(table.cells.vbget(i, i), total));
        table.cells.vbset(table.Total(), i, table.SumOfColumn(i));
    }
    const double total = SumOfWeights(sample);
    table.cells.vbset(table.Total(), table.Total(), total);
    table.cells.vbset(table.Total(),
                      table.Percent(),
                      Share(table.cells.vbget(1, 1) + table.cells.vbget(2, 2), total));
}

// Code of the category of a block: codes from 0 without the reference.
int CodeOfBlock(std::size_t k, int reference)
{
    const int code = static_cast<int>(k);
    return code < reference ? code : code + 1;
}

// The most probable category. The maximum starts at 0 with category 0; after each candidate the reference takes over
// where it is strictly larger.
int MostProbable(const LogitRun& run, const LogitWork& work, std::size_t i)
{
    double maximum = 0.0;
    int best = 0;
    for (std::size_t k = 0; k < work.probability.size(); ++k) {
        if (work.probability[k][i] > maximum) {
            maximum = work.probability[k][i];
            best = CodeOfBlock(k, run.options.referenceCategory);
        }
        if (work.reference[i] > maximum) {
            maximum = work.reference[i];
            best = run.options.referenceCategory;
        }
    }
    return best;
}

// Cells and row totals are weighted, column totals count observations. Pinned by LogitOddities.CountsOfThreeCategories.
void ClassifySeveral(const LogitRun& run,
                     const LogitSample& sample,
                     const LogitWork& work,
                     ClassificationTable table)
{
    for (std::size_t i = 0; i < static_cast<std::size_t>(sample.n); ++i) {
        const double observed = sample.response[i];
        if (!(observed >= 0.0 && observed < table.categories)) continue;
        const int row = static_cast<int>(observed) + 1;
        const int column = MostProbable(run, work, i) + 1;
        table.Add(row, column, sample.caseWeights[i]);
        table.Add(row, table.Total(), sample.caseWeights[i]);
        table.Add(table.Total(), column, 1.0);
    }
    double percents = 0.0;
    for (int i = 1; i <= table.categories; ++i) {
        const double total = table.cells.vbget(i, table.Total());
        if (total != 0.0) table.cells.vbset(i, table.Percent(), table.cells.vbget(i, i) / total);
        percents += table.cells.vbget(i, table.Percent());
    }
    table.cells.vbset(table.Total(), table.Total(), table.SumOfRow(table.Total()));
    table.cells.vbset(table.Total(), table.Percent(), percents / table.categories);
}

}  // namespace

void WriteClassification(LogitRun& run,
                         const LogitSample& sample,
                         const LogitWork& work,
                         matrix<double>& table)
{
    ClassificationTable classification{table, run.options.categories};
    classification.Clear();
    if (run.HasOneBlock()) {
        ClassifyTwo(run, sample, work, classification);
    } else {
        ClassifySeveral(run, sample, work, classification);
    }
}

}  // namespace korvenrg::logistic
