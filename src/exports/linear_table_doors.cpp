#include "exports/korvenrg.h"
#include "exports/marshalling.h"
#include "linear/interaction_cells.h"
#include "linear/nesting.h"
#include "linear/nuplets.h"

using korvenrg::exports::adopted;
using korvenrg::exports::copied;
using korvenrg::exports::copiedBack;

int NumberNuplets(int n, int* SampleSizes)
{
    return korvenrg::linear::CountNuplets(n, adopted(SampleSizes, n, 1));
}

void GenerateNuplets(int* oNUplets, int n, int* SampleSizes)
{
    korvenrg::linear::WriteNuplets(n,
                                   adopted(SampleSizes, n, 1),
                                   adopted(oNUplets, NumberNuplets(n, SampleSizes), n));
}

VARIANT_BOOL Cpp_GetNestedVars(int i,
                               int pX,
                               int pQ,
                               int NbFactors,
                               int Interlevel,
                               int* iFactListVars,
                               int* iFactNestedMat,
                               int* oFNested,
                               int* oFNesting)
{
    return korvenrg::linear::GetNestedVars(i,
                                           pX,
                                           pQ,
                                           Interlevel,
                                           copied(iFactListVars, NbFactors, Interlevel),
                                           copied(iFactNestedMat, pQ, pQ),
                                           copiedBack(oFNested, Interlevel, 1),
                                           copiedBack(oFNesting, Interlevel, 1));
}

void Cpp_NestedTypeTable(double* ioSSTable,
                         int iNbFactors,
                         int iInterlevel,
                         int* iFactActive,
                         int* iFactNested,
                         int* iFactListVars)
{
    NestedTypeTable(copiedBack(ioSSTable, iNbFactors, 5),
                    iNbFactors,
                    iInterlevel,
                    copied(iFactActive, iNbFactors, 1),
                    copied(iFactNested, 2, 1),
                    copied(iFactListVars, iNbFactors, iInterlevel));
}

int Cpp_GetMissingInteractions(BSTR* q,
                               int n,
                               int NbFactors,
                               int pX,
                               int pQ,
                               int Interlevel,
                               int* NbCat,
                               int* FactType,
                               int* FactListVars,
                               int* FactNbVars,
                               int* FactActive,
                               int* oMissing)
{
    const int columns =
        GetXModelSize(NbFactors, pX, pQ, Interlevel, NbCat, FactType, FactListVars, FactNbVars, FactActive);
    return GetMissingInteractions(copied(q, n, pQ),
                                  n,
                                  NbFactors,
                                  pX,
                                  pQ,
                                  Interlevel,
                                  copied(NbCat, pQ, 1),
                                  copied(FactType, NbFactors, 1),
                                  copied(FactListVars, NbFactors, Interlevel),
                                  copied(FactNbVars, NbFactors, 1),
                                  copied(FactActive, NbFactors, 1),
                                  copiedBack(oMissing, columns, 1));
}

VARIANT_BOOL Cpp_CheckInteractions(int* FactNbVars, double* Frequencies, int* n)
{
    return CheckInteractions(copied(FactNbVars, *n, 1), copied(Frequencies, *n, 1), n);
}
