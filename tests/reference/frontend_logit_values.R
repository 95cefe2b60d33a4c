# Writes frontend_logit_values.csv: what the tables of `korven logit` must hold, from glm() and MASS::dose.p.
#
#   Rscript tests/reference/frontend_logit_values.R        (from the root of the checkout)

suppressMessages(library(MASS))
options(digits = 17)
rows <- list()
add <- function(case, table, row, column, value)
  rows[[length(rows) + 1]] <<- data.frame(case, table, row, column, value = sprintf("%.17g", value))

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

x <- MASS::menarche
m <- glm(cbind(Menarche, Total - Menarche) ~ Age, binomial, x, control = tight)
common("menarche", m, c("Intercept", "Age"), x$Menarche, x$Total)
for (p in c(0.1, 0.5, 0.9)) add("menarche", "doses", p, "Dose", dose.p(m, p = p)[[1]])

write.csv(do.call(rbind, rows), "tests/reference/frontend_logit_values.csv", row.names = FALSE, quote = FALSE)
