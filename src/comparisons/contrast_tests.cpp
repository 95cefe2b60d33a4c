#include "comparisons/contrast_tests.h"

#include <algorithm>
#include <cmath>

#include "comparisons/contrast_columns.h"
#include "core/limits.h"
#include "kernel/distributions/student.h"

using namespace korvenrg::comparisons;

void cTestContrasts(int iNbContrasts,
                    double DFErrors,
                    matrix<double>* ioContrastsStats,
                    double alpha,
                    matrix<int>* oSignif)
{
    matrix<double>& table = *ioContrastsStats;
    const int rows = std::min(iNbContrasts, table.rows);
    for (int row = 1; row <= rows; ++row) {
        const double variance = table.vbget(row, kContrastVariance);
        const bool testable = !(variance <= korvenrg::kEps);
        const double t =
            testable ? table.vbget(row, kContrastDifference) / std::sqrt(variance) : korvenrg::kMissing;
        const double p = testable ? 2 * pValStudent(t, DFErrors) : korvenrg::kMissing;
        table.vbset(row, kContrastStandardised, t);
        table.vbset(row, kTestedContrastP, p);
        oSignif->vbset(row, testable && p < alpha ? kSignificant : kNotSignificant);
    }
}
