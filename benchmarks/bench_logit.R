# What bench_logit.cpp times, in R: glm with its summary, and multinom with its Hessian. Prints seconds.
suppressMessages(library(nnet))
n <- 100000; p <- 20
set.seed(20243)
x <- matrix(rnorm(n * p), n, p)
eta <- drop(x %*% rep(c(0.2, -0.2), p / 2))
y <- rbinom(n, 1, plogis(eta))
time <- function(run, times) min(replicate(times, system.time(run())[["elapsed"]]))
d <- data.frame(y = y, x)
cat("R", as.character(getRversion()), "glm and summary", time(function() summary(glm(y ~ ., binomial, d)), 5), "s\n")
e <- exp(outer(eta, 0:4 / 4)); u <- runif(n) * rowSums(e)
z <- factor(rowSums(t(apply(e, 1, cumsum)) < u))
f <- data.frame(z = z, x)
cat("multinom, 5 categories, with its summary",
    time(function() summary(multinom(z ~ ., f, Hess = TRUE, trace = FALSE, maxit = 1000, reltol = 1e-12)), 1), "s\n")
cat("the same with multinom's own stopping rule",
    time(function() summary(multinom(z ~ ., f, Hess = TRUE, trace = FALSE)), 1), "s\n")
