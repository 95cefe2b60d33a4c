# Two-sided tails of Dunnett's law for unequal group sizes by mvtnorm, on the arguments of bench_distributions.cpp.
#
#   Rscript benchmarks/bench_dunnett.R        (from the root of the checkout; r-cran-mvtnorm)
library(mvtnorm)
for (k in c(10, 30)) {
  n <- 5 + seq_len(k - 1) %% 11
  lambda <- sqrt(n / (9 + n))
  correlation <- outer(lambda, lambda)
  diag(correlation) <- 1
  tail <- function() 1 - pmvt(lower = rep(-2.8, k - 1), upper = rep(2.8, k - 1), df = 60, corr = correlation)
  set.seed(1)
  p <- tail()
  ms <- 1000 * system.time(for (i in 1:20) tail())[["elapsed"]] / 20
  cat(sprintf("k %d: p %.6f, error bound %.1e, %.1f ms\n", k, p, attr(p, "error"), ms))
}
