#include "kernel/distributions/fisher_nodes.h"

#include <algorithm>

namespace korvenrg::distributions {

namespace {

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

void MergePaths(std::vector<PastPaths>& paths)
{
    std::sort(paths.begin(), paths.end(), [](const PastPaths& a, const PastPaths& b) {
        return a.logWeight < b.logWeight;
    });
    std::size_t kept = 0;
    for (const PastPaths& path : paths) {
        if (kept > 0 && path.logWeight - paths[kept - 1].logWeight <= kSamePath) {
            paths[kept - 1].mass += path.mass;
        } else {
            paths[kept++] = path;
        }
    }
    paths.resize(kept);
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
