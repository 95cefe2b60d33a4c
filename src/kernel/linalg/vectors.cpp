#include "kernel/linalg/vectors.h"

#include <algorithm>

#include "core/limits.h"

int InitVectorToFalse(short* flags, int n)
{
    std::fill_n(flags, std::max(n, 0), korvenrg::kFalse);
    return n;
}
