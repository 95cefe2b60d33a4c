# Writes the values of the exact tests: tests/reference/distributions/fisher_exact.inc and rank_sum.inc.
#
#   Rscript tests/reference/exact_values.R        (from the root of the checkout)
#
# Fisher: r, c, cells by columns, fisher.test's p-value, and with hybrid = TRUE. Rank sum: both samples, the
# tail code, the exact p-value, the asymptotic one without and with continuity correction. With ties wilcox.test has no
# exact value; it is counted here over all choose(N, n1) permutations.

digits <- function(x) paste(sprintf("%.17g", x), collapse = ", ")

tables <- list(
  job = matrix(c(1, 2, 1, 0, 3, 3, 6, 1, 10, 10, 14, 9, 6, 7, 12, 11), 4),  # Agresti 2002, table 2.8: job satisfaction
  tea = matrix(c(3, 1, 1, 3), 2),
  twins = matrix(c(2, 10, 15, 3), 2),
  wide = matrix(c(3, 9, 4, 6, 12, 2, 7, 7, 1, 9, 5, 5, 8, 3, 2, 6), 2),
  hair = unclass(HairEyeColor[, , "Female"])[, 2:4],
  titanic = unclass(apply(Titanic, c(1, 4), sum)),
  chick = unclass(table(cut(chickwts$weight, c(100, 200, 250, 300, 450)), chickwts$feed)),
  warp = unclass(table(cut(warpbreaks$breaks, c(0, 20, 30, 80)), warpbreaks$tension)),
  flat = matrix(c(8, 11, 12, 8, 11, 10, 11, 7, 7, 6, 5, 12, 14, 10, 8, 10), 4),
  five = matrix(c(2, 0, 4, 2, 3, 1, 5, 2, 2, 4, 2, 3, 0, 2, 5, 2, 4, 3, 1, 3, 2, 3, 1, 0, 4), 5)
)
out <- file("tests/reference/distributions/fisher_exact.inc", "w")
for (name in names(tables)) {
  x <- tables[[name]]
  p <- fisher.test(x, workspace = 2e8)$p.value
  h <- fisher.test(x, hybrid = TRUE, workspace = 2e8)$p.value
  writeLines(sprintf("{\"%s\", %d, %d, {%s}, %s, %s},", name, nrow(x), ncol(x), paste(x, collapse = ", "),
                     digits(p), digits(h)), out)
}
close(out)

permuted <- function(x, y, alternative) {
  n <- length(x)
  r <- rank(c(x, y))
  sums <- combn(length(r), n, function(i) sum(r[i]))
  t <- sum(r[seq_len(n)])
  center <- n * mean(r)
  switch(alternative,
         two.sided = mean(abs(sums - center) >= abs(t - center) - 1e-9),
         greater = mean(sums >= t - 1e-9),
         less = mean(sums <= t + 1e-9))
}

samples <- list(
  list(PlantGrowth$weight[1:10], PlantGrowth$weight[11:20]),
  list(subset(chickwts, feed == "casein")$weight, subset(chickwts, feed == "meatmeal")$weight),
  list(subset(warpbreaks, tension == "H" & wool == "A")$breaks, subset(warpbreaks, tension == "H" & wool == "B")$breaks),
  list(subset(airquality, Month == 5 & !is.na(Ozone))$Ozone, subset(airquality, Month == 8 & !is.na(Ozone))$Ozone),
  list(sleep$extra[1:10], sleep$extra[11:20]),
  list(c(1, 2, 2, 5), c(2, 2, 6, 7, 7, 9, 2))
)
out <- file("tests/reference/distributions/rank_sum.inc", "w")
for (s in samples) {
  for (tail in 0:2) {
    alternative <- c("two.sided", "greater", "less")[tail + 1]
    x <- s[[1]]
    y <- s[[2]]
    tied <- anyDuplicated(c(x, y)) > 0
    exact <- if (!tied) wilcox.test(x, y, alternative, exact = TRUE)$p.value
             else if (choose(length(c(x, y)), length(x)) < 1e6) permuted(x, y, alternative)
             else -1
    plain <- wilcox.test(x, y, alternative, exact = FALSE, correct = FALSE)$p.value
    corrected <- wilcox.test(x, y, alternative, exact = FALSE, correct = TRUE)$p.value
    writeLines(sprintf("{{%s}, {%s}, %d, %s, %s, %s},", digits(x), digits(y), tail, digits(exact), digits(plain),
                       digits(corrected)), out)
  }
}
close(out)
