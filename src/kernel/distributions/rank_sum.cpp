#include "kernel/distributions/rank_sum.h"

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <numeric>
#include <optional>
#include <vector>

#include "core/limits.h"
#include "kernel/distributions/normal.h"
#include "kernel/distributions/rank_sum_distribution.h"
#include "kernel/linalg/ranks.h"
#include "kernel/text/clock.h"

namespace {

using korvenrg::distributions::LowerTailOfSum;
using korvenrg::distributions::TimeLimit;

enum class Direction
{
    kLower,
    kUpper,
    kTwoSided,
};

Direction DirectionOf(int tail)
{
    if (tail == 0) return Direction::kTwoSided;
    return tail == 1 ? Direction::kUpper : Direction::kLower;
}

/** Mid-ranks of both samples together, the first sample in front. */
struct RankedSamples
{
    int n1 = 0;
    int n2 = 0;
    std::vector<double> ranks;
    double rankSum1 = 0.0;
    double ties = 0.0;  ///< sum of t^3 - t
    int tieGroups = 0;
};

/** U with its moments under the null hypothesis. */
struct UStatistic
{
    double u;
    double mean;
    double variance;
};

std::vector<double> CellsThatCount(const matrix<double>& samples, int first, int count, double shift)
{
    std::vector<double> cells;
    for (int r = first; r < first + count; ++r) {
        const double cell = samples.vbget(r);
        if (!korvenrg::IsMissing(cell) && !std::isnan(cell)) cells.push_back(cell - shift);
    }
    return cells;
}

RankedSamples Rank(const matrix<double>& samples, int n1, int n2, double shift)
{
    n1 = std::max(n1, 0);
    std::vector<double> cells = CellsThatCount(samples, 1, n1, shift);
    const std::vector<double> second = CellsThatCount(samples, n1 + 1, n2, 0.0);
    RankedSamples ranked;
    ranked.n1 = static_cast<int>(cells.size());
    ranked.n2 = static_cast<int>(second.size());
    cells.insert(cells.end(), second.begin(), second.end());
    const auto n = static_cast<int>(cells.size());
    matrix<double> values(n, 1, cells.data(), true);
    matrix<double> sizes(n, 1);
    ranked.ranks.resize(cells.size());
    matrix<double> ranks(n, 1, ranked.ranks.data(), true);
    V_GetRanksTies(&values, n, nullptr, &ranks, &ranked.tieGroups, &sizes);
    for (int g = 1; g <= ranked.tieGroups; ++g) {
        const double t = sizes.vbget(g);
        ranked.ties += t * (t - 1.0) * (t + 1.0);
    }
    ranked.rankSum1 = std::accumulate(ranked.ranks.begin(), ranked.ranks.begin() + ranked.n1, 0.0);
    return ranked;
}

UStatistic StatisticOf(const RankedSamples& ranked)
{
    const double n1 = ranked.n1;
    const double n2 = ranked.n2;
    const double n = n1 + n2;
    const double u = ranked.rankSum1 - n1 * (n1 + 1.0) / 2.0;
    return {u, n1 * n2 / 2.0, n1 * n2 / 12.0 * (n + 1.0 - ranked.ties / (n * (n - 1.0)))};
}

/** The sum of m whole scores, and where it stands. */
struct ScoreSum
{
    std::vector<int> scores;
    std::vector<int> mirrored;  ///< largest score minus score
    int m = 0;
    std::int64_t sum = 0;
    std::int64_t largest = 0;  ///< largest score
    bool ofFirst = true;       ///< the m scores are the first sample's
};

// The smaller sample's sum of doubled mid-ranks, moved and divided such that the scores begin at 0 and have
// no common divisor.
ScoreSum ScoreSumOf(const RankedSamples& ranked)
{
    ScoreSum result;
    for (const double rank : ranked.ranks) {
        result.scores.push_back(static_cast<int>(2.0 * rank));
    }
    const int smallest = *std::min_element(result.scores.begin(), result.scores.end());
    int divisor = 0;
    for (int& score : result.scores) {
        score -= smallest;
        divisor = std::gcd(divisor, score);
    }
    for (int& score : result.scores) {
        score /= std::max(divisor, 1);
    }
    result.largest = *std::max_element(result.scores.begin(), result.scores.end());
    for (const int score : result.scores) {
        result.mirrored.push_back(static_cast<int>(result.largest) - score);
    }
    result.ofFirst = ranked.n1 <= ranked.n2;
    result.m = std::min(ranked.n1, ranked.n2);
    const auto start = result.ofFirst ? result.scores.begin() : result.scores.begin() + ranked.n1;
    result.sum = std::accumulate(start, start + result.m, std::int64_t{0});
    return result;
}

std::optional<double> LowerTail(const ScoreSum& sum, std::int64_t limit, const TimeLimit& time)
{
    return LowerTailOfSum(sum.scores, sum.m, limit, time);
}

// P(sum >= limit): the mirrored scores have it as a lower tail.
std::optional<double> UpperTail(const ScoreSum& sum, std::int64_t limit, const TimeLimit& time)
{
    return LowerTailOfSum(sum.mirrored, sum.m, sum.m * sum.largest - limit, time);
}

// P(|sum - mean| >= |observed - mean|), in whole numbers: N times the distance from the mean.
std::optional<double> BothTails(const ScoreSum& sum, const TimeLimit& time)
{
    const auto n = static_cast<std::int64_t>(sum.scores.size());
    const std::int64_t center =
        sum.m * std::accumulate(sum.scores.begin(), sum.scores.end(), std::int64_t{0});
    const std::int64_t distance = std::abs(n * sum.sum - center);
    if (distance == 0) return 1.0;
    const std::int64_t low = center >= distance ? (center - distance) / n : -1;
    const std::int64_t high = (center + distance + n - 1) / n;
    const auto lower = LowerTail(sum, low, time);
    if (!lower) return std::nullopt;
    const auto upper = UpperTail(sum, high, time);
    if (!upper) return std::nullopt;
    return std::min(*lower + *upper, 1.0);
}

std::optional<double> ExactPValue(const RankedSamples& ranked, Direction direction, const TimeLimit& time)
{
    const ScoreSum sum = ScoreSumOf(ranked);
    if (direction == Direction::kTwoSided) return BothTails(sum, time);
    const bool firstLarger = direction == Direction::kUpper;
    return firstLarger == sum.ofFirst ? UpperTail(sum, sum.sum, time) : LowerTail(sum, sum.sum, time);
}

double AsymptoticPValue(const UStatistic& statistic, Direction direction, bool continuity)
{
    if (!(statistic.variance > 0.0)) return 1.0;
    const double distance = statistic.u - statistic.mean;
    const double deviation = std::sqrt(statistic.variance);
    const double correction = continuity ? 0.5 : 0.0;
    switch (direction) {
        case Direction::kUpper:
            return pValNormalStd((distance - correction) / deviation);
        case Direction::kLower:
            return pValNormalStd(-(distance + correction) / deviation);
        default:
            return 2.0 * pValNormalStd(std::max(std::fabs(distance) - correction, 0.0) / deviation);
    }
}

}  // namespace

void WilcoxonMW2(matrix<double>& samples,
                 int n1,
                 int n2,
                 int Tail,
                 short iExact,
                 short iContinuity,
                 double iShift,
                 short iTimeStop,
                 double iMaxSeconds,
                 short& oExact,
                 double& oU,
                 double& oMean,
                 double& oVariance,
                 double& pVal,
                 double& oTimeSpent,
                 int& oNbTiedVal,
                 [[maybe_unused]] int& ioSeed,
                 [[maybe_unused]] short& ioSeedInit,
                 [[maybe_unused]] int& oSeed)
{
    const TimeLimit time{iTimeStop == korvenrg::kTrue, COleDateTimeGetCurrentTime(), iMaxSeconds};
    const RankedSamples ranked = Rank(samples, n1, n2, iShift);
    oNbTiedVal = ranked.tieGroups;
    oExact = korvenrg::kFalse;
    oU = oMean = oVariance = pVal = korvenrg::kMissing;
    if (ranked.n1 > 0 && ranked.n2 > 0) {
        const UStatistic statistic = StatisticOf(ranked);
        oU = statistic.u;
        oMean = statistic.mean;
        oVariance = statistic.variance;
        std::optional<double> exact;
        if (iExact == korvenrg::kTrue) exact = ExactPValue(ranked, DirectionOf(Tail), time);
        oExact = korvenrg::AsFlag(exact.has_value());
        pVal =
            exact ? *exact : AsymptoticPValue(statistic, DirectionOf(Tail), iContinuity == korvenrg::kTrue);
    }
    oTimeSpent = korvenrg::text::ElapsedUnits(time.start, COleDateTimeGetCurrentTime());
}
