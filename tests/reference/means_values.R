# Writes means_values.txt: data, options, expected category means and LS means with their contrasts on real data sets.
#
#   Rscript tests/reference/means_values.R        (from the root of the checkout; needs MASS and emmeans)
#
# The format is that of linear_values.txt. Fits are those of lm.wfit under treatment contrasts. LS means come from combinations of
# the coefficients that are built here cell by cell; where emmeans asks the same question the two are checked against each other.

options(digits = 17)
suppressMessages(library(emmeans))
out <- file("tests/reference/means_values.txt", "w")
put <- function(name, x) {
  x <- as.matrix(x)
  cells <- ifelse(is.nan(x), "kept", ifelse(is.na(x), "missing", sprintf("%.17g", x)))
  writeLines(paste(c(name, dim(x), cells), collapse = " "), out)
}

# Means by rank with limits, the categories, and the contrasts of all pairs of ranks.
put_means <- function(prefix, L, b, V, df, alpha) {
  mean <- drop(L %*% b); error <- sqrt(diag(L %*% V %*% t(L))); t <- qt(1 - alpha / 2, df)
  ids <- order(mean); K <- length(ids)
  put(paste0(prefix, "_means"), cbind(mean, error, mean - t * error, mean + t * error)[ids, ])
  put(paste0(prefix, "_ids"), ids)
  pairs <- t(combn(K, 2)); a <- ids[pairs[, 1]]; b2 <- ids[pairs[, 2]]
  C <- L[a, , drop = FALSE] - L[b2, , drop = FALSE]
  d <- drop(C %*% b); v <- diag(C %*% V %*% t(C))
  put(paste0(prefix, "_contrasts"), cbind(d, v, pairs, d / sqrt(v), NaN, NaN, NaN, a, b2))
}

run <- function(name, y, x, q, factors, ids, wr = rep(1, length(y)), alpha = 0.05, emm = NULL) {
  n <- length(y); x <- if (is.null(x)) matrix(0, n, 0) else as.matrix(x); pX <- ncol(x)
  inter <- max(lengths(factors)); NF <- length(factors)
  type <- sapply(factors, function(v) {
    nq <- sum(v > pX)
    if (length(v) == 1) 1 + nq else if (nq == 0) 3 else if (nq == length(v)) 4 else 5
  })
  levels_of <- function(v) nlevels(q[[v - pX]])
  # Categories of the qualitative variables of a factor, a row for each of its columns, the first variable slowest.
  cells_of <- function(v) {
    v <- v[v > pX]; if (!length(v)) return(matrix(0, 1, 0))
    as.matrix(rev(expand.grid(rev(lapply(v, function(u) seq_len(levels_of(u)))))))
  }
  cells <- lapply(factors, cells_of)
  columns_of <- function(f) {
    v <- factors[[f]]
    base <- Reduce(`*`, lapply(v[v <= pX], function(u) x[, u]), rep(1, n))
    sapply(seq_len(nrow(cells[[f]])), function(r) {
      col <- base
      for (k in seq_along(v[v > pX])) col <- col * (as.integer(q[[v[v > pX][k] - pX]]) == cells[[f]][r, k])
      col
    })
  }
  blocks <- lapply(seq_len(NF), columns_of)
  X <- do.call(cbind, blocks); parent <- rep(seq_len(NF), sapply(blocks, ncol))
  keep <- unlist(lapply(cells, function(m) apply(m > 1, 1, all))) & apply(X, 2, sd) > 0
  fit <- lm.wfit(cbind(X[, keep], 1), y, wr)
  df <- n - fit$rank
  used <- c(which(keep), ncol(X) + 1); R <- qr.R(fit$qr)
  b <- rep(0, ncol(X) + 1); b[used] <- fit$coefficients
  V <- matrix(0, length(b), length(b)); V[used, used] <- chol2inv(R) * sum(wr * fit$residuals^2) / df

  writeLines(paste("case", name), out)
  put("options", c(0, inter, alpha, df)); put("y", y); put("x", x)
  put("q", sapply(q, as.integer)); put("levels", sapply(q, nlevels)); put("wc", rep(1, n)); put("wr", wr)
  put("factors", cbind(type, lengths(factors), matrix(unlist(lapply(factors, function(v)
    c(v, rep(0, inter - length(v))))), NF, inter, byrow = TRUE)))
  put("ids", ids)
  for (id in ids) {
    mine <- which(parent == id); K <- length(mine); v <- factors[[id]]
    if (type[id] != 5) {
      L <- t(sapply(mine, function(j) c(colSums(wr * X[, j] * X), sum(wr * X[, j])) / sum(wr * X[, j])))
      put_means(paste0("fitted", id), L, b, V, df, alpha)
    }
    means <- colSums(wr * X) / sum(wr)
    L <- t(sapply(seq_len(K), function(cat) {
      l <- numeric(ncol(X))
      for (f in seq_len(NF)) {
        cols <- which(parent == f); w <- factors[[f]]; shared <- intersect(v, w)
        with <- rep(TRUE, length(cols))
        for (u in shared[shared > pX])
          with <- with & cells[[f]][, match(u, w[w > pX])] == cells[[id]][cat, match(u, v[v > pX])]
        l[cols] <- if (type[f] %in% c(1, 3, 5)) means[cols] * with else with / sum(with)
      }
      c(l, 1)
    }))
    if (!is.null(emm)) {
      e <- summary(emm(id)); C <- L %*% b
      stopifnot(all.equal(drop(C), e$emmean, tolerance = 1e-9),
                all.equal(sqrt(diag(L %*% V %*% t(L))), e$SE, tolerance = 1e-9))
    }
    put_means(paste0("ls", id), L, b, V, df, alpha)
  }
}

b <- MASS::birthwt; b$race <- factor(b$race); b$smoke <- factor(b$smoke); b$grams <- b$lwt * 453.59237
fit1 <- lm(bwt ~ grams + race * smoke, b)
run("birthwt_two_way", b$bwt, b$grams, list(b$race, b$smoke), list(1, 2, 3, c(2, 3)), 2:4,
    emm = function(id) emmeans(fit1, list(NULL, ~race, ~smoke, ~smoke:race)[[id]]))
quine <- MASS::quine; fit2 <- lm(log(Days + 1) ~ Eth * Sex * Age, quine)
run("quine_three_way", log(quine$Days + 1), NULL, list(quine$Eth, quine$Sex, quine$Age),
    list(1, 2, 3, c(1, 2), c(1, 3), c(2, 3), c(1, 2, 3)), c(3, 6), alpha = 0.1,
    emm = function(id) emmeans(fit2, if (id == 3) ~Age else ~Age:Sex))
b$w <- seq_len(nrow(b)) %% 4 + 0.5; b$w <- b$w / mean(b$w)
fit3 <- lm(bwt ~ age + lwt + race + smoke, b, weights = w)
run("birthwt_weighted", b$bwt, b[, c("age", "lwt")], list(b$race, b$smoke), list(1, 2, 3, 4), 3:4, wr = b$w,
    emm = function(id) emmeans(fit3, if (id == 3) ~race else ~smoke,
                               at = list(age = weighted.mean(b$age, b$w), lwt = weighted.mean(b$lwt, b$w))))
# The columns of a mixed interaction enter at their own means over all rows, which are not the mean of the covariate.
run("birthwt_slopes", b$bwt, b[, c("age", "lwt")], list(b$race, b$smoke), list(1, 2, 3, 4, c(2, 3), c(1, 2)), c(3, 4, 5))
# Without the main effect of smoke; an empty cell keeps its share, with the coefficient 0.
e <- b[!(b$race == 2 & b$smoke == 1), ]
run("birthwt_empty_cell", e$bwt, NULL, list(e$race, e$smoke), list(1, 2, c(1, 2)), 1:2)
close(out)
