# Writes logit_values.txt: data, options and expected tables of the logit run, on real data sets.
#
#   Rscript tests/reference/logit_values.R        (from the root of the checkout)
#
# One line a table: name, rows, columns, then the cells by columns with 17 digits. "missing" is a cell that holds the
# missing marker, "kept" a cell that the run leaves as it was, "any" one that is not compared.
#
# Estimates come from glm and nnet::multinom, then from Newton steps on derivatives that R forms symbolically, until the
# score is rounding; both are compared here. Standard errors are those of the observed information, which differs from
# glm's expected one where the link is not the logit. FORMULA marks a statistic of the engine that is not R's.

suppressMessages({library(MASS); library(nnet)})
options(digits = 17)
KEPT <- Inf; ANY <- -Inf
out <- file("tests/reference/logit_values.txt", "w")

put <- function(name, x) {
  x <- as.matrix(x)
  cells <- ifelse(is.na(x), "missing", ifelse(x == KEPT, "kept", ifelse(x == ANY, "any", sprintf("%.17g", x))))
  writeLines(paste(c(name, dim(x), cells), collapse = " "), out)
}

links <- list(
  list(glm = "logit", F = quote(1 / (1 + exp(-e))), inv = qlogis, p = plogis, scale = sqrt(3) / pi),
  list(glm = "probit", F = quote(pnorm(e)), inv = qnorm, p = pnorm, scale = 1),
  list(glm = "cloglog", F = quote(1 - exp(-exp(e))), inv = function(p) log(-log(1 - p)),
       p = function(e) 1 - exp(-exp(e)), scale = sqrt(6) / pi),
  list(glm = NULL, F = quote(exp(-exp(-e))), inv = function(p) -log(-log(p)), p = function(e) exp(-exp(-e)),
       scale = sqrt(6) / pi))

# Derivatives of one observation's log-likelihood by the predictor e and the mortality c, from R's D().
symbols <- lapply(links, function(l) {
  ll <- substitute(y * log(c + (1 - c) * F) + (m - y) * log((1 - c) * (1 - F)), list(F = l$F))
  e1 <- D(ll, "e"); c1 <- D(ll, "c"); e2 <- D(e1, "e")
  list(ll = ll, e1 = e1, e2 = e2, e3 = D(e2, "e"), c1 = c1, ec = D(e1, "c"), cc = D(c1, "c"))
})

# Log-likelihood, gradient and Hessian of (slopes, intercept, mortality) at theta; with = which of them are free.
evaluate <- function(d, theta, with, firth = FALSE) {
  q <- length(theta)
  Z <- cbind(d$X, 1)
  e <- drop(Z %*% theta[-q]); s <- symbols[[d$link + 1]]
  at <- function(what) rep_len(eval(s[[what]], list(e = e, c = theta[q], y = d$y, m = d$m)), length(e))
  g <- c(crossprod(Z, d$w * at("e1")), sum(d$w * at("c1")))
  H <- rbind(cbind(crossprod(Z, Z * (d$w * at("e2"))), crossprod(Z, d$w * at("ec"))),
             c(crossprod(Z, d$w * at("ec")), sum(d$w * at("cc"))))
  l <- sum(d$w * at("ll"))
  if (firth) {
    V <- solve(H[with, with])
    zi <- which(with[-q])
    h <- rowSums((Z[, zi, drop = FALSE] %*% V[seq_along(zi), seq_along(zi)]) * Z[, zi, drop = FALSE])
    g[seq_len(q - 1)] <- g[seq_len(q - 1)] + 0.5 * crossprod(Z, d$w * at("e3") * h)
    l <- l + 0.5 * as.numeric(determinant(H[with, with])$modulus)
  }
  list(l = l, g = g, H = H)
}

# Newton until nothing is left to gain; `moving` are the parameters that move, `with` those of the penalty.
maximise <- function(d, theta, with, firth = FALSE, moving = with) {
  v <- evaluate(d, theta, with, firth)
  for (i in 1:500) {
    step <- -solve(v$H[moving, moving], v$g[moving])
    gain <- sum(step * v$g[moving])
    if (abs(gain) < 1e-24) break
    share <- min(1, 1 / max(abs(step * sqrt(abs(diag(v$H)[moving])))))
    repeat {
      nxt <- theta
      nxt[moving] <- theta[moving] + share * step
      w <- tryCatch(evaluate(d, nxt, with, firth), error = function(e) NULL)
      if (!is.null(w) && is.finite(w$l) && (w$l > v$l - 1e-10 || gain < 1e-12)) break
      share <- share / 2
      stopifnot(share > 1e-12)
    }
    theta <- nxt; v <- w
  }
  list(theta = theta, l = v$l)
}

profile_bounds <- function(d, theta, with, firth, alpha) {
  l <- evaluate(d, theta, with, firth)$l
  V <- -solve(evaluate(d, theta, with, firth)$H[with, with]); se <- sqrt(diag(V))
  t(sapply(which(with), function(j) sapply(c(-1, 1), function(side) {
    moving <- with; moving[j] <- FALSE
    start <- theta
    fall <- function(x) { # from the point looked at last, moved along its own valley
      Vs <- solve(evaluate(d, start, with, firth)$H[with, with]); k <- sum(with[1:j])
      start[with] <<- start[with] + Vs[, k] / Vs[k, k] * (x - start[j])
      start[j] <<- x
      start <<- maximise(d, start, with, firth, moving)$theta
      2 * (l - evaluate(d, start, with, firth)$l) - qchisq(1 - alpha, 1)
    }
    s <- se[sum(with[1:j])]; reach <- 0.5
    while (fall(theta[j] + side * reach * s) < 0) reach <- reach + 0.25
    uniroot(fall, theta[j] + side * c(reach - 0.25, reach) * s, tol = 1e-13)$root
  })))
}

wsd <- function(x, w) sqrt(sum(w * (x - weighted.mean(x, w))^2) / (sum(w) - 1))
chi <- function(x, df) pchisq(x, df, lower.tail = FALSE)

# Value, standard error, Wald, p and bounds.
estimates <- function(b, v, z) {
  se <- sqrt(v)
  cbind(b, se, (b / se)^2, chi((b / se)^2, 1), b - z * se, b + z * se)
}

odds <- function(t) {
  o <- exp(t[, c(1, 5, 6), drop = FALSE])
  o[t[, 6] >= 702, ] <- NA
  o
}

test_table <- function(df, lr, score, wald, columns) {
  s <- c(lr, score, wald)
  cbind(df, s, if (columns < 1) NA else chi(s, df))
}

fit_table <- function(W, W2, K, q, hc, l0, l) {
  e <- q - hc + 1
  cs <- 1 - exp(2 * (l0 - l) / W)
  rbind(W, W2, c(W - 1, W - K * q), -2 * c(l0, l), c(0, 1 - l / l0), c(0, cs), c(0, cs / (1 - exp(2 * l0 / W))),
        c(2 * K - 2 * l0, 2 * e * K - 2 * l), c(K * log(W) - 2 * l0, e * K * log(W) - 2 * l), c(KEPT, ANY))
}

inputs <- function(name, y, X, wc, wr, states, parents, type, D, options, info, mortality, valid, new) {
  writeLines(paste("case", name), out)
  put("y", y); put("x", X); put("wc", wc); put("wr", wr); put("states", states); put("parents", parents)
  put("type", type); put("design", D); put("options", options); put("info", info); put("mortality", mortality)
  put("valid", valid); put("new", new)
}

# One block. info: named flags. valid, new: numbers of rows that serve as these samples too.
one_block <- function(name, y, X, wc = rep(1, length(y)), form = 0, link = 0, states = rep(0, ncol(X)),
                      parents = seq_len(ncol(X)), type = rep(1, max(parents)), D = diag(ncol(X)), constraint = 0,
                      mortality = 0, estimate = FALSE, given = FALSE, observed = FALSE, profile = FALSE, firth = FALSE,
                      doses = FALSE, logdoses = FALSE, fixed = FALSE, alpha = 0.05, cut = 0.5, valid = 1:5, new = 4:7,
                      separate = 0, unreached = NULL, unreached_beta = NULL) {
  X <- as.matrix(X); p <- ncol(X); n <- length(y)
  info <- c(logdoses, 0, fixed, estimate || given, given, observed, profile, firth && separate == 0, 0, doses, 0)
  inputs(name, y, X, wc, rep(1, n), states, parents, type, D,
         c(sum(type != 1), 2, form, link, if (firth) 1e-16 else 1e-13, 100, 1e-9, constraint, 0, alpha, cut), info, mortality, valid, new)
  free <- states == 0; pf <- sum(free)
  d <- list(X = X[, free, drop = FALSE], y = y, link = link, m = if (form == 1) wc else rep(1, n),
            w = if (form == 1) rep(1, n) else wc)
  W <- sum(wc); l <- links[[link + 1]]; hc <- !fixed
  share <- if (fixed) 0.5 else if (form == 1) sum(y) / W else sum(wc * y) / W
  pi1 <- mortality + (1 - mortality) * share
  # On centred columns, so that a fixed intercept means what it means in the run.
  mu <- apply(X, 2, weighted.mean, wc); sds <- apply(X, 2, wsd, wc)
  dc <- d; dc$X <- sweep(d$X, 2, mu[free])
  with <- c(rep(TRUE, pf), hc, estimate)
  theta <- c(rep(0, pf), l$inv(pi1), mortality)
  fit <- maximise(dc, theta, with & c(rep(TRUE, pf + 1), FALSE), firth)
  if (estimate) fit <- maximise(dc, fit$theta, with, firth)
  th <- fit$theta
  if (!is.null(l$glm) && !firth && !fixed && mortality == 0 && !estimate) {
    r <- glm(cbind(y, (if (form == 1) wc else 1) - y) ~ dc$X, family = binomial(l$glm), weights = if (form == 1) NULL else wc,
             control = glm.control(epsilon = 1e-15, maxit = 100))
    stopifnot(max(abs(coef(r) - c(th[pf + 1], th[1:pf]))) < 1e-8)
    if (link == 0) stopifnot(max(abs(vcov(r)[1, ] / (-solve(evaluate(dc, th, with)$H[with, with]))[pf + 1, c(pf + 1, 1:pf)] - 1)) < 1e-6)
  }
  v <- evaluate(dc, th, with, firth)
  stopifnot(max(abs(v$g[with])) < 1e-9)
  V <- matrix(0, pf + 2, pf + 2); V[with, with] <- -solve(v$H[with, with])
  # FORMULA: the penalty is that of the information of the standardised columns.
  ll <- fit$l - if (firth) sum(log(sds[free])) else 0
  l0 <- sum(wc) * log(1 - pi1) + (if (form == 1) sum(y) else sum(wc * y)) * log(pi1 / (1 - pi1))
  # FORMULA: the score is taken at the logit of the share, whatever the link.
  pin <- mortality + (1 - mortality) * (if (form == 1) sum(y) / W else sum(wc * y) / W)
  null <- evaluate(dc, c(rep(0, pf), if (hc) qlogis(pin) else 0, mortality), with, firth)
  score <- -drop(null$g[with] %*% solve(null$H[with, with], null$g[with]))
  b <- th[1:pf]
  wald <- drop(b %*% solve(V[1:pf, 1:pf, drop = FALSE], b))
  q <- pf + estimate + hc; df <- q - hc
  put("tests", test_table(df, 2 * (ll - l0), score, wald, df))
  put("fit", fit_table(W, W, 1, q, hc, l0, ll))
  e <- drop(cbind(dc$X, 1) %*% th[1:(pf + 1)]); c0 <- th[pf + 2]
  P <- c0 + (1 - c0) * l$p(e)
  x2 <- sum((y - d$m * P)^2 / (d$m * P * (1 - P)))
  r <- W - q
  hetero <- if (q < 2 || r <= 0 || chi(x2, r) > 0.1) 1 else x2 / r
  stopifnot(c0 >= 0)
  put("hetero", hetero); put("marginal", pi1); put("mortality_out", c0)
  # Reported coefficients: data scale and standardised.
  full <- matrix(0, p, pf); full[cbind(which(free), seq_len(pf))] <- 1
  M2 <- rbind(cbind(D %*% full, 0, 0), c(-mu[free], 1, 0), c(rep(0, pf + 1), 1))
  M1 <- rbind(cbind(D %*% full %*% diag(sds[free], pf), 0, 0)) * l$scale
  # D acts on the fitted columns, and the run divides by their deviations.
  z <- qnorm(1 - alpha / 2)
  t2 <- estimates(drop(M2 %*% th), diag(M2 %*% V %*% t(M2)), z)
  t1 <- estimates(drop(M1 %*% th), diag(M1 %*% V %*% t(M1)), z)
  last <- !duplicated(parents, fromLast = TRUE)
  reported <- free | (constraint > 1 & last)
  tab <- matrix(KEPT, p + 1, 11); beta <- matrix(0, p, 8)
  shift <- if (profile) 2 else 0
  tab[1 + seq_len(p), 1:6] <- t2[1:p, ]; tab[1, 1:6] <- t2[p + 1, ]
  beta[, 1:6] <- t1
  tab[1 + seq_len(p), 7:9 + shift] <- odds(t2[1:p, , drop = FALSE]); tab[1, 7:9 + shift] <- NA
  if (profile) {
    raw <- dc; raw$X <- d$X
    bounds <- profile_bounds(raw, c(b, th[pf + 1] - sum(b * mu[free]), c0), with, firth, alpha)
    tab[1 + which(free), 7:8] <- bounds[1:pf, ]; tab[1, 7:8] <- bounds[pf + 1, ]
    beta[which(free), 7:8] <- bounds[1:pf, ] * sds[free] * l$scale
    tab[1 + which(reported & !free), 7:8] <- NA; beta[which(reported & !free), 7:8] <- NA
  }
  tab[1 + which(!reported), ] <- rep(c(0, 0, rep(NA, 9)), each = sum(!reported))
  beta[!reported, ] <- rep(c(0, 0, rep(NA, 6)), each = sum(!reported))
  if (fixed) tab[1, ] <- c(l$inv(pi1), 2 / sqrt(pi1 * (1 - pi1) * W), rep(NA, 9))
  # FORMULA: after 21 passes, or where a step overshoots, the run gives up; under the penalty that happens.
  tab[unreached] <- NA; beta[unreached_beta] <- NA
  put("coefficients", tab); put("standardised", beta)
  cov <- M2 %*% V %*% t(M2); put("covariance", cov)
  # Tables by observation.
  se <- sqrt(rowSums((cbind(dc$X, 1) %*% V[1:(pf + 1), 1:(pf + 1)]) * cbind(dc$X, 1)))
  cc <- if (info[4] && !observed) c0 else 0
  lo <- c0 + (1 - c0) * l$p(e - z * se); up <- c0 + (1 - c0) * l$p(e + z * se)
  o <- (y / wc - cc) / (1 - cc); ex <- (P - cc) / (1 - cc); ind <- (pi1 - cc) / (1 - cc); k <- if (form == 1) wc else 1
  pred <- cbind(k * o, k * ex, k * ind, o, ex, (o - ex) * k / sqrt(k * ex * (1 - ex)),
                (k * o - k * ind) / sqrt(k * ind * (1 - ind)), k * lo, k * up)
  put("predictions", pred); put("valid_predictions", pred[valid, ]); put("new_predictions", cbind(ex, ind, lo, up)[new, ])
  classify <- function(i) {
    hit <- P[i] >= cut; m <- matrix(0, 3, 4)
    m[1, 1:2] <- c(sum((wc - y)[i][!hit]), sum((wc - y)[i][hit])); m[2, 1:2] <- c(sum(y[i][!hit]), sum(y[i][hit]))
    m[1:2, 3] <- rowSums(m[1:2, 1:2]); m[1:2, 4] <- ifelse(m[1:2, 3] == 0, NA, diag(m[1:2, 1:2]) / m[1:2, 3])
    m[3, ] <- c(colSums(m[1:2, 1:2]), sum(wc[i]), sum(diag(m[1:2, 1:2])) / sum(wc[i])); m
  }
  put("classification", classify(seq_len(n))); put("valid_classification", classify(valid))
  put("states_out", ifelse(free, 0, pmax(states, 1))); put("separate", separate)
  # Doses on the data scale.
  t13 <- matrix(KEPT, 13, 6); t99 <- matrix(KEPT, 99, 5)
  if (doses && pf == 1) {
    a <- M2[p + 1, ] %*% th; vb <- cov[which(free), which(free)]; va <- cov[p + 1, p + 1]; vab <- cov[which(free), p + 1]
    cm <- if (observed) c0 else 0
    inverse <- function(pr) l$inv((pr - cm) / (1 - cm))
    fieller <- function(pr, G, h) {
      if (pr < c0 || pr <= cm) return(c(NA, NA))
      g <- G^2 * h
      co <- c((a - inverse(pr))^2 - g * va, 2 * (b * (a - inverse(pr)) - g * vab), b^2 - g * vb)
      disc <- co[2]^2 / 4 - co[1] * co[3]
      # The half-width has the sign of the root, as in the run: bounds come out in order only where A is positive.
      if (disc / co[3]^2 < 0) return(c(NA, NA))
      -co[2] / 2 / co[3] + c(-1, 1) * sqrt(disc / co[3]^2)
    }
    up10 <- function(x) if (logdoses) 10^x else x
    # FORMULA: the multiplier under heterogeneity is the square of the Student quantile, and is squared again.
    T <- qt(alpha / 2, W - p + 2)^2
    pr13 <- c(1, 5, seq(10, 90, 10), 95, 99) / 100
    for (i in 1:13) {
      pr <- pr13[i]; dose <- if (pr < c0 || pr <= cm) NA else drop((inverse(pr) - a) / b)
      f <- fieller(pr, z, 1)
      if (is.na(dose) || is.na(f[1]) || !(f[1] < dose && dose < f[2])) f <- c(NA, NA)
      t13[i, 1:4] <- c(pr, up10(dose), up10(f))
      if (hetero != 1 || is.na(dose)) t13[i, 5:6] <- up10(fieller(pr, T, hetero))
    }
    for (i in 1:99) {
      pr <- i / 100
      t99[i, c(1, 2, 5)] <- c(fieller(pr, z, hetero), pr)
      if (hetero != 1 || pr < c0 || pr <= cm) t99[i, 3:4] <- fieller(pr, T, hetero)
    }
    if (c0 == 0 && !is.null(l$glm)) {
      g <- glm(cbind(y, d$m - y) ~ d$X, family = binomial(l$glm), control = glm.control(epsilon = 1e-15, maxit = 100))
      stopifnot(max(abs(up10(unclass(dose.p(g, p = pr13))[1:13]) / t13[, 2] - 1)) < 1e-7)
    }
  }
  put("doses", t13); put("dose_curve", t99)
}

several_blocks <- function(name, y, X, wc = rep(1, length(y)), ref = 0, states = rep(0, ncol(X)),
                           parents = seq_len(ncol(X)), type = rep(1, max(parents)), D = diag(ncol(X)), constraint = 0,
                           alpha = 0.05, valid = 1:5, new = 4:7) {
  X <- as.matrix(X); p <- ncol(X); n <- length(y); C <- max(y) + 1; K <- C - 1
  inputs(name, y, X, wc, rep(1, n), states, parents, type, D,
         c(sum(type != 1), C, 2, 0, 1e-13, 100, 1e-9, constraint, ref, alpha, 0.5), rep(0, 11), rep(0, K), valid, new)
  free <- states == 0; pf <- sum(free); W <- sum(wc)
  Z <- cbind(X[, free, drop = FALSE], 1); codes <- setdiff(0:K, ref)
  Y <- outer(y, codes, "==") * 1
  start <- multinom(factor(y, levels = c(ref, codes)) ~ X[, free], weights = wc, reltol = 1e-15, maxit = 1000, trace = FALSE)
  th <- t(rbind(coef(start)))[c(1 + seq_len(pf), 1), , drop = FALSE]
  first <- th
  prob <- function(th) { e <- exp(Z %*% th); e / (1 + rowSums(e)) }
  hessian <- function(P) do.call(rbind, lapply(1:K, function(k) do.call(cbind, lapply(1:K, function(l)
    -crossprod(Z, Z * (wc * P[, k] * ((k == l) - P[, l])))))))
  for (i in 1:20) {
    P <- prob(th)
    th <- th - solve(hessian(P), c(crossprod(Z, wc * (Y - P))))
  }
  stopifnot(max(abs(th - first)) < 1e-4, max(abs(crossprod(Z, wc * (Y - P)))) < 1e-9)
  P <- prob(th); P0 <- 1 - rowSums(P); V <- -solve(hessian(P))
  share <- colSums(wc * Y) / W; share0 <- 1 - sum(share)
  ll <- sum(wc * log(rowSums(P * Y) + P0 * (rowSums(Y) == 0)))
  # FORMULA: the case weight is left out of the null log-likelihood of all categories but the reference.
  l0 <- sum((wc * (rowSums(Y) == 0))) * log(share0) + sum(colSums(Y) * log(share))
  Pn <- matrix(share, n, K, byrow = TRUE); gn <- c(crossprod(Z, wc * (Y - Pn)))
  score <- -drop(gn %*% solve(hessian(Pn), gn))
  slopes <- rep(c(rep(TRUE, pf), FALSE), K)
  wald <- drop(c(th)[slopes] %*% solve(V[slopes, slopes], c(th)[slopes]))
  put("tests", test_table(pf * K, 2 * (ll - l0), score, wald, pf)); put("fit", fit_table(W, W, K, pf + 1, 1, l0, ll))
  put("hetero", 1); put("marginal", share); put("mortality_out", rep(0, K))
  mu <- apply(X, 2, weighted.mean, wc); sds <- apply(X, 2, wsd, wc); z <- qnorm(1 - alpha / 2)
  full <- matrix(0, p, pf); full[cbind(which(free), seq_len(pf))] <- 1
  last <- !duplicated(parents, fromLast = TRUE); reported <- free | (constraint > 1 & last)
  tab <- NULL; beta <- NULL
  for (k in 1:K) {
    i <- (k - 1) * (pf + 1) + seq_len(pf + 1)
    M2 <- rbind(cbind(D %*% full, 0), c(rep(0, pf), 1)); M1 <- cbind(D %*% full %*% diag(sds[free], pf), 0) * sqrt(3) / pi
    t2 <- estimates(drop(M2 %*% th[, k]), diag(M2 %*% V[i, i] %*% t(M2)), z)
    t1 <- estimates(drop(M1 %*% th[, k]), diag(M1 %*% V[i, i] %*% t(M1)), z)
    tk <- cbind(t2[c(p + 1, 1:p), ], rbind(NA, odds(t2[1:p, , drop = FALSE])), KEPT, KEPT)
    bk <- cbind(t1, NA, NA)
    tk[1 + which(!reported), ] <- rep(c(0, 0, rep(NA, 9)), each = sum(!reported))
    bk[!reported, ] <- rep(c(0, 0, rep(NA, 6)), each = sum(!reported))
    tab <- rbind(tab, tk); beta <- rbind(beta, bk)
    if (k == 1) cov <- rbind(cbind(M2 %*% V[i, i] %*% t(M2), 0), 0)
  }
  put("coefficients", tab); put("standardised", beta); put("covariance", cov)
  best <- max.col(P, ties.method = "first")
  pred <- cbind(y + 1, ifelse(P0 > P[cbind(1:n, best)], 1, best + 1), P0, P, matrix(KEPT, n, 9 * K - 3 - K))
  put("predictions", pred); put("valid_predictions", pred[valid, ])
  newp <- matrix(KEPT, length(new), 4 * K)
  newp[, 2 * (1:K) - 1] <- P[new, ]; newp[, 2 * (1:K)] <- rep(share, each = length(new))
  put("new_predictions", newp)
  code <- ifelse(P0 > P[cbind(1:n, best)], ref, codes[best])
  classify <- function(i) {
    m <- matrix(0, C + 1, C + 2)
    for (r in i) {
      m[y[r] + 1, code[r] + 1] <- m[y[r] + 1, code[r] + 1] + wc[r]
      m[C + 1, code[r] + 1] <- m[C + 1, code[r] + 1] + 1 # FORMULA: column totals count observations
    }
    m[1:C, C + 1] <- rowSums(m[1:C, 1:C])
    m[1:C, C + 2] <- ifelse(m[1:C, C + 1] != 0, diag(m[1:C, 1:C]) / m[1:C, C + 1], 0)
    m[C + 1, C + 1] <- sum(m[C + 1, 1:C]); m[C + 1, C + 2] <- mean(m[1:C, C + 2]); m
  }
  put("classification", classify(1:n)); put("valid_classification", classify(valid))
  put("states_out", ifelse(free, 0, pmax(states, 1))); put("separate", 0)
  put("doses", matrix(KEPT, 13, 6)); put("dose_curve", matrix(KEPT, 99, 5))
}

levels_of <- function(f) 1 * outer(as.integer(f), seq_len(nlevels(f)), "==")

## Low birth weight: quantitative columns and a factor, first level dropped; profile intervals.
bw <- birthwt; race <- factor(bw$race)
quanti <- cbind(bw$age, bw$lwt, bw$smoke, bw$ht, bw$ui)
treated <- list(X = cbind(quanti, levels_of(race)), states = c(rep(0, 5), 40000, 0, 0), parents = c(1:5, 6, 6, 6),
                type = c(rep(1, 5), 2))
one_block("birthwt_logit", bw$low, treated$X, states = treated$states, parents = treated$parents, type = treated$type,
          profile = TRUE)
## The same with effects that add up to zero: the last level is derived.
ind <- levels_of(race); sums <- diag(8); sums[8, 6:7] <- -1
one_block("birthwt_probit_sum", bw$low, cbind(quanti, ind[, 1] - ind[, 3], ind[, 2] - ind[, 3], ind[, 3]), link = 1,
          states = c(rep(0, 7), 40000), parents = treated$parents, type = treated$type, D = sums, constraint = 2,
          profile = TRUE, alpha = 0.1, cut = 0.3)
one_block("birthwt_cloglog", bw$low, quanti, link = 2)
one_block("birthwt_loglog", bw$low, quanti, link = 3)
## Frequencies as case weights, and an intercept that stays at its start.
ag <- aggregate(list(wc = rep(1, 189)), list(low = bw$low, smoke = bw$smoke, race = bw$race, ui = bw$ui), sum)
one_block("birthwt_frequencies", ag$low, cbind(ag$smoke, ag$race == 2, ag$race == 3, ag$ui), wc = ag$wc)
one_block("birthwt_fixed_intercept", bw$low, quanti[, 1:3], fixed = TRUE)

## Grouped responses with dose tables.
me <- menarche
one_block("menarche_logit", me$Menarche, cbind(me$Age), wc = me$Total, form = 1, doses = TRUE)
bliss <- data.frame(dose = c(1.6907, 1.7242, 1.7552, 1.7842, 1.8113, 1.8369, 1.8610, 1.8839),
                    n = c(59, 60, 62, 56, 63, 59, 62, 60), dead = c(6, 13, 18, 28, 52, 53, 61, 60))
one_block("beetles_probit", bliss$dead, cbind(bliss$dose), wc = bliss$n, form = 1, link = 1, doses = TRUE,
          logdoses = TRUE, alpha = 0.1)
one_block("beetles_loglog", bliss$dead, cbind(bliss$dose), wc = bliss$n, form = 1, link = 3, doses = TRUE)

## Natural mortality: estimated, given, and on the observed scale (aphids, Finney's form of data with controls).
abbott <- data.frame(x = c(0.41, 0.58, 0.71, 0.89, 1.01, 1.21, 1.42, 1.61), n = c(50, 48, 46, 49, 50, 47, 52, 50),
                     dead = c(6, 11, 16, 27, 36, 40, 50, 49))
one_block("mortality_probit", abbott$dead, cbind(abbott$x), wc = abbott$n, form = 1, link = 1, mortality = 0.05,
          estimate = TRUE, doses = TRUE, logdoses = TRUE)
one_block("mortality_given", abbott$dead, cbind(abbott$x), wc = abbott$n, form = 1, link = 0, mortality = 0.06,
          given = TRUE, observed = TRUE, doses = TRUE)
one_block("mortality_cloglog", c(8, 9, 10, 24, 33, 43, 52, 50), cbind(abbott$x), wc = abbott$n, form = 1, link = 2, mortality = 0.05,
          estimate = TRUE)

## Separated data under Firth's penalty: two species of iris.
ir <- iris[1:100, ]
one_block("firth_separated", as.integer(ir$Species) - 1, cbind(ir$Petal.Length, ir$Sepal.Width), firth = TRUE,
          profile = TRUE, unreached = cbind(c(1, 1, 2, 3), c(7, 8, 8, 8)), unreached_beta = cbind(2, 7))
## A level without successes: the run switches the penalty on by itself.
empty <- bw; empty$low[empty$race == 3] <- 0
one_block("firth_empty_level", empty$low, treated$X[, -(2:4)], states = treated$states[-(2:4)],
          parents = c(1, 2, 3, 3, 3), type = c(1, 1, 2), firth = TRUE, profile = TRUE, separate = -1,
          unreached_beta = cbind(5, 8))
one_block("firth_probit", bw$low, quanti, link = 1, firth = TRUE)

## Several categories.
several_blocks("housing", as.integer(housing$Sat) - 1,
               cbind(levels_of(housing$Infl), levels_of(housing$Type), levels_of(housing$Cont)), wc = housing$Freq,
               states = c(40000, 0, 0, 40000, 0, 0, 0, 40000, 0), parents = c(1, 1, 1, 2, 2, 2, 2, 3, 3),
               type = c(2, 2, 2))
several_blocks("birthwt_race", as.integer(bw$race) - 1, cbind(bw$age, bw$lwt, bw$smoke, bw$bwt), ref = 1)
close(out)
