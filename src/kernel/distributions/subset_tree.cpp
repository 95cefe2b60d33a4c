#include "kernel/distributions/subset_tree.h"

#include <algorithm>
#include <limits>

#include "kernel/scalars/scalars.h"

namespace {

// Positions, from 0, of the rank-th subset (from 0) of `size` out of n positions in lexicographic order.
std::vector<int> SubsetOfRank(int n, int size, double rank)
{
    std::vector<int> positions;
    for (int position = 0; size > 0 && position < n; ++position) {
        const double startingHere = Cnk(n - position - 1, size - 1);
        if (rank >= startingHere) {
            rank -= startingHere;
            continue;
        }
        positions.push_back(position);
        size -= 1;
    }
    return positions;
}

}  // namespace

int LogNode::getObjectList(int k) const
{
    return k < 1 || k > size() ? 0 : objects_[static_cast<std::size_t>(k - 1)];
}

int LogTree::BuildTreeLeaves(int count,
                             int minSize,
                             int maxSize,
                             const matrix<double>* objects,
                             int maxLeaves)
{
    objects_.clear();
    for (int i = 1; i <= count; ++i) {
        objects_.push_back(static_cast<int>(objects->vbget(i)));
    }
    minSize_ = std::max(minSize, 0);
    const double limit = maxLeaves > 0 ? maxLeaves : std::numeric_limits<int>::max();
    double leaves = 0.0;
    for (int size = minSize_; size <= std::min(maxSize, count) && leaves < limit; ++size) {
        leaves += Cnk(count, size);
    }
    leaves_ = static_cast<int>(std::min(leaves, limit));
    return leaves_;
}

LogNode LogTree::getTreeNode(int i) const
{
    if (i < 1 || i > leaves_) return {};
    const auto count = static_cast<int>(objects_.size());
    double rank = i - 1;
    int size = minSize_;
    while (rank >= Cnk(count, size)) {
        rank -= Cnk(count, size);
        size += 1;
    }
    std::vector<int> members = SubsetOfRank(count, size, rank);
    std::transform(members.begin(), members.end(), members.begin(), [&](int position) {
        return objects_[static_cast<std::size_t>(position)];
    });
    return LogNode(std::move(members));
}
