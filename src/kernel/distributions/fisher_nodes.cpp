#include "kernel/distributions/fisher_nodes.h"

#include <algorithm>
#include <bit>
#include <cmath>
#include <iterator>

namespace korvenrg::distributions {

namespace {

/** Cells of the grid for a unit of log weight. */
constexpr double kCellsPerUnit = 1.0 / kSamePath;

std::uint64_t HashOf(std::span<const int> totals)
{
    std::uint64_t hash = 0;
    for (const int total : totals) {
        hash = (hash ^ static_cast<std::uint32_t>(total)) * 0x9E3779B97F4A7C15;
        hash ^= hash >> 29;
    }
    return hash;
}

}  // namespace

// The slot of this weight, or the empty one where it belongs. Weights are looked up by a grid of kSamePath;
// where rounding puts equal ones into two cells of the grid, both are kept.
PastPaths& PathTable::SlotOf(double logWeight)
{
    const auto cell = static_cast<std::uint64_t>(static_cast<std::int64_t>(logWeight * kCellsPerUnit));
    const std::size_t mask = slots_.size() - 1;
    std::size_t slot = (cell * 0x9E3779B97F4A7C15) >> shift_;
    while (slots_[slot].mass != 0.0 && std::fabs(slots_[slot].logWeight - logWeight) > kSamePath) {
        slot = (slot + 1) & mask;
    }
    return slots_[slot];
}

void PathTable::Grow()
{
    std::vector<PastPaths> old(std::max<std::size_t>(slots_.size() * 2, 16), PastPaths{0.0, 0.0});
    old.swap(slots_);
    shift_ = 64 - std::countr_zero(slots_.size());
    for (const PastPaths& path : old) {
        if (path.mass != 0.0) SlotOf(path.logWeight) = path;
    }
}

void PathTable::Add(double logWeight, double mass)
{
    if (mass == 0.0) return;
    if (2 * size_ >= slots_.size()) Grow();
    PastPaths& slot = SlotOf(logWeight);
    if (slot.mass == 0.0) {
        slot.logWeight = logWeight;
        size_ += 1;
    }
    slot.mass += mass;
}

std::vector<PastPaths> PathTable::Sorted() const
{
    std::vector<PastPaths> paths;
    paths.reserve(size_);
    std::copy_if(slots_.begin(), slots_.end(), std::back_inserter(paths), [](const PastPaths& path) {
        return path.mass != 0.0;
    });
    std::sort(paths.begin(), paths.end(), [](const PastPaths& a, const PastPaths& b) {
        return a.logWeight < b.logWeight;
    });
    return paths;
}

// The slot of these totals, or the empty one where they belong.
std::size_t NodeTable::SlotOf(std::span<const int> totals) const
{
    const std::size_t mask = slots_.size() - 1;
    std::size_t slot = HashOf(totals) & mask;
    while (slots_[slot] != kEmpty) {
        const auto other = Totals(static_cast<std::size_t>(slots_[slot]));
        if (std::equal(totals.begin(), totals.end(), other.begin())) break;
        slot = (slot + 1) & mask;
    }
    return slot;
}

void NodeTable::Grow()
{
    slots_.assign(slots_.size() * 2, kEmpty);
    for (std::size_t i = 0; i < nodes_.size(); ++i) {
        slots_[SlotOf(Totals(i))] = static_cast<std::int32_t>(i);
    }
}

Node& NodeTable::FindOrAdd(std::span<const int> totals, bool& added)
{
    const std::size_t slot = SlotOf(totals);
    added = slots_[slot] == kEmpty;
    if (!added) return nodes_[static_cast<std::size_t>(slots_[slot])];
    slots_[slot] = static_cast<std::int32_t>(nodes_.size());
    totals_.insert(totals_.end(), totals.begin(), totals.end());
    nodes_.emplace_back();
    if (nodes_.size() * 2 > slots_.size()) Grow();
    return nodes_.back();
}

}  // namespace korvenrg::distributions
