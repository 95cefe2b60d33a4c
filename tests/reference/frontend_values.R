# Values for tests/frontend/command_test.py, from lm() on the example data, Anova() of the package car, emmeans and mvtnorm.
#
#   Rscript tests/reference/frontend_values.R      (from the top of the checkout)
#
# Parameters are reported for every category: the constraint's coding matrix of a variable (categories x fitted columns)
# maps the fitted coefficients to them, a Kronecker product of them those of an interaction. Labels are those of the
# command. Categories stand in code-point order.

Sys.setlocale("LC_COLLATE", "C")
rows <- list()
emit <- function(case, table, row, column, value)
  rows[[length(rows) + 1]] <<- data.frame(case, table, row, column, value = sprintf("%.17g", value))

coding <- function(constraint, x, w) {
  k <- nlevels(x)
  freq <- tapply(w, x, sum)
  m <- switch(constraint,
    first = contr.treatment(k, base = 1),
    last = contr.treatment(k, base = k),
    sum = contr.sum(k),
    weighted = rbind(diag(k - 1), -freq[-k] / freq[k]))
  dimnames(m) <- list(levels(x), NULL)
  m
}

# One row per reported parameter: its weights on the fitted coefficients.
reported <- function(fit, data, codings) {
  assign <- attr(model.matrix(fit), "assign")
  labels <- attr(terms(fit), "term.labels")
  blocks <- list(Intercept = 0)
  map <- matrix(0, 0, length(assign))
  for (t in seq_along(labels)) {
    block <- matrix(1, 1, 1, dimnames = list("", NULL))
    for (v in strsplit(labels[t], ":")[[1]]) {
      m <- codings[[v]]
      if (is.null(m)) m <- matrix(1, 1, 1, dimnames = list(v, NULL))
      else rownames(m) <- paste(v, rownames(m), sep = "-")
      names <- outer(rownames(block), rownames(m), paste, sep = "*")
      block <- kronecker(m, block)
      rownames(block) <- sub("^\\*", "", as.vector(names))
    }
    padded <- matrix(0, nrow(block), length(assign), dimnames = list(rownames(block), NULL))
    padded[, assign == t] <- block
    map <- rbind(map, padded)
  }
  rbind(Intercept = c(1, rep(0, length(assign) - 1)), map)
}

# Type III under sum contrasts. Type II leaves out the rows where the command says that its test is another one.
types <- function(case, fit, data, factors, otherTypeII) {
  .data <<- data
  for (v in factors) contrasts(.data[[v]]) <<- contr.sum(nlevels(data[[v]]))
  summed <- lm(formula(fit), .data, weights = .w)
  show <- function(table, name, skip = NULL) {
    terms <- setdiff(rownames(table), c("(Intercept)", "Residuals", skip))
    for (t in terms) {
      values <- c(table[t, "Df"], table[t, "Sum Sq"], table[t, "Sum Sq"] / table[t, "Df"], table[t, "F value"], table[t, "Pr(>F)"])
      heads <- c("DF", "Sum of squares", "Mean square", "F", "Pr > F")
      for (j in 1:5) emit(case, name, gsub(":", "*", t), heads[j], values[j])
    }
  }
  show(anova(summed), "type1")
  show(car::Anova(summed, type = 2), "type2", otherTypeII)
  show(car::Anova(summed, type = 3), "type3")
}

reference <- function(case, formula, data, constraint = "first", weights = NULL, alpha = 0.05, cases = FALSE,
                      otherTypeII = NULL) {
  w <- if (is.null(weights)) rep(1, nrow(data)) else weights
  data$.w <- w
  for (v in all.vars(formula)) if (is.character(data[[v]])) data[[v]] <- factor(data[[v]])
  factors <- Filter(function(v) is.factor(data[[v]]), all.vars(formula)[-1])
  codings <- lapply(setNames(nm = factors), function(v) coding(constraint, data[[v]], w))
  for (v in factors) contrasts(data[[v]], nlevels(data[[v]]) - 1) <- codings[[v]]
  fit <- lm(formula, data, weights = .w)
  s <- summary(fit)
  y <- model.response(model.frame(fit))
  n <- nrow(data)
  df <- fit$df.residual
  k <- n - df
  sse <- deviance(fit)
  sst <- sum(w * (y - weighted.mean(y, w))^2)

  emit(case, "fit", "Observations", "Value", n)
  emit(case, "fit", "Sum of weights", "Value", sum(w))
  emit(case, "fit", "Error DF", "Value", df)
  emit(case, "fit", "R squared", "Value", s$r.squared)
  emit(case, "fit", "Adjusted R squared", "Value", s$adj.r.squared)
  emit(case, "fit", "Mean square error", "Value", s$sigma^2)
  emit(case, "fit", "Root mean square error", "Value", s$sigma)
  emit(case, "fit", "AIC", "Value", n * log(sse / n) + 2 * k)
  emit(case, "fit", "SBC", "Value", n * log(sse / n) + log(n) * k)
  if (is.null(weights)) {
    press <- sum((residuals(fit) / (1 - hatvalues(fit)))^2)
    emit(case, "fit", "PRESS", "Value", press)
    emit(case, "fit", "Q squared", "Value", 1 - press / sst)
    emit(case, "fit", "Durbin-Watson", "Value", sum(diff(residuals(fit))^2) / sse)
  }

  model <- c(k - 1, sst - sse, (sst - sse) / (k - 1), s$fstatistic[[1]],
             pf(s$fstatistic[[1]], k - 1, df, lower.tail = FALSE))
  heads <- c("DF", "Sum of squares", "Mean square", "F", "Pr > F")
  for (j in 1:5) emit(case, "anova", "Model", heads[j], model[j])
  for (j in 1:3) emit(case, "anova", "Error", heads[j], c(df, sse, sse / df)[j])
  for (j in 1:2) emit(case, "anova", "Corrected total", heads[j], c(n - 1, sst)[j])

  table <- function(name, map) {
    value <- drop(map %*% coef(fit))
    se <- sqrt(diag(map %*% vcov(fit) %*% t(map)))
    tq <- qt(1 - alpha / 2, df)
    confidence <- sprintf("%.6g%%", 100 * (1 - alpha))
    for (i in seq_along(value)) {
      emit(case, name, rownames(map)[i], "Value", value[i])
      emit(case, name, rownames(map)[i], "Standard error", se[i])
      if (se[i] == 0) next  # reference level
      emit(case, name, rownames(map)[i], "t", value[i] / se[i])
      emit(case, name, rownames(map)[i], "Pr > |t|", 2 * pt(-abs(value[i] / se[i]), df))
      emit(case, name, rownames(map)[i], paste("Lower", confidence), value[i] - tq * se[i])
      emit(case, name, rownames(map)[i], paste("Upper", confidence), value[i] + tq * se[i])
    }
  }
  map <- reported(fit, data, codings)
  table("parameters", map)
  spread <- function(x) sqrt(sum(w * (x - weighted.mean(x, w))^2))
  scale <- apply(model.matrix(fit), 2, spread) / spread(y)
  table("standardised", (map %*% diag(scale))[-1, , drop = FALSE])
  covariance <- map %*% vcov(fit) %*% t(map)
  for (i in rownames(map)) for (j in rownames(map)) emit(case, "covariance", i, j, covariance[i, j])
  types(case, fit, data, factors, otherTypeII)

  if (cases) {
    mean <- predict(fit, interval = "confidence", level = 1 - alpha, se.fit = TRUE)
    observation <- suppressWarnings(predict(fit, interval = "prediction", level = 1 - alpha))
    e <- residuals(fit)
    confidence <- sprintf("%.6g%%", 100 * (1 - alpha))
    columns <- list(Prediction = fitted(fit), Residual = e, `Standardised residual` = e / s$sigma,
      `Studentised residual` = rstandard(fit), `Standard error of mean` = mean$se.fit,
      mean$fit[, "lwr"], mean$fit[, "upr"],
      `Standard error of observation` = sqrt(s$sigma^2 + mean$se.fit^2),
      observation[, "lwr"], observation[, "upr"],
      `Leave-one-out prediction` = y - e / (1 - hatvalues(fit)), `Cook's distance` = cooks.distance(fit))
    names(columns)[c(6, 7)] <- paste0(c("Lower ", "Upper "), confidence, " (mean)")
    names(columns)[c(9, 10)] <- paste0(c("Lower ", "Upper "), confidence, " (observation)")
    for (name in names(columns)) for (r in seq_len(n)) emit(case, "cases", r, name, columns[[name]][r])
  }
}

# Rows outside the fit: all rows of the data are predicted, those held out are judged.
heldOut <- function(case, formula, data, constraint, out) {
  reference(case, formula, data[-out, ], constraint)
  for (v in all.vars(formula)) if (is.character(data[[v]])) data[[v]] <- factor(data[[v]])
  fit <- lm(formula, data[-out, ])
  sigma <- summary(fit)$sigma
  mean <- predict(fit, data, interval = "confidence", se.fit = TRUE)
  observation <- predict(fit, data, interval = "prediction")
  columns <- list(Prediction = mean$fit[, "fit"], `Standard error of mean` = mean$se.fit,
    `Lower 95% (mean)` = mean$fit[, "lwr"], `Upper 95% (mean)` = mean$fit[, "upr"],
    `Standard error of observation` = sqrt(sigma^2 + mean$se.fit^2),
    `Lower 95% (observation)` = observation[, "lwr"], `Upper 95% (observation)` = observation[, "upr"])
  y <- data[[all.vars(formula)[1]]]
  judged <- c(columns, list(Residual = y - columns$Prediction,
    `Studentised residual` = (y - columns$Prediction) / columns$`Standard error of observation`))
  for (name in names(columns)) for (r in seq_along(y)) emit(case, "predictions", r, name, columns[[name]][r])
  for (name in names(judged)) for (r in out) emit(case, "validation", r, name, judged[[name]][r])
  mse <- sum(judged$Residual[out]^2) / (length(out) - length(coef(fit)))
  emit(case, "fit", "Mean square error", "Validation", mse)
  emit(case, "fit", "R squared", "Validation", cor(y[out], columns$Prediction[out], method = "spearman")^2)
}

read <- function(file) read.csv(file.path("examples/data", file), check.names = FALSE)
plant <- read("plantgrowth.csv")
moore <- read("moore.csv")
warp <- read("warpbreaks.csv")
states <- read("states.csv")
longley <- read("longley.csv")

for (constraint in c("first", "last", "sum", "weighted"))
  reference(paste("moore", constraint), conformity ~ partner.status + fcategory, moore, constraint)
reference("plantgrowth", weight ~ group, plant, cases = TRUE)
reference("longley", Employed ~ GNP.deflator + GNP + Unemployed + Armed.Forces + Population + Year, longley, cases = TRUE)
reference("warpbreaks cells", breaks ~ wool + tension + wool:tension, warp, alpha = 0.01)
reference("warpbreaks last", breaks ~ wool + tension + wool:tension, warp, "last")
reference("warpbreaks sum", breaks ~ wool + tension + wool:tension, warp, "sum")
reference("moore cells weighted", conformity ~ partner.status + fcategory + partner.status:fcategory, moore, "weighted")
reference("moore slopes sum", conformity ~ fscore + partner.status + fscore:partner.status, moore, "sum",
  otherTypeII = "partner.status")
reference("moore slopes", conformity ~ fscore + partner.status + fscore:partner.status, moore, otherTypeII = "partner.status")
reference("states weighted", Income ~ Illiteracy + Murder, states,
  weights = states$Population / mean(states$Population))  # the command scales weights to mean 1
reference("states product", Murder ~ Illiteracy + Frost + Illiteracy:Frost, states, otherTypeII = c("Illiteracy", "Frost"))

heldOut("moore held out", conformity ~ partner.status + fcategory + partner.status:fcategory, moore, "sum", seq(3, 45, 3))

# Category means, or LS means by emmeans, of one term, and a comparison of them. Contrasts are the smaller mean less the larger
# one. `sizes` and `variances` are those of the categories.
means <- function(case, fit, data, spec, kind = "means", procedure = NULL, control = NULL, tail = "two", alpha = 0.05, at = NULL) {
  df <- fit$df.residual
  cells <- interaction(data[spec], sep = "*", drop = TRUE)
  if (kind == "means") {
    w <- if (is.null(fit$weights)) rep(1, nrow(data)) else fit$weights
    X <- model.matrix(fit)
    L <- t(sapply(levels(cells), function(l) colSums((w * X)[cells == l, , drop = FALSE]) / sum(w[cells == l])))
    names <- levels(cells)
  } else {
    grid <- suppressMessages(emmeans::emmeans(fit, spec, at = at))
    L <- grid@linfct
    names <- do.call(paste, c(grid@grid[spec], sep = "*"))
  }
  mean <- drop(L %*% coef(fit)); V <- L %*% vcov(fit) %*% t(L)
  confidence <- sprintf("%.6g%%", 100 * (1 - alpha)); tq <- qt(1 - alpha / 2, df)
  for (i in seq_along(names)) {
    values <- c(mean[i], sqrt(V[i, i]), mean[i] - tq * sqrt(V[i, i]), mean[i] + tq * sqrt(V[i, i]))
    heads <- c("Mean", "Standard error", paste("Lower", confidence), paste("Upper", confidence))
    for (j in 1:4) emit(case, kind, names[i], heads[j], values[j])
  }
  k <- length(mean); y <- model.response(model.frame(fit))
  n <- as.vector(table(cells)[names]); s2 <- as.vector(tapply(y, cells, var)[names])
  show <- function(table, a, b, heads, values)
    for (j in seq_along(values)) if (!is.na(values[j])) emit(case, table, paste(names[a], "-", names[b]), heads[j], values[j])
  order <- order(mean); single <- c()
  for (r1 in seq_len(k - 1)) for (r2 in k:(r1 + 1)) {
    a <- order[r1]; b <- order[r2]
    single <- c(single, 2 * pt(-abs((mean[a] - mean[b]) / sqrt(V[a, a] + V[b, b] - 2 * V[a, b])), df))
  }
  adjusted <- p.adjust(single, "BH"); row <- 0; barrier <- 0
  if (!is.null(procedure)) for (r1 in seq_len(k - 1)) for (r2 in k:(r1 + 1)) {
    a <- order[r1]; b <- order[r2]; row <- row + 1; pairs <- k * (k - 1) / 2
    d <- mean[a] - mean[b]; se <- sqrt(V[a, a] + V[b, b] - 2 * V[a, b]); m <- r2 - r1 + 1
    if (procedure == "snk") se <- sqrt(2 * summary(fit)$sigma^2 / (k / sum(1 / n)))
    if (procedure == "games-howell") se <- sqrt(s2[a] / n[a] + s2[b] / n[b])
    t <- d / se; level <- alpha; p <- 2 * pt(-abs(t), df)
    if (procedure == "bonferroni") level <- alpha / pairs
    if (procedure == "sidak") level <- 1 - (1 - alpha)^(1 / pairs)
    critical <- qt(1 - level / 2, df)
    range <- function(q, df) {
      critical <<- qtukey(1 - alpha, q, df) / sqrt(2); p <<- ptukey(abs(t) * sqrt(2), q, df, lower.tail = FALSE)
    }
    if (procedure == "tukey") range(k, df)
    if (procedure == "games-howell")
      range(k, se^4 / ((s2[a] / n[a])^2 / (n[a] - 1) + (s2[b] / n[b])^2 / (n[b] - 1)))
    if (procedure == "bh") { critical <- NA; p <- adjusted[row] }
    if (procedure == "snk") {
      if (m >= barrier) range(m, df) else critical <- p <- level <- NA
      if (m < barrier || p >= alpha) barrier <- m
    }
    show(paste0(kind, "_contrasts"), a, b, c("Difference", "Standard error", "t", "Critical value", "Pr > |t|", "Level"),
         c(d, se, t, critical, p, level))
  }
  if (!is.null(control)) {
    others <- setdiff(seq_len(k), match(control, names)); c0 <- match(control, names)
    lambda <- 1 / sqrt(n[c0] / n[others] + 1); R <- outer(lambda, lambda); diag(R) <- 1
    law <- mvtnorm::GenzBretz(maxpts = 1e7, abseps = 1e-7); set.seed(1)
    for (b in others) {
      d <- mean[c0] - mean[b]; t <- d / sqrt(V[c0, c0] + V[b, b] - 2 * V[c0, b]); x <- switch(tail, two = abs(t), lower = -t, upper = t)
      p <- 1 - mvtnorm::pmvt(if (tail == "two") rep(-x, k - 1) else rep(-Inf, k - 1), rep(x, k - 1), df = df, corr = R, algorithm = law)
      show(paste0(kind, "_control"), c0, b, c("Difference", "Standard error", "t", "p-value"), c(d, d / t, t, p))
    }
  }
}
chicks <- read("chickwts.csv")
oneWay <- lm(weight ~ feed, chicks)
for (procedure in c("tukey", "lsd", "bonferroni", "sidak", "snk", "games-howell", "bh"))
  means(paste("means chickwts", procedure), oneWay, chicks, "feed", procedure = procedure)
for (tail in c("two", "lower", "upper"))
  means(paste("means chickwts control", tail), oneWay, chicks, "feed", control = "casein", tail = tail, alpha = 0.1)
twoWay <- lm(conformity ~ partner.status * fcategory, moore)
means("means moore rows", twoWay, moore, "fcategory", procedure = "lsd")
means("means moore", twoWay, moore, "fcategory", kind = "lsmeans", procedure = "tukey")
means("means moore cells", twoWay, moore, c("partner.status", "fcategory"), kind = "lsmeans", procedure = "bonferroni", alpha = 0.01)
states$w <- states$Population / mean(states$Population)
ancova <- lm(Murder ~ Income + region, states, weights = w)
means("means states", ancova, states, "region", kind = "lsmeans", procedure = "bh",
      at = list(Income = weighted.mean(states$Income, states$w)))
means("means states rows", ancova, states, "region", procedure = "sidak")

write.csv(do.call(rbind, rows), "tests/reference/frontend_values.csv", row.names = FALSE, quote = 1:4)
