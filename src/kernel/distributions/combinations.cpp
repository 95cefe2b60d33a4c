#include "kernel/distributions/combinations.h"

namespace {

bool IsCombination(const matrix<int>& state, int n, int k)
{
    int before = -1;
    for (int i = 1; i <= k; ++i) {
        const int member = state.vbget(i);
        if (member <= before || member >= n) return false;
        before = member;
    }
    return true;
}

// The first i cells become the run of numbers whose last is `highest`.
void PackBelow(matrix<int>& state, int i, int highest)
{
    for (int j = i; j >= 1; --j) {
        state.vbset(j, highest - (i - j));
    }
}

}  // namespace

// The lowest member that has room below it goes down by one, and the members under it close up to it.
void cKurtzberg(int n, int k, matrix<int>* state)
{
    if (k < 1 || n < k) return;
    if (IsCombination(*state, n, k)) {
        for (int i = 1; i <= k; ++i) {
            const int lowered = state->vbget(i) - 1;
            if (lowered >= i - 1) {
                PackBelow(*state, i, lowered);
                return;
            }
        }
    }
    PackBelow(*state, k, n - 1);
}
