# Writes prediction_values.txt: a fit, new rows, and what the prediction and validation tables must hold.
#
#   Rscript tests/reference/prediction_values.R        (from the root of the checkout)
#
# Lines as in linear_values.txt. Taken from lm: predictions, both intervals, the error of the mean. Statistics of a
# validation sample that R has no name for are written out below and marked FORMULA.

options(digits = 17)
KEPT <- Inf
out <- file("tests/reference/prediction_values.txt", "w")

put <- function(name, x) {
  x <- as.matrix(x)
  cells <- ifelse(is.na(x), "missing", ifelse(is.infinite(x), "kept", sprintf("%.17g", x)))
  writeLines(paste(c(name, dim(x), cells), collapse = " "), out)
}

# y ~ all columns of x on the rows `train`; the other rows are new. wc repeats rows, wr weighs them.
run <- function(name, y, x, train, wc = rep(1, length(y)), wr = rep(1, length(y)), fixed = FALSE, alpha = 0.05,
                validate = TRUE) {
  x <- as.matrix(x); colnames(x) <- paste0("x", seq_len(ncol(x)))
  rows <- rep(train, wc[train])
  data <- data.frame(y = y, x, w = wr)
  fit <- lm(if (fixed) y ~ . - w - 1 else y ~ . - w, data[rows, ], weights = w)
  new <- data[-train, ]
  wcn <- wc[-train]; wrn <- if (validate) wr[-train] else rep(1, nrow(new))
  mean_ <- suppressWarnings(predict(fit, new, se.fit = TRUE, interval = "confidence", level = 1 - alpha))
  obs <- suppressWarnings(predict(fit, new, interval = "prediction", level = 1 - alpha))
  mse <- sigma(fit)^2; sse <- deviance(fit); dfE <- fit$df.residual; S <- length(rows); k <- S - dfE
  sw <- sum(data$w[rows])
  pred <- unname(mean_$fit[, 1]); se <- mean_$se.fit
  errors <- cbind(se, mean_$fit[, 2:3], sqrt(se^2 + mse), obs[, 2:3])
  q <- (se^2 / mse) * wrn                                   # leverage as if the row had been weighed in
  d <- if (fixed) q else q - wrn / sw
  e <- new$y - pred

  # FORMULA: residuals. The leverage adds to 1; with a fixed intercept too it counts the intercept's share.
  h <- wrn / sw + d
  residuals <- cbind(e, e / sqrt(mse), e / sqrt((h + 1) * mse / wrn))
  if (!fixed && all(wr == 1)) stopifnot(all.equal(unname(residuals[, 3]), e / unname(errors[, 4])))
  # FORMULA: Cook's distance of a new row.
  if (fixed) {
    share <- d / (d / wrn + 1)
    if (all(wr == 1)) for (i in seq_len(nrow(new)))         # the leverage that the row has once it is in the fit
      stopifnot(all.equal(unname(share[i]), unname(tail(hatvalues(lm(y ~ . - w - 1, rbind(data[rows, ], new[i, ]))), 1))))
    cook <- e^2 * share / ((1 - share) * e^2 + sse)
  } else {
    t <- 1 / sw; u <- t + d; added <- 1 / (sw + 1)
    share <- (u / (u + 1) + t - added) * wrn
    if (all(wr == 1)) for (i in seq_len(nrow(new)))
      stopifnot(all.equal(unname(u[i] / (u[i] + 1)), unname(tail(hatvalues(lm(y ~ . - w, rbind(data[rows, ], new[i, ]))), 1))))
    cook <- (t + share) * e^2 / ((1 - share - added) * e^2 + sse)
  }
  cook <- cook / (k / (dfE + 1))
  dfV <- sum(wcn) - k
  rho <- cor(rep(new$y, wcn), rep(pred, wcn), method = "spearman")
  fitV <- c(sum(wcn), sum(wcn * wrn), dfV, rho^2, NA, if (dfV > 0) sum(e^2) / dfV else NA,
            if (dfV > 0) sqrt(sum(e^2) / dfV) else NA, rep(KEPT, 8))
  if (!validate) { residuals[] <- KEPT; cook[] <- KEPT; fitV[] <- KEPT }

  writeLines(paste("case", name), out)
  put("options", c(1 * fixed, alpha, 1 * validate))
  put("y", y[train]); put("x", x[train, , drop = FALSE]); put("wc", wc[train]); put("wr", wr[train])
  put("new_y", new$y); put("new_x", x[-train, , drop = FALSE]); put("new_wc", wcn); put("new_wr", wr[-train])
  put("predictions", pred); put("prediction_errors", errors); put("residuals", residuals); put("cook", cook)
  put("adjusted", if (validate) pred else rep(KEPT, length(pred))); put("fit", fitV)
}

# The third column repeats the first and stays out.
trees3 <- cbind(trees$Girth, trees$Height, 2 * trees$Girth)
run("trees_validation", trees$Volume, trees3, seq(1, 31, 2))
run("trees_prediction", trees$Volume, trees3, seq(1, 31, 2), alpha = 0.1, validate = FALSE)
run("trees_no_intercept", trees$Volume, trees3, seq(2, 31, 2), fixed = TRUE)
run("trees_few_validation_rows", trees$Volume, trees3[, 1:2], 1:28)
S <- as.data.frame(state.x77)
run("states_both_weights", S$`Life Exp`, S[, c("Murder", "HS Grad", "Frost")], c(1:20, 31:45),
    wc = rep(c(1, 2, 3, 1, 4), 10), wr = S$Population / mean(S$Population))
close(out)
