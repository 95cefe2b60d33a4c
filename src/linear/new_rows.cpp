#include "linear/new_rows.h"

#include <algorithm>
#include <cmath>

#include "core/limits.h"
#include "kernel/distributions/correlations.h"
#include "kernel/distributions/student.h"
#include "kernel/linalg/row_forms.h"
#include "linear/factor_description.h"

namespace korvenrg::linear {

namespace {

std::size_t At(int i)
{
    return static_cast<std::size_t>(i - 1);
}

std::vector<int> ColumnsInModel(const FittedColumns& model)
{
    std::vector<int> columns;
    for (int i = 1; i <= model.p; ++i) {
        if (model.states->vbget(i) == kInModel) columns.push_back(i);
    }
    return columns;
}

// Symmetric matrix of the leverage form from the lower triangle of the swept matrix, by columns.
std::vector<double> LeverageForm(const FittedColumns& model, const std::vector<int>& columns)
{
    const std::size_t q = columns.size();
    std::vector<double> form(q * q);
    for (std::size_t a = 0; a < q; ++a) {
        for (std::size_t b = 0; b <= a; ++b) {
            const double scale = model.stDev->vbget(columns[a]) * model.stDev->vbget(columns[b]);
            // A pair without a scale resets the sum of all pairs before it instead of being skipped. It stays:
            // OlsPrediction.APairWithoutScaleResetsTheLeverage.
            if (scale <= kGuard) {
                std::fill(form.begin(), form.end(), 0.0);
                continue;
            }
            const double cell = -model.swept->vbget(columns[a], columns[b]) / scale;
            form[b * q + a] = cell;
            form[a * q + b] = cell;
        }
    }
    return form;
}

// The part of each row's leverage that comes from the columns, before weight and number of observations.
std::vector<double> LeverageForms(const FittedColumns& model, bool fixedIntercept, const NewRows& rows)
{
    const std::vector<int> inModel = ColumnsInModel(model);
    const linalg::ColumnsOf all(*rows.x, rows.n, model.p);
    std::vector<const double*> columns;
    std::vector<double> centres;
    for (const int column : inModel) {
        columns.push_back(all[At(column)]);
        centres.push_back(fixedIntercept ? 0.0 : model.mean->vbget(column));
    }
    std::vector<double> forms(static_cast<std::size_t>(rows.n));
    const std::vector<double> form = LeverageForm(model, inModel);
    linalg::QuadraticForms(columns, rows.n, centres.data(), form.data(), forms.data());
    return forms;
}

// Leverage of a row of weight w: d from the columns, h with the share of the intercept.
struct Leverage
{
    double w;
    double d;
    double h;
};

// Errors and bounds of a prediction of variance v; missing cells where the fit, or a row of weight 0, has no variance.
void WriteErrors(const FitSummary& fit, const NewRows& rows, int r, Leverage leverage)
{
    matrix<double>& table = *rows.errors;
    if (IsMissing(fit.mse) || leverage.w == 0.0) {
        for (int column = kPredMeanError; column <= kPredCols; ++column) {
            table.vbset(r, column, kMissing);
        }
        return;
    }
    const double prediction = rows.prediction[At(r)];
    const double v = (fit.fixedIntercept ? leverage.d : leverage.h) * fit.mse / leverage.w;
    const double ofMean = std::sqrt(v);
    const double ofObservation = std::sqrt(v + fit.mse);
    table.vbset(r, kPredMeanError, ofMean);
    table.vbset(r, kPredMeanLower, prediction - ofMean * fit.tq);
    table.vbset(r, kPredMeanUpper, prediction + ofMean * fit.tq);
    table.vbset(r, kPredError, ofObservation);
    table.vbset(r, kPredLower, prediction - ofObservation * fit.tq);
    table.vbset(r, kPredUpper, prediction + ofObservation * fit.tq);
}

// The leverage of a row outside the fit adds to 1 where a row of the fit takes it off. It stays:
// OlsPrediction.ValidationFormulas.
void WriteResiduals(const FitSummary& fit, const NewRows& rows, int r, double e, Leverage leverage)
{
    const bool hasError = !IsMissing(fit.mse) && !IsMissing(fit.rmse);
    const bool hasScale = hasError && !((leverage.h + 1.0) * leverage.w <= kGuard);
    const double scale = std::sqrt((leverage.h + 1.0) * fit.mse / leverage.w);
    rows.residuals->vbset(r, kResRaw, e);
    rows.residuals->vbset(r, kResStandardised, hasError ? e / fit.rmse : kMissing);
    rows.residuals->vbset(r, kResStudentised, hasScale ? e / scale : kMissing);
    rows.adjusted->vbset(r, rows.prediction[At(r)]);
}

// Cook's distance of a row as if it had been added to the fit. Neither form is the one of the fit's own rows; both
// stay: OlsPrediction.ValidationFormulas.
double CooksDistance(const FitSummary& fit, double e, Leverage leverage)
{
    const double squared = e * e;
    double distance = 0.0;
    if (fit.fixedIntercept) {
        const double share = leverage.d / (leverage.d / leverage.w + 1.0);
        distance = squared * share / ((1.0 - share) * squared + fit.Sse());
    } else {
        const double t = 1.0 / fit.sumW;
        const double u = t + leverage.d;
        const double added = 1.0 / (fit.sumW + 1.0);
        const double share = (u / (u + 1.0) + t - added) * leverage.w;
        distance = (t + share) * squared / ((1.0 - share - added) * squared + fit.Sse());
    }
    return distance / (fit.Parameters() / (fit.dfE + 1.0));
}

bool HasCooksDistance(const FitSummary& fit, Leverage leverage)
{
    return !IsMissing(fit.mse) && !(fit.fixedIntercept && leverage.w == 0.0);
}

// Sums over the validation rows.
struct ValidationSums
{
    double sumWc = 0.0;
    double sumW = 0.0;
    double squaredErrors = 0.0;
};

// R squared of a validation sample is that of the ranks; the fit's own is that of the values. It stays:
// OlsPrediction.ValidationFormulas.
void WriteValidationFit(const FitSummary& fit, NewRows& rows, const ValidationSums& sums)
{
    matrix<double>& table = *rows.fit;
    matrix<double> prediction(rows.n, 1, rows.prediction.data(), true);
    const double rho = V_SpearmanRho(rows.response, rows.n, &prediction, nullptr, rows.caseWeights, nullptr);
    const double df = sums.sumWc - fit.Parameters();
    const bool hasDf = df > kGuard;
    const double mse = hasDf ? sums.squaredErrors / df : kMissing;

    table.vbset(kFitObservations, kFitValidation, sums.sumWc);
    table.vbset(kFitSumOfWeights, kFitValidation, sums.sumW);
    table.vbset(kFitDf, kFitValidation, df);
    table.vbset(kFitRSquared, kFitValidation, rho * rho);
    table.vbset(kFitAdjustedRSquared, kFitValidation, kMissing);
    table.vbset(kFitMse, kFitValidation, mse);
    table.vbset(kFitRmse, kFitValidation, hasDf ? std::sqrt(mse) : kMissing);
}

}  // namespace

FitSummary ReadFitSummary(const matrix<double>& fit, double alpha, bool fixedIntercept)
{
    const double dfE = fit.vbget(kFitDf, kFitSample);
    return {.sumWc = fit.vbget(kFitObservations, kFitSample),
            .sumW = fit.vbget(kFitSumOfWeights, kFitSample),
            .dfE = dfE,
            .mse = fit.vbget(kFitMse, kFitSample),
            .rmse = fit.vbget(kFitRmse, kFitSample),
            .fixedIntercept = fixedIntercept,
            .tq = std::fabs(InvCDFStudent(alpha * 0.5, dfE))};
}

void ApplyModel(const FittedColumns& model, NewRows& rows)
{
    const linalg::ColumnsOf columns(*rows.x, rows.n, model.p);
    std::vector<double> coefficients(static_cast<std::size_t>(model.p));
    for (int j = 1; j <= model.p; ++j) {
        coefficients[At(j)] = model.coefficients->vbget(j);
    }
    rows.prediction.resize(static_cast<std::size_t>(rows.n));
    linalg::LinearCombination(columns, rows.n, coefficients.data(), model.intercept, rows.prediction.data());
}

void WriteNewRows(const FitSummary& fit, const FittedColumns& model, NewRows& rows)
{
    const std::vector<double> forms = LeverageForms(model, fit.fixedIntercept, rows);
    ValidationSums sums;
    for (int r = 1; r <= rows.n; ++r) {
        const double w = rows.isValidation ? rows.regressionWeights->vbget(r) : 1.0;
        const double d = w * forms[At(r)] / (fit.sumWc - 1.0);
        const Leverage leverage{w, d, w / fit.sumW + d};
        WriteErrors(fit, rows, r, leverage);
        if (!rows.isValidation) continue;

        const double e = rows.response->vbget(r) - rows.prediction[At(r)];
        const double wc = rows.caseWeights->vbget(r);
        sums.sumWc += wc;
        sums.sumW += wc * w;
        sums.squaredErrors += e * e;
        WriteResiduals(fit, rows, r, e, leverage);
        rows.cooksD->vbset(r, HasCooksDistance(fit, leverage) ? CooksDistance(fit, e, leverage) : kMissing);
    }
    if (rows.isValidation) WriteValidationFit(fit, rows, sums);
}

}  // namespace korvenrg::linear
