/** Markers of rows: validation and bootstrap samples. An n beyond the cells of the column counts as their number. */
#pragma once

#include "core/matrix.h"

/** Marks rows first to last (from 1) of n: cells first..last of `column` become 1, the others of the first n
    become 0. Parts of the range outside 1..n do not exist; first > last marks none. Cells behind n stay. A
    null column does nothing. */
void GenerateIndicator(matrix<double>* column, int n, int first, int last);

/**
 * Marks exactly nv of n rows, each set of nv rows with the same probability.
 *
 * The rows are walked in order, and a row is marked with the probability that the places still to fill have
 * among the rows still to come (selection sampling: Fan, Muller & Rezucha 1962, "Development of sampling
 * plans by using sequential (item by item) selection techniques and digital computers"). It always takes n
 * draws, so the last seed depends on n alone. nv below 0 counts as 0, above n as n.
 *
 * @param column                  n x 1, out: 1 in marked rows and 0 in the others; null does nothing
 * @param seed, seedFlag, lastSeed  as in every draw (kernel/random/uniform.h)
 */
void GenerateRandomIndicator(matrix<double>* column, int n, int nv, int* seed, short seedFlag, int* lastSeed);

/**
 * Draws rows of n with replacement, for a bootstrap sample.
 *
 * @param column  n x 1, out: how often each row was drawn; null does nothing
 * @param draws   number of draws, each of one uniform; below 0 counts as 0
 * @param seed, seedFlag, lastSeed  as in every draw
 */
void GenerateRandomCounts(matrix<double>* column, int n, int draws, int* seed, short seedFlag, int* lastSeed);
