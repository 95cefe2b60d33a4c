# The prediction that bench_predict.cpp times, in R: both intervals for new rows. Prints seconds, the best of five.
n <- 100000
p <- 50
set.seed(20242)
x <- matrix(rnorm(n * p) + 3, n, p)
train <- data.frame(y = rnorm(200), matrix(rnorm(200 * p) + 3, 200, p))
fit <- lm(y ~ ., train)
new <- data.frame(x)
time <- function(run) min(replicate(5, system.time(run())[["elapsed"]]))
cat("R", as.character(getRversion()), "n = 100000, p = 50: confidence interval alone",
    time(function() predict(fit, new, se.fit = TRUE, interval = "confidence")), "s, both",
    time(function() {
      predict(fit, new, se.fit = TRUE, interval = "confidence")
      predict(fit, new, interval = "prediction")
    }), "s\n")
