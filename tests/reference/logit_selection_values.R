# Writes logit_selection_values.txt: data, and for each run of a selection on them its options, its history and the model
# it ends with; type III tables. Format and marks as in logit_values.R; the tables of run i carry the prefix "i_".
#
#   Rscript tests/reference/logit_selection_values.R        (from the root of the checkout)
#
# Fits are Newton steps from those of glm and nnet::multinom, which they are compared with. FORMULA marks a statistic of
# the engine that is not R's.

suppressMessages({library(MASS); library(nnet); library(car)})
options(digits = 17)
KEPT <- Inf
LARGEST <- 1.79769313486231e+308
out <- file("tests/reference/logit_selection_values.txt", "w")
put <- function(name, x) {
  x <- as.matrix(x)
  cells <- ifelse(is.na(x), "missing", ifelse(x == KEPT, "kept", sprintf("%.17g", x)))
  writeLines(paste(c(name, dim(x), cells), collapse = " "), out)
}
chi <- function(x, df) pchisq(x, df, lower.tail = FALSE)

# One block: log-likelihood, gradient and information by the derivatives that R forms of one observation's likelihood.
pieces <- lapply(list(logit = quote(1 / (1 + exp(-e))), probit = quote(pnorm(e)), cloglog = quote(1 - exp(-exp(e)))),
                 function(F) {
  ll <- substitute(y * log(F) + (m - y) * log(1 - F), list(F = F))
  list(ll = ll, d1 = D(ll, "e"), d2 = D(D(ll, "e"), "e"), f = D(F, "e"))
})

one_block <- function(d) {
  binomial_form <- d$form == 1
  m <- if (binomial_form) d$wc else rep(1, length(d$y)); w <- if (binomial_form) rep(1, length(d$y)) else d$wc
  s <- pieces[[d$link + 1]]
  share <- if (binomial_form) sum(d$y) / sum(d$wc) else weighted.mean(d$y, d$wc)
  at <- function(what, e) rep_len(eval(s[[what]], list(e = e, y = d$y, m = m)), length(e))
  information <- function(Z, e) -crossprod(Z, Z * (w * at("d2", e)))
  null_l <- sum(w * (d$y * log(share) + (m - d$y) * log(1 - share)))
  fit <- function(free) {
    Z <- cbind(d$Xs[, free, drop = FALSE], 1)
    start <- suppressWarnings(glm.fit(Z, d$y / m, weights = w * m, family = binomial(names(pieces)[d$link + 1]),
                                      control = list(epsilon = 1e-14, maxit = 100)))
    th <- start$coefficients
    for (i in 1:10) { e <- drop(Z %*% th); th <- th + solve(information(Z, e), crossprod(Z, w * at("d1", e))) }
    e <- drop(Z %*% th)
    stopifnot(max(abs(th - start$coefficients)) < 1e-5)
    # FORMULA: the score is taken at the logit of the share, whatever the link.
    e0 <- rep(qlogis(share), length(e)); g0 <- crossprod(Z, w * at("d1", e0))
    list(l = sum(w * at("ll", e)), b = th[seq_along(free)],
         V = solve(information(Z, e))[seq_along(free), seq_along(free), drop = FALSE],
         score = drop(crossprod(g0, solve(information(Z, e0), g0))), g = crossprod(d$Xs, w * at("d1", e)),
         f = at("f", e), Z = Z)
  }
  # FORMULA: the weights are not in F, and the first factor is not adjusted for the intercept.
  entry <- function(at, free, columns, qualitative) {
    Z <- d$Xs[, columns, drop = FALSE]; A <- crossprod(Z, at$f * Z)
    if (length(free)) {
      M <- crossprod(at$Z, at$f * Z)
      A <- A - crossprod(M, solve(crossprod(at$Z, at$f * at$Z), M))
    }
    g <- at$g[columns]
    c(drop(g %*% solve(A, g)), length(columns))
  }
  list(K = 1, fit = fit, entry = entry, null_l = null_l)
}

several_blocks <- function(d) {
  C <- max(d$y) + 1; K <- C - 1; W <- sum(d$wc)
  Y <- outer(d$y, 1:K, "=="); share <- colSums(d$wc * Y) / W
  # FORMULA: the case weight is left out of the null log-likelihood of all categories but the reference.
  null_l <- sum(d$wc * (d$y == 0)) * log(1 - sum(share)) + sum(colSums(Y) * log(share))
  information <- function(Z, P) do.call(rbind, lapply(1:K, function(k) do.call(cbind, lapply(1:K, function(l)
    crossprod(Z, Z * (d$wc * P[, k] * ((k == l) - P[, l])))))))
  score <- function(Z) {
    P <- matrix(share, length(d$y), K, byrow = TRUE); g <- c(crossprod(Z, d$wc * (Y - P)))
    drop(g %*% solve(information(Z, P), g))
  }
  fit <- function(free) {
    Z <- cbind(d$Xs[, free, drop = FALSE], 1)
    start <- multinom(factor(d$y) ~ Z - 1, weights = d$wc, reltol = 1e-14, maxit = 1000, trace = FALSE)
    th <- t(rbind(coef(start))); first <- th
    prob <- function(th) { e <- exp(Z %*% th); e / (1 + rowSums(e)) }
    for (i in 1:10) { P <- prob(th); th <- th + solve(information(Z, P), c(crossprod(Z, d$wc * (Y - P)))) }
    stopifnot(max(abs(th - first)) < 1e-3)
    slopes <- rep(c(rep(TRUE, length(free)), FALSE), K)
    list(l = sum(d$wc * log(rowSums(P * Y) + (1 - rowSums(P)) * (d$y == 0))), b = c(th)[slopes],
         V = solve(information(Z, P))[slopes, slopes, drop = FALSE], score = score(Z))
  }
  # FORMULA: the global score statistic of the candidate's columns, or of all columns and 1 degree of freedom.
  entry <- function(at, free, columns, qualitative)
    c(score(cbind(d$Xs[, c(if (!qualitative) free, columns), drop = FALSE], 1)), if (qualitative) length(columns) else 1)
  list(K = K, fit = fit, entry = entry, null_l = null_l)
}

wsd <- function(x, w) sqrt(sum(w * (x - weighted.mean(x, w))^2) / (sum(w) - 1))

data_set <- function(name, y, X, wc = rep(1, length(y)), form = 0, link = 0, states = rep(0, ncol(X)),
                     parents = seq_len(ncol(X)), type = rep(1, max(parents)), anova = NULL) {
  d <- list(y = y, wc = wc, form = form, link = link)
  d$Xs <- sapply(seq_len(ncol(X)), function(j) (X[, j] - weighted.mean(X[, j], wc)) / wsd(X[, j], wc))
  writeLines(paste("case", name), out)
  put("y", y); put("x", X); put("wc", wc); put("states", states); put("parents", parents); put("type", type)
  put("options", c(sum(type != 1), max(2, if (form == 2) max(y) + 1), form, link))
  e <- if (form == 2) several_blocks(d) else one_block(d)
  p <- ncol(X); K <- e$K; W <- sum(wc); A <- max(parents); usable <- which(states == 0)
  seen <- list()
  fit_of <- function(factors) {
    key <- paste(c("m", sort(factors)), collapse = " ")
    if (is.null(seen[[key]])) {
      free <- usable[parents[usable] %in% factors]
      f <- e$fit(free); f$free <- free
      f$wald <- if (length(free)) drop(f$b %*% solve(f$V, f$b)) else 0
      seen[[key]] <<- f
    }
    seen[[key]]
  }
  tests <- function(f, df) c(-2 * f$l, chi(2 * (f$l - e$null_l), df), chi(f$score, df), chi(f$wald, df))
  mask <- function(f) c(!(seq_len(p) %in% f$free), 0, 1) * 1
  step_row <- function(step, factor, factors, entry = c(NA, NA)) {
    f <- fit_of(factors); q <- length(f$free) + 1
    c(length(factors), step, factor, mask(f), tests(f, (q - 1) * K), 2 * K * q - 2 * f$l, K * q * log(W) - 2 * f$l, entry,
      KEPT, KEPT)
  }
  columns_of <- function(i) usable[parents[usable] == i]
  removal_test <- function(i, factors, wald) {
    f <- fit_of(factors); at <- which(parents[f$free] == i)
    df <- K * if (type[i] == 1) 1 else length(at)
    s <- if (wald) {
      at <- c(outer(at, (seq_len(K) - 1) * length(f$free), "+"))
      drop(f$b[at] %*% solve(f$V[at, at], f$b[at]))
    } else if (length(factors) == 1) 2 * (f$l - e$null_l) else 2 * (f$l - fit_of(setdiff(factors, i))$l)
    c(s, chi(s, df), df)
  }
  # FORMULA: among equal degrees of freedom the statistic decides; one with more than all before by its p alone.
  weakest <- function(factors, wald) {
    best <- list(i = 0, s = 0, p = 0); top <- 0
    for (i in sort(factors)) {
      t <- removal_test(i, factors, wald)
      wins <- if (t[3] > top) t[2] > best$p else t[1] < best$s
      top <- max(top, t[3])
      if (wins) best <- list(i = i, s = t[1], p = t[2])
    }
    best
  }
  strongest <- function(factors) {
    best <- list(i = 0, s = 0, p = 1); top <- 0; f <- fit_of(factors)
    for (i in setdiff(seq_len(A), factors)) {
      t <- e$entry(f, f$free, columns_of(i), type[i] != 1); pv <- chi(t[1], t[2])
      if (t[1] <= 0) next
      wins <- if (t[2] > top) pv < best$p else t[1] > best$s
      top <- max(top, t[2])
      if (wins) best <- list(i = i, s = t[1], p = pv)
    }
    best
  }
  runs <- 0
  close_run <- function(options, rows, total, factors) {
    runs <<- runs + 1
    if (is.null(rows)) rows <- matrix(0, 0, p + 15)
    stopifnot(nrow(rows) <= total)
    put(paste0(runs, "_run"), options)
    put(paste0(runs, "_models"), rbind(rows, matrix(KEPT, total - nrow(rows), ncol(rows))))
    put(paste0(runs, "_states"), ifelse(states == 0, !(parents %in% factors), pmax(states, 1)) * 1)
  }
  wide <- 3 + p + 2 + 6
  backward <- function(stepwise, wald, p_in, p_out) {
    factors <- seq_len(A); rows <- rbind(step_row(0, -1, factors))
    while (length(factors) > 1) {
      w <- weakest(factors, wald)
      rows[nrow(rows), wide + 3:4] <- c(w$s, w$p)
      if (w$p <= p_out) break
      factors <- setdiff(factors, w$i); rows <- rbind(rows, step_row(0, w$i, factors))
      if (!stepwise) next
      s <- strongest(factors)
      if (s$p >= p_in) next
      if (s$i == w$i) { rows[nrow(rows), 3] <- 0; break }
      factors <- c(factors, s$i); rows <- rbind(rows, step_row(1, s$i, factors, c(s$s, s$p)))
    }
    close_run(c(if (stepwise) 2 else 4, wald, p_in, p_out, 1, 1), rows, 2 * A, factors)
  }
  forward <- function(stepwise, wald, p_in, p_out) {
    factors <- c(); rows <- NULL
    while (length(factors) < A) {
      s <- strongest(factors)
      if (s$p >= p_in) break
      factors <- c(factors, s$i); rows <- rbind(rows, step_row(1, s$i, factors, c(s$s, s$p)))
      if (!stepwise) next
      w <- weakest(factors, wald)
      rows[nrow(rows), wide + 3:4] <- c(w$s, w$p)
      if (w$p <= p_out) next
      if (w$i == s$i) { rows[nrow(rows), 3] <- 0; break }
      factors <- setdiff(factors, w$i); rows <- rbind(rows, step_row(0, w$i, factors))
    }
    close_run(c(if (stepwise) 1 else 3, wald, p_in, p_out, 1, 1), rows, 2 * A, factors)
  }
  subsets <- function(criterion, smallest, largest) {
    rows <- NULL; leaf <- 0
    for (size in smallest:min(largest, A)) {
      best <- NULL; all <- combn(A, size)
      for (k in seq_len(ncol(all))) {
        leaf <- leaf + 1; f <- fit_of(all[, k]); q <- length(f$free) + 1
        # FORMULA: two parameters more than there are, of which one is taken back; the blocks do not count.
        n <- 2 * (2 + q) - 2
        row <- c(size, ncol(all), leaf, mask(f), tests(f, q - 1), n - 2 * f$l, log(W) * n - 2 * f$l)
        if (is.null(best) || row[p + 6 + criterion] < best[p + 6 + criterion]) best <- row
      }
      rows <- rbind(rows, best)
    }
    final <- rows[which.min(rows[, p + 6 + criterion]), ]
    rest <- largest - smallest + 1 - nrow(rows)
    start <- matrix(KEPT, rest, ncol(rows)); start[, p + 6:11] <- LARGEST
    close_run(c(0, criterion, 0.05, 0.1, smallest, largest), rbind(rows, start), largest - smallest + 1,
              unique(parents[which(final[3 + seq_len(p)] == 0)]))
  }
  put("type_iii", t(sapply(seq_len(A), function(i) {
    w <- removal_test(i, seq_len(A), TRUE); l <- removal_test(i, seq_len(A), FALSE)
    c(w[3], w[1:2], l[1:2])
  })))
  list(backward = backward, forward = forward, subsets = subsets, removal = removal_test, A = A)
}
indicators <- function(f) 1 * outer(as.integer(f), seq_len(nlevels(factor(f))), "==")

## Low birth weight: seven columns of one and a factor of three levels.
bw <- birthwt
X <- cbind(bw$age, bw$lwt, indicators(factor(bw$race)), bw$smoke, bw$ptl, bw$ht, bw$ui, bw$ftv)
states <- c(0, 0, 40000, rep(0, 7)); parents <- c(1, 2, 3, 3, 3, 4:8); type <- c(1, 1, 2, 1, 1, 1, 1, 1)
b <- data_set("birthwt", bw$low, X, states = states, parents = parents, type = type)
g <- glm(low ~ age + lwt + factor(race) + smoke + ptl + ht + ui + ftv, binomial, bw, epsilon = 1e-15, maxit = 100)
for (t in c("LR", "Wald")) {
  a <- Anova(g, type = 3, test.statistic = t)
  mine <- sapply(1:8, b$removal, factors = 1:8, wald = t == "Wald")
  stopifnot(max(abs(mine[1, ] / tail(a[, if (t == "LR") 1 else 2], 8) - 1)) < 1e-7)
}
for (wald in 0:1) {
  b$backward(FALSE, wald, 0.05, 0.1); b$backward(TRUE, wald, 0.2, 0.1)
  b$forward(TRUE, wald, 0.2, 0.15); b$forward(TRUE, wald, 0.3, 0.1)
}
b$forward(FALSE, 0, 0.3, 0.1); b$forward(FALSE, 0, 0, 0.1); b$forward(TRUE, 1, 0.99, 1); b$backward(TRUE, 1, 0.3, 1)
for (criterion in 0:5) b$subsets(criterion, 1, 4)
b$subsets(4, 7, 10); b$subsets(5, 2, 8)
## Under case weights, and with a probit.
for (link in 0:1) {
  b <- data_set(paste0("birthwt_weights_", link), bw$low, X, wc = 1 + seq_len(189) %% 3, link = link, states = states,
                parents = parents, type = type)
  b$forward(TRUE, 0, 0.05, 0.05); b$backward(FALSE, link, 0.05, 0.05); b$subsets(1 + link, 1, 2)
}
## Grouped responses on factors of five, four and four levels, none without groups of no case and of one case: by those
## the run looks for empty levels.
es <- subset(esoph, ncases + ncontrols > 0); age <- factor(c(1, 2, 3, 3, 4, 5)[es$agegp])
b <- data_set("esoph", es$ncases, cbind(indicators(age), indicators(es$alcgp), indicators(es$tobgp)),
              wc = es$ncases + es$ncontrols, form = 1, states = c(40000, rep(0, 4), 40000, 0, 0, 0, 40000, 0, 0, 0),
              parents = c(rep(1, 5), rep(2, 4), rep(3, 4)), type = c(2, 2, 2))
b$forward(TRUE, 0, 0.05, 0.05); b$backward(TRUE, 1, 0.05, 1e-4); b$subsets(3, 1, 3)
## A factor that stands in for two others: it leaves first, and comes back when both have left.
set.seed(101)
n <- 120
z1 <- round(rnorm(n), 2); z2 <- round(rnorm(n), 2); z3 <- round(z1 + z2 + rnorm(n) * 0.6, 2); z4 <- round(rnorm(n), 2)
y <- 1 * (runif(n) < plogis(0.45 * z1 + 0.45 * z2 + 1.2 * z4))
b <- data_set("stand_in", y, cbind(z3, z1, z2, z4))
b$backward(TRUE, 0, 0.02, 0.03); b$backward(TRUE, 1, 0.02, 0.03); b$forward(TRUE, 0, 0.2, 0.1); b$forward(TRUE, 1, 0.7, 0.1)
## Several categories.
b <- data_set("housing", as.integer(housing$Sat) - 1,
              cbind(indicators(housing$Infl), indicators(housing$Type), indicators(housing$Cont)), wc = housing$Freq, form = 2,
              states = c(40000, 0, 0, 40000, 0, 0, 0, 40000, 0), parents = c(1, 1, 1, 2, 2, 2, 2, 3, 3), type = c(2, 2, 2))
b$forward(TRUE, 0, 0.05, 0.05); b$backward(FALSE, 1, 0.05, 1e-5); b$subsets(3, 1, 2)
b <- data_set("birthwt_race", as.integer(factor(bw$race)) - 1,
              cbind(bw$age, bw$lwt, bw$smoke, bw$ptl, indicators(factor(pmin(bw$ftv, 2)))), form = 2,
              states = c(0, 0, 0, 0, 40000, 0, 0), parents = c(1:4, 5, 5, 5), type = c(1, 1, 1, 1, 2))
b$forward(TRUE, 0, 0.05, 0.3); b$forward(TRUE, 1, 0.9, 0.05); b$backward(TRUE, 0, 0.01, 0.05); b$backward(TRUE, 1, 0.01, 0.05)
b$subsets(4, 1, 5); b$subsets(2, 1, 3)
close(out)
