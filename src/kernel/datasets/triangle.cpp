#include "kernel/datasets/triangle.h"

void M_DuplicateMVDblTriang_ST(cST_MVect<double>* source, int n, cST_MVect<double>* target)
{
    for (int j = 1; j <= n; ++j) {
        const matrix<double>* from = source->Column(j);
        matrix<double>* to = target->Column(j);
        if (from == nullptr || to == nullptr) return;
        for (int i = j; i <= n; ++i)
            to->vbset(i, from->vbget(i));
    }
}
