# fisher.test on the tables of bench_exact.cpp; milliseconds, exact and hybrid.
#
#   Rscript benchmarks/bench_exact.R        (from the root of the checkout)
lines <- grep("^    \\{\"", readLines("benchmarks/bench_exact.cpp"), value = TRUE)
for (line in lines) {
  name <- sub('^ *\\{"([^"]*)".*', "\\1", line)
  numbers <- as.numeric(strsplit(gsub("[^0-9,]", "", sub('^[^"]*"[^"]*",', "", line)), ",")[[1]])
  x <- matrix(head(numbers[-(1:2)], numbers[1] * numbers[2]), numbers[1])
  time <- function(hybrid) 1000 * system.time(fisher.test(x, workspace = 2e8, hybrid = hybrid))[["elapsed"]]
  cat(sprintf("%s: %.0f ms, hybrid %.0f ms\n", name, time(FALSE), time(TRUE)))
}
