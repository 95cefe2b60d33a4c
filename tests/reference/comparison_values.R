# Writes comparison_values.txt: contrast tables of real one-way layouts and what each procedure must write into them.
#
#   Rscript tests/reference/comparison_values.R        (from the root of the checkout)
#
# Lines as in linear_values.txt. Tukey and Games-Howell from ptukey and qtukey, which have the engine's scheme below 25000
# degrees of freedom; LSD, Bonferroni, Sidak and Tamhane from t.test, pairwise.t.test, pt and qt; Newman-Keuls, Duncan
# and REGWQ from the range's law by nested integrate(), walked as the engine walks (WALK); Dunnett's tests from the double
# integral by integrate(), and checked against multcomp's simulation. Needs multcomp.

suppressMessages(library(multcomp))
options(digits = 17)
KEPT <- Inf
ALPHA <- 0.05
out <- file("tests/reference/comparison_values.txt", "w")

put <- function(name, x) {
  x <- as.matrix(x)
  cells <- ifelse(is.na(x), "missing", ifelse(is.infinite(x), "kept", sprintf("%.17g", x)))
  writeLines(paste(c(name, dim(x), cells), collapse = " "), out)
}

# ---- laws by integration ----

over_scale <- function(df, chance) {                          # E chance(s), df s^2 chi-square with df degrees
  ends <- sqrt(qchisq(c(1e-17, 1 - 1e-16), df) / df); ends[2] <- ends[2] * 1.3
  f <- function(s) 2 * df * s * dchisq(df * s^2, df) * vapply(s, chance, 0)
  at <- c(ends[1], 0.6, 1, 1.5, ends[2]); at <- sort(at[at >= ends[1] & at <= ends[2]])
  sum(mapply(function(a, b) integrate(f, a, b, rel.tol = 1e-11, subdivisions = 400)$value, head(at, -1), tail(at, -1)))
}
over_normal <- function(g)
  integrate(function(z) dnorm(z) * g(z), -9, 0, rel.tol = 1e-12, subdivisions = 400)$value +
  integrate(function(z) dnorm(z) * g(z), 0, 9, rel.tol = 1e-12, subdivisions = 400)$value
range_p <- function(t, m, df) if (m == 2) 2 * pt(-t, df) else {
  w <- t * sqrt(2)
  over_scale(df, function(s) over_normal(function(z) m * (pnorm(-z)^(m - 1) - (pnorm(-z) - pnorm(-z - w * s))^(m - 1))))
}
dunnett_p <- function(t, lambda, df, two) over_scale(df, function(s) over_normal(function(z) {
  log_inside <- 0
  for (l in lambda) {
    r <- sqrt(1 - l^2)
    log_inside <- log_inside + if (two) log1p(-pnorm((-t * s - l * z) / r) - pnorm((l * z - t * s) / r))
                               else pnorm((t * s - l * z) / r, log.p = TRUE)
  }
  -expm1(log_inside)
}))
critical <- function(p, level, start)                         # p falling
  uniroot(function(t) log(p(t)) - log(level), start * c(0.4, 1.8), tol = 1e-13)$root
range_crit <- local({
  known <- list()
  function(m, level, df) {
    key <- paste(m, sprintf("%.15g", level), df)
    if (is.null(known[[key]])) known[[key]] <<- critical(function(t) range_p(t, m, df), level, qtukey(1 - level, m, df) / sqrt(2))
    known[[key]]
  }
})

# ---- one layout ----

layout <- function(name, y, g, control, worst) {
  g <- factor(g); k <- nlevels(g); fit <- aov(y ~ g); df <- fit$df.residual; mse <- deviance(fit) / df
  n <- as.vector(table(g)); means <- as.vector(tapply(y, g, mean)); v <- as.vector(tapply(y, g, var))
  ranks <- order(means)
  pairs <- do.call(rbind, lapply(1:(k - 1), function(i) cbind(i, k:(i + 1))))   # ranges fall along a first rank
  a <- ranks[pairs[, 1]]; b <- ranks[pairs[, 2]]; rows <- nrow(pairs)
  d <- means[a] - means[b]; variance <- mse * (1 / n[a] + 1 / n[b]); t <- d / sqrt(variance); m <- pairs[, 2] - pairs[, 1] + 1
  empty <- rep(KEPT, rows)
  writeLines(paste("case", name), out)
  put("setup", c(k, df, ALPHA, control))
  put("sizes", n); put("variances", v)
  put("contrasts", cbind(d, variance, pairs, KEPT, KEPT, KEPT, KEPT, a, b))

  record <- function(code, t, crit, p, level = empty, verdict = as.numeric(abs(t) > crit), newalpha = KEPT)
    { put(paste0("test", code), cbind(t, crit, p, level)); put(paste0("verdict", code), verdict); put(paste0("level", code), newalpha) }
  named <- function(m) m[cbind(pmax(a, b), pmin(a, b))]       # cells of a table of pairs, by level
  square <- function(p) { s <- matrix(NA, k, k); s[2:k, 1:(k - 1)] <- p; s }
  pooled <- function(adjust) named(square(pairwise.t.test(y, g, p.adjust.method = adjust)$p.value))

  hsd <- TukeyHSD(fit)$g
  printed <- named({ s <- matrix(NA, k, k); s[lower.tri(s)] <- hsd[, "p adj"]; s })        # to seven decimals
  p <- ptukey(abs(t) * sqrt(2), k, df, lower.tail = FALSE)
  stopifnot(abs(p - printed) < 1e-7)
  record(1, t, rep(qtukey(1 - ALPHA, k, df) / sqrt(2), rows), p)
  p <- pooled("none")
  record(2, t, rep(qt(1 - ALPHA / 2, df), rows), p)
  level <- 2 * ALPHA / k / (k - 1); crit <- rep(qt(1 - level / 2, df), rows)
  stopifnot((abs(t) > crit) == (pooled("bonferroni") < ALPHA))
  record(3, t, crit, p, newalpha = level)
  level <- 1 - (1 - ALPHA)^(2 / k / (k - 1))
  record(4, t, rep(qt(1 - level / 2, df), rows), p, newalpha = level)

  # WALK: the barrier over the rows in their order
  p <- mapply(function(t, m) range_p(abs(t), m, df), t, m)
  walk <- function(code, level, crit) {
    shown <- cbind(crit, p, level); verdict <- numeric(rows); B <- 0
    for (r in 1:rows) {
      tested <- m[r] >= B
      if (!tested) shown[r, ] <- NA
      verdict[r] <- as.numeric(tested && p[r] < level[r])
      B <- if (verdict[r]) 0 else m[r]
    }
    last <- if (code == 6) { l <- shown[, 3]; tail(l[!is.na(l)], 1) } else KEPT
    record(code, t, shown[, 1], shown[, 2], shown[, 3], verdict, last)
    verdict
  }
  crits <- function(level) mapply(function(m, l) range_crit(m, l, df), m, level)
  walk(5, rep(ALPHA, rows), crits(rep(ALPHA, rows)))
  level <- 1 - (1 - ALPHA)^(m - 1)
  walk(6, level, crits(level))
  level <- ifelse(m >= k - 1, ALPHA, 1 - (1 - ALPHA)^(m / k)); crit <- crits(level)
  for (r in (rows - 1):1) if (crit[r] < crit[r + 1]) { crit[r] <- crit[r + 1]; level[r] <- level[r + 1] }
  walk(7, level, crit)

  # unequal variances
  welch <- mapply(function(i, j) { w <- t.test(y[g == levels(g)[i]], y[g == levels(g)[j]]); c(w$statistic, w$parameter, w$p.value) }, a, b)
  tw <- welch[1, ]; dw <- welch[2, ]; L <- k * (k - 1)
  record(9, tw, qtukey(1 - ALPHA, k, dw) / sqrt(2), ptukey(abs(tw) * sqrt(2), k, dw, lower.tail = FALSE))
  level <- 1 - (1 - ALPHA)^(2 / L)
  record(10, tw, qt(1 - level / 2, dw), -expm1(L / 2 * log1p(-welch[3, ])))
  q <- if (k == 2) qt(1 - ALPHA / 2, n - 1) else qtukey(1 - ALPHA, k, n - 1) / sqrt(2)
  va <- v[a] / n[a]; vb <- v[b] / n[b]
  record(11, tw, (q[a] * va + q[b] * vb) / (va + vb), rep(NA, rows))

  # false discovery rate on the LSD's p-values; the walk's end is the procedure's where no later p-value passes
  p <- pooled("none"); o <- order(p); passes <- p[o] <= seq_along(p) * ALPHA / rows
  stopifnot(all(diff(passes) <= 0))
  put("fdr", cbind(p.adjust(p, "BH"), p.adjust(p, "BH") <= ALPHA))

  # a control
  others <- setdiff(seq_len(k), control); lambda <- sqrt(n[others] / (n[others] + n[control]))
  put("factors", lambda)
  with_control <- which(a == control | b == control)
  other <- ifelse(a == control, b, a)[with_control]
  dc <- means[control] - means[other]; se <- sqrt(variance[with_control]); tc <- dc / se
  fit2 <- aov(y ~ relevel(g, levels(g)[control])); names(fit2$model)[2] <- "g"
  for (tail in c(0, -1, 1)) {
    two <- tail == 0; sign <- if (two) 1 else tail
    c0 <- critical(function(t) dunnett_p(t, lambda, df, two), ALPHA, qt(1 - ALPHA / length(lambda) / (1 + two), df))
    x <- if (two) abs(tc) else sign * tc
    p <- vapply(x, function(t) dunnett_p(t, lambda, df, two), 0)
    data <- data.frame(y, g = relevel(g, levels(g)[control]))
    test <- summary(glht(aov(y ~ g, data), mcp(g = "Dunnett"), alternative = c("greater", "two.sided", "less")[tail + 2]),
                    test = adjusted("single-step", abseps = 1e-6, maxpts = 2e6))$test
    simulated <- test$pvalues[match(levels(g)[other], levels(data$g)[-1])]
    cat(name, "tail", tail, "largest difference from multcomp:", max(abs(simulated - p)), "\n")
    stopifnot(abs(simulated - p) < worst)
    put(paste0("control", tail), cbind(dc, tc, c0 * sign, c0 * sign * se, p, control, other))
    put(paste0("control_verdict", tail), if (two) abs(tc) > c0 else sign * tc > c0)
  }
}

# Nitrogen in red clover, mg per plant (Erdman 1946; Steel and Torrie 1980, Principles and Procedures of Statistics).
clover <- c(19.4, 32.6, 27.0, 32.1, 33.0, 17.7, 24.8, 27.9, 25.2, 24.3, 17.0, 19.4, 9.1, 11.9, 15.8,
            20.7, 21.0, 20.5, 18.8, 18.6, 14.3, 14.4, 11.8, 11.6, 14.2, 17.3, 19.4, 19.1, 16.9, 20.8)
layout("clover", clover, rep(c("3DOk1", "3DOk5", "3DOk4", "3DOk7", "3DOk13", "composite"), each = 5), 6, 1e-5)
layout("chickwts", chickwts$weight, chickwts$feed, 5, 1e-5)
layout("PlantGrowth", PlantGrowth$weight, PlantGrowth$group, 1, 1e-5)

# The range's law at many arguments: ptukey's own values, for the scheme.
q <- c(0.5, 2, 3.5, 5, 9); cells <- expand.grid(q = q, k = c(3, 7, 20, 100), df = c(2, 5.5, 24, 150, 900, 20000))
writeLines("case scheme", out)
put("cells", cells)
put("p", with(cells, ptukey(q, k, df)))
cells <- expand.grid(p = c(0.5, 0.9, 0.95, 0.999), k = c(3, 7, 20, 100), df = c(2, 5.5, 24, 150, 900, 20000))
put("inverse", cells)
put("q", suppressWarnings(with(cells, qtukey(p, k, df))))     # missing where the secants find no value
close(out)
