#include "linear/nesting.h"

#include "core/limits.h"
#include "kernel/distributions/fisher.h"
#include "linear/ols_tables.h"

namespace korvenrg::linear {

short GetNestedVars(int i,
                    int pX,
                    int pQ,
                    int Interlevel,
                    matrix<int>* iFactListVars,
                    matrix<int>* iFactNestedMat,
                    matrix<int>* oFNested,
                    matrix<int>* oFNesting)
{
    // Number of the variable at a position among the qualitative ones.
    const auto qualitativeAt = [&](int position) { return iFactListVars->vbget(i, position) - pX; };
    for (int j = 1; j <= Interlevel; ++j) {
        oFNested->vbset(j, qualitativeAt(j));
    }
    short found = kFalse;
    for (int j = 1; j <= Interlevel; ++j) {
        const int nested = qualitativeAt(j);
        if (nested < 1 || nested > pQ) continue;
        for (int c = 1; c <= pQ; ++c) {
            if (iFactNestedMat->vbget(nested, c) != 1) continue;
            found = kTrue;
            for (int k = 1; k <= Interlevel; ++k) {
                if (qualitativeAt(k) != c) continue;
                oFNested->vbset(k, 0);
                oFNesting->vbset(k, c);
            }
        }
    }
    return found;
}

namespace {

// Rows of a type table that a nested pair concerns; 0 for none.
struct NestedRows
{
    int nesting = 0;
    int pair = 0;  ///< the factor that joins the two
};

NestedRows FindRows(int nbFactors,
                    const matrix<int>& active,
                    const matrix<int>& nested,
                    const matrix<int>& listVars)
{
    const int inner = nested.vbget(1);
    const int outer = nested.vbget(2);
    NestedRows rows;
    int row = 0;
    for (int f = 1; f <= nbFactors; ++f) {
        if (active.vbget(f) != 1) continue;
        row += 1;
        const int first = listVars.vbget(f, 1);
        const int second = listVars.vbget(f, 2);
        const bool joins = (first == inner && second == outer) || (first == outer && second == inner);
        if (f == outer) rows.nesting = row;
        if (joins && rows.pair == 0) rows.pair = row;
    }
    return rows;
}

}  // namespace

}  // namespace korvenrg::linear

void NestedTypeTable(matrix<double>* ioSSTable,
                     int iNbFactors,
                     [[maybe_unused]] int iInterlevel,
                     matrix<int>* iFactActive,
                     matrix<int>* iFactNested,
                     matrix<int>* iFactListVars)
{
    using namespace korvenrg::linear;
    const NestedRows rows = FindRows(iNbFactors, *iFactActive, *iFactNested, *iFactListVars);
    if (rows.nesting == 0 || rows.pair == 0) return;

    const double error = ioSSTable->vbget(rows.pair, kTypeMeanSquare);
    if (error <= korvenrg::kEps) {
        ioSSTable->vbset(rows.nesting, kTypeF, korvenrg::kMissing);
        ioSSTable->vbset(rows.nesting, kTypeP, korvenrg::kMissing);
        return;
    }
    const double f = ioSSTable->vbget(rows.nesting, kTypeMeanSquare) / error;
    ioSSTable->vbset(rows.nesting, kTypeF, f);
    ioSSTable->vbset(
        rows.nesting,
        kTypeP,
        pValFisher(f, ioSSTable->vbget(rows.nesting, kTypeDf), ioSSTable->vbget(rows.pair, kTypeDf)));
}
