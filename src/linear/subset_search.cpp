#include "linear/subset_search.h"

#include <algorithm>
#include <cmath>
#include <optional>

#include "core/limits.h"
#include "kernel/distributions/combinations.h"
#include "kernel/scalars/scalars.h"

namespace korvenrg::linear {

namespace {

// Cells that the table of one size may have.
constexpr double kMostCells = 10000000.0;
constexpr int kCellsBesideIndicators = 10;

// The best candidate of a size so far.
struct Leader
{
    double value;
    double order;  // of the generator, the first subset having the smallest
    Factors factors;
};

PackedModel OnVector(const Search& search, matrix<double>& packed)
{
    PackedModel model = search.model;
    model.packed = &packed;
    return model;
}

// PC counts the factors of the subset in its numerator and adds c to its denominator, unlike the other selections. It
// stays so. Pinned by BestSubset.RowsHoldTheirOwnPc.
double PcOf(const Search& search, double r, double q, double factors)
{
    return (factors + search.model.S + search.model.c) * r / ((search.model.S - q) + search.model.c);
}

double CpOf(const Search& search, double sse, double q)
{
    if (search.mseFull <= kEps) return kMissing;
    return (q + search.model.c) * 2.0 + sse / search.mseFull - search.model.S;
}

// The one statistic that the rows of a size are sorted by.
double SortValueOf(const Search& search, double r, double q, double factors)
{
    const PackedModel& model = search.model;
    switch (search.criterion) {
        case kByAdjustedRSquared:
            return (1.0 - r) - r * q / model.ErrorDf(q);
        case kByCp:
            return CpOf(search, model.Sse(r), q);
        case kByAic:
        case kBySbc: {
            const CandidateRow row = RowOf(search, r, q, factors);
            return search.criterion == kByAic ? row.aic : row.sbc;
        }
        case kByPc:
            return PcOf(search, r, q, factors);
        default:
            return model.Sse(r) / model.ErrorDf(q);
    }
}

// Whether a value sorts before another: descending for adjusted R squared, ascending otherwise, NaN last.
bool SortsBefore(const Search& search, double a, double b)
{
    if (std::isnan(a) || std::isnan(b)) return !std::isnan(a) && std::isnan(b);
    return search.criterion == kByAdjustedRSquared ? a > b : a < b;
}

bool OneDfIsLeft(const Search& search, int columns)
{
    return search.model.S - columns - search.model.c == 1.0;
}

// Sweeps the columns of one factor into a subset, as many as enter while a degree of freedom is left.
void AddFactor(const Search& search, SweptSubset& subset, int factor)
{
    const auto position = static_cast<std::size_t>(factor - 1);
    if (subset.isClosed || !search.isActive[position]) return;
    const PackedModel model = OnVector(search, subset.packed);
    int count = 0;
    for (const auto& [j, followsAnother] : search.columnsOf[position]) {
        if (OneDfIsLeft(search, subset.columns + count)) break;
        if (count > 0 && followsAnother) break;
        if (!model.Passes(j)) continue;
        model.Sweep(j);
        count += 1;
    }
    if (count > 0) subset.entered.push_back(factor);
    subset.columns += count;
    subset.residualTerm = model.ResidualTerm();
    subset.isClosed = OneDfIsLeft(search, subset.columns);
}

SweptSubset Unswept(const Search& search)
{
    SweptSubset subset{.packed = matrix<double>(*search.model.packed), .entered = {}};
    subset.residualTerm = search.model.ResidualTerm();
    return subset;
}

void Consider(const Search& search,
              std::optional<Leader>& leader,
              const Factors& factors,
              double residualTerm,
              int columns,
              double order)
{
    if (columns == 0) return;
    const double value = SortValueOf(search, residualTerm, columns, static_cast<double>(factors.size()));
    if (leader.has_value()) {
        if (SortsBefore(search, leader->value, value)) return;
        const bool ties = !SortsBefore(search, value, leader->value);
        if (ties && leader->order < order) return;
    }
    leader = Leader{value, order, factors};
}

// The first `count` subsets of a size in the generator's order.
std::optional<Leader> WalkOneByOne(const Search& search, int size, double count)
{
    std::optional<Leader> leader;
    matrix<int> state(search.nbFactors, 1);
    for (double order = 0.0; order < count; order += 1.0) {
        cKurtzberg(search.nbFactors, size, &state);
        Factors factors;
        for (int i = 1; i <= size; ++i) {
            factors.push_back(state.vbget(i) + 1);
        }
        const SweptSubset subset = SweepSubset(search, factors);
        Consider(search, leader, factors, subset.residualTerm, subset.columns, order);
    }
    return leader;
}

// All subsets of a size, depth first. The generator's order descends by the highest factor, then the next, and so on;
// a subset of members c1 < c2 < ... (from 0) stands sum of C(ci, i) before its end.
class PrefixWalk
{
  public:
    PrefixWalk(const Search& search, int size) : search_(search), size_(size)
    {
        for (int depth = 0; depth < size; ++depth) {
            swept_.push_back(Unswept(search));
        }
        for (int member = 0; member < search.nbFactors; ++member) {
            for (int i = 1; i <= size; ++i) {
                combinations_.push_back(member < i ? 0.0 : Cnk(member, i));
            }
        }
    }

    std::optional<Leader> Run()
    {
        Descend(0, 0, 0.0);
        return leader_;
    }

  private:
    // Takes each possible factor at `depth`, `first` (from 0) and later; `swept_[depth]` holds what came before.
    void Descend(int depth, int first, double orderFromEnd)
    {
        const auto level = static_cast<std::size_t>(depth);
        for (int member = first; member <= search_.nbFactors - (size_ - depth); ++member) {
            const double order =
                orderFromEnd + combinations_[static_cast<std::size_t>(member * size_ + depth)];
            chosen_.push_back(member + 1);
            if (depth + 1 == size_) {
                Finish(swept_[level], member + 1, order);
            } else {
                Copy(swept_[level], swept_[level + 1]);
                AddFactor(search_, swept_[level + 1], member + 1);
                Descend(depth + 1, member + 1, order);
            }
            chosen_.pop_back();
        }
    }

    static void Copy(const SweptSubset& from, SweptSubset& to)
    {
        std::copy_n(from.packed.data, from.packed.total, to.packed.data);
        to.residualTerm = from.residualTerm;
        to.columns = from.columns;
        to.isClosed = from.isClosed;
        to.entered.clear();
    }

    // The last factor of a subset. One of a single column need not be swept: only the residual term counts, and it is
    // formed as the sweep forms it.
    void Finish(SweptSubset& before, int factor, double orderFromEnd)
    {
        const auto position = static_cast<std::size_t>(factor - 1);
        const std::vector<EnteringColumn>& columns = search_.columnsOf[position];
        if (columns.size() > 1) {
            Copy(before, last_);
            AddFactor(search_, last_, factor);
            Consider(search_, leader_, chosen_, last_.residualTerm, last_.columns, -orderFromEnd);
            return;
        }
        double residualTerm = before.residualTerm;
        int count = before.columns;
        const bool mayEnter = !before.isClosed && search_.isActive[position] && !columns.empty() &&
                              !OneDfIsLeft(search_, before.columns);
        const PackedModel model = OnVector(search_, before.packed);
        const int column = columns.empty() ? 0 : columns.front().column;
        if (mayEnter && model.Passes(column)) {
            const int response = search_.model.p + 1;
            const double cross = model.Cell(response, column);
            const double rest = residualTerm - cross / model.Cell(column, column) * cross;
            residualTerm = residualTerm >= 0.0 && rest < 0.0 ? 0.0 : rest;
            count += 1;
        }
        Consider(search_, leader_, chosen_, residualTerm, count, -orderFromEnd);
    }

    const Search& search_;
    int size_;
    std::vector<SweptSubset> swept_;
    SweptSubset last_ = Unswept(search_);
    std::vector<double> combinations_;  // C(member, i), `size` of them per member
    Factors chosen_;
    std::optional<Leader> leader_;
};

}  // namespace

CandidateRow RowOf(const Search& search, double r, double q, double factors)
{
    const PackedModel& model = search.model;
    const double sse = model.Sse(r);
    const double dfE = model.ErrorDf(q);
    const InformationCriteria criteria = InformationCriteriaOf(model, q, sse);
    return {.columns = q,
            .sse = sse,
            .rSquared = 1.0 - r,
            .adjustedRSquared = (1.0 - r) - r * q / dfE,
            .mse = sse / dfE,
            .cp = CpOf(search, sse, q),
            .aic = criteria.aic,
            .sbc = sse > kEps ? criteria.sbc : 0.0,
            .pc = PcOf(search, r, q, factors)};
}

SweptSubset SweepSubset(const Search& search, const Factors& factors)
{
    SweptSubset subset = Unswept(search);
    for (const int factor : factors) {
        AddFactor(search, subset, factor);
    }
    return subset;
}

Factors BestOfSize(const Search& search, int size, SubsetWalk walk)
{
    const double subsets = Cnk(search.nbFactors, size);
    const double cap = std::floor(kMostCells / (search.nbFactors + kCellsBesideIndicators));
    const bool shares = walk == SubsetWalk::kSharedPrefixes && subsets <= cap;
    const std::optional<Leader> leader =
        shares ? PrefixWalk(search, size).Run() : WalkOneByOne(search, size, std::min(subsets, cap));
    return leader.has_value() ? leader->factors : Factors();
}

}  // namespace korvenrg::linear
