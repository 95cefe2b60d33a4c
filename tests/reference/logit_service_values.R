# Writes logit_service_values.txt: ROC curves, Hosmer-Lemeshow tests, marginal effects and combined coefficients.
#
#   Rscript tests/reference/logit_service_values.R        (from the root of the checkout)
#
# Format as in logit_values.R. Curves come from pROC, marginal effects and standard errors from numerical derivatives
# (numDeriv) of the effect as a function of all coefficients, combinations from one map of slopes and intercept. FORMULA
# marks what is the engine's own.

suppressMessages({library(MASS); library(pROC); library(numDeriv)})
options(digits = 17)
out <- file("tests/reference/logit_service_values.txt", "w")

put <- function(name, x) {
  x <- as.matrix(x)
  writeLines(paste(c(name, dim(x), ifelse(is.na(x), "missing", sprintf("%.17g", x))), collapse = " "), out)
}
case <- function(name) writeLines(paste("case", name), out)

# ---- ROC curves: scores without ties, so that every observation is a threshold of its own

curve <- function(y, score) {
  r <- roc(y, score, levels = c(0, 1), direction = "<", quiet = TRUE)
  list(table = cbind(1 - r$specificities, r$sensitivities), area = as.numeric(auc(r)))
}

put_roc <- function(name, y, w, binary, x, r) {
  case(paste0("roc_", name))
  put("y", y); put("w", w); put("x", x); put("binary", binary); put("table", r$table); put("area", r$area)
}

m <- glm(type ~ glu + ped + bmi, binomial, Pima.tr)
y <- as.numeric(Pima.tr$type == "Yes")
stopifnot(!anyDuplicated(round(fitted(m), 12)))
x <- as.matrix(Pima.tr[c("glu", "ped", "bmi")])
put_roc("pima", y, rep(1, 200), 1, x, curve(y, fitted(m)))

w <- 1 + (seq_along(y) * 7) %% 3
mw <- glm(type ~ glu + ped + bmi, binomial, Pima.tr, weights = w)
put_roc("weighted", y, w, 1, x, curve(rep(y, w), rep(fitted(mw), w)))

# Grouped data: the same curve as of single trials; each step goes both ways, and the area is that below the steps.
x <- MASS::menarche
trials <- c(x$Total - x$Menarche, x$Menarche)
r <- curve(rep(rep(0:1, each = nrow(x)), trials), rep(rep(x$Age, 2), trials))
r$area <- sum(-diff(r$table[, 1]) * r$table[-1, 2])
put_roc("grouped", x$Menarche, x$Total, 0, x$Age, r)

# ---- Hosmer-Lemeshow: a group number for each sorted row, then sums by tapply. FORMULA: the grouping

hosmer <- function(o, e, w) {
  n <- length(o); size <- floor(sum(w) / 10 + 0.5)
  s <- order(e); o <- o[s]; e <- e[s]
  group <- integer(n); g <- 1; held <- w[1]; group[1] <- 1
  for (i in seq_len(n)[-1]) {
    over <- held + w[i] > size && (i == n || e[i] - e[i - 1] > 2^-52)
    before <- over && held + w[i] / 2 > size
    if (before) { g <- g + 1; held <- 0 }
    group[i] <- g; held <- held + w[i]
    if (over && !before && i < n) { g <- g + 1; held <- 0 }
  }
  # a group that closes without rows counts: one row outweighs a group, right after another group closed
  sums <- function(v) { t <- unname(tapply(v, factor(group, seq_len(max(group))), sum)); t[is.na(t)] <- 0; t }
  N <- floor(sums(w)); O <- sums(o); E <- sums(e)
  stopifnot(max(group) <= 11)
  x2 <- sum(((O - E)^2 / ((1 - E / N) * E))[E > 2^-52])
  c(x2, max(group) - 2, pchisq(x2, max(group) - 2, lower.tail = FALSE))
}

put_hosmer <- function(name, o, e, w) {
  case(paste0("hosmer_", name))
  put("p", cbind(o, e)); put("w", w); put("table", hosmer(o, e, w))
}

put_hosmer("pima", y, fitted(m), rep(1, 200))
put_hosmer("birthwt", birthwt$low, fitted(glm(low ~ age + lwt + smoke, binomial, birthwt)), rep(1, 189))
put_hosmer("ties", birthwt$low, fitted(glm(low ~ ptl + factor(race), binomial, birthwt)), rep(1, 189))
put_hosmer("weighted", y * w, fitted(mw) * w, w)
x <- MASS::menarche
put_hosmer("grouped", x$Menarche, x$Total * fitted(glm(cbind(Menarche, Total - Menarche) ~ Age, binomial, x)), x$Total)

# ---- marginal effects: two covariates, two factors, and interactions of types 3, 4 and 5

b <- transform(birthwt, age = age / 10, lwt = lwt / 100)
ind <- function(v, levels, name) sapply(setNames(levels, paste0(name, ":", levels)), function(l) as.numeric(v == l))
R <- ind(b$race, 1:3, "race"); S <- ind(b$smoke, 0:1, "smoke")
cross <- function(A, B) {
  P <- do.call(cbind, lapply(seq_len(ncol(A)), function(i) A[, i] * B))
  colnames(P) <- paste(rep(colnames(A), each = ncol(B)), rep(colnames(B), ncol(A)), sep = "*")
  P
}
age <- cbind(age = b$age); lwt <- cbind(lwt = b$lwt)
X <- cbind(age, lwt, R, S, cross(R, S), cross(age, R), cross(age, lwt))
dropped <- grepl("race:1|smoke:0", colnames(X))
p <- ncol(X)
qualitative <- grepl("race|smoke", colnames(X)) & !grepl("age", colnames(X))

links <- list(plogis, pnorm, function(e) 1 - exp(-exp(e)), function(e) exp(-exp(-e)))
densities <- list(dlogis, dnorm, function(e) exp(e - exp(e)), function(e) exp(-e - exp(-e)))
fits <- list(glm(b$low ~ X[, !dropped], binomial("logit")), glm(b$low ~ X[, !dropped], binomial("probit")),
             glm(b$low ~ X[, !dropped], binomial("cloglog")), glm(1 - b$low ~ X[, !dropped], binomial("cloglog")))

for (link in 0:3) {
  fit <- fits[[link + 1]]; sign <- if (link == 3) -1 else 1  # log-log of y: complementary log-log of 1 - y
  theta <- numeric(p + 1); theta[c(!dropped, TRUE)] <- sign * c(coef(fit)[-1], coef(fit)[1])
  V <- matrix(0, p + 1, p + 1); V[c(!dropped, TRUE), c(!dropped, TRUE)] <- vcov(fit)[c(2:length(coef(fit)), 1), c(2:length(coef(fit)), 1)]
  F <- links[[link + 1]]; f <- densities[[link + 1]]
  means <- colMeans(X); mortality <- c(0, 0.1, 0, 0.05)[link + 1]
  effect <- function(t, j) {
    if (!qualitative[j]) return(t[j] * f(sum(means * t[1:p]) + t[p + 1]))
    x1 <- x0 <- means; x1[j] <- 1; x0[j] <- 0
    own <- strsplit(colnames(X)[j], "*", fixed = TRUE)[[1]]
    shares <- sapply(strsplit(colnames(X), "*", fixed = TRUE), function(parts) any(parts %in% own))
    x0[shares & !dropped & seq_len(p) > j] <- 0
    F(sum(x1 * t[1:p]) + t[p + 1]) - F(sum(x0 * t[1:p]) + t[p + 1])
  }
  table <- matrix(NA, p, 6); D <- matrix(0, p + 1, p)
  for (j in 1:p) {
    d <- grad(effect, theta, j = j)
    d[c(dropped, FALSE)] <- 0
    eta <- sum(means * theta[1:p]) + theta[p + 1]
    if (!qualitative[j]) d[p + 1] <- (1 - 2 * F(eta)) * theta[j] * f(eta)  # FORMULA: the logit's, whatever the link
    D[, j] <- d
    if (dropped[j]) { table[j, 1] <- 0; next }
    e <- (1 - mortality) * effect(theta, j); s <- sqrt(drop(d %*% V %*% d))  # FORMULA: s without 1 - mortality
    table[j, ] <- c(e, s, e / s, pnorm(e / s, lower.tail = FALSE), e + c(-1, 1) * qnorm(0.95) * s)
  }
  case(paste0("effects_", link))
  put("link", link); put("mortality", mortality); put("alpha", 0.1); put("means", means)
  put("coefficients", theta[c(p + 1, 1:p)]); put("covariance", V); put("removed", as.numeric(dropped))
  put("type", c(1, 1, 2, 2, 4, 5, 3)); put("nbvars", c(1, 1, 1, 1, 2, 2, 2)); put("nbsub", c(1, 1, 3, 2, 6, 3, 1))
  put("listvars", cbind(c(1, 2, 3, 4, 3, 1, 1), c(0, 0, 0, 0, 4, 3, 2)))
  put("table", table); put("derivatives", D)
}

# ---- combined coefficients: the slopes of a model on principal components, as slopes of the variables

Z <- as.matrix(Pima.tr[c("glu", "bp", "bmi", "ped", "age")])
for (normed in 0:1) {
  pc <- prcomp(Z, scale. = normed == 1)
  fit <- glm(y ~ pc$x[, 1:3], binomial)
  L <- pc$rotation[, 1:3]; sd <- apply(Z, 2, stats::sd); mean <- colMeans(Z)
  A <- if (normed == 1) L / sd else L
  M <- rbind(cbind(A, 0), c(-mean %*% A, 1))
  o <- c(2:4, 1); V <- vcov(fit)[o, o]; c0 <- coef(fit)[o]
  cc <- drop(M %*% c0); s <- sqrt(diag(M %*% V %*% t(M)))
  rows <- function(v, s) {
    w <- (v / s)^2
    cbind(v, s, w, pchisq(w, 1, lower.tail = FALSE), v - qnorm(0.975) * s, v + qnorm(0.975) * s)
  }
  # the variables' model predicts what the components' model does
  stopifnot(max(abs(drop(cbind(Z, 1) %*% cc) - predict(fit))) < 1e-10)
  case(paste0("combined_", normed))
  put("normed", normed); put("L", L); put("coefficients", c(c0, 0)); put("mean", mean); put("sd", sd); put("sdy", pi / sqrt(3))
  put("covariance", rbind(cbind(V, 0), 0)); put("alpha", 0.05)
  put("stats", rows(cc, s)[c(6, 1:5), ]); put("beta", rows(cc[1:5] * sd * sqrt(3) / pi, s[1:5] * sd * sqrt(3) / pi))
}
close(out)
