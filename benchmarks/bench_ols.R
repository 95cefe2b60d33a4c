# The fit that bench_ols.cpp times, in R: lm with every table of the report. Prints seconds, the best of five.
n <- 100000
p <- 50
set.seed(20241)
x <- matrix(rnorm(n * p) + 3, n, p)
y <- 1 + drop(x %*% (1 / seq_len(p))) + rnorm(n)
data <- data.frame(y = y, x)
run <- function() {
    fit <- lm(y ~ ., data)
    list(
        summary(fit), hatvalues(fit), cooks.distance(fit), rstandard(fit),
        predict(fit, interval = "confidence"), suppressWarnings(predict(fit, interval = "prediction"))
    )
}
cat("R", as.character(getRversion()), "lm + tables, n = 100000, p = 50:",
    min(replicate(5, system.time(run())[["elapsed"]])), "s\n")
