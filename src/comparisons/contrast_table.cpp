#include "comparisons/contrast_table.h"

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <limits>

#include "comparisons/category_involved.h"
#include "comparisons/contrast_columns.h"
#include "core/limits.h"
#include "kernel/linalg/products.h"
#include "kernel/linalg/vectors.h"

namespace korvenrg::comparisons {

namespace {

// A column of a table as a vector, without copying.
matrix<double> ColumnView(const matrix<double>& table, int column)
{
    return matrix<double>(
        table.rows,
        1,
        table.data + static_cast<std::size_t>(table.rows) * (static_cast<std::size_t>(column) - 1),
        true);
}

// Differences of combinations, and their variances. The combinations enter as their distances from the first one, so that
// what all categories share (a covariate at its mean) cancels before it is multiplied with the covariance.
class CombinationContrasts
{
  public:
    CombinationContrasts(const FittedModel& fit, const matrix<double>& combinations)
        : fit_(fit),
          combinations_(combinations),
          covariances_(fit.p, combinations.cols),
          contrast_(fit.p, 1),
          covariance_(fit.p, 1)
    {
        matrix<double> distances(combinations);
        for (int c = 1; c <= distances.cols; ++c) {
            for (int i = 1; i <= fit.p; ++i) {
                distances.vbset(i, c, combinations.vbget(i, c) - combinations.vbget(i, 1));
            }
        }
        matrix<double>* product = &covariances_;
        M_ProductAB(fit.covariance, fit.p, fit.p, &distances, distances.cols, product);
    }

    /** c'b with c = L_a - L_b; the intercept has 0 in c. */
    double Difference(int a, int b)
    {
        Subtract(combinations_, a, b, contrast_);
        return V_ProductTrV1V2(&contrast_, fit_.p, fit_.coefficients);
    }

    /** c'V c with the c of the last difference. */
    double Variance(int a, int b)
    {
        Subtract(covariances_, a, b, covariance_);
        return V_ProductTrV1V2(&contrast_, fit_.p, &covariance_);
    }

  private:
    void Subtract(const matrix<double>& table, int a, int b, matrix<double>& difference) const
    {
        matrix<double> first = ColumnView(table, a);
        matrix<double> second = ColumnView(table, b);
        matrix<double>* target = &difference;
        M_Sums1As2B(&first, fit_.p, 1, &second, 1.0, -1.0, target);
    }

    const FittedModel& fit_;
    const matrix<double>& combinations_;
    matrix<double> covariances_;  ///< p x K, V times the distances
    matrix<double> contrast_;
    matrix<double> covariance_;
};

// Writes the table from the top, as far as it has rows.
class ContrastWriter
{
  public:
    ContrastWriter(const FittedModel& fit,
                   const FactorCategories& categories,
                   const matrix<double>& combinations,
                   const matrix<double>& identifiers,
                   const ContrastTable& table)
        : contrasts_(fit, combinations), categories_(categories), identifiers_(identifiers), table_(table)
    {
    }

    bool HasRoom() const
    {
        return row_ < table_.rows;
    }

    void Write(int firstRank, int secondRank)
    {
        const int a = static_cast<int>(identifiers_.vbget(firstRank));
        const int b = static_cast<int>(identifiers_.vbget(secondRank));
        ++row_;
        Set(kContrastFirstRank, firstRank);
        Set(kContrastSecondRank, secondRank);
        Set(kContrastFirstId, a);
        Set(kContrastSecondId, b);
        const bool both = categories_.HasMean(a) && categories_.HasMean(b);
        const double difference = both ? contrasts_.Difference(a, b) : kMissing;
        const double variance = both ? contrasts_.Variance(a, b) : kMissing;
        Set(kContrastDifference, FiniteOrMissing(difference));
        Set(kContrastVariance, FiniteOrMissing(variance));
        Set(kContrastStandardised,
            variance > kEps ? FiniteOrMissing(difference / std::sqrt(variance)) : kMissing);
    }

  private:
    void Set(int column, double value)
    {
        table_.cells->vbset(row_, column, value);
    }

    CombinationContrasts contrasts_;
    const FactorCategories& categories_;
    const matrix<double>& identifiers_;
    const ContrastTable& table_;
    int row_ = 0;
};

}  // namespace

void WriteRankedContrasts(const FittedModel& fit,
                          const FactorCategories& categories,
                          const matrix<double>& combinations,
                          const matrix<double>& identifiers,
                          int leading,
                          const ContrastTable& table)
{
    if (table.rows <= 0) return;
    ContrastWriter writer(fit, categories, combinations, identifiers, table);
    for (int i = 1; i < leading; ++i) {
        for (int j = i + 1; j <= leading && writer.HasRoom(); ++j) {
            writer.Write(i, j);
        }
    }
    for (int i = 1; i < categories.count; ++i) {
        for (int j = std::max(i, leading) + 1; j <= categories.count && writer.HasRoom(); ++j) {
            writer.Write(i, j);
        }
    }
}

}  // namespace korvenrg::comparisons

// A row of the contrast matrix C has +1 at parameter i and -1 at parameter j; C b and the diagonal of C V C' then are two
// differences of cells, and the other cells of C V C', as many as the square of the contrasts, are not wanted.
void cGetContrastsStatVar(int p,
                          [[maybe_unused]] int NbParams,
                          [[maybe_unused]] int Interlevel,
                          int FactID,
                          matrix<int>* FactSubParents,
                          matrix<double>* iStats,
                          matrix<double>* iVarCov,
                          int iNbContrasts,
                          int* NbContrasts,
                          matrix<double>* oContrastsStats)
{
    using namespace korvenrg::comparisons;
    const ColumnBlock block = BlockOf(FactID, *FactSubParents, p);
    const std::int64_t parameters = block.last - block.first + 1;
    const std::int64_t contrasts = parameters * (parameters - 1) / 2;
    *NbContrasts = static_cast<int>(std::min<std::int64_t>(contrasts, std::numeric_limits<int>::max()));

    int row = 0;
    for (int i = block.first; i < block.last; ++i) {
        for (int j = i + 1; j <= block.last && row < iNbContrasts; ++j) {
            ++row;
            const double ofFirst = iVarCov->vbget(i, i) - iVarCov->vbget(j, i);
            const double ofSecond = iVarCov->vbget(i, j) - iVarCov->vbget(j, j);
            oContrastsStats->vbset(row, kContrastDifference, iStats->vbget(i) - iStats->vbget(j));
            oContrastsStats->vbset(row, kContrastVariance, ofFirst - ofSecond);
            oContrastsStats->vbset(row, kContrastFirstRank, i - block.first + 1);
            oContrastsStats->vbset(row, kContrastSecondRank, j - block.first + 1);
        }
    }
}
