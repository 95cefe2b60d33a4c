# Writes frontend_logit_values.csv: what the tables of `korven logit` must hold, from glm(), MASS::dose.p,
# nnet::multinom and car::Anova. The selections are searched again here.
#
#   Rscript tests/reference/frontend_logit_values.R        (from the root of the checkout)

suppressMessages({library(MASS); library(nnet); library(car)})
options(digits = 17)
rows <- list()
add <- function(case, table, row, column, value)
  rows[[length(rows) + 1]] <<- data.frame(case, table, row, column, value = if (is.character(value)) value else sprintf("%.17g", value))

tight <- glm.control(epsilon = 1e-15, maxit = 100)
common <- function(case, m, labels, y, n) {
  null <- update(m, . ~ 1)
  ll <- function(g) 2 * sum(lgamma(n + 1) - lgamma(y + 1) - lgamma(n - y + 1)) - 2 * as.numeric(logLik(g))
  s <- coef(summary(m))
  for (i in seq_along(labels)) {
    add(case, "parameters", labels[i], "Value", s[i, 1])
    add(case, "parameters", labels[i], "Standard error", s[i, 2])
    if (i > 1) add(case, "parameters", labels[i], "Odds ratio", exp(s[i, 1]))
    add(case, "parameters", labels[i], "Lower 90%", s[i, 1] - qnorm(0.95) * s[i, 2])
  }
  add(case, "fit", "-2 log likelihood", "Fitted", ll(m))
  add(case, "fit", "R squared (McFadden)", "Fitted", 1 - ll(m) / ll(null))
  add(case, "tests", "Likelihood ratio", "Chi-square", ll(null) - ll(m))
  add(case, "cases", "1", "Predicted share", fitted(m)[1])
}

b <- transform(birthwt, race = factor(race), smoke = factor(smoke))
m <- glm(low ~ age + lwt + race + smoke, binomial, b, control = tight)
common("birthwt", m, c("Intercept", "age", "lwt", "race-2", "race-3", "smoke-1"), b$low, rep(1, nrow(b)))
cells <- table(b$low, as.numeric(fitted(m) >= 0.4))
for (i in 1:2) for (j in 1:2) add("birthwt", "classification", i - 1, paste("Predicted", j - 1), cells[i, j])

type3 <- function(case, terms, table, columns)
  for (t in terms) for (j in seq_along(columns)) add(case, "type3", t, names(columns)[j], table[t, columns[j]])
type3("birthwt", c("age", "race"), Anova(m, type = 3, test.statistic = "LR"),
      c("DF" = "Df", "LR chi-square" = "LR Chisq", "Pr > LR" = "Pr(>Chisq)"))
type3("birthwt", c("age", "race"), Anova(m, type = 3, test.statistic = "Wald"),
      c("Wald chi-square" = "Chisq", "Pr > Wald" = "Pr(>Chisq)"))

x <- MASS::menarche
m <- glm(cbind(Menarche, Total - Menarche) ~ Age, binomial, x, control = tight)
common("menarche", m, c("Intercept", "Age"), x$Menarche, x$Total)
for (p in c(0.1, 0.5, 0.9)) add("menarche", "doses", p, "Dose", dose.p(m, p = p)[[1]])

# Selections over the terms in the order of the report: numbers before categories.
terms <- c("age", "lwt", "smoke", "ptl", "ht", "ui", "race")
b <- transform(birthwt, race = factor(race))
fit <- function(set) glm(reformulate(c("1", set), "low"), binomial, b, control = tight)
ratio <- function(small, large) {
  x <- small$deviance - large$deviance; df <- small$df.residual - large$df.residual
  c(x, pchisq(x, df, lower.tail = FALSE), df)
}
rao <- function(small, large) {
  a <- anova(small, large, test = "Rao")[2, ]
  c(a$Rao, a$`Pr(>Chi)`, a$Df)
}
wald <- function(m) {
  x <- drop(coef(m)[-1] %*% solve(vcov(m)[-1, -1], coef(m)[-1]))
  c(x, pchisq(x, length(coef(m)) - 1, lower.tail = FALSE))
}
step_in <- 0.25; step_out <- 0.12
model <- seen <- character(0)
repeat {
  now <- fit(model)
  best <- c(0, 1, 0); name <- NA; widest <- 0
  for (t in setdiff(terms, model)) {
    s <- rao(now, fit(c(model, t)))
    wins <- if (s[3] > widest) s[2] < best[2] else s[1] > best[1]
    widest <- max(widest, s[3])
    if (wins) { best <- s; name <- t }
  }
  if (is.na(name) || best[2] >= step_in) break
  model <- terms[terms %in% c(model, name)]
  m <- fit(model)
  row <- paste0("+ ", name, if (name %in% seen) " again")
  seen <- c(seen, name)
  weakest <- c(0, 0, 0); out <- NA; widest <- 0
  for (t in model) {
    s <- ratio(fit(setdiff(model, t)), m)
    wins <- if (s[3] > widest) s[2] > weakest[2] else s[1] < weakest[1]
    widest <- max(widest, s[3])
    if (wins) { weakest <- s; out <- t }
  }
  cells <- list("Terms" = length(model), "Terms in the model" = paste(model, collapse = " "),
                "-2 log likelihood" = m$deviance, "Pr > likelihood ratio" = ratio(fit(NULL), m)[2],
                "Pr > score" = rao(fit(NULL), m)[2], "Pr > Wald" = wald(m)[2], "AIC" = AIC(m), "SBC" = BIC(m),
                "Entry chi-square" = best[1], "Pr > entry chi-square" = best[2],
                "Removal chi-square" = weakest[1], "Pr > removal chi-square" = weakest[2])
  for (n in names(cells)) add("stepwise", "models", row, n, cells[[n]])
  if (weakest[2] > step_out) {
    if (out == name) { add("stepwise", "models", row, "Note", "ends: would leave again"); break }
    model <- setdiff(model, out)
    add("stepwise", "models", paste("-", out), "-2 log likelihood", fit(model)$deviance)
    add("stepwise", "models", paste("-", out), "Entry chi-square", "")
  }
}
for (i in seq_along(model)) add("stepwise", "type3", model[i], "LR chi-square", ratio(fit(model[-i]), fit(model))[1])

for (size in 1:7) {
  sets <- combn(terms, size, simplify = FALSE)
  fits <- lapply(sets, fit)
  k <- which.min(sapply(fits, AIC))
  label <- paste(size, if (size == 1) "term" else "terms")
  add("best", "models", label, "Models fitted", length(sets))
  add("best", "models", label, "Terms in the model", paste(sets[[k]], collapse = " "))
  add("best", "models", label, "AIC", AIC(fits[[k]]) + 2)  # subsets are charged one parameter more
  if (size == 6) {
    add("best", "models", label, "Note", "best")
    for (t in names(coef(fits[[k]]))[2:3])
      add("best", "parameters", sub("race", "race-", t), "Value", coef(fits[[k]])[[t]])
    add("best", "parameters", "age", "Note", "not in the model")
  }
}
stopifnot(which.min(sapply(1:7, function(s) min(sapply(combn(terms, s, simplify = FALSE), function(t) AIC(fit(t)))))) == 6)

moore <- transform(carData::Moore, fcategory = relevel(factor(fcategory, levels = c("high", "low", "medium")), "medium"),
                   partner.status = factor(partner.status, levels = c("high", "low")))
m <- multinom(fcategory ~ conformity + partner.status, moore, reltol = 1e-15, maxit = 1000, trace = FALSE)
null <- multinom(fcategory ~ 1, moore, reltol = 1e-15, trace = FALSE)
labels <- c("Intercept", "conformity", "partner.status-low")
values <- coef(m); errors <- summary(m)$standard.errors
for (k in rownames(values)) for (i in 1:3) {
  row <- paste0(k, ":", labels[i])
  add("moore", "parameters", row, "Value", values[k, i])
  add("moore", "parameters", row, "Standard error", errors[k, i])
  add("moore", "parameters", row, "Upper 90%", values[k, i] + qnorm(0.95) * errors[k, i])
  if (i > 1) add("moore", "parameters", row, "Odds ratio", exp(values[k, i]))
}
add("moore", "fit", "-2 log likelihood", "Fitted", deviance(m))
add("moore", "fit", "AIC", "Fitted", AIC(m))
add("moore", "tests", "Likelihood ratio", "Chi-square", deviance(null) - deviance(m))
type3("moore", c("conformity", "partner.status"), Anova(m, type = 3),
      c("DF" = "Df", "LR chi-square" = "LR Chisq", "Pr > LR" = "Pr(>Chisq)"))
at <- c(3, 6); flat <- as.vector(t(values))
add("moore", "type3", "partner.status", "Wald chi-square", drop(flat[at] %*% solve(vcov(m)[at, at], flat[at])))
predicted <- predict(m)
cells <- table(moore$fcategory, predicted)
for (i in rownames(cells)) for (j in colnames(cells)) add("moore", "classification", i, paste("Predicted", j), cells[i, j])
for (i in c(2, 30)) {
  add("moore", "cases", i, "Observed", as.character(moore$fcategory[i]))
  add("moore", "cases", i, "Predicted", as.character(predicted[i]))
  for (j in colnames(fitted(m))) add("moore", "cases", i, paste("Probability", j), fitted(m)[i, j])
}

write.csv(do.call(rbind, rows), "tests/reference/frontend_logit_values.csv", row.names = FALSE, quote = FALSE)
