#include <algorithm>
#include <cmath>

#include "kernel/linalg/lanes.h"
#include "kernel/linalg/tridiagonal.h"

namespace korvenrg::linalg {

namespace {

// The working matrix, its columns padded with rows of 0 to whole lanes.
struct PaddedSquare
{
    explicit PaddedSquare(const DenseBlock& source)
        : n(source.rows), stride(RoundUp(source.rows, kLanes)), cells(stride * source.cols)
    {
        for (std::size_t j = 0; j < source.cols; ++j) {
            std::copy_n(source.Column(j), n, Column(j));
        }
    }

    double* Column(std::size_t j)
    {
        return cells.data() + j * stride;
    }

    std::size_t n;
    std::size_t stride;
    std::vector<double> cells;
};

// A reflection I - beta v v', v with zeros before `first`; and the vector w of the change
// A - v w' - w v' that it makes to the matrix.
struct Reflection
{
    std::vector<double> v;
    std::vector<double> w;
    double beta = 0.0;
};

// Columns first.. of A, changed by the last reflection, and product = A v with the next one. Four columns at a
// time share the traffic of v, w and the product.
[[gnu::always_inline]] inline void ChangeAndMultiplyBody(PaddedSquare& A,
                                                         std::size_t first,
                                                         const Reflection& last,
                                                         const double* next,
                                                         double* product)
{
    constexpr std::size_t kTogether = 4;
    const std::size_t start = first / kLanes * kLanes;
    std::fill(product + start, product + A.stride, 0.0);
    std::size_t j = first;
    for (; j + kTogether <= A.n; j += kTogether) {
        double* columns[kTogether];
        for (std::size_t c = 0; c < kTogether; ++c) {
            columns[c] = A.Column(j + c);
        }
        for (std::size_t i = start; i < A.stride; i += kLanes) {
            const Lanes v = LoadLanes(last.v.data() + i);
            const Lanes w = LoadLanes(last.w.data() + i);
            Lanes sum = LoadLanes(product + i);
            for (std::size_t c = 0; c < kTogether; ++c) {
                const Lanes cell = LoadLanes(columns[c] + i) - (v * last.w[j + c] + w * last.v[j + c]);
                StoreLanes(cell, columns[c] + i);
                sum += cell * next[j + c];
            }
            StoreLanes(sum, product + i);
        }
    }
    for (; j < A.n; ++j) {
        double* column = A.Column(j);
        for (std::size_t i = start; i < A.stride; i += kLanes) {
            const Lanes v = LoadLanes(last.v.data() + i);
            const Lanes w = LoadLanes(last.w.data() + i);
            const Lanes cell = LoadLanes(column + i) - (v * last.w[j] + w * last.v[j]);
            StoreLanes(cell, column + i);
            StoreLanes(LoadLanes(product + i) + cell * next[j], product + i);
        }
    }
}

// Multiplies kPanels panels of Q by a reflection from the right: each row less beta (row . v) v'.
template <std::size_t kPanels>
[[gnu::always_inline]] inline void ReflectPanels(double* const* panels,
                                                 std::size_t first,
                                                 std::size_t n,
                                                 const double* v,
                                                 double beta)
{
    Lanes sums[kPanels] = {};
    for (std::size_t c = first; c < n; ++c) {
        for (std::size_t p = 0; p < kPanels; ++p) {
            sums[p] += LoadLanes(panels[p] + c * kLanes) * v[c];
        }
    }
    for (std::size_t p = 0; p < kPanels; ++p) {
        sums[p] *= beta;
    }
    for (std::size_t c = first; c < n; ++c) {
        for (std::size_t p = 0; p < kPanels; ++p) {
            double* cells = panels[p] + c * kLanes;
            StoreLanes(LoadLanes(cells) - sums[p] * v[c], cells);
        }
    }
}

[[gnu::always_inline]] inline void AccumulateBody(const std::vector<Reflection>& reflections,
                                                  RowPanels& rotated)
{
    const std::size_t n = rotated.Cols();
    std::size_t p = 0;
    for (; p + 4 <= rotated.Panels(); p += 4) {
        double* panels[] = {rotated.Panel(p),
                            rotated.Panel(p + 1),
                            rotated.Panel(p + 2),
                            rotated.Panel(p + 3)};
        for (std::size_t k = 0; k < reflections.size(); ++k) {
            if (reflections[k].beta == 0.0) continue;
            ReflectPanels<4>(panels, k + 1, n, reflections[k].v.data(), reflections[k].beta);
        }
    }
    for (; p < rotated.Panels(); ++p) {
        double* panels[] = {rotated.Panel(p)};
        for (std::size_t k = 0; k < reflections.size(); ++k) {
            if (reflections[k].beta == 0.0) continue;
            ReflectPanels<1>(panels, k + 1, n, reflections[k].v.data(), reflections[k].beta);
        }
    }
}

KORVEN_FOR_AVX512 void ChangeAndMultiplyAvx512(PaddedSquare& A,
                                               std::size_t first,
                                               const Reflection& last,
                                               const double* next,
                                               double* product)
{
    ChangeAndMultiplyBody(A, first, last, next, product);
}

KORVEN_FOR_AVX2 void ChangeAndMultiplyAvx2(PaddedSquare& A,
                                           std::size_t first,
                                           const Reflection& last,
                                           const double* next,
                                           double* product)
{
    ChangeAndMultiplyBody(A, first, last, next, product);
}

void ChangeAndMultiplyBaseline(PaddedSquare& A,
                               std::size_t first,
                               const Reflection& last,
                               const double* next,
                               double* product)
{
    ChangeAndMultiplyBody(A, first, last, next, product);
}

KORVEN_FOR_AVX512 void AccumulateAvx512(const std::vector<Reflection>& reflections, RowPanels& rotated)
{
    AccumulateBody(reflections, rotated);
}

KORVEN_FOR_AVX2 void AccumulateAvx2(const std::vector<Reflection>& reflections, RowPanels& rotated)
{
    AccumulateBody(reflections, rotated);
}

void AccumulateBaseline(const std::vector<Reflection>& reflections, RowPanels& rotated)
{
    AccumulateBody(reflections, rotated);
}

struct Kernels
{
    decltype(&ChangeAndMultiplyBaseline) changeAndMultiply;
    decltype(&AccumulateBaseline) accumulate;
};

Kernels BestKernels()
{
    switch (BestInstructionSet()) {
        case InstructionSet::kAvx512:
            return {ChangeAndMultiplyAvx512, AccumulateAvx512};
        case InstructionSet::kAvx2:
            return {ChangeAndMultiplyAvx2, AccumulateAvx2};
        default:
            return {ChangeAndMultiplyBaseline, AccumulateBaseline};
    }
}

// The last change, to one column alone.
void ChangeColumn(PaddedSquare& A, std::size_t j, const Reflection& last)
{
    double* column = A.Column(j);
    for (std::size_t i = j; i < A.n; ++i) {
        column[i] -= last.v[i] * last.w[j] + last.w[i] * last.v[j];
    }
}

// The reflection that maps a column from `first` on to its leading cell, and what that cell becomes. Nothing to
// reflect gives beta 0.
Reflection ReflectionOf(const double* column, std::size_t first, const PaddedSquare& A, double& leading)
{
    Reflection reflection{std::vector<double>(A.stride), std::vector<double>(A.stride), 0.0};
    double largest = 0.0;
    for (std::size_t i = first + 1; i < A.n; ++i) {
        largest = std::max(largest, std::fabs(column[i]));
    }
    leading = column[first];
    if (largest == 0.0) return reflection;

    // On the scale of the largest cell, so that squares stay in the range.
    largest = std::max(largest, std::fabs(leading));
    double sum = 0.0;
    for (std::size_t i = first; i < A.n; ++i) {
        reflection.v[i] = column[i] / largest;
        sum += reflection.v[i] * reflection.v[i];
    }
    const double length = std::sqrt(sum);
    const double image = reflection.v[first] > 0.0 ? -length : length;
    reflection.v[first] -= image;
    reflection.beta = -1.0 / (image * reflection.v[first]);
    leading = image * largest;
    return reflection;
}

// w = beta A v - (beta^2 / 2) (v' A v) v.
void FinishChange(Reflection& reflection,
                  const std::vector<double>& product,
                  std::size_t first,
                  std::size_t n)
{
    double form = 0.0;
    for (std::size_t i = first; i < n; ++i) {
        reflection.w[i] = reflection.beta * product[i];
        form += reflection.w[i] * reflection.v[i];
    }
    const double share = 0.5 * reflection.beta * form;
    for (std::size_t i = first; i < n; ++i) {
        reflection.w[i] -= share * reflection.v[i];
    }
}

}  // namespace

Tridiagonal ReduceToTridiagonal(const DenseBlock& A, RowPanels& rotated)
{
    const Kernels kernels = BestKernels();
    PaddedSquare work(A);
    const std::size_t n = work.n;
    Tridiagonal result{std::vector<double>(n), std::vector<double>(n > 0 ? n - 1 : 0)};
    std::vector<Reflection> reflections;
    std::vector<double> product(work.stride);
    Reflection last{std::vector<double>(work.stride), std::vector<double>(work.stride), 0.0};
    for (std::size_t k = 0; k + 1 < n; ++k) {
        ChangeColumn(work, k, last);
        result.diagonal[k] = work.Column(k)[k];
        Reflection next = ReflectionOf(work.Column(k), k + 1, work, result.offDiagonal[k]);
        kernels.changeAndMultiply(work, k + 1, last, next.v.data(), product.data());
        FinishChange(next, product, k + 1, n);
        reflections.push_back(next);
        last = std::move(next);
    }
    if (n > 0) {
        ChangeColumn(work, n - 1, last);
        result.diagonal[n - 1] = work.Column(n - 1)[n - 1];
    }

    for (std::size_t i = 0; i < n; ++i) {
        rotated(i, i) = 1.0;
    }
    kernels.accumulate(reflections, rotated);
    return result;
}

}  // namespace korvenrg::linalg
