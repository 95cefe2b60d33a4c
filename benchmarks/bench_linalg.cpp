// Kernel operations on matrices beside LAPACK over OpenBLAS on one thread, on the same data in one run.

#include <benchmark/benchmark.h>
#include <cblas.h>
#include <lapacke.h>

#include <cstddef>
#include <random>
#include <vector>

#include "kernel/linalg/eigen.h"
#include "kernel/linalg/sweep.h"

namespace {

using korvenrg::linalg::PackedSize;

// X'X of 2n rows of standard normal columns: n x n by columns, condition about 30.
std::vector<double> CrossProductsOf(int n)
{
    std::mt19937_64 generator(20241);
    std::normal_distribution<double> normal;
    const auto cols = static_cast<std::size_t>(n);
    const std::size_t rows = 2 * cols;
    std::vector<double> x(rows * cols);
    for (double& cell : x) {
        cell = normal(generator);
    }
    std::vector<double> products(cols * cols);
    for (std::size_t j = 0; j < cols; ++j) {
        for (std::size_t i = 0; i < cols; ++i) {
            double sum = 0.0;
            for (std::size_t r = 0; r < rows; ++r) {
                sum += x[i * rows + r] * x[j * rows + r];
            }
            products[j * cols + i] = sum / static_cast<double>(rows);
        }
    }
    return products;
}

// The lower triangle by rows, which is the upper triangle by columns.
std::vector<double> Packed(const std::vector<double>& full, int n)
{
    const auto size = static_cast<std::size_t>(n);
    std::vector<double> packed;
    packed.reserve(PackedSize(size));
    for (std::size_t i = 0; i < size; ++i) {
        for (std::size_t j = 0; j <= i; ++j) {
            packed.push_back(full[j * size + i]);
        }
    }
    return packed;
}

void BM_Eigen(benchmark::State& state)
{
    const int n = static_cast<int>(state.range(0));
    std::vector<double> cells = CrossProductsOf(n);
    matrix<double> A(n, n, cells.data(), true);
    matrix<double>* values = nullptr;
    matrix<double>* vectors = nullptr;
    for (auto _ : state) {
        if (M_Eigen(&A, values, vectors, n, -1) != 0) state.SkipWithError("no decomposition");
        benchmark::DoNotOptimize(vectors->data);
    }
    delete values;
    delete vectors;
}

void BM_EigenDsyev(benchmark::State& state)
{
    openblas_set_num_threads(1);
    const int n = static_cast<int>(state.range(0));
    const std::vector<double> cells = CrossProductsOf(n);
    std::vector<double> values(static_cast<std::size_t>(n));
    for (auto _ : state) {
        std::vector<double> work = cells;
        LAPACKE_dsyev(LAPACK_COL_MAJOR, 'V', 'L', n, work.data(), n, values.data());
        benchmark::DoNotOptimize(work.data());
    }
}

// Divide and conquer.
void BM_EigenDsyevd(benchmark::State& state)
{
    openblas_set_num_threads(1);
    const int n = static_cast<int>(state.range(0));
    const std::vector<double> cells = CrossProductsOf(n);
    std::vector<double> values(static_cast<std::size_t>(n));
    for (auto _ : state) {
        std::vector<double> work = cells;
        LAPACKE_dsyevd(LAPACK_COL_MAJOR, 'V', 'L', n, work.data(), n, values.data());
        benchmark::DoNotOptimize(work.data());
    }
}

void BM_SweepAll(benchmark::State& state)
{
    const int n = static_cast<int>(state.range(0));
    const std::vector<double> packed = Packed(CrossProductsOf(n), n);
    for (auto _ : state) {
        std::vector<double> work = packed;
        matrix<double> view(static_cast<int>(work.size()), 1, work.data(), true);
        for (int k = 1; k <= n; ++k) {
            M_Sweep(&view, n, k);
        }
        benchmark::DoNotOptimize(work.data());
    }
}

// Full storage: dsytrf and dsytri.
void BM_SweepAllDsytri(benchmark::State& state)
{
    openblas_set_num_threads(1);
    const int n = static_cast<int>(state.range(0));
    const std::vector<double> cells = CrossProductsOf(n);
    std::vector<lapack_int> pivots(static_cast<std::size_t>(n));
    for (auto _ : state) {
        std::vector<double> work = cells;
        LAPACKE_dsytrf(LAPACK_COL_MAJOR, 'L', n, work.data(), n, pivots.data());
        LAPACKE_dsytri(LAPACK_COL_MAJOR, 'L', n, work.data(), n, pivots.data());
        benchmark::DoNotOptimize(work.data());
    }
}

// Packed storage: dsptrf and dsptri.
void BM_SweepAllDsptri(benchmark::State& state)
{
    openblas_set_num_threads(1);
    const int n = static_cast<int>(state.range(0));
    const std::vector<double> packed = Packed(CrossProductsOf(n), n);
    std::vector<lapack_int> pivots(static_cast<std::size_t>(n));
    for (auto _ : state) {
        std::vector<double> work = packed;
        LAPACKE_dsptrf(LAPACK_COL_MAJOR, 'U', n, work.data(), pivots.data());
        LAPACKE_dsptri(LAPACK_COL_MAJOR, 'U', n, work.data(), pivots.data());
        benchmark::DoNotOptimize(work.data());
    }
}

BENCHMARK(BM_Eigen)->Arg(50)->Arg(200)->Arg(500)->Unit(benchmark::kMicrosecond);
BENCHMARK(BM_EigenDsyev)->Arg(50)->Arg(200)->Arg(500)->Unit(benchmark::kMicrosecond);
BENCHMARK(BM_EigenDsyevd)->Arg(50)->Arg(200)->Arg(500)->Unit(benchmark::kMicrosecond);
BENCHMARK(BM_SweepAll)->Arg(50)->Arg(200)->Unit(benchmark::kMicrosecond);
BENCHMARK(BM_SweepAllDsytri)->Arg(50)->Arg(200)->Unit(benchmark::kMicrosecond);
BENCHMARK(BM_SweepAllDsptri)->Arg(50)->Arg(200)->Unit(benchmark::kMicrosecond);

}  // namespace
