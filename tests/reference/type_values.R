# Writes type_values.txt: data, options and expected Type I, II and III tables on real data sets.
#
#   Rscript tests/reference/type_values.R        (from the root of the checkout; needs car and MASS)
#
# The format is that of linear_values.txt. Sums of squares come from residual sums of squares of lm.fit on indicator columns
# (Type I and II) and from car::Anova(type = 3) under contr.sum with centred covariates (Type III); where the Type II of
# car asks the same question the two are checked against each other.

# Where cells are empty, car has no Type III: there the hypotheses come from their definition, by null spaces.

options(contrasts = c("contr.sum", "contr.poly"), digits = 17)
library(car)
out <- file("tests/reference/type_values.txt", "w")
put <- function(name, x) {
  x <- as.matrix(x)
  writeLines(paste(c(name, dim(x), ifelse(is.na(x), "missing", sprintf("%.17g", x))), collapse = " "), out)
}

# Orthonormal basis of the null space of a matrix.
null_space <- function(A) {
  if (nrow(A) == 0) return(diag(ncol(A)))
  d <- svd(A, nu = 0, nv = ncol(A)); d$v[, sum(d$d > 1e-9) + seq_len(ncol(A) - sum(d$d > 1e-9)), drop = FALSE]
}

# Type III of a term: among the estimable functions that no unrelated column enters, those orthogonal to the functions of the
# containing terms alone. `own` and `containing` are columns of X.
type3_by_definition <- function(X, y, own, containing) {
  rows <- svd(X); Q <- rows$v[, rows$d > 1e-9 * rows$d[1]]
  functions_without <- function(columns) Q %*% null_space(Q[columns, , drop = FALSE])
  unrelated <- setdiff(seq_len(ncol(X)), c(own, containing))
  all <- functions_without(unrelated); alone <- functions_without(c(unrelated, own))
  L <- t(all %*% null_space(t(alone) %*% all))
  G <- MASS::ginv(crossprod(X)); v <- L %*% G %*% crossprod(X, y)
  c(nrow(L), t(v) %*% solve(L %*% G %*% t(L), v))
}

# factors: list of vectors of variable numbers, quantitative variables first; contains(f, g): g is left out while f is tested
# for Type II.
run <- function(name, y, x = NULL, q = list(), factors, code = 0, wr = rep(1, length(y)), type3, same_as_car = TRUE) {
  n <- length(y); x <- if (is.null(x)) matrix(0, n, 0) else as.matrix(x); pX <- ncol(x); pQ <- length(q)
  inter <- max(lengths(factors)); NF <- length(factors)
  type <- sapply(factors, function(v) {
    nq <- sum(v > pX)
    if (length(v) == 1) 1 + nq else if (nq == 0) 3 else if (nq == length(v)) 4 else 5
  })
  columns_of <- function(v) {
    cols <- matrix(1, n, 1)
    for (i in v[v <= pX]) cols <- cols * x[, i]
    for (i in v[v > pX]) cols <- do.call(cbind, lapply(seq_len(ncol(cols)), function(a)
      cols[, a] * outer(as.integer(q[[i - pX]]), seq_len(nlevels(q[[i - pX]])), "==")))
    cols
  }
  blocks <- lapply(factors, columns_of)
  fit_of <- function(set) {
    X <- do.call(cbind, c(list(rep(1, n)), blocks[set]))
    f <- lm.wfit(X, y, wr); c(sse = sum(wr * f$residuals^2), rank = f$rank)
  }
  full <- fit_of(seq_len(NF)); dfE <- n - full["rank"]; mse <- full["sse"] / dfE
  contains <- function(f, g) {
    shares <- factors[[f]][1] %in% factors[[g]]
    shares && ((g > f && length(factors[[g]]) > length(factors[[f]]) && type[g] == 4) || (type[g] == 5 && type[f] == 1))
  }
  between <- function(without, with) {
    a <- fit_of(without); b <- fit_of(with); c(b["rank"] - a["rank"], a["sse"] - b["sse"])
  }
  rows <- function(tests) {
    t(sapply(tests, function(s) {
      f <- s[2] / s[1] / mse; unname(c(s[1], s[2], s[2] / s[1], f, pf(f, s[1], dfE, lower.tail = FALSE)))
    }))
  }
  type1 <- lapply(seq_len(NF), function(f) between(seq_len(f - 1), seq_len(f)))
  type2 <- lapply(seq_len(NF), function(f) {
    others <- Filter(function(g) g != f && !contains(f, g), seq_len(NF)); between(others, c(others, f))
  })
  if (same_as_car && NF > 1) {
    a <- Anova(type3, type = 2)
    stopifnot(all.equal(unname(sapply(type2, `[`, 2)), a[seq_len(NF), "Sum Sq"], tolerance = 1e-10))
  }
  owner <- c(0, rep(seq_len(NF), sapply(blocks, ncol)))
  type3_tests <- if (full["rank"] == length(coef(type3)))  {
    a <- Anova(type3, type = 3)
    lapply(seq_len(NF), function(f) c(a[f + 1, "Df"], a[f + 1, "Sum Sq"]))
  } else lapply(seq_len(NF), function(f) {
    containing <- Filter(function(g) all(factors[[f]] %in% factors[[g]]), setdiff(seq_len(NF), f))
    type3_by_definition(do.call(cbind, c(list(rep(1, n)), blocks)), y, which(owner == f), which(owner %in% containing))
  })
  writeLines(paste("case", name), out)
  put("options", c(code, inter)); put("y", y); put("x", x)
  put("q", if (pQ) sapply(q, as.integer) else matrix(0, n, 0)); put("levels", if (pQ) sapply(q, nlevels) else numeric(0))
  put("wc", rep(1, n)); put("wr", wr)
  put("factors", cbind(type, lengths(factors), matrix(unlist(lapply(factors, function(v)
    c(v, rep(0, inter - length(v))))), NF, inter, byrow = TRUE)))
  put("type1", rows(type1)); put("type2", rows(type2)); put("type3", rows(type3_tests))
}

Moore <- carData::Moore; quine <- MASS::quine
for (code in 0:1) {
  run(paste0("Moore_two_way_code", code), Moore$conformity, q = list(Moore$fcategory, Moore$partner.status),
      factors = list(1, 2, c(1, 2)), code = code, type3 = lm(conformity ~ fcategory * partner.status, Moore))
  run(paste0("quine_three_way_code", code), quine$Days, q = list(quine$Eth, quine$Sex, quine$Age),
      factors = list(1, 2, 3, c(1, 2), c(1, 3), c(2, 3), c(1, 2, 3)), code = code,
      type3 = lm(Days ~ Eth * Sex * Age, quine))
}
for (code in 0:3)
  run(paste0("Moore_main_effects_code", code), Moore$conformity, q = list(Moore$fcategory, Moore$partner.status),
      factors = list(1, 2), code = code, type3 = lm(conformity ~ fcategory + partner.status, Moore))
holes <- subset(Moore, !(fcategory == "high" & partner.status == "low"))
missing_cells <- subset(quine, !(Age == "F3" & Sex == "M") & !(Age == "F0" & Eth == "N" & Sex == "F"))
for (code in 0:1) {
  run(paste0("Moore_empty_cell_code", code), holes$conformity, q = list(holes$fcategory, holes$partner.status),
      factors = list(1, 2, c(1, 2)), code = code, type3 = lm(conformity ~ fcategory * partner.status, holes))
  run(paste0("quine_empty_cells_code", code), missing_cells$Days, q = list(missing_cells$Eth, missing_cells$Sex, missing_cells$Age),
      factors = list(1, 2, 3, c(1, 2), c(1, 3), c(2, 3)), code = code,
      type3 = lm(Days ~ (Eth + Sex + Age)^2, missing_cells))
}
w <- seq_len(nrow(Moore)) %% 3 + 0.5
w <- w / mean(w)
run("Moore_weighted", Moore$conformity, q = list(Moore$fcategory, Moore$partner.status), factors = list(1, 2, c(1, 2)),
    wr = w, type3 = lm(conformity ~ fcategory * partner.status, Moore, weights = w))
run("swiss", swiss$Fertility, x = swiss[, -1], factors = as.list(1:5), type3 = lm(Fertility ~ ., swiss))
Moore$centred <- Moore$fscore - mean(Moore$fscore)
run("Moore_covariate", Moore$conformity, x = Moore$fscore, q = list(Moore$partner.status), factors = list(1, 2),
    type3 = lm(conformity ~ centred + partner.status, Moore))
# A mixed interaction does not contain its qualitative variable: that is tested with all slopes in the model, at fscore 0.
run("Moore_slopes", Moore$conformity, x = Moore$fscore, q = list(Moore$partner.status), factors = list(1, 2, c(1, 2)),
    type3 = lm(conformity ~ fscore * partner.status, Moore), same_as_car = FALSE)
close(out)
