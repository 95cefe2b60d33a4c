#include "comparisons/category_means_table.h"

#include <algorithm>
#include <cmath>
#include <vector>

#include "core/limits.h"
#include "kernel/distributions/student.h"
#include "kernel/linalg/copies.h"
#include "kernel/linalg/sorting.h"
#include "kernel/linalg/vectors.h"

namespace korvenrg::comparisons {

namespace {

// One column of the combinations: the parameters with a coefficient other than 0.
struct Term
{
    int parameter;
    double l;
};

std::vector<Term> TermsOf(const matrix<double>& combinations, int p, int category)
{
    std::vector<Term> terms;
    for (int i = 1; i <= p; ++i) {
        const double l = combinations.vbget(i, category);
        if (l != 0.0) terms.push_back({i, l});
    }
    return terms;
}

double MeanOf(const FittedModel& fit, const std::vector<Term>& terms)
{
    double sum = 0.0;
    for (const Term& term : terms) {
        sum += term.l * fit.coefficients->vbget(term.parameter);
    }
    return sum + fit.coefficients->vbget(fit.p + 1);
}

// V_pp + sum of l_i^2 V_ii + 2 sum over i < j of l_i l_j V_ij + 2 sum of l_i V_ip, p the intercept.
double VarianceOf(const FittedModel& fit, const std::vector<Term>& terms)
{
    const matrix<double>& v = *fit.covariance;
    const int intercept = fit.p + 1;
    double squares = 0.0;
    double products = 0.0;
    double withIntercept = 0.0;
    for (std::size_t j = 0; j < terms.size(); ++j) {
        const Term& term = terms[j];
        squares += term.l * term.l * v.vbget(term.parameter, term.parameter);
        for (std::size_t i = 0; i < j; ++i) {
            products += terms[i].l * term.l * v.vbget(terms[i].parameter, term.parameter);
        }
        withIntercept += term.l * v.vbget(term.parameter, intercept);
    }
    return v.vbget(intercept, intercept) + squares + 2.0 * products + 2.0 * withIntercept;
}

}  // namespace

int FactorCategories::CountRemoved() const
{
    int removedCategories = 0;
    for (int c = 1; c <= count; ++c) {
        if (removed->vbget(c) > 0) ++removedCategories;
    }
    return removedCategories;
}

int CategoryCountOf(const matrix<int>* nbSub, int factor)
{
    return std::max(nbSub->vbget(factor), 0);
}

void CategoryMeansTable(const FittedModel& fit,
                        const FactorCategories& categories,
                        const matrix<double>& combinations,
                        matrix<double>& table)
{
    const double t = InvCDFStudent(1.0 - fit.alpha / 2.0, fit.dfErrors);
    for (int c = 1; c <= categories.count; ++c) {
        for (int column = kMean; column <= kMeanCols; ++column) {
            table.vbset(c, column, kMissing);
        }
        if (!categories.HasMean(c)) continue;
        const std::vector<Term> terms = TermsOf(combinations, fit.p, c);
        const double mean = MeanOf(fit, terms);
        table.vbset(c, kMean, FiniteOrMissing(mean));
        const double variance = VarianceOf(fit, terms);
        if (!(variance >= 0.0)) continue;
        const double error = std::sqrt(variance);
        table.vbset(c, kMeanStdError, FiniteOrMissing(error));
        table.vbset(c, kMeanLower, FiniteOrMissing(mean - error * t));
        table.vbset(c, kMeanUpper, FiniteOrMissing(mean + error * t));
    }
}

// Missing means are the smallest values there are. Behind the others they come by a sort that starts from the largest mean
// and one back of the rows that have a mean.
RankedMeans RankCategories(const FittedModel& fit,
                           const FactorCategories& categories,
                           const matrix<double>& combinations,
                           MissingMeans missing)
{
    const int count = categories.count;
    RankedMeans ranked{matrix<double>(count, kMeanCols), matrix<double>(count, 1)};
    CategoryMeansTable(fit, categories, combinations, ranked.table);
    V_Set1toN(&ranked.identifiers, count);
    const auto sort = [&](int last, short descending) {
        matrix<double> key(count, 1);
        CopyMatrixColToMatrixCol(&ranked.table, count, kMean, &key, 1);
        SortQ(&ranked.table, count, kMeanCols, 1, last, &key, &ranked.identifiers, 1, descending, kFalse);
    };
    if (missing == MissingMeans::kLast) {
        sort(count, kTrue);
        sort(count - categories.CountRemoved(), kFalse);
    } else {
        sort(count, kFalse);
    }
    return ranked;
}

void WriteRankedMeans(RankedMeans& ranked, int count, matrix<double>* means, matrix<double>* identifiers)
{
    M_Duplicate(&ranked.table, count, kMeanCols, means, 1, 1, 1, 1);
    V_Duplicate2(&ranked.identifiers, count, identifiers);
}

}  // namespace korvenrg::comparisons
