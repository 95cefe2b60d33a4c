/** Category means and LS means of a term, with their contrasts, through the doors. */
#ifndef KORVENRG_FRONTEND_CATEGORY_MEANS_H
#define KORVENRG_FRONTEND_CATEGORY_MEANS_H

#include <string>
#include <vector>

#include "fit.h"

namespace korvenrg::frontend {

enum class MeansKind
{
    kFitted,
    kLeastSquares
};

struct Category
{
    std::string label;  ///< categories of a cell joined by `*`
    double size;        ///< sum of the weights of its rows, which are 1 on average
    double variance;    ///< of the response in its rows
};

/** Columns of the contrast table, from 0. */
enum ContrastColumn : std::size_t
{
    kDifference = 0,
    kVariance = 1,
    kFirstRank = 2,
    kSecondRank = 3,
    kStandardised = 4,
    kCritical = 5,
    kProbability = 6,
    kLevel = 7,
    kFirstId = 8,
    kSecondId = 9
};
inline constexpr std::size_t kContrastColumns = 10;

struct CategoryMeans
{
    std::vector<Category> categories;  ///< those with a mean; their positions are the identifiers, from 1
    std::vector<std::string> removed;  ///< the others
    std::vector<int> ranked;           ///< identifiers by ascending mean
    NumberTable means;                 ///< a row for each rank: mean, standard error, lower, upper
    NumberTable contrasts;             ///< of all pairs, the ranges falling along each first rank
};

/** The number of a term of categories, from 0. Throws UserError when the model has none of that name. */
std::size_t FindTerm(const ModelData& data, const std::string& name, const char* option);

CategoryMeans ComputeMeans(const ModelData& data,
                           const Design& design,
                           const Fit& fit,
                           const Options& options,
                           MeansKind kind,
                           std::size_t term);

/** Terms with an empty cell that have no variable in common with the term. */
std::vector<std::string> TermsWithEmptyCells(const ModelData& data, const Fit& fit, std::size_t term);

}  // namespace korvenrg::frontend

#endif
