// The type III table: each factor given all others.
#include "logistic/logit_state.h"
#include "logistic/logit_tables.h"
#include "logistic/logit_variable_statistics.h"

namespace korvenrg::logistic {

void WriteTypeIIITable(LogitRun& run)
{
    if (!run.options.withTypeIII) return;
    matrix<double>& table = *run.out.typeIII;
    for (int row = 1; row <= table.rows; ++row) {
        for (int column = kTypeIIIWald; column <= kTypeIIICols; ++column) {
            table.vbset(row, column, kMissing);
        }
    }
    LogitWork scratch(run.model.n, run.model.layout.blocks);
    int row = 0;
    for (int f = 1; f <= run.factors.nbFactors; ++f) {
        if (!run.factors.IsActive(f)) continue;
        row += 1;
        const FactorTest wald = GetVariableWaldStat(run.factors, run.fit, f);
        const FactorTest ratio = GetVariableLRStat(run, f, *run.out.nbActiveFactors, scratch);
        table.vbset(row, kTypeIIIDf, wald.df);
        table.vbset(row, kTypeIIIWald, wald.statistic);
        table.vbset(row, kTypeIIIWaldP, wald.p);
        table.vbset(row, kTypeIIILikelihoodRatio, ratio.statistic);
        table.vbset(row, kTypeIIILikelihoodRatioP, ratio.p);
    }
}

}  // namespace korvenrg::logistic
