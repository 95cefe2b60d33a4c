#include <algorithm>
#include <cstdint>
#include <limits>

#include "kernel/linalg/qualitative.h"
#include "linear/design_size.h"
#include "linear/design_table.h"
#include "linear/factor_description.h"

namespace {

constexpr std::int64_t kMost = std::numeric_limits<int>::max();

}  // namespace

namespace korvenrg::linear {

std::int64_t ColumnsOfFactor(int f,
                             int pX,
                             const matrix<int>& nbCat,
                             const matrix<int>& type,
                             const matrix<int>& listVars,
                             const matrix<int>& nbVars)
{
    if (isQuali(type.vbget(f)) != -1) return 1;
    if (type.vbget(f) == kQualitative) return std::max(nbCat.vbget(listVars.vbget(f, 1) - pX), 0);
    std::int64_t columns = 1;
    for (int i = 1; i <= nbVars.vbget(f); ++i) {
        const int variable = listVars.vbget(f, i);
        if (type.vbget(variable) == kQualitative) {
            columns = std::min(columns * std::max(nbCat.vbget(variable - pX), 0), kMost);
        }
    }
    return columns;
}

}  // namespace korvenrg::linear

int cGetXModelSize(int NbFactors,
                   int pX,
                   [[maybe_unused]] int pQ,
                   [[maybe_unused]] int Interlevel,
                   matrix<int>* NbCat,
                   matrix<int>* FactType,
                   matrix<int>* FactListVars,
                   matrix<int>* FactNbVars,
                   matrix<int>* FactActive)
{
    std::int64_t size = 0;
    for (int f = 1; f <= NbFactors; ++f) {
        if (FactActive->vbget(f) != 1) continue;
        size = std::min(
            size + korvenrg::linear::ColumnsOfFactor(f, pX, *NbCat, *FactType, *FactListVars, *FactNbVars),
            kMost);
    }
    return static_cast<int>(size);
}
