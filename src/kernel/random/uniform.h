/**
 * Uniform random numbers whose whole state is one 32-bit seed.
 *
 * A draw mixes the state into 52 bits and then steps it. The mixing is the bijective 64-bit finaliser of the
 * SplitMix generator (Steele, Lea & Flood 2014, "Fast splittable pseudorandom number generators", with the
 * constants of its variant 13) applied to the state times the 64-bit golden ratio: the stream is a
 * permutation of the first 2^32 places of a generator that is known to pass the usual batteries. So every
 * seed is as good as any other, 0 and negative ones too, and handing the reported last seed in again
 * continues the stream exactly. The step of the state is the inverse of the 32-bit golden ratio modulo 2^32.
 * Seeds that differ by little then stand far apart on the one cycle of 2^32 draws: seeds that differ by at
 * most 1000 are more than 1.9 million draws apart, by at most 100000 more than 11000.
 *
 * A uniform is (k + 1/2) / 2^52 with a 52-bit k: never 0, never 1, symmetric about 1/2, and floor(u * m) is
 * at most m - 1 for every int m. Integer arithmetic only: the same sequence on every platform.
 *
 * The three arguments of a draw: `seed` is the state that it starts from when `seedInitFlag` is true (-1).
 * With the flag false the state is made from the clock and stored in `seed`, so that the run can be repeated;
 * the caller then sets its flag and passes what `lastSeed` got as the seed of the next draw. `seed` and
 * `lastSeed` may be the same int. A null `seed` is one that the clock makes and nobody hears of; a null
 * `lastSeed` is not written.
 */
#pragma once

#include <cstdint>

#include "core/matrix.h"

/** A seed: `seed` itself when `flag` is true (-1), otherwise one from the clock, between 1 and 2^31 - 1.
    Calls less than a microsecond apart may get the same. */
int GetSeed2(int seed, short flag);

/** The next uniform in (0, 1). The arguments are those of every draw, see above. */
double Cpp_Random01(int* seed, short seedInitFlag, int* lastSeed);

/**
 * A table of uniforms, filled column after column: the same numbers as rows x cols single draws.
 *
 * @param table         rows x cols, out. Null: created with new; of another size: resized. An adopting matrix
 *                      of another size keeps its shape and gets the cells that it has. Negative sizes count
 *                      as 0.
 * @param seed, seedInitFlag, lastSeed  as in every draw, see above
 */
void M_GenerateRandom01(matrix<double>*& table,
                        int rows,
                        int cols,
                        int* seed,
                        short seedInitFlag,
                        int* lastSeed);

namespace korvenrg::random {

/** The generator behind the operations. */
class UniformStream
{
  public:
    explicit UniformStream(int seed) : state_(static_cast<std::uint32_t>(seed)) {}

    /** The uniform of the state, and the step to the next state. */
    double Next();

    /** The seed that continues this stream. */
    int State() const
    {
        return static_cast<int>(state_);
    }

  private:
    std::uint32_t state_;
};

/** The stream of a draw: from `seed`, or from the clock with the seed written back. */
UniformStream StartStream(int* seed, short seedInitFlag);

}  // namespace korvenrg::random
