// Products and moments of the kernel beside OpenBLAS on one thread, in one run.

#include <benchmark/benchmark.h>
#include <cblas.h>

#include <random>
#include <vector>

#include "core/limits.h"
#include "kernel/linalg/column_moments.h"
#include "kernel/linalg/products.h"

namespace {

using Table = matrix<double>;
using korvenrg::kFalse;
using korvenrg::kTrue;

constexpr int kSquare = 500;
constexpr int kRows = 100000;
constexpr int kColumns = 50;

Table Normal(int rows, int cols)
{
    std::mt19937_64 generator(20243);
    std::normal_distribution<double> normal(3.0, 1.0);
    Table table(rows, cols);
    for (int k = 1; k <= static_cast<int>(table.total); ++k) {
        table.vbset(k, normal(generator));
    }
    return table;
}

void ProductAB(benchmark::State& state)
{
    Table A = Normal(kSquare, kSquare);
    Table B = Normal(kSquare, kSquare);
    Table C(kSquare, kSquare);
    Table* out = &C;
    for (auto _ : state) {
        M_ProductAB(&A, kSquare, kSquare, &B, kSquare, out);
        benchmark::DoNotOptimize(C.data);
    }
}
BENCHMARK(ProductAB)->Unit(benchmark::kMillisecond);

void ProductAB_dgemm(benchmark::State& state)
{
    openblas_set_num_threads(1);
    Table A = Normal(kSquare, kSquare);
    Table B = Normal(kSquare, kSquare);
    Table C(kSquare, kSquare);
    for (auto _ : state) {
        cblas_dgemm(CblasColMajor,
                    CblasNoTrans,
                    CblasNoTrans,
                    kSquare,
                    kSquare,
                    kSquare,
                    1.0,
                    A.data,
                    kSquare,
                    B.data,
                    kSquare,
                    0.0,
                    C.data,
                    kSquare);
        benchmark::DoNotOptimize(C.data);
    }
}
BENCHMARK(ProductAB_dgemm)->Unit(benchmark::kMillisecond);

void ProductTrADiagVA(benchmark::State& state)
{
    Table A = Normal(kRows, kColumns);
    Table v(kRows, 1, 0.5);
    Table C(kColumns, kColumns);
    for (auto _ : state) {
        M_ProductTrADiagVA(&A, kRows, kColumns, &v, &C);
        benchmark::DoNotOptimize(C.data);
    }
}
BENCHMARK(ProductTrADiagVA)->Unit(benchmark::kMillisecond);

void Moments(benchmark::State& state)
{
    Table A = Normal(kRows, kColumns);
    Table W(kRows, 1, 0.5);
    Table R(kColumns, kColumns);
    Table mean(kColumns, 1);
    Table sd(kColumns, 1);
    Table variance(kColumns, 1);
    Table* outputs[] = {&R, &mean, &sd, &variance};
    for (auto _ : state) {
        M_CovCorrAndMeanStDevVar(&A,
                                 kRows,
                                 kColumns,
                                 outputs[0],
                                 outputs[1],
                                 outputs[2],
                                 outputs[3],
                                 kTrue,
                                 nullptr,
                                 &W,
                                 kTrue,
                                 kTrue,
                                 kFalse,
                                 kFalse,
                                 kTrue);
        benchmark::DoNotOptimize(R.data);
    }
}
BENCHMARK(Moments)->Unit(benchmark::kMillisecond);

void CrossProducts_dsyrk(benchmark::State& state)
{
    openblas_set_num_threads(1);
    Table A = Normal(kRows, kColumns);
    Table C(kColumns, kColumns);
    for (auto _ : state) {
        cblas_dsyrk(CblasColMajor,
                    CblasLower,
                    CblasTrans,
                    kColumns,
                    kRows,
                    1.0,
                    A.data,
                    kRows,
                    0.0,
                    C.data,
                    kColumns);
        benchmark::DoNotOptimize(C.data);
    }
}
BENCHMARK(CrossProducts_dsyrk)->Unit(benchmark::kMillisecond);

}  // namespace
