# The values that bench_comparisons.cpp makes, in R. For each procedure two times in milliseconds of processor time, the best of five: one
# critical value for each different one and one p-value a row; and both for each row, as a vectorised call gives them.
k <- 30; df <- 262; alpha <- 0.05
i <- rep(1:k, k - 1:k); j <- unlist(lapply(1:(k - 1), function(i) k:(i + 1)))
n <- 6 + (((1:k) - 1) * 5) %% 8; v <- 1 + (((1:k) - 1) * 7) %% 13 * 0.2
d <- 0.8 * (i - j); t <- abs(d) / sqrt(2 / n[i] + 2 / n[j]); m <- j - i + 1
a <- v[i] / n[i]; b <- v[j] / n[j]; tw <- abs(d) / sqrt(a + b); dw <- (a + b)^2 / (a^2 / (n[i] - 1) + b^2 / (n[j] - 1))
r2 <- sqrt(2)
time <- function(f) 1000 * min(replicate(5, system.time(for (r in 1:4) f())[["user.self"]])) / 4
once <- function(f, ...) {                                   # f for each different row of arguments
  key <- paste(...); first <- !duplicated(key)
  do.call(f, lapply(list(...), function(x) x[first]))[match(key, key[first])]
}
report <- function(code, q, p, ..., rows = rep(TRUE, length(t))) {
  args <- lapply(list(...), function(x) rep_len(x, length(t))[rows])
  shared <- time(function() { do.call(once, c(list(q), args)); p(rows) })
  each <- time(function() { do.call(q, args); p(rows) })
  cat(sprintf("procedure %2d: shared critical values %8.2f ms, one for each row %8.2f ms, tested %d, sum %.10g\n", code, shared,
              each, sum(rows), sum(do.call(q, args)) + sum(pmax(p(rows), 0))))
}
tukey_q <- function(level, means, df) qtukey(1 - level, means, df) / r2
student_q <- function(level, df) qt(1 - level / 2, df)
report(1, tukey_q, function(r) ptukey(t[r] * r2, k, df, lower.tail = FALSE), alpha, k, df)
for (code in 2:4)
  report(code, student_q, function(r) 2 * pt(-t[r], df), c(alpha, 2 * alpha / k / (k - 1), 1 - (1 - alpha)^(2 / k / (k - 1)))[code - 1], df)
walk <- function(p, level) {                                 # the rows that a stepwise procedure tests
  tested <- logical(length(p)); B <- 0
  for (r in seq_along(p)) { tested[r] <- m[r] >= B; B <- if (tested[r] && p[r] < level[r]) 0 else m[r] }
  tested
}
range_p <- function(r) ptukey(t[r] * r2, m[r], df, lower.tail = FALSE)
all_p <- range_p(rep(TRUE, length(t)))
level <- rep(alpha, length(t)); report(5, tukey_q, range_p, level, m, df, rows = walk(all_p, level))
level <- 1 - (1 - alpha)^(m - 1); report(6, tukey_q, range_p, level, m, df, rows = walk(all_p, level))
level <- ifelse(m >= k - 1, alpha, 1 - (1 - alpha)^(m / k)); crit <- tukey_q(level, m, df); means <- m
for (r in (length(t) - 1):1) if (crit[r] < crit[r + 1]) { crit[r] <- crit[r + 1]; level[r] <- level[r + 1]; means[r] <- means[r + 1] }
report(7, tukey_q, range_p, level, means, df, rows = walk(all_p, level))
report(9, tukey_q, function(r) ptukey(tw[r] * r2, k, dw[r], lower.tail = FALSE), alpha, k, dw)
report(10, student_q, function(r) -expm1(435 * log1p(-2 * pt(-tw[r], dw[r]))), 1 - (1 - alpha)^(1 / 435), dw)
procedure_c <- function(q) (q[i] * a + q[j] * b) / (a + b)     # from a critical value for each group
shared <- time(function() procedure_c(tukey_q(alpha, k, 5:12)[n - 5]))
each <- time(function() { qi <- tukey_q(alpha, k, n[i] - 1); qj <- tukey_q(alpha, k, n[j] - 1); (qi * a + qj * b) / (a + b) })
cat(sprintf("procedure 11: shared critical values %8.2f ms, one for each row %8.2f ms, sum %.10g\n", shared, each,
            sum(procedure_c(tukey_q(alpha, k, n - 1)))))
