/** Nodes of the network of Fisher's exact test, found by their row totals. */
#pragma once

#include <cstddef>
#include <cstdint>
#include <span>
#include <vector>

#include "kernel/distributions/fisher_bounds.h"

namespace korvenrg::distributions {

/** Paths to a node that have the same probability: minus the sum of the log factorials of their cells, and
    the probability that a random table follows one of them. */
struct PastPaths
{
    double logWeight;
    double mass;
};

/** Log weights nearer to each other than this may be taken as one. Far above their rounding, far below the
    tolerance of ties. */
inline constexpr double kSamePath = 1E-10;

/** The paths to a node; those of one weight are kept as one. */
class PathTable
{
  public:
    /** Adds paths. A mass of 0 (underflow) is not kept. */
    void Add(double logWeight, double mass);

    /** The paths in ascending order of weight. */
    std::vector<PastPaths> Sorted() const;

    std::size_t size() const
    {
        return size_;
    }

  private:
    PastPaths& SlotOf(double logWeight);
    void Grow();

    std::vector<PastPaths> slots_;  ///< a power of two of them, or none; a mass of 0 is an empty slot
    int shift_ = 64;                ///< 64 less the binary logarithm of the number of slots
    std::size_t size_ = 0;
};

struct Node
{
    Completions completions;  ///< of what is left of the table there
    PathTable paths;
};

/** The nodes of one stage, in the order in which they were added. */
class NodeTable
{
  public:
    explicit NodeTable(std::size_t rows) : rows_(rows), slots_(1024, kEmpty) {}

    /** The node with these sorted row totals, added when it is not there; `added` says which. */
    Node& FindOrAdd(std::span<const int> totals, bool& added);

    std::size_t size() const
    {
        return nodes_.size();
    }
    Node& operator[](std::size_t i)
    {
        return nodes_[i];
    }
    const Node& operator[](std::size_t i) const
    {
        return nodes_[i];
    }
    std::span<const int> Totals(std::size_t i) const
    {
        return {totals_.data() + i * rows_, rows_};
    }

  private:
    static constexpr std::int32_t kEmpty = -1;

    std::size_t SlotOf(std::span<const int> totals) const;
    void Grow();

    std::size_t rows_;
    std::vector<std::int32_t> slots_;  ///< a power of two; node numbers
    std::vector<Node> nodes_;
    std::vector<int> totals_;
};

}  // namespace korvenrg::distributions
