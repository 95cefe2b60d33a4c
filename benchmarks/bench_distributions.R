# Times R's distribution functions on the arguments of bench_distributions.cpp: processor nanoseconds per call of one vectorised
# call over 1000 arguments (100 for the studentized range), the best of 15 repetitions.
#     Rscript benchmarks/bench_distributions.R

spread <- function(i, irrational) { m <- (i + 0.5) * irrational; m - floor(m) }
i <- 0:999
probability <- spread(i, 0.6180339887498949)
deviate <- 8 * spread(i, 0.4142135623730951) - 4
regimes <- list(c(1, 1000), c(2, 2), c(1, 3), c(5, 25.5), c(60, 200.5), c(2, 1e6), c(5000, 3000), c(1e6, 1e6))

nanoseconds <- function(call, calls) {
  repeats <- 1
  processor <- function() sum(system.time(for (k in seq_len(repeats)) call())[c("user.self", "sys.self")])
  repeat {
    time <- processor()
    if (time > 0.02) break
    repeats <- repeats * 2
  }
  best <- min(replicate(15, processor()))
  best / repeats / calls * 1e9
}

report <- function(name, call, calls = length(i)) cat(sprintf("%-34s %9.0f\n", name, nanoseconds(call, calls)))

for (df in regimes) {
  tag <- sprintf("/ df %g, %g", df[1], df[2])
  fArgument <- exp(deviate * sqrt(2 / df[1] + 2 / df[2]))
  xArgument <- df[2] * exp(deviate * sqrt(2 / df[2]))
  report(paste("pF", tag), function() pf(fArgument, df[1], df[2], lower.tail = FALSE))
  report(paste("qF", tag), function() suppressWarnings(qf(probability, df[1], df[2])))
  report(paste("pt", tag), function() pt(abs(deviate), df[2], lower.tail = FALSE))
  report(paste("qt", tag), function() qt(probability, df[2]))
  report(paste("pchisq", tag), function() pchisq(xArgument, df[2], lower.tail = FALSE))
  report(paste("qchisq", tag), function() qchisq(probability, df[2]))
}
report("pnorm", function() pnorm(deviate, lower.tail = FALSE))
report("qnorm", function() qnorm(probability))
report("lgamma", function() lgamma(100 * probability))
report("digamma", function() digamma(100 * probability))
report("trigamma", function() trigamma(100 * probability))

for (k in c(3, 5, 10, 30, 100)) for (df in c(2, 10, 60, 10000)) {
  tag <- sprintf(", k %d df %g", k, df)
  beside <- qtukey(0.95, k, df) * (0.9 + 0.2 * probability[1:100])
  conf <- 0.94 + 0.02 * probability[1:100]
  report(paste0("range tail", tag), function() ptukey(beside, k, df, lower.tail = FALSE), 100)
  report(paste0("range quantile", tag), function() qtukey(conf, k, df), 100)
}
for (p in c(0.3, 0.01)) for (n in c(10, 100, 1e4, 1e6)) {
  tag <- sprintf(", n %g p %g", n, p)
  count <- pmin(pmax(floor(n * p + deviate * sqrt(n * p * (1 - p))), 0), n)
  report(paste0("pbinom lower", tag), function() pbinom(count, n, p))
  report(paste0("pbinom upper", tag), function() pbinom(count, n, p, lower.tail = FALSE))
  report(paste0("dbinom", tag), function() dbinom(count, n, p))
}
for (n in c(60, 1e4, 1e6)) {
  marked <- floor(n / 3)
  drawn <- floor(n / 4)
  count <- floor(n / 12 + deviate * sqrt(n / 4 / 3 * (2 / 3) * (3 / 4)))
  report(sprintf("hypergeometric, n %g", n), function() phyper(count, marked, n - marked, drawn))
}
