/** The subsets of a list of objects, by size. */
#pragma once

#include <utility>
#include <vector>

#include "core/matrix.h"

/** One subset: a leaf of the tree. */
class LogNode
{
  public:
    LogNode() = default;
    explicit LogNode(std::vector<int> objects) : objects_(std::move(objects)) {}

    /** The k-th object of the subset, k from 1, in the order of the list; 0 when there is none. */
    int getObjectList(int k) const;

    /** Number of objects. */
    int size() const
    {
        return static_cast<int>(objects_.size());
    }

  private:
    std::vector<int> objects_;
};

/**
 * All subsets of a list of objects whose size is within limits, numbered from 1: by size, and within a size
 * in the lexicographic order of their positions in the list (1 2, 1 3, 2 3). A leaf is worked out from its
 * number when it is asked for (Buckles & Lybanon 1977, "Algorithm 515: Generation of a vector from the
 * lexicographical index"), so the tree takes no more memory than the list, however many leaves there are.
 */
class LogTree
{
  public:
    LogTree() = default;
    ~LogTree() = default;

    /**
     * Sets the objects and the sizes; what the tree was before is forgotten.
     *
     * @param count      number of objects
     * @param minSize    smallest size, at least 0 (size 0 is the one empty subset)
     * @param maxSize    largest size, at most `count`; limits beyond are cut
     * @param objects    count x 1, the numbers of the objects
     * @param maxLeaves  keeps the first maxLeaves leaves; 0 or less keeps all, up to 2^31 - 1
     * @return number of leaves; 0 when no size is within the limits
     */
    int BuildTreeLeaves(int count, int minSize, int maxSize, const matrix<double>* objects, int maxLeaves);

    /** Leaf number i, from 1; an empty one outside. */
    LogNode getTreeNode(int i) const;

  private:
    std::vector<int> objects_;
    int minSize_ = 0;
    int leaves_ = 0;
};
