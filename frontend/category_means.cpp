#include "category_means.h"

#include <fmt/format.h>

#include <algorithm>
#include <limits>
#include <map>
#include <numeric>

#include "korvenrg.h"
#include "terms.h"
#include "user_error.h"

namespace korvenrg::frontend {
namespace {

constexpr std::size_t kErrorDf = 2;  // row of the statistics, from 0

/** The cells of a factor's qualitative variables, in the order of its columns: the first variable changes slowest. */
class CellGrid
{
  public:
    CellGrid(const ModelData& data, const Factor& factor) : data_(data)
    {
        for (const int number : factor.variables) {
            const std::size_t index = static_cast<std::size_t>(number) - 1;
            if (index < data.quantitative.size()) continue;
            variables_.push_back(index - data.quantitative.size());
            cells_ *= Variable(variables_.back()).categories.size();
        }
    }

    std::size_t Count() const
    {
        return cells_;
    }

    /** Category of each variable, by the variable's number among the qualitative ones. */
    std::map<std::size_t, std::size_t> CategoriesOf(std::size_t cell) const
    {
        std::map<std::size_t, std::size_t> categories;
        for (std::size_t k = variables_.size(); k-- > 0;) {
            const std::size_t count = Variable(variables_[k]).categories.size();
            categories[variables_[k]] = cell % count;
            cell /= count;
        }
        return categories;
    }

    std::string LabelOf(std::size_t cell) const
    {
        const std::map<std::size_t, std::size_t> categories = CategoriesOf(cell);
        Term parts;
        for (const std::size_t v : variables_)
            parts.push_back(Variable(v).categories[categories.at(v)]);
        return NameOf(parts);
    }

    /** The cell of each row of the fit. */
    std::vector<std::size_t> CellsOfRows() const
    {
        std::vector<std::size_t> cells(data_.rows.size(), 0);
        for (const std::size_t v : variables_) {
            std::map<std::string, std::size_t> codes;
            for (const std::string& category : Variable(v).categories)
                codes.emplace(category, codes.size());
            for (std::size_t r = 0; r < cells.size(); ++r)
                cells[r] = cells[r] * codes.size() + codes.at(Variable(v).cells[r]);
        }
        return cells;
    }

  private:
    const QualitativeVariable& Variable(std::size_t v) const
    {
        return data_.qualitative[v];
    }

    const ModelData& data_;
    std::vector<std::size_t> variables_;
    std::size_t cells_ = 1;
};

std::vector<double> CellSizes(const ModelData& data, const CellGrid& grid)
{
    std::vector<double> sizes(grid.Count(), 0.0);
    const std::vector<double> weights = ScaledWeights(data, data.weights);
    const std::vector<std::size_t> cells = grid.CellsOfRows();
    for (std::size_t r = 0; r < cells.size(); ++r)
        sizes[cells[r]] += weights[r];
    return sizes;
}

/** Whether two cells agree in the variables that they have in common, if any. */
bool Agree(const std::map<std::size_t, std::size_t>& a, const std::map<std::size_t, std::size_t>& b)
{
    return std::all_of(a.begin(), a.end(), [&b](const auto& category) {
        const auto other = b.find(category.first);
        return other == b.end() || other->second == category.second;
    });
}

bool ShareVariable(const Factor& a, const Factor& b)
{
    return std::any_of(a.variables.begin(), a.variables.end(), [&b](int variable) {
        return std::find(b.variables.begin(), b.variables.end(), variable) != b.variables.end();
    });
}

/** Marks the categories without rows; of LS means also those whose interactions with other variables have an empty cell, since
 * no data tell how such a cell would go. */
std::vector<int> RemovedCategories(const ModelData& data, const Fit& fit, MeansKind kind, std::size_t term)
{
    const CellGrid own(data, data.factors[term]);
    std::vector<int> removed(own.Count(), 0);
    for (std::size_t g = 0; g < data.factors.size(); ++g) {
        const bool counts = g == term || (kind == MeansKind::kLeastSquares && fit.factorActive[g] == 1 &&
                                          ShareVariable(data.factors[g], data.factors[term]));
        if (!counts) continue;
        const CellGrid grid(data, data.factors[g]);
        const std::vector<double> sizes = CellSizes(data, grid);
        for (std::size_t cell = 0; cell < sizes.size(); ++cell) {
            if (sizes[cell] > 0.0) continue;
            for (std::size_t c = 0; c < removed.size(); ++c) {
                if (Agree(own.CategoriesOf(c), grid.CategoriesOf(cell))) removed[c] = 1;
            }
        }
    }
    return removed;
}

/** Sizes and variances of all categories. */
std::vector<Category> DescribeCategories(const ModelData& data, const CellGrid& grid)
{
    const std::vector<double> sizes = CellSizes(data, grid);
    const std::vector<std::size_t> cells = grid.CellsOfRows();
    std::vector<double> counts(grid.Count(), 0.0);
    std::vector<double> means(grid.Count(), 0.0);
    for (std::size_t r = 0; r < cells.size(); ++r) {
        counts[cells[r]] += 1.0;
        means[cells[r]] += data.response[r];
    }
    for (std::size_t c = 0; c < means.size(); ++c)
        means[c] /= std::max(counts[c], 1.0);
    std::vector<Category> categories;
    for (std::size_t c = 0; c < grid.Count(); ++c)
        categories.push_back({grid.LabelOf(c), sizes[c], 0.0});
    for (std::size_t r = 0; r < cells.size(); ++r) {
        const std::size_t c = cells[r];
        const double deviation = data.response[r] - means[c];
        if (counts[c] > 1.0) categories[c].variance += deviation * deviation / (counts[c] - 1.0);
    }
    return categories;
}

/** Pairs to be compared; none when only the means are wanted. Throws UserError for more than the doors count. */
std::size_t CountPairs(const Options& options, const Factor& factor, std::size_t categories)
{
    if (!options.procedure && !options.control) return 0;
    const double pairs = 0.5 * static_cast<double>(categories) * (static_cast<double>(categories) - 1.0);
    if (pairs * kContrastColumns > std::numeric_limits<int>::max())
        throw UserError(fmt::format("'{}' has too many categories to compare, {}", factor.name, categories));
    return static_cast<std::size_t>(pairs);
}

/** What the doors give, removed categories included. */
struct DoorTables
{
    DoorTables(std::size_t categories, std::size_t pairs)
        : means(categories, 4), contrasts(pairs, kContrastColumns), ranks(categories, 1)
    {
    }

    NumberTable means;
    NumberTable contrasts;
    NumberTable ranks;
    int removed = 0;
};

DoorTables CallDoor(const ModelData& data,
                    const Design& design,
                    const Fit& fit,
                    const Options& options,
                    MeansKind kind,
                    std::size_t term,
                    std::vector<int> removed)
{
    DoorTables tables(removed.size(), CountPairs(options, data.factors[term], removed.size()));
    Design input = design;  // the doors take all arrays as writable
    Fit model = fit;
    std::vector<double> weights = ScaledWeights(data, data.weights);
    const int contrasts = static_cast<int>(tables.contrasts.rows);
    const double errorDf = fit.statistics(kErrorDf, 0);
    if (kind == MeansKind::kFitted) {
        Cpp_GetMeansContrastsStatVar2(input.table.data(),
                                      weights.data(),
                                      design.rows,
                                      design.columns,
                                      contrasts,
                                      design.factors,
                                      design.interlevel,
                                      static_cast<int>(term) + 1,
                                      design.factorType[term],
                                      input.factorNbColumns.data(),
                                      input.parents.data(),
                                      removed.data(),
                                      model.rawCoefficients.data(),
                                      model.rawCovariance.data(),
                                      options.alpha,
                                      errorDf,
                                      tables.means.data(),
                                      tables.contrasts.data(),
                                      tables.ranks.data(),
                                      &tables.removed);
        return tables;
    }
    std::vector<int> states = fit.states;
    GetLSMeansContrastsStatVar(input.table.data(),
                               weights.data(),
                               design.rows,
                               design.columns,
                               design.columns + 1,
                               contrasts,
                               design.factors,
                               design.interlevel,
                               static_cast<int>(term) + 1,
                               input.factorType.data(),
                               input.factorActive.data(),
                               input.factorNbCells.data(),
                               input.factorNbColumns.data(),
                               model.states.data(),
                               states.data(),
                               input.factorVariables.data(),
                               input.factorNbVars.data(),
                               input.parents.data(),
                               removed.data(),
                               model.reported.data(),
                               model.covariance.data(),
                               options.alpha,
                               errorDf,
                               tables.means.data(),
                               tables.contrasts.data(),
                               tables.ranks.data(),
                               &tables.removed);
    return tables;
}

/** Rows of the pairs that have a mean, the ranges falling along each first rank: the step-down tests take them in this order. */
std::vector<std::size_t> RowsByFallingRange(const NumberTable& contrasts)
{
    std::vector<std::size_t> rows;
    for (std::size_t r = 0; r < contrasts.rows; ++r) {
        if (!IsMissing(contrasts(r, kDifference))) rows.push_back(r);
    }
    std::sort(rows.begin(), rows.end(), [&contrasts](std::size_t a, std::size_t b) {
        const double firstA = contrasts(a, kFirstRank);
        const double firstB = contrasts(b, kFirstRank);
        return firstA != firstB ? firstA < firstB : contrasts(a, kSecondRank) > contrasts(b, kSecondRank);
    });
    return rows;
}

/** The categories that have a mean, numbered anew. Of ranks only the distances count, and removed categories stand all in front
 * or all behind. */
CategoryMeans WithoutRemoved(const DoorTables& door,
                             const std::vector<Category>& categories,
                             const std::vector<int>& removed)
{
    const auto gone = static_cast<std::size_t>(door.removed);
    const std::size_t kept = categories.size() - gone;
    const std::vector<std::size_t> rows = RowsByFallingRange(door.contrasts);
    CategoryMeans result{{}, {}, {}, NumberTable(kept, 4), NumberTable(rows.size(), kContrastColumns)};
    std::vector<int> newId(categories.size(), 0);
    for (std::size_t c = 0; c < categories.size(); ++c) {
        if (removed[c] != 0) {
            result.removed.push_back(categories[c].label);
            continue;
        }
        result.categories.push_back(categories[c]);
        newId[c] = static_cast<int>(result.categories.size());
    }
    const auto idOf = [&newId](double id) { return newId[static_cast<std::size_t>(id) - 1]; };
    for (std::size_t i = 0; i < categories.size(); ++i) {
        const int id = idOf(door.ranks(i, 0));
        if (id == 0) continue;
        for (std::size_t c = 0; c < 4; ++c)
            result.means.cells[c * kept + result.ranked.size()] = door.means(i, c);
        result.ranked.push_back(id);
    }
    for (std::size_t r = 0; r < rows.size(); ++r) {
        const auto set = [&](ContrastColumn column, double value) {
            result.contrasts.cells[column * rows.size() + r] = value;
        };
        for (const ContrastColumn column : {kDifference, kVariance, kStandardised, kFirstRank, kSecondRank})
            set(column, door.contrasts(rows[r], column));
        for (const ContrastColumn column : {kFirstId, kSecondId})
            set(column, idOf(door.contrasts(rows[r], column)));
    }
    return result;
}

}  // namespace

std::size_t FindTerm(const ModelData& data, const std::string& name, const char* option)
{
    const std::vector<Term> terms = ParseTerms(name);
    Term wanted = terms.front();
    std::sort(wanted.begin(), wanted.end());
    const auto variableName = [&data](int number) {
        const std::size_t index = static_cast<std::size_t>(number) - 1;
        return index < data.quantitative.size() ? data.quantitative[index].name
                                                : data.qualitative[index - data.quantitative.size()].name;
    };
    for (std::size_t f = 0; terms.size() == 1 && f < data.factors.size(); ++f) {
        const Factor& factor = data.factors[f];
        Term names;
        for (const int variable : factor.variables)
            names.push_back(variableName(variable));
        std::sort(names.begin(), names.end());
        if (!factor.active || names != wanted) continue;
        const bool hasCategories =
            factor.type == FactorType::kQualitative || factor.type == FactorType::kQualitativeInteraction;
        if (hasCategories) return f;
        throw UserError(
            fmt::format("{}: '{}' holds a numeric column and has no category means", option, name));
    }
    throw UserError(fmt::format("{}: '{}' is no term of the model", option, name));
}

CategoryMeans ComputeMeans(const ModelData& data,
                           const Design& design,
                           const Fit& fit,
                           const Options& options,
                           MeansKind kind,
                           std::size_t term)
{
    const CellGrid grid(data, data.factors[term]);
    const std::vector<int> removed = RemovedCategories(data, fit, kind, term);
    const DoorTables door = CallDoor(data, design, fit, options, kind, term, removed);
    return WithoutRemoved(door, DescribeCategories(data, grid), removed);
}

std::vector<std::string> TermsWithEmptyCells(const ModelData& data, const Fit& fit, std::size_t term)
{
    std::vector<std::string> names;
    for (std::size_t g = 0; g < data.factors.size(); ++g) {
        if (fit.factorActive[g] != 1 || ShareVariable(data.factors[g], data.factors[term])) continue;
        const std::vector<double> sizes = CellSizes(data, CellGrid(data, data.factors[g]));
        if (std::find(sizes.begin(), sizes.end(), 0.0) != sizes.end()) names.push_back(data.factors[g].name);
    }
    return names;
}

}  // namespace korvenrg::frontend
