#include "number_range.h"

#include <fmt/format.h>

#include <algorithm>
#include <cmath>
#include <span>
#include <string>

#include "user_error.h"

namespace korvenrg::frontend {
namespace {

// the variance of a coefficient is a quotient of two sums of squares
constexpr double kLargest = 1e70;
constexpr double kSmallest = 1e-70;

using Numbers = std::span<const double>;

/** @param ofTheFit  false: of rows outside it, where a single small number may stand */
void Check(Numbers numbers, const std::string& name, bool ofTheFit)
{
    double size = 0.0;
    for (const double number : numbers)
        size = std::max(size, std::fabs(number));
    const bool isTooSmall = ofTheFit && size > 0.0 && size < kSmallest;
    if (size <= kLargest && !isTooSmall) return;
    throw UserError(fmt::format("the numbers of '{}' are too {} to compute with: up to {:.6g}",
                                name,
                                isTooSmall ? "small" : "large",
                                size));
}

void CheckColumns(Numbers table, std::size_t rows, const Design& design, bool ofTheFit)
{
    for (std::size_t c = 0; c < design.labels.size(); ++c)
        Check(table.subspan(c * rows, rows), design.labels[c], ofTheFit);
}

void CheckOutsideTheFit(const NewRows& rows, Numbers table, const Design& design, const Options& options)
{
    Check(rows.response, options.response, false);
    Check(rows.weights, options.weights, false);
    CheckColumns(table, rows.rows.size(), design, false);
}

}  // namespace

void CheckNumberRange(const ModelData& data, const Design& design, const Options& options)
{
    Check(data.response, options.response, true);
    Check(data.weights, options.weights, true);
    CheckColumns(design.table, data.rows.size(), design, true);
    if (data.validation) CheckOutsideTheFit(*data.validation, design.validation, design, options);
    if (data.prediction) CheckOutsideTheFit(*data.prediction, design.prediction, design, options);
}

}  // namespace korvenrg::frontend
