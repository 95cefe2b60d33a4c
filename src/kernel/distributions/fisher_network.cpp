#include "kernel/distributions/fisher_network.h"

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <functional>
#include <span>

#include "kernel/distributions/chi_square.h"
#include "kernel/distributions/fisher_bounds.h"
#include "kernel/distributions/fisher_nodes.h"
#include "kernel/distributions/gamma_functions.h"

namespace korvenrg::distributions {

namespace {

/** Tables whose probability exceeds that of the given one by at most this part count as equally probable. */
constexpr double kTieTolerance = 1E-7;

/** Shares of a column and extensions of paths after which the test is given up. */
constexpr std::int64_t kMostSteps = 1'000'000'000;

/** Different paths of one stage after which the test is given up: 32 to 64 bytes each. */
constexpr std::int64_t kMostPaths = 10'000'000;

/** What a node counts against that limit by itself. */
constexpr std::int64_t kPathsPerNode = 4;

/** A sum with its rounding errors carried along (Neumaier 1974). */
class CompensatedSum
{
  public:
    void Add(double term)
    {
        const double sum = sum_ + term;
        correction_ += std::fabs(sum_) >= std::fabs(term) ? sum_ - sum + term : term - sum + sum_;
        sum_ = sum;
    }
    double Value() const
    {
        return sum_ + correction_;
    }

  private:
    double sum_ = 0.0;
    double correction_ = 0.0;
};

/** The computation for one table. */
class Network
{
  public:
    Network(const CountTable& table, const CochranRule& rule)
        : rule_(rule),
          rows_(table.rowTotals),
          columns_(table.columnTotals),
          logs_(table.total, table.cells.size())
    {
        std::sort(rows_.begin(), rows_.end(), std::greater<>());
        std::sort(columns_.begin(), columns_.end());
        taken_.resize(rows_.size());
        rest_.resize(rows_.size());
        child_.resize(rows_.size());
        observed_ = -logs_.SumOfFactorials(table.cells);
        limit_ = observed_ + kTieTolerance;
    }

    NetworkResult Run()
    {
        if (FirstStageIsTooLarge() && WholeTableByChiSquare()) return Result();
        NodeTable nodes = RootAlone();
        for (stage_ = 0; stage_ + 1 < columns_.size(); ++stage_) {
            if (RunStage(nodes)) continue;
            return WholeTableByChiSquare() ? Result() : NetworkResult{};
        }
        return Result();
    }

  private:
    // A way to take out a column, or the first rows of one, for some of the sorted paths of the node.
    struct Edge
    {
        double logWeight;   // minus the sum of log(cell!) so far
        double ways;        // arrangements of equal row totals
        std::size_t first;  // paths before it are done
        std::size_t last;   // paths from it on are dropped
    };

    bool Exhausted() const
    {
        return steps_ > kMostSteps || pathsOfNext_ > kMostPaths;
    }

    NetworkResult Result() const
    {
        const double probability = std::exp(observed_ - LogTotalWeight(rows_, columns_, logs_));
        return {true, std::min(tail_.Value(), 1.0), probability};
    }

    NodeTable RootAlone() const
    {
        NodeTable nodes(rows_.size());
        bool added = false;
        Node& root = nodes.FindOrAdd(rows_, added);
        root.completions.logTotal = LogTotalWeight(rows_, columns_, logs_);
        root.paths.Add(0.0, 1.0);
        return nodes;
    }

    // Whether there may be more ways to share the first column out over the rows than steps.
    bool FirstStageIsTooLarge() const
    {
        const double others = static_cast<double>(rows_.size()) - 1.0;
        return cLogCnk(columns_.front() + others, others) > std::log(static_cast<double>(kMostSteps));
    }

    // Under a rule that the whole table meets, its p-value by chi-square. False without one.
    bool WholeTableByChiSquare()
    {
        stage_ = 0;
        const NodeTable nodes = RootAlone();
        OpenNode(nodes[0], nodes.Totals(0));
        if (!MeetsRule()) return false;
        tail_ = {};
        AddChiSquareTails();
        return true;
    }

    std::span<const int> ColumnsFrom(std::size_t stage) const
    {
        return std::span(columns_).subspan(stage);
    }

    // Takes column stage_ out of all nodes; `nodes` becomes those of the next stage. False at the work limit.
    bool RunStage(NodeTable& nodes)
    {
        next_ = NodeTable(rows_.size());
        pathsOfNext_ = 0;
        for (std::size_t i = 0; i < nodes.size(); ++i) {
            OpenNode(nodes[i], nodes.Totals(i));
            if (stage_ > 0 && MeetsRule()) {
                AddChiSquareTails();
            } else {
                TakeRow(0, columns_[stage_], {0.0, 1.0, 0, paths_.size()});
            }
            if (Exhausted()) return false;
            nodes[i].paths = {};
        }
        nodes = std::move(next_);
        return true;
    }

    void OpenNode(const Node& node, std::span<const int> totals)
    {
        paths_ = node.paths.Sorted();
        completions_ = node.completions;
        totals_.assign(totals.begin(), totals.end());
        rowsBehind_.assign(totals_.size() + 1, 0);
        for (std::size_t i = totals_.size(); i > 0; --i) {
            rowsBehind_[i - 1] = rowsBehind_[i] + totals_[i - 1];
        }
        massUpTo_.assign(paths_.size() + 1, 0.0);
        for (std::size_t k = 0; k < paths_.size(); ++k) {
            massUpTo_[k + 1] = massUpTo_[k] + paths_[k].mass;
        }
    }

    // Whether the remaining table of the node meets Cochran's conditions. Empty rows are no part of it.
    bool MeetsRule() const
    {
        if (!rule_.active) return false;
        double cells = 0.0;
        double good = 0.0;
        for (const int row : totals_) {
            if (row == 0) continue;
            for (const int column : ColumnsFrom(stage_)) {
                const double expected = static_cast<double>(row) * column / rowsBehind_[0];
                if (expected < rule_.smallest) return false;
                cells += 1.0;
                if (expected >= rule_.expected) good += 1.0;
            }
        }
        return good * 100.0 >= rule_.percent * cells;
    }

    // Completions count when their conditional log probability is at most x. It is near -(X2 + K)/2 with X2
    // the chi-square of the completion, K = df log(2 pi) + (c - 1) sum of log row + (r - 1) sum of log column
    // - (r c - 1) log total: the multivariate normal density that has the covariance of the counts.
    void AddChiSquareTails()
    {
        double r = 0.0;
        double logRows = 0.0;
        for (const int row : totals_) {
            if (row == 0) continue;
            r += 1.0;
            logRows += std::log(row);
        }
        const auto columns = ColumnsFrom(stage_);
        const auto c = static_cast<double>(columns.size());
        double logColumns = 0.0;
        for (const int column : columns) {
            logColumns += std::log(column);
        }
        const double df = (r - 1.0) * (c - 1.0);
        const double constant = df * std::log(2.0 * 3.14159265358979323846) + (c - 1.0) * logRows +
                                (r - 1.0) * logColumns - (r * c - 1.0) * std::log(rowsBehind_[0]);
        for (const PastPaths& path : paths_) {
            const double x = limit_ - path.logWeight - completions_.logTotal;
            tail_.Add(path.mass * (df > 0.0 ? pValChiSq(std::max(-2.0 * x - constant, 0.0), df) : 1.0));
        }
    }

    // Shares `left` of the column out over the rows from `row` on. Equal row totals are interchangeable:
    // among them only descending shares are formed, and `ways` counts their arrangements.
    void TakeRow(std::size_t row, int left, Edge edge)
    {
        steps_ += 1;
        if (Exhausted()) return;
        if (row == totals_.size()) {
            TakeEdge(edge);
            return;
        }
        const bool likeLast = row > 0 && totals_[row] == totals_[row - 1];
        if (row > 0 && row + 1 < totals_.size() && !SomePathsGoOn(row, left, !likeLast, edge)) return;
        const int most = std::min({left, totals_[row], likeLast ? taken_[row - 1] : left});
        const int least = std::max(left - rowsBehind_[row + 1], 0);
        int place = 1;  // within the run of equal row totals
        while (row >= static_cast<std::size_t>(place) &&
               totals_[row - static_cast<std::size_t>(place)] == totals_[row])
        {
            ++place;
        }
        for (int share = most; share >= least; --share) {
            taken_[row] = share;
            rest_[row] = totals_[row] - share;
            int equal = 1;  // how many of the run have taken this share
            while (equal < place && taken_[row - static_cast<std::size_t>(equal)] == share) {
                ++equal;
            }
            TakeRow(
                row + 1,
                left - share,
                {edge.logWeight - logs_.Factorial(share), edge.ways * place / equal, edge.first, edge.last});
        }
    }

    // Narrows the paths of an edge whose first rows are filled to those that are still open. Where the next row begins a
    // run of equal totals, all arrangements of the rows behind are formed, so that the mass of paths whose
    // completions all count is known; else they go on.
    bool SomePathsGoOn(std::size_t row, int left, bool beginsRun, Edge& edge)
    {
        const auto filled = static_cast<std::ptrdiff_t>(row);
        std::copy(rest_.begin(), rest_.begin() + filled, child_.begin());
        std::copy(totals_.begin() + filled, totals_.end(), child_.begin() + filled);
        std::sort(child_.begin(), child_.end(), std::greater<>());
        const Completions completions = CompletionsOf({std::span(rest_).first(row),
                                                       std::span(totals_).subspan(row),
                                                       child_,
                                                       left,
                                                       ColumnsFrom(stage_ + 1)},
                                                      logs_);
        edge.last = std::min(edge.last, PathsUpTo(limit_ - edge.logWeight - completions.smallest));
        if (beginsRun) CountDecided(completions, edge);
        return edge.first < edge.last;
    }

    // Adds the mass of the paths of an edge whose completions all count, and leaves the others.
    void CountDecided(const Completions& completions, Edge& edge)
    {
        const std::size_t all = std::min(edge.last, PathsUpTo(limit_ - edge.logWeight - completions.largest));
        if (all <= edge.first) return;
        tail_.Add(ShareOf(completions, edge) * (massUpTo_[all] - massUpTo_[edge.first]));
        edge.first = all;
    }

    // The part of the tables behind the node that an edge leads to.
    double ShareOf(const Completions& completions, const Edge& edge) const
    {
        return edge.ways * std::exp(edge.logWeight + completions.logTotal - completions_.logTotal);
    }

    void TakeEdge(Edge edge)
    {
        if (stage_ + 2 == columns_.size()) {  // one column is left, and there is one way to fill it
            const double last = -logs_.SumOfFactorials(rest_);
            CountDecided({last, last, last}, edge);
            return;
        }
        child_ = rest_;
        std::sort(child_.begin(), child_.end(), std::greater<>());
        bool added = false;
        Node& child = next_.FindOrAdd(child_, added);
        if (added) {
            const auto rows = RowsInUse();
            child.completions = CompletionsOf({rows, {}, rows, 0, ColumnsFrom(stage_ + 1)}, logs_);
            pathsOfNext_ += kPathsPerNode;
        }
        FollowEdge(child, edge);
    }

    std::span<const int> RowsInUse() const
    {
        return {child_.begin(), std::find(child_.begin(), child_.end(), 0)};
    }

    // Paths whose completions all count are done, those without any are dropped, the others go on.
    void FollowEdge(Node& child, Edge edge)
    {
        edge.last = std::min(edge.last, PathsUpTo(limit_ - edge.logWeight - child.completions.smallest));
        CountDecided(child.completions, edge);
        if (edge.first >= edge.last) return;
        const double share = ShareOf(child.completions, edge);
        const auto before = static_cast<std::int64_t>(child.paths.size());
        for (std::size_t k = edge.first; k < edge.last; ++k) {
            child.paths.Add(paths_[k].logWeight + edge.logWeight, share * paths_[k].mass);
        }
        steps_ += static_cast<std::int64_t>(edge.last - edge.first);
        pathsOfNext_ += static_cast<std::int64_t>(child.paths.size()) - before;
    }

    // Number of paths whose log weight is at most `bound`.
    std::size_t PathsUpTo(double bound) const
    {
        const auto end =
            std::upper_bound(paths_.begin(), paths_.end(), bound, [](double b, const PastPaths& path) {
                return b < path.logWeight;
            });
        return static_cast<std::size_t>(end - paths_.begin());
    }

    CochranRule rule_;
    std::vector<int> rows_;
    std::vector<int> columns_;  ///< ascending: the stages near the root then have few nodes
    LogTables logs_;
    double observed_ = 0.0;
    double limit_ = 0.0;
    std::size_t stage_ = 0;
    std::int64_t steps_ = 0;
    std::int64_t pathsOfNext_ = 0;
    CompensatedSum tail_;
    NodeTable next_{0};

    // The node that is expanded, and the edge under way.
    std::vector<int> totals_;
    std::vector<int> rowsBehind_;  ///< sum of the totals from a row on
    std::vector<PastPaths> paths_;
    std::vector<double> massUpTo_;
    Completions completions_;
    std::vector<int> taken_;  ///< what each filled row gave to the column
    std::vector<int> rest_;   ///< and what it has left
    std::vector<int> child_;  ///< row totals at the end of the edge, descending
};

}  // namespace

NetworkResult FisherTail(const CountTable& table, const CochranRule& rule)
{
    return Network(table, rule).Run();
}

}  // namespace korvenrg::distributions
