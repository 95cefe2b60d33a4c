#include "comparison.h"

#include <algorithm>
#include <cmath>

#include "korvenrg.h"
#include "platform_text.h"

namespace korvenrg::frontend {
namespace {

constexpr std::size_t kErrorDf = 2;  // row of the statistics, from 0
constexpr std::size_t kErrorRow = 1;
constexpr std::size_t kMeanSquare = 2;  // of the ANOVA table, from 0
constexpr std::size_t kMostGroups = 256;
constexpr int kFirstIdColumn = 9;  // of the contrast table, from 1
constexpr int kSecondIdColumn = 10;
constexpr int kProbabilityColumn = 7;

double HarmonicMean(const std::vector<Category>& categories)
{
    double sum = 0.0;
    for (const Category& category : categories)
        sum += 1.0 / category.size;
    return static_cast<double>(categories.size()) / sum;
}

/** Takes back what the doors say of two groups that do not vary at all: no t, or an infinite one. */
void WithdrawUntested(Comparison& comparison)
{
    const std::size_t rows = comparison.contrasts.rows;
    for (std::size_t r = 0; r < rows; ++r) {
        const double t = comparison.contrasts(r, kStandardised);
        if (!IsMissing(t)) continue;
        comparison.verdicts[r] = kNotTested;
        for (const ContrastColumn column : {kStandardised, kCritical, kProbability})
            comparison.contrasts.cells[column * rows + r] = kMissing;
    }
}

Comparison Test(const CategoryMeans& means, const Fit& fit, Procedure procedure, double alpha, bool harmonic)
{
    const bool controlsRate = procedure == Procedure::kFalseDiscoveryRate;
    const Procedure tested = controlsRate ? Procedure::kLsd : procedure;
    const int rows = static_cast<int>(means.contrasts.rows);
    Comparison result{means.contrasts, {}, std::vector<int>(means.contrasts.rows, kNotTested), harmonic, {}};
    std::vector<double> sizes;
    std::vector<double> variances;
    for (const Category& category : means.categories) {
        sizes.push_back(category.size);
        variances.push_back(category.variance);
    }
    const double common = 2.0 * fit.anova(kErrorRow, kMeanSquare) / HarmonicMean(means.categories);
    if (harmonic) {  // the door leaves out rows without a variance of their own
        const auto column =
            result.contrasts.cells.begin() + static_cast<std::ptrdiff_t>(kVariance * means.contrasts.rows);
        std::fill_n(column, means.contrasts.rows, common);
    }
    double level = alpha;
    MCATest(static_cast<int>(means.categories.size()),
            sizes.data(),
            variances.data(),
            common,
            harmonic ? VARIANT_TRUE : VARIANT_FALSE,
            result.contrasts.data(),
            rows,
            static_cast<int>(tested),
            fit.statistics(kErrorDf, 0),
            alpha,
            &level,
            result.verdicts.data());
    if (controlsRate) {
        Cpp_BenjaminiHochBerg(result.contrasts.data(),
                              kProbabilityColumn,
                              rows,
                              alpha,
                              result.verdicts.data());
    }
    WithdrawUntested(result);
    const bool stepwise = procedure == Procedure::kNewmanKeuls || procedure == Procedure::kDuncan ||
                          procedure == Procedure::kRegwq;
    const bool adjustsLevel = procedure == Procedure::kBonferroni || procedure == Procedure::kSidak;
    for (std::size_t r = 0; r < means.contrasts.rows; ++r) {
        if (controlsRate) result.contrasts.cells[kCritical * means.contrasts.rows + r] = kMissing;
        result.levels.push_back(stepwise ? result.contrasts(r, kLevel) : adjustsLevel ? level : alpha);
    }
    return result;
}

/** Letters by identifier, A for the largest mean; joined without a space while they are single ones. */
std::vector<std::string> LettersOf(const CategoryMeans& means, const Comparison& comparison)
{
    const std::size_t p = means.ranked.size();
    NumberTable table = means.means;
    NumberTable contrasts = comparison.contrasts;
    std::vector<int> verdicts = comparison.verdicts;
    std::vector<double> ranks(means.ranked.begin(), means.ranked.end());
    TextArray letters(p * kMostGroups);
    int groups = 0;
    VARIANT_BOOL sorts = VARIANT_TRUE;
    const VARIANT_BOOL grouped = Cpp_BuildGroupingForDiffs(table.data(),
                                                           static_cast<int>(table.columns),
                                                           contrasts.data(),
                                                           static_cast<int>(p),
                                                           verdicts.data(),
                                                           letters.data(),
                                                           &groups,
                                                           ranks.data(),
                                                           kFirstIdColumn,
                                                           kSecondIdColumn,
                                                           &sorts,
                                                           VARIANT_TRUE);
    if (grouped != VARIANT_TRUE) return {};
    constexpr int kLetters = 26;
    std::vector<std::string> result(p);
    for (std::size_t i = 0; i < p; ++i) {
        std::string& own =
            result[static_cast<std::size_t>(ranks[i]) - 1];  // the door sorts them with the means
        for (std::size_t g = 0; g < static_cast<std::size_t>(groups); ++g) {
            const std::string letter = letters.Get(g * p + i);
            if (groups > kLetters && !own.empty() && !letter.empty()) own += " ";
            own += letter;
        }
    }
    return result;
}

}  // namespace

Comparison CompareAll(const CategoryMeans& means, const Fit& fit, Procedure procedure, double alpha)
{
    const bool harmonicFromStart = procedure == Procedure::kNewmanKeuls;
    Comparison comparison = Test(means, fit, procedure, alpha, harmonicFromStart);
    comparison.groups = LettersOf(means, comparison);
    if (!comparison.groups.empty() || harmonicFromStart || UsesGroupVariances(procedure)) return comparison;
    Comparison repeated = Test(means, fit, procedure, alpha, true);
    repeated.groups = LettersOf(means, repeated);
    return repeated.groups.empty() ? comparison : repeated;
}

ControlComparison CompareWithControl(const CategoryMeans& means,
                                     const Fit& fit,
                                     int control,
                                     Tail tail,
                                     double alpha)
{
    const std::size_t others = means.categories.size() - 1;
    const double controlSize = means.categories[static_cast<std::size_t>(control) - 1].size;
    std::vector<double> factors;
    for (std::size_t c = 0; c < means.categories.size(); ++c) {
        if (static_cast<int>(c) + 1 == control) continue;
        factors.push_back(1.0 / std::sqrt(controlSize / means.categories[c].size + 1.0));
    }
    NumberTable contrasts = means.contrasts;
    ControlComparison result{NumberTable(others, 7), std::vector<int>(others, kNotTested)};
    MCBTest(static_cast<int>(means.categories.size()),
            control,
            static_cast<int>(others),
            factors.data(),
            contrasts.data(),
            static_cast<int>(contrasts.rows),
            fit.statistics(kErrorDf, 0),
            alpha,
            result.rows.data(),
            result.verdicts.data(),
            static_cast<int>(tail));
    return result;
}

}  // namespace korvenrg::frontend
