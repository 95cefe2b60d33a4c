#include <algorithm>
#include <cmath>
#include <cstddef>
#include <utility>

#include "core/limits.h"
#include "kernel/linalg/lanes.h"
#include "kernel/linalg/tridiagonal.h"

namespace korvenrg::linalg {

namespace {

constexpr std::size_t kMostChases = 60;     // per eigenvalue, all in all; two are usual
constexpr std::size_t kMostPending = 4096;  // rotations, which fill an eighth of a usual second-level cache

struct Rotation
{
    double c;
    double s;
};

/** A chase through a block of T, from position `start` in steps of `step`, and the rotations it made. */
struct Chase
{
    std::ptrdiff_t start;
    std::ptrdiff_t step;
    std::vector<Rotation> rotations;
};

// The rotation that turns (x, z) to (r, 0). Tiny pairs are scaled up, since their squares would leave the range.
Rotation RotationOf(double x, double z, double& r)
{
    constexpr double kTiny = 0x1p-400;
    constexpr double kUp = 0x1p500;
    if (z == 0.0) {
        r = x;
        return {1.0, 0.0};
    }
    const bool tiny = std::fabs(x) < kTiny && std::fabs(z) < kTiny;
    const double scale = tiny ? kUp : 1.0;
    const double a = x * scale;
    const double b = z * scale;
    const double length = std::sqrt(a * a + b * b);
    r = length / scale;
    return {a / length, b / length};
}

// The eigenvalue of the last 2 x 2 corner that is nearer to its last cell.
double WilkinsonShift(double before, double between, double last)
{
    if (between == 0.0) return last;
    const double half = 0.5 * (before - last);
    const double root = std::sqrt(half * half + between * between);
    const double sum = half > 0.0 ? half + root : half - root;
    return last - between * (between / sum);
}

// One implicit QR step on `length` cells of the diagonal from `chase.start` on.
void ChaseBulge(Tridiagonal& t, std::size_t length, Chase& chase)
{
    const std::ptrdiff_t step = chase.step;
    double* d = t.diagonal.data() + chase.start;
    // The cell between d[k] and d[k + 1], in the direction of the chase.
    double* e = t.offDiagonal.data() + chase.start - (step < 0 ? 1 : 0);
    const auto at = [step](double* cells, std::size_t k) -> double& {
        return cells[step * static_cast<std::ptrdiff_t>(k)];
    };
    chase.rotations.reserve(length - 1);
    const double shift = WilkinsonShift(at(d, length - 2), at(e, length - 2), at(d, length - 1));
    double x = at(d, 0) - shift;
    double z = at(e, 0);
    for (std::size_t k = 0; k + 1 < length; ++k) {
        double r = 0.0;
        const Rotation rotation = RotationOf(x, z, r);
        const auto [c, s] = rotation;
        chase.rotations.push_back(rotation);
        if (k > 0) at(e, k - 1) = r;
        const double between = at(e, k);
        const double turn = s * (at(d, k + 1) - at(d, k)) + 2.0 * c * between;
        at(d, k) += s * turn;
        at(d, k + 1) -= s * turn;
        x = c * turn - between;
        at(e, k) = x;
        if (k + 2 < length) {
            z = s * at(e, k + 1);
            at(e, k + 1) *= c;
        }
    }
}

// Applies the rotations of a chase to the columns of kPanels panels. The column that two neighbouring rotations
// share stays in registers.
template <std::size_t kPanels>
[[gnu::always_inline]] inline void RotatePanels(double* const* panels, const Chase& chase)
{
    const std::ptrdiff_t stride = chase.step * kLanes;
    std::ptrdiff_t offset = chase.start * kLanes;
    Lanes left[kPanels];
    for (std::size_t p = 0; p < kPanels; ++p) {
        left[p] = LoadLanes(panels[p] + offset);
    }
    for (const Rotation& rotation : chase.rotations) {
        for (std::size_t p = 0; p < kPanels; ++p) {
            const Lanes right = LoadLanes(panels[p] + offset + stride);
            StoreLanes(left[p] * rotation.c + right * rotation.s, panels[p] + offset);
            left[p] = right * rotation.c - left[p] * rotation.s;
        }
        offset += stride;
    }
    for (std::size_t p = 0; p < kPanels; ++p) {
        StoreLanes(left[p], panels[p] + offset);
    }
}

[[gnu::always_inline]] inline void RotateBody(RowPanels& rotated, const std::vector<Chase>& chases)
{
    std::size_t p = 0;
    for (; p + 4 <= rotated.Panels(); p += 4) {
        double* panels[] = {rotated.Panel(p),
                            rotated.Panel(p + 1),
                            rotated.Panel(p + 2),
                            rotated.Panel(p + 3)};
        for (const Chase& chase : chases) {
            RotatePanels<4>(panels, chase);
        }
    }
    for (; p < rotated.Panels(); ++p) {
        double* panels[] = {rotated.Panel(p)};
        for (const Chase& chase : chases) {
            RotatePanels<1>(panels, chase);
        }
    }
}

KORVEN_FOR_AVX512 void RotateAvx512(RowPanels& rotated, const std::vector<Chase>& chases)
{
    RotateBody(rotated, chases);
}

KORVEN_FOR_AVX2 void RotateAvx2(RowPanels& rotated, const std::vector<Chase>& chases)
{
    RotateBody(rotated, chases);
}

void RotateBaseline(RowPanels& rotated, const std::vector<Chase>& chases)
{
    RotateBody(rotated, chases);
}

auto BestRotate()
{
    switch (BestInstructionSet()) {
        case InstructionSet::kAvx512:
            return RotateAvx512;
        case InstructionSet::kAvx2:
            return RotateAvx2;
        default:
            return RotateBaseline;
    }
}

// Chases that wait for their rotations to be applied: each panel is then fetched once for all of them.
class PendingChases
{
  public:
    explicit PendingChases(RowPanels& rotated) : rotated_(rotated), rotate_(BestRotate()) {}

    void Add(Chase chase)
    {
        rotations_ += chase.rotations.size();
        chases_.push_back(std::move(chase));
        if (rotations_ >= kMostPending) Apply();
    }

    void Apply()
    {
        rotate_(rotated_, chases_);
        chases_.clear();
        rotations_ = 0;
    }

  private:
    RowPanels& rotated_;
    decltype(BestRotate()) rotate_;
    std::vector<Chase> chases_;
    std::size_t rotations_ = 0;
};

// Whether a cell off the diagonal is nothing beside its neighbours.
bool Negligible(const Tridiagonal& t, std::size_t k)
{
    const double neighbours = std::fabs(t.diagonal[k]) + std::fabs(t.diagonal[k + 1]);
    constexpr double kNothing = 0x1p-1000;  // the matrix is of the size of 1
    return std::fabs(t.offDiagonal[k]) <= kEps * neighbours || std::fabs(t.offDiagonal[k]) <= kNothing;
}

}  // namespace

bool DiagonalizeTridiagonal(Tridiagonal& t, RowPanels& rotated)
{
    PendingChases pending(rotated);
    std::size_t last = t.diagonal.size();  // the cells from here on are eigenvalues
    std::size_t blockFirst = last;         // of the block that `down` was chosen for
    std::size_t blockLast = last;
    bool down = true;
    std::size_t chasesLeft = kMostChases * last;
    while (last > 1) {
        std::size_t first = last - 1;
        while (first > 0 && !Negligible(t, first - 1)) {
            first -= 1;
        }
        if (first > 0) t.offDiagonal[first - 1] = 0.0;
        const std::size_t length = last - first;
        if (length == 1) {
            last -= 1;
            continue;
        }
        if (chasesLeft == 0) return false;
        chasesLeft -= 1;
        if (first != blockFirst || last != blockLast) {
            blockFirst = first;
            blockLast = last;
            down = std::fabs(t.diagonal[first]) >= std::fabs(t.diagonal[last - 1]);
        }
        Chase chase{static_cast<std::ptrdiff_t>(down ? first : last - 1), down ? 1 : -1, {}};
        ChaseBulge(t, length, chase);
        pending.Add(std::move(chase));
    }
    pending.Apply();
    return true;
}

}  // namespace korvenrg::linalg
