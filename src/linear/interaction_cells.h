/** Interactions and their cells: which are empty, and a design without the main effects that interactions hold. */
#pragma once

#include <string>

#include "core/matrix.h"

/** Flags the interaction columns without observations; parameters and result as in the door Cpp_GetMissingInteractions. */
KORVENRG_API int GetMissingInteractions(matrix<std::wstring>* q,
                                        int n,
                                        int NbFactors,
                                        int pX,
                                        int pQ,
                                        int Interlevel,
                                        matrix<int>* NbCat,
                                        matrix<int>* FactType,
                                        matrix<int>* FactListVars,
                                        matrix<int>* FactNbVars,
                                        matrix<int>* FactActive,
                                        matrix<int>* oMissing);

/** Whether a group of cells is partly filled; parameters and result as in the door Cpp_CheckInteractions. */
KORVENRG_API short CheckInteractions(matrix<int>* FactNbVars, matrix<double>* Frequencies, int* n);

/**
 * Drops the main effects that an interaction of the model holds from a table of coded columns.
 *
 * Each active factor stands in X with one column less than it has, the one its constraint drops. When an active factor is an
 * interaction, the columns of the main effects that no active interaction lists, and those of the interactions, are kept in
 * order, with a column of ones behind them; otherwise the whole table is copied.
 *
 * @param X             n x p
 * @param FactActive    NbFactors, 1 for a factor of the model
 * @param FactType      NbFactors, FactorType
 * @param FactNbSub     NbFactors, number of columns of each factor, the dropped one counted
 * @param FactListVars  NbFactors x Interlevel, variables of each factor; a main effect has the number of its variable
 * @param pOut          receives the number of columns of oX
 * @param oX            out, n x pOut; created with new when null, else resized
 */
KORVENRG_API void CheckForInteraction(matrix<double>* X,
                                      int p,
                                      int n,
                                      int Interlevel,
                                      int NbFactors,
                                      matrix<int>* FactActive,
                                      matrix<int>* FactType,
                                      matrix<int>* FactNbSub,
                                      matrix<int>* FactListVars,
                                      int* pOut,
                                      matrix<double>*& oX);
