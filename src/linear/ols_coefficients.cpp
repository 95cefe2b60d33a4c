#include <cmath>

#include "kernel/distributions/student.h"
#include "kernel/linalg/products.h"
#include "kernel/linalg/row_forms.h"
#include "linear/ols_state.h"
#include "linear/ols_tables.h"

namespace korvenrg::linear {

namespace {

// Square root of a variance; rounding can leave a variance of 0 slightly negative.
double StandardErrorOf(double variance)
{
    return variance > 0.0 ? std::sqrt(variance) : 0.0;
}

// Covariance of the coefficients of the fitted columns, the intercept last. Cells of columns outside the
// model are 0.
matrix<double> CovarianceOfFittedColumns(const OlsRun& run)
{
    const int p = run.data.p;
    const double sY = run.StDevY();
    matrix<double> covariance(p + 1, p + 1);
    if (run.HasErrorDf()) {
        for (int i = 1; i <= p; ++i) {
            for (int j = 1; j <= i; ++j) {
                if (!run.factors.InModel(i) || !run.factors.InModel(j)) continue;
                const double cell = -(sY * sY * run.ResidualTerm() * run.Packed(i, j)) /
                                    (run.StDevOf(i) * run.StDevOf(j)) / run.dfE;
                covariance.vbset(i, j, cell);
                covariance.vbset(j, i, cell);
            }
        }
    }
    return covariance;
}

// Variance of the intercept and its covariances, from those of the columns.
void AddIntercept(const OlsRun& run, matrix<double>& covariance)
{
    const int p = run.data.p;
    const double form = M_ProductTrVBV(run.out.mean, p, &covariance);
    const double ofMean = (run.data.sumWc - 1.0) * run.ResidualTerm() * run.varY / run.dfE / run.data.sumWc;
    covariance.vbset(p + 1, p + 1, run.dfE <= kEps ? 0.0 : ofMean + form);
    for (int i = 1; i <= p; ++i) {
        double sum = 0.0;
        for (int j = 1; j <= p; ++j) {
            sum += run.MeanOf(j) * covariance.vbget(j, i);
        }
        covariance.vbset(p + 1, i, -sum);
        covariance.vbset(i, p + 1, -sum);
    }
}

// Writes what the covariance on the fitted columns defines: pairs of columns in the model and, with an
// estimated intercept, its row and column. Other cells stay as the caller left them.
void StoreRawCovariance(const OlsRun& run, const matrix<double>& covariance)
{
    const int p = run.data.p;
    for (int i = 1; i <= p + 1; ++i) {
        for (int j = 1; j <= p + 1; ++j) {
            const bool intercept = i > p || j > p;
            const bool defined = intercept
                                     ? !run.options.fixedIntercept
                                     : run.HasErrorDf() && run.factors.InModel(i) && run.factors.InModel(j);
            if (defined) run.out.covariance->vbset(i, j, covariance.vbget(i, j));
        }
    }
}

// Writes the covariance of the reported parameters; row and column of a fixed intercept stay.
void StoreReportedCovariance(const OlsRun& run, const matrix<double>& covariance)
{
    const int size = run.options.fixedIntercept ? run.data.p : run.data.p + 1;
    for (int j = 1; j <= size; ++j) {
        for (int i = 1; i <= size; ++i) {
            run.out.covariance->vbset(i, j, covariance.vbget(i, j));
        }
    }
}

// Map from fitted columns to reported parameters; the intercept maps to itself.
matrix<double> ReportedMap(const OlsRun& run)
{
    const int p = run.data.p;
    matrix<double> map(p + 1, p + 1);
    for (int j = 1; j <= p; ++j) {
        for (int i = 1; i <= p; ++i) {
            map.vbset(i, j, run.factors.subDesign->vbget(i, j));
        }
    }
    map.vbset(p + 1, p + 1, 1.0);
    return map;
}

// Map from fitted columns to standardised coefficients, which have no intercept. A response without spread
// has no standard unit: all cells are 0.
matrix<double> StandardisedMap(const OlsRun& run)
{
    const int p = run.data.p;
    const double sY = run.StDevY();
    matrix<double> map(p + 1, p + 1);
    if (sY == 0.0) return map;
    for (int j = 1; j <= p; ++j) {
        for (int i = 1; i <= p; ++i) {
            map.vbset(i, j, run.factors.subDesign->vbget(i, j) * run.StDevOf(j) / sY);
        }
    }
    return map;
}

// Coefficients after a map, with their variances and their covariance.
struct MappedCoefficients
{
    matrix<double> value;
    matrix<double> variance;
    matrix<double> covariance;
};

MappedCoefficients MapCoefficients(const OlsRun& run, matrix<double> map, matrix<double>& covariance)
{
    const int m = run.data.p + 1;
    MappedCoefficients mapped{{m, 1}, {m, 1}, {m, m}};
    M_ProductBV(&map, m, m, run.out.rawCoefficients, &mapped.value);
    ComputeNewVar(&map, m, m, &covariance, &mapped.variance, &mapped.covariance);
    return mapped;
}

void WriteValueAndNothingElse(matrix<double>& table, int row, double value, double standardError)
{
    table.vbset(row, kParValue, value);
    table.vbset(row, kParStdError, standardError);
    for (const int column : {kParT, kParP, kParLower, kParUpper}) {
        table.vbset(row, column, kMissing);
    }
}

// t, its two-sided probability and the interval, from value and standard error.
void WriteTestAndInterval(const OlsRun& run, matrix<double>& table, int row)
{
    const double value = table.vbget(row, kParValue);
    const double error = table.vbget(row, kParStdError);
    const double t = value / error;
    table.vbset(row, kParT, t);
    table.vbset(row, kParP, 2.0 * pValStudent(t, run.dfE));
    table.vbset(row, kParLower, value - error * run.tq);
    table.vbset(row, kParUpper, value + error * run.tq);
}

void WriteInterceptRow(const OlsRun& run, double value, double variance)
{
    matrix<double>& table = *run.out.parameters;
    if (run.options.fixedIntercept) {
        WriteValueAndNothingElse(table, 1, run.options.interceptValue, kMissing);
        return;
    }
    WriteValueAndNothingElse(table, 1, value, kMissing);
    if (!(variance > kGuard)) return;
    table.vbset(1, kParStdError, StandardErrorOf(variance));
    WriteTestAndInterval(run, table, 1);
}

// The dropped level of a sum-type constraint has no column in the model but a derived parameter.
bool IsDerivedLevel(const OlsRun& run, int column)
{
    const int factor = run.factors.FactorOf(column);
    return run.factors.HoldsQualitative(factor) && run.factors.IsActive(factor) &&
           run.options.DerivesDroppedLevels();
}

void WriteColumnRow(const OlsRun& run,
                    matrix<double>& table,
                    int row,
                    int column,
                    const MappedCoefficients& mapped)
{
    const bool inModel = run.factors.InModel(column);
    if (!inModel && !IsDerivedLevel(run, column)) {
        WriteValueAndNothingElse(table, row, 0.0, 0.0);
        return;
    }
    WriteValueAndNothingElse(table, row, mapped.value.vbget(column), kMissing);
    if (inModel && !run.HasErrorDf()) return;
    const double error = StandardErrorOf(mapped.variance.vbget(column));
    table.vbset(row, kParStdError, error);
    if (error > kEps) WriteTestAndInterval(run, table, row);
}

}  // namespace

void ComputeRawCoefficients(OlsRun& run)
{
    const int p = run.data.p;
    const double sY = run.StDevY();
    double explainedMean = 0.0;
    for (int i = 1; i <= p; ++i) {
        const double deviation = run.StDevOf(i);
        const bool has = run.factors.InModel(i) && std::fabs(deviation) > kGuard;
        const double coefficient = has ? sY * run.Packed(p + 1, i) / deviation : 0.0;
        run.out.rawCoefficients->vbset(i, coefficient);
        if (has) explainedMean += coefficient * run.MeanOf(i);
    }
    run.out.rawCoefficients->vbset(
        p + 1,
        run.options.fixedIntercept ? run.options.interceptValue : run.meanY - explainedMean);
}

void PredictRows(OlsRun& run)
{
    std::vector<const double*> columns;
    std::vector<double> coefficients;
    for (int i = 1; i <= run.data.p; ++i) {
        const double coefficient = run.out.rawCoefficients->vbget(i);
        if (coefficient == 0.0) continue;
        columns.push_back(run.data.columns[static_cast<std::size_t>(i - 1)]);
        coefficients.push_back(coefficient);
    }
    const auto rows = run.data.weights.size();
    run.prediction.resize(rows);
    run.residual.resize(rows);
    linalg::LinearCombination(columns,
                              run.data.n,
                              coefficients.data(),
                              run.out.rawCoefficients->vbget(run.data.p + 1),
                              run.prediction.data());

    const bool hasScale = !run.IsPerfect() && run.dfE > 0.0;
    const double scale = std::sqrt(std::fabs(run.sse / run.dfE));
    for (int r = 1; r <= run.data.n; ++r) {
        const auto row = static_cast<std::size_t>(r - 1);
        const double residual = run.data.response->vbget(r) - run.prediction[row];
        run.residual[row] = residual;
        run.out.prediction->vbset(r, run.prediction[row]);
        run.out.residuals->vbset(r, kResRaw, residual);
        run.out.residuals->vbset(r, kResStandardised, hasScale ? residual / scale : 0.0);
    }
}

void WriteParameterTables(OlsRun& run)
{
    const int p = run.data.p;
    matrix<double> covariance = CovarianceOfFittedColumns(run);
    if (!run.options.fixedIntercept) AddIntercept(run, covariance);

    MappedCoefficients reported = MapCoefficients(run, ReportedMap(run), covariance);
    const MappedCoefficients standardised = MapCoefficients(run, StandardisedMap(run), covariance);
    if (run.dfE < kGuard) reported.variance.vbset(p + 1, kMissing);

    StoreRawCovariance(run, covariance);
    if (!run.options.keepsRawCov) StoreReportedCovariance(run, reported.covariance);
    for (int i = 1; i <= p + 1; ++i) {
        run.out.coefficients->vbset(i, reported.value.vbget(i));
    }

    run.tq = std::fabs(InvCDFStudent(run.options.alpha * 0.5, run.dfE));
    WriteInterceptRow(run, reported.value.vbget(p + 1), reported.variance.vbget(p + 1));
    for (int i = 1; i <= p; ++i) {
        WriteColumnRow(run, *run.out.parameters, i + 1, i, reported);
        WriteColumnRow(run, *run.out.standardised, i, i, standardised);
    }
}

}  // namespace korvenrg::linear
