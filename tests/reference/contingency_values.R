# Writes tests/reference/contingency.inc: tables and their statistics.
#
#   Rscript tests/reference/contingency_values.R        (from the root of the checkout)
#
# Chi-squares from chisq.test, the likelihood ratio from loglin, tau-b from cor(method = "kendall") on the single
# observations, gamma from the pairs of observations, lambda and tau as the reduction of the errors of guessing, counted
# observation by observation; the coefficients by their formulas. NA stands for a statistic that does not exist.

show <- function(x) paste(ifelse(is.na(x), "kMissing", sprintf("%.17g", x)), collapse = ", ")

guess_errors <- function(target, by, draw) {  # expected number of wrong guesses
  groups <- split(target, by)
  sum(sapply(groups, function(g) {
    p <- prop.table(table(g))
    length(g) * (1 - if (draw) sum(p^2) else max(p))
  }))
}
reduction <- function(target, by, draw) {
  blind <- guess_errors(target, rep(1, length(target)), draw)
  c(blind - guess_errors(target, by, draw), blind)
}

statistics <- function(x) {
  full <- x[rowSums(x) > 0, colSums(x) > 0, drop = FALSE]
  n <- sum(full)
  d <- dim(full) - 1
  cells <- as.data.frame(as.table(full))
  i <- rep(as.integer(cells$Var1), cells$Freq)
  j <- rep(as.integer(cells$Var2), cells$Freq)
  chi <- suppressWarnings(chisq.test(full, correct = FALSE))
  yates <- if (all(d == 1)) suppressWarnings(chisq.test(full)) else list(statistic = NA, parameter = NA, p.value = NA)
  g2 <- loglin(full, list(1, 2), print = FALSE)$lrt
  x2 <- chi$statistic
  phi <- sqrt(x2 / n) * if (all(d == 1)) sign(full[1, 1] * full[2, 2] - full[1, 2] * full[2, 1]) else 1
  order <- sign(outer(i, i, "-")) * sign(outer(j, j, "-"))
  rows <- reduction(i, j, FALSE)
  columns <- reduction(j, i, FALSE)
  both <- rows + columns
  tau_rows <- reduction(i, j, TRUE)
  tau_columns <- reduction(j, i, TRUE)
  value <- c(x2, g2, yates$statistic, phi, sqrt(x2 / (x2 + n)), sqrt(x2 / n / min(d)), sqrt(x2 / n / sqrt(prod(d))),
             rows[1] / rows[2], columns[1] / columns[2], both[1] / both[2], tau_rows[1] / tau_rows[2],
             tau_columns[1] / tau_columns[2], sum(order) / sum(abs(order)), cor(i, j, method = "kendall"))
  df <- c(rep(prod(d), 2), yates$parameter, rep(NA, 11))
  p <- c(chi$p.value, pchisq(g2, prod(d), lower.tail = FALSE), yates$p.value, rep(NA, 11))
  c(value, df, p)
}

tables <- list(
  hair_female = unname(HairEyeColor[, , "Female"]),
  warpbreaks = unname(unclass(table(cut(warpbreaks$breaks, c(0, 20, 30, 80)), warpbreaks$tension))),
  cars = unname(unclass(table(mtcars$am, mtcars$vs)))[2:1, ],
  gears_with_empty_lines = rbind(cbind(unname(unclass(table(mtcars$gear, mtcars$cyl))), 0), 0)
)
out <- file("tests/reference/contingency.inc", "w")
for (name in names(tables)) {
  x <- tables[[name]]
  writeLines(sprintf("{\"%s\", %d, %d, {%s}, {%s}},", name, nrow(x), ncol(x), paste(x, collapse = ", "),
                     show(statistics(x))), out)
}
close(out)
