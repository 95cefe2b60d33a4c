#include "linear/forced_pass.h"

#include "core/limits.h"
#include "linear/factor_description.h"
#include "linear/ols_tables.h"
#include "linear/packed_model.h"

namespace korvenrg::linear {

namespace {

struct ForcedPass
{
    PackedModel model;
    int nbFactors;
    matrix<int>* parents;
    matrix<int>* states;
    matrix<double>* models;

    double Sse() const
    {
        return model.Sse(model.ResidualTerm());
    }
};

// A column enters when its state is not positive and its tolerance is high enough.
bool MayEnter(const ForcedPass& pass, int column)
{
    return pass.states->vbget(column) <= 0 && pass.model.Passes(column);
}

void RefuseCandidate(const ForcedPass& pass, int column)
{
    if (pass.states->vbget(column) < 0) pass.states->vbset(column, kAliased);
}

// Sweeps in the columns of one factor. Returns how many entered.
int EnterFactor(const ForcedPass& pass, int factor, int columnsBefore)
{
    int count = 0;
    for (int j = 1; j <= pass.model.p; ++j) {
        if (pass.parents->vbget(j) == factor) {
            if (MayEnter(pass, j)) {
                count += 1;
                pass.model.Sweep(j);
                pass.states->vbset(j, kInModel);
            } else {
                RefuseCandidate(pass, j);
            }
        }
        const bool degreesOfFreedomUsed = pass.model.S - columnsBefore - count - pass.model.c == 0.0;
        if (degreesOfFreedomUsed) {
            for (int later = j + 1; later <= pass.model.p; ++later) {
                RefuseCandidate(pass, later);
            }
            break;
        }
    }
    return count;
}

// First cells of a row: its number, and the factors of the row before together with the new one.
void WriteModelHead(const ForcedPass& pass, int row, int factor, int columns)
{
    matrix<double>& models = *pass.models;
    if (row == 1) {
        models.vbset(row, kModelNumber, 1.0);
    } else {
        models.vbset(row, kModelNumber, models.vbget(row - 1, kModelNumber) + 1.0);
        for (int f = 0; f < pass.nbFactors; ++f) {
            models.vbset(row, kModelFirstIndicator + f, models.vbget(row - 1, kModelFirstIndicator + f));
        }
    }
    models.vbset(row, kModelColumns, columns);
    models.vbset(row, kModelMove, 1.0);
    models.vbset(row, kModelFactor, factor);
    models.vbset(row, kModelFirstIndicator + factor - 1, 1.0);
}

// Statistics of a model of q columns.
void WriteModelStatistics(const ForcedPass& pass, int row, double q, double dfE)
{
    matrix<double>& models = *pass.models;
    const int nf = pass.nbFactors;
    const double r = pass.model.ResidualTerm();
    const double sse = pass.Sse();
    models.vbset(row, nf + kModelSse, sse);
    models.vbset(row, nf + kModelRSquared, 1.0 - r);
    if (dfE > kGuard) {
        models.vbset(row, nf + kModelMse, sse / dfE);
        models.vbset(row, nf + kModelAdjustedRSquared, (1.0 - r) - q * r / dfE);
        models.vbset(row, nf + kModelPc, (q + pass.model.S + pass.model.c) * r / dfE);
    }
    const InformationCriteria criteria = InformationCriteriaOf(pass.model, q, sse);
    models.vbset(row, nf + kModelAic, criteria.aic);
    models.vbset(row, nf + kModelSbc, criteria.sbc);
}

}  // namespace

}  // namespace korvenrg::linear

void OLSForcedSelection(int p,
                        double tol,
                        double c,
                        double S,
                        double sY,
                        matrix<double>* packed,
                        int NbFactors,
                        matrix<int>* FactActive,
                        [[maybe_unused]] matrix<int>* FactType,
                        matrix<int>* FactSubParents,
                        matrix<int>* ioFactSubRemoved,
                        int* pFinal,
                        double* MSEfull,
                        int* bestFactor,
                        matrix<double>* oModels)
{
    using namespace korvenrg;
    using namespace korvenrg::linear;
    const ForcedPass pass{{p, tol, c, S, sY, packed}, NbFactors, FactSubParents, ioFactSubRemoved, oModels};

    double best = kLargest;
    int row = 0;
    for (int f = 1; f <= NbFactors; ++f) {
        if (FactActive->vbget(f) != 1) continue;
        const int count = EnterFactor(pass, f, *pFinal);
        if (count == 0) continue;

        *pFinal += count;
        row += 1;
        const double dfE = S - *pFinal - c;
        WriteModelHead(pass, row, f, *pFinal);
        WriteModelStatistics(pass, row, *pFinal, dfE);

        const double sse = pass.Sse();
        if (sse < best) {
            best = sse;
            *MSEfull = dfE > kGuard ? sse / dfE : kMissing;
            *bestFactor = f;
        }
        if (dfE == 0.0) break;
    }
}
