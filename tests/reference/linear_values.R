# Writes linear_values.txt: data, options and expected tables of the least squares run, from lm on real data sets.
#
#   Rscript tests/reference/linear_values.R        (from the root of the checkout)
#
# One line a table: name, rows, columns, then the cells by columns with 17 digits. "missing" is a cell that holds the
# missing marker, "kept" a cell that the run leaves as it was.
#
# Taken from lm: coefficients, covariance, hat matrix, sums of squares, sigma. Where the engine's statistic has a
# formula other than R's, the formula is written out below and marked FORMULA.

options(contrasts = c("contr.treatment", "contr.poly"), digits = 17)
KEPT <- Inf
out <- file("tests/reference/linear_values.txt", "w")

put <- function(name, x) {
  x <- as.matrix(x)
  cells <- ifelse(is.na(x), "missing", ifelse(is.infinite(x), "kept", sprintf("%.17g", x)))
  writeLines(paste(c(name, dim(x), cells), collapse = " "), out)
}

# Coded columns of one qualitative variable, its dropped level and its map to reported parameters.
code_levels <- function(f, code, wc) {
  k <- nlevels(f)
  ind <- 1 * outer(as.integer(f), 1:k, "==")
  freq <- colSums(ind * wc)
  D <- diag(k)
  cols <- ind
  if (code == 2) D[k, -k] <- -1
  if (code == 3) D[k, -k] <- -freq[-k] / freq[k]
  if (code >= 2) cols[, -k] <- ind[, -k] + ind[, k] %o% D[k, -k]
  list(ind = ind, cols = cols, D = D, dropped = seq_len(k) == (if (code == 0) 1 else k), freq = freq)
}

block_diagonal <- function(A, B) {
  rbind(cbind(A, matrix(0, nrow(A), ncol(B))), cbind(matrix(0, nrow(B), ncol(A)), B))
}

# factors: list of vectors of variable numbers, main effects first.
run <- function(name, y, x = NULL, q = list(), factors, code = 0, wc = rep(1, length(y)), wr = rep(1, length(y)),
                fixed = NULL, keepraw = 1, alpha = 0.05, check = NULL) {
  n <- length(y); x <- if (is.null(x)) matrix(0, n, 0) else as.matrix(x); pX <- ncol(x); pQ <- length(q)
  inter <- max(lengths(factors)); NF <- length(factors)
  coded <- lapply(q, code_levels, code, wc)
  type <- sapply(factors, function(v) {
    nq <- sum(v > pX)
    if (length(v) == 1) 1 + nq else if (nq == 0) 3 else if (nq == length(v)) 4 else 5
  })
  M <- matrix(0, n, 0); D <- matrix(0, 0, 0); drop <- logical(0); parent <- integer(0)
  for (f in seq_len(NF)) {
    cols <- matrix(1, n, 1); d <- matrix(1); s <- FALSE
    for (v in factors[[f]][factors[[f]] <= pX]) cols <- cols * x[, v]
    for (v in factors[[f]][factors[[f]] > pX]) {
      g <- coded[[v - pX]]
      # Products take plain indicators when two or more qualitative variables exist, else the coded columns.
      b <- if (type[f] > 2 && pQ >= 2) g$ind else g$cols
      cols <- do.call(cbind, lapply(seq_len(ncol(cols)), function(a) cols[, a] * b))
      d <- kronecker(d, g$D); s <- as.vector(t(outer(s, g$dropped, "|")))
    }
    M <- cbind(M, cols); D <- block_diagonal(D, d); drop <- c(drop, s); parent <- c(parent, rep(f, ncol(cols)))
  }
  p <- ncol(M); k0 <- sum(!drop); W <- wc * wr; sw <- sum(W); swc <- sum(wc)
  K <- M[, !drop, drop = FALSE]
  c1 <- is.null(fixed); fit <- if (c1) lm(y ~ K, weights = W) else lm(I(y - fixed) ~ 0 + K, weights = W)
  if (!is.null(check)) stopifnot(all.equal(deviance(check), deviance(fit), tolerance = 1e-12))
  k <- k0 + c1; dfE <- swc - k; sse <- deviance(fit); mse <- sse / dfE
  V <- summary(fit)$cov.unscaled * mse                     # case weights count in dfE, so not vcov(fit)
  slope <- if (c1) 2:k else 1:k
  center <- colSums(M * W) / sw; ybar <- sum((y - (if (c1) 0 else fixed)) * W) / sw
  tq <- qt(1 - alpha / 2, dfE)

  # FORMULA: standard deviations. Estimated intercept: divisor sum(wc) - 1; fixed: sum(W) - 1, about the mean too.
  div <- if (c1) swc - 1 else sw - 1
  sd <- sqrt(colSums(sweep(M, 2, center)^2 * W) / div)
  yy <- y - (if (c1) 0 else fixed)
  sdy <- sqrt(sum((yy - ybar)^2 * W) / div)

  raw <- rep(0, p + 1); raw[which(!drop)] <- coef(fit)[slope]; raw[p + 1] <- if (c1) coef(fit)[1] else fixed
  VV <- matrix(0, p + 1, p + 1); at <- c(which(!drop))
  VV[at, at] <- V[slope, slope]
  if (c1) {
    VV[p + 1, at] <- VV[at, p + 1] <- V[1, slope]
    VV[p + 1, p + 1] <- V[1, 1] - mse / sw + mse / swc      # FORMULA: MSE / sum(wc) where R has MSE / sum(W)
  }
  D1 <- block_diagonal(D, matrix(1)); rep_ <- D1 %*% raw; RV <- D1 %*% VV %*% t(D1)
  D2 <- D %*% diag(sd / sdy, p); beta <- D2 %*% raw[1:p]; BV <- D2 %*% VV[1:p, 1:p] %*% t(D2)
  table6 <- function(b, se) cbind(b, se, b / se, 2 * pt(-abs(b / se), dfE), b - se * tq, b + se * tq)
  par <- table6(c(rep_), sqrt(diag(RV))); bet <- table6(c(beta), sqrt(diag(BV)))
  if (code < 2) for (i in which(drop)) { par[i, ] <- c(0, 0, NA, NA, NA, NA); bet[i, ] <- par[i, ] }
  if (!c1) par[p + 1, ] <- c(fixed, NA, NA, NA, NA, NA)

  pred <- fitted(fit) + (if (c1) 0 else fixed); e <- y - pred
  # FORMULA: leverage. q is the quadratic form of lm's hat matrix per unit weight; wr alone multiplies it.
  quad <- hatvalues(fit) / W - (if (c1) 1 / sw else 0)
  g <- quad * (if (c1) swc - 1 else sw - 1) * wr / (sw - sw / n)
  h <- wr / sw + g
  # FORMULA: studentised residual without sqrt(w), Cook's distance with wr; a fixed intercept keeps h in 1 - h.
  cook <- (if (c1) h else g) * wr * (e / (1 - h))^2 / (k * mse)
  adj <- y - e / (1 - h); press <- sum((e / (1 - h))^2)
  stud <- e / sqrt(mse * (1 - h))
  v <- mse * (if (c1) h else g); sm <- sqrt(v); so <- sqrt(mse + v)
  if (c1 && all(W == 1)) stopifnot(all.equal(stud, unname(rstandard(fit)), check.attributes = FALSE),
                                   all.equal(unname(cook), unname(cooks.distance(fit))))

  sst <- if (c1) sum((y - ybar)^2 * W) else (swc - 1) / (sw - 1) * sum(yy^2 * W)
  if (!c1) stopifnot(sw == swc)                            # else SSE is scaled as well; not used here
  ssm <- sst - sse; Fv <- (ssm / k0) / mse
  anova <- rbind(c(k0, ssm, ssm / k0, Fv, pf(Fv, k0, dfE, lower.tail = FALSE)), c(dfE, sse, mse, NA, NA),
                 c(k0 + dfE, sst, NA, NA, NA))
  r <- if (c1) sse / sst else sse / div / sdy^2
  r2 <- if (c1) 1 - sse / sst else { z <- cov.wt(cbind(y, pred), wr, cor = TRUE)$cor; z[1, 2]^2 }
  # FORMULA: the forced pass counts with sum(W); its MSE enters Cp.
  msefull <- (sw - 1) * r * sdy^2 / (sw - k)
  fitv <- c(swc, sw, dfE, r2, if (c1) r2 - k0 * r / dfE else NA, mse, sqrt(mse), 100 * sum(W * abs(e / y)) / sw,
            sum(diff(e)^2) / sum(e^2), sse / msefull + 2 * k - swc, swc * log(sse / swc) + 2 * k,
            swc * log(sse / swc) + log(swc) * k, if (c1) (n + k) * r / dfE else NA, press, 1 - press / sst)
  if (all(W == 1) && c1) stopifnot(all.equal(fitv[5], summary(fit)$adj.r.squared), all.equal(fitv[7], sigma(fit)))

  cov_ <- if (keepraw == 0) VV else RV
  if (!c1) cov_[p + 1, ] <- cov_[, p + 1] <- KEPT          # row and column of a fixed intercept
  if (keepraw == 0) {                                      # cells of columns outside the model
    cov_[c(drop, FALSE), c(rep(TRUE, p), FALSE)] <- KEPT; cov_[c(rep(TRUE, p), FALSE), c(drop, FALSE)] <- KEPT
  }
  writeLines(paste("case", name), out)
  put("options", c(code, inter, as.numeric(!c1), if (c1) 0 else fixed, keepraw, alpha))
  put("y", y); put("x", x); put("q", if (pQ) sapply(q, as.integer) else matrix(0, n, 0))
  put("levels", if (pQ) sapply(q, nlevels) else numeric(0)); put("wc", wc); put("wr", wr)
  put("factors", cbind(type, lengths(factors), t(sapply(factors, function(v) c(v, rep(0, inter - length(v)))[1:inter],
                                                       simplify = "array") |> matrix(inter))))
  put("parents", parent); put("dropped", 1 * drop); put("design", D); put("anova", anova); put("fit", fitv)
  put("raw", raw); put("reported", rep_); put("parameters", par[c(p + 1, 1:p), , drop = FALSE]); put("beta", bet)
  put("covariance", cov_); put("predictions", pred)
  put("prediction_errors", cbind(sm, pred - sm * tq, pred + sm * tq, so, pred - so * tq, pred + so * tq))
  put("residuals", cbind(e, e / sqrt(mse), stud)); put("cook", cook); put("leave_one_out", adj)
  put("means", c(center, ybar)); put("deviations", c(sd, sdy))
}

for (code in 0:3)
  run(paste0("PlantGrowth_code", code), PlantGrowth$weight[-(1:3)], q = list(PlantGrowth$group[-(1:3)]),
      factors = list(1), code = code, check = lm(weight ~ group, PlantGrowth[-(1:3), ]))
Moore <- carData::Moore
for (code in c(0, 2, 3))
  run(paste0("Moore_interaction_code", code), Moore$conformity, q = list(Moore$fcategory, Moore$partner.status),
      factors = list(1, 2, c(1, 2)), code = code, keepraw = as.numeric(code != 2),
      check = lm(conformity ~ fcategory * partner.status, Moore))
for (code in c(0, 2))
  run(paste0("ToothGrowth_slopes_code", code), ToothGrowth$len[-(1:4)], x = ToothGrowth$dose[-(1:4)],
      q = list(ToothGrowth$supp[-(1:4)]), factors = list(1, 2, c(1, 2)), code = code, alpha = 0.1,
      check = lm(len ~ supp * dose, ToothGrowth[-(1:4), ]))
S <- as.data.frame(state.x77)
run("states_by_population", S$`Life Exp`, x = S[, c("Murder", "HS Grad", "Frost")], factors = list(1, 2, 3, c(1, 2)),
    wr = S$Population)
run("states_both_weights", S$`Life Exp`, x = S[, c("Murder", "HS Grad", "Frost")], factors = list(1, 2, 3),
    wc = rep(c(1, 2, 3, 1, 4), 10), wr = S$Area / 50000, keepraw = 0)
run("trees_no_intercept", trees$Volume, x = trees[, c("Girth", "Height")], factors = list(1, 2), fixed = 0, keepraw = 0)
run("trees_fixed_intercept", trees$Volume, x = trees[, c("Girth", "Height")], factors = list(1, 2), fixed = 2)
run("longley", longley$Employed, x = longley[, 1:6], factors = as.list(1:6))
close(out)
