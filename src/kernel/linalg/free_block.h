/** The inverse of a symmetric matrix over its free parameters, with aliased ones left out. */
#pragma once

#include <cstddef>
#include <vector>

#include "kernel/linalg/dense_block.h"

namespace korvenrg::linalg {

/** A symmetric inverse over the parameters that carry one. */
struct FreeInverse
{
    bool finite = true;             ///< false: a cell was not finite, and nothing else is set
    std::vector<std::size_t> used;  ///< positions in the block whose pivot was accepted, ascending
    DenseBlock inverse;             ///< of the rows and columns `used`
};

/**
 * Inverts a symmetric block, refusing pivots at rounding level in natural order, so that of an aliased set
 * the later parameters are left out.
 *
 * 1. The block is scaled to a diagonal of 1 in absolute value (a diagonal of 0 is scaled by the largest cell
 *    of its row).
 * 2. Pivots are swept in natural order; one of at most 8 n eps is refused. This is safe when the block is
 *    definite or semidefinite: all accepted pivots have one sign, and what a refused one leaves in its row is
 *    rounding too.
 * 3. Otherwise the block is indefinite: the columns that do not depend on earlier ones are found by
 *    orthogonalisation in natural order (a symmetric matrix is regular on such a set, since the rows that
 *    depend on the others are the same ones), and their block is inverted by elimination with row pivoting.
 */
FreeInverse InvertFreeBlock(const DenseBlock& block);

}  // namespace korvenrg::linalg
