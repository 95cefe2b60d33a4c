# Writes selection_values.txt: data, and the models that best subsets, stepwise, forward and backward selection visit, by
# lm on every subset and by F tests between nested models.
#
#   Rscript tests/reference/selection_values.R        (from the root of the checkout; needs leaps)
#
# One line each, all cells by columns with 17 digits:
#   data <rows> <columns>     the response, then the columns of the factors
#   parents / types           factor of each column, type of each factor
#   best <criterion>          oModels of best subsets, and the chosen row in front
#   steps <method> <in> <out> oModels of stepwise (1), forward (2), backward (3) at these probabilities
#
# The subset of each size is checked against leaps::regsubsets where every factor has one column.

options(digits = 17)
out <- file("tests/reference/selection_values.txt", "w")
put <- function(...) writeLines(paste(c(..., recursive = TRUE), collapse = " "), out)
num <- function(x) sprintf("%.17g", x)

d <- mtcars
columns <- cbind(cyl6 = 1 * (d$cyl == 6), cyl8 = 1 * (d$cyl == 8), d$disp, d$hp, d$drat, d$wt, d$qsec,
                 gear4 = 1 * (d$gear == 4), gear5 = 1 * (d$gear == 5), d$carb)
parents <- c(1, 1, 2, 3, 4, 5, 6, 7, 7, 8)
types <- c(2, 1, 1, 1, 1, 1, 2, 1)
y <- d$mpg
n <- length(y); NF <- length(types); c1 <- 1

sse_of <- function(columns_in) {
  X <- cbind(1, columns[, columns_in, drop = FALSE])
  sum(lm.fit(X, y)$residuals^2)
}
columns_of <- function(factors) which(parents %in% factors)
sst <- sum((y - mean(y))^2)
mse_full <- sse_of(seq_along(parents)) / (n - length(parents) - 1)

statistics <- function(factors, best) {
  k <- columns_of(factors); q <- length(k); sse <- sse_of(k); r <- sse / sst; df <- n - q - 1
  pc <- if (best) (length(factors) + n + 1) * r / (n - q + 1) else (q + n + 1) * r / df
  c(sse, sse / df, 1 - r, 1 - r - q * r / df, (q + 1) * 2 + sse / mse_full - n, (q + 1) * 2 + log(sse / n) * n,
    log(n) * (q + 1) + log(sse / n) * n, pc)
}
indicators <- function(factors) as.numeric(seq_len(NF) %in% factors)

put("data", n, 1 + ncol(columns), num(c(y, columns)))
put("parents", length(parents), parents)
put("types", NF, types)

# Best subsets: the statistic that orders the rows of a size, then the choice between the sizes.
order_column <- c(4, 2, 5, 6, 7, 8)   # adjusted R squared, MSE, Cp, AIC, SBC, PC among the statistics
for (criterion in 0:5) {
  rows <- NULL
  for (size in 1:NF) {
    sets <- combn(NF, size, simplify = FALSE)
    stats <- t(sapply(sets, statistics, best = TRUE))
    value <- stats[, order_column[criterion + 1]] * if (criterion == 0) -1 else 1
    b <- which.min(value)
    rows <- rbind(rows, c(size, length(columns_of(sets[[b]])), 0, 0, indicators(sets[[b]]), stats[b, ]))
  }
  value <- switch(criterion + 1, -rows[, NF + 8], rows[, NF + 6], abs(rows[, NF + 9] - rows[, 2] - 1), rows[, NF + 10],
                  rows[, NF + 11], rows[, NF + 12])
  if (criterion == 2) value[value <= 1e-12] <- Inf
  put("best", criterion, which.min(value), nrow(rows), ncol(rows), num(rows))
}

# The same search on single columns against leaps.
library(leaps)
single <- which(types == 1)
found <- summary(regsubsets(columns[, parents %in% single], y, nvmax = length(single), method = "exhaustive"))
for (size in seq_along(single)) {
  sets <- combn(single, size, simplify = FALSE)
  b <- sets[[which.min(sapply(sets, function(s) sse_of(columns_of(s))))]]
  stopifnot(identical(unname(found$which[size, -1]), single %in% b))
}

# Selection in steps.
p_enter_of <- function(model, f) {
  before <- sse_of(columns_of(model)); after <- sse_of(columns_of(c(model, f))); m <- sum(parents == f)
  df <- n - 1 - length(columns_of(c(model, f)))
  pf((before - after) / m / (after / df), m, df, lower.tail = FALSE)
}
p_leave_of <- function(model, f) p_enter_of(setdiff(model, f), f)

steps <- function(method, p_enter, p_remove) {
  model <- if (method == 3) 1:NF else integer(0)
  rows <- NULL
  write_row <- function(f, direction) {
    first <- if (is.null(rows)) if (method == 3) NF else 1 else rows[nrow(rows), 1] + direction
    s <- statistics(model, FALSE); s[5] <- NA
    rows <<- rbind(rows, c(first, length(columns_of(model)), direction, f, indicators(model), s))
  }
  try_enter <- function() {
    candidates <- setdiff(1:NF, model)
    if (length(candidates) == 0) return(FALSE)
    p <- sapply(candidates, function(f) p_enter_of(model, f))
    if (min(p) > p_enter && length(model) > 0) return(FALSE)
    f <- candidates[which.min(p)]; model <<- c(model, f); write_row(f, 1)
    TRUE
  }
  try_remove <- function() {
    p <- sapply(sort(model), function(f) p_leave_of(model, f))
    if (max(p) < p_remove) return(FALSE)
    f <- sort(model)[which.max(p)]; model <<- setdiff(model, f); write_row(f, -1)
    TRUE
  }
  if (method == 2) while (length(model) < NF && try_enter()) {}
  if (method == 3) { write_row(NF, 1); while (length(model) >= 2 && try_remove()) {} }
  if (method == 1) while (length(model) < NF && try_enter()) if (nrow(rows) >= 2 && length(model) >= 2) try_remove()
  cells <- ifelse(is.na(rows), "untouched", num(rows))
  put("steps", method, num(p_enter), num(p_remove), nrow(rows), ncol(rows), cells)
}
steps(1, 0.5, 0.3)
steps(1, 0.05, 0.1)
steps(2, 0.6, 0.1)
steps(2, 0, 0.1)
steps(3, 0.05, 0.1)
steps(3, 0.05, 0)
close(out)
