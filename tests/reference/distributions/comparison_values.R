# Upper tails of the multiple-comparison laws from R, for a cross-check beside the oracle's values:
# ptukey, and Dunnett's laws by pmvt of mvtnorm (quasi-Monte Carlo, its own error estimate in the last column).
#     Rscript tests/reference/distributions/comparison_values.R > tests/reference/distributions/comparison_r.inc

library(mvtnorm)
set.seed(1)

row <- function(...) cat(sprintf("{%s},\n", paste(vapply(list(...), format, "", digits = 15), collapse = ", ")))
cat("// law (0 range, 1 one-sided, 2 two-sided), k, first and last factor, df, t, upper tail, its error; written by",
    "comparison_values.R with R", format(getRversion()), "and mvtnorm", format(packageVersion("mvtnorm")), "\n")

equal <- sqrt(0.5)
for (s in list(c(3, 10, 2), c(4, 25.5, 3), c(10, 60, 3.5), c(6, 1000, 2.5))) {
  p <- ptukey(s[3] * sqrt(2), s[1], s[2], lower.tail = FALSE)
  row(0, s[1], equal, equal, s[2], s[3], p, 1e-8)
}

dunnett <- function(law, lambda, df, t) {
  corr <- outer(lambda, lambda)
  diag(corr) <- 1
  m <- length(lambda)
  lower <- rep(if (law == 1) -Inf else -t, m)
  p <- pmvt(lower, rep(t, m), df = df, corr = corr, algorithm = GenzBretz(maxpts = 5e6, abseps = 1e-7))
  row(law, m + 1, lambda[1], lambda[m], df, t, 1 - p[1], attr(p, "error"))
}
for (law in 1:2) {
  dunnett(law, rep(equal, 3), 16, 2.4)
  dunnett(law, seq(0.5, 0.8, length.out = 4), 11, 1.8)
  dunnett(law, seq(0.2, 0.9, length.out = 6), 40, 2.9)
}
