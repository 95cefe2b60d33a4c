#include <algorithm>
#include <cmath>
#include <vector>

#include "kernel/linalg/row_forms.h"
#include "linear/ols_state.h"
#include "linear/ols_tables.h"

namespace korvenrg::linear {

namespace {

std::vector<int> ColumnsInModel(const OlsRun& run)
{
    std::vector<int> columns;
    for (int i = 1; i <= run.data.p; ++i) {
        if (run.factors.InModel(i)) columns.push_back(i);
    }
    return columns;
}

// Matrix of the leverage form, by columns: minus the swept cell over the product of the standard deviations.
std::vector<double> LeverageForm(const OlsRun& run, const std::vector<int>& columns)
{
    const std::size_t q = columns.size();
    std::vector<double> form(q * q);
    for (std::size_t a = 0; a < q; ++a) {
        for (std::size_t b = 0; b < q; ++b) {
            const double scale = run.StDevOf(columns[a]) * run.StDevOf(columns[b]);
            // A pair without a scale resets the sum of all pairs before it instead of being skipped. It
            // stays: OlsOddities.LeverageSumIsReset.
            if (scale <= kGuard) {
                std::fill(form.begin(), form.end(), 0.0);
            } else {
                form[b * q + a] = -run.Packed(columns[a], columns[b]) / scale;
            }
        }
    }
    return form;
}

// The part of each row's leverage that comes from the columns, before the row's weight.
std::vector<double> LeverageForms(const OlsRun& run)
{
    const std::vector<int> inModel = ColumnsInModel(run);
    std::vector<const double*> columns;
    std::vector<double> centres;
    for (const int column : inModel) {
        columns.push_back(run.data.columns[static_cast<std::size_t>(column - 1)]);
        centres.push_back(run.options.fixedIntercept ? 0.0 : run.MeanOf(column));
    }
    std::vector<double> forms(run.data.weights.size());
    const std::vector<double> form = LeverageForm(run, inModel);
    linalg::QuadraticForms(columns, run.data.n, centres.data(), form.data(), forms.data());
    return forms;
}

// Leverage of a row: g from the columns, h with the share of the intercept.
struct Leverage
{
    double g;
    double h;
};

// Residual statistics that need 1 - h. With a fixed intercept h counts the intercept all the same, so that these are not
// those of a refit; only Cook's distance and the prediction errors take g. It stays:
// OlsOddities.LeaveOneOutCountsAFixedIntercept. Gives the row's squared leave-one-out error, or 0 at leverage 1, where
// the cells keep what they held.
double WriteLeaveOneOut(const OlsRun& run, int r, double w, Leverage leverage)
{
    const auto row = static_cast<std::size_t>(r - 1);
    const double y = run.data.response->vbget(r);
    const double rest = 1.0 - leverage.h;
    run.out.leaveOneOut->vbset(r, y);
    if (!(std::fabs(rest) > kGuard)) return 0.0;

    const double e = run.residual[row];
    const double deleted = e / rest;
    const double mse = run.sse / run.dfE;
    const double studentised = run.IsPerfect() ? 1.0 : rest > 0.0 ? e / std::sqrt(mse * rest) : kMissing;
    const double cooksFactor = run.IsPerfect() ? 1.0 : w * deleted * deleted / (run.k * run.sse / run.dfE);
    run.out.leaveOneOut->vbset(r, y - deleted);
    run.out.residuals->vbset(r, kResStudentised, studentised);
    run.out.cooksD->vbset(r, (run.options.fixedIntercept ? leverage.g : leverage.h) * cooksFactor);
    return deleted * deleted;
}

// Standard errors and intervals of the mean prediction and of an observation.
void WritePredictionErrors(const OlsRun& run, int r, double mse, double leverage)
{
    matrix<double>& table = *run.out.predictionErrors;
    if (!(mse > kEps)) {
        for (int column = kPredMeanError; column <= kPredCols; ++column) {
            table.vbset(r, column, kMissing);
        }
        return;
    }
    const double prediction = run.prediction[static_cast<std::size_t>(r - 1)];
    const double variance = std::fabs(mse * leverage);
    const double ofMean = std::sqrt(variance);
    const double ofObservation = std::sqrt(mse + variance);
    table.vbset(r, kPredMeanError, ofMean);
    table.vbset(r, kPredMeanLower, prediction - ofMean * run.tq);
    table.vbset(r, kPredMeanUpper, prediction + ofMean * run.tq);
    table.vbset(r, kPredError, ofObservation);
    table.vbset(r, kPredLower, prediction - ofObservation * run.tq);
    table.vbset(r, kPredUpper, prediction + ofObservation * run.tq);
}

void WritePress(OlsRun& run, double press)
{
    if (!run.HasErrorDf()) return;
    run.out.fit->vbset(kFitPress, kFitSample, press);
    run.out.fit->vbset(kFitQSquared, kFitSample, 1.0 - press / ((run.data.sumWc - 1.0) * run.varY));
}

}  // namespace

void WriteCaseStatistics(OlsRun& run)
{
    const std::vector<double> forms = LeverageForms(run);
    const double meanWeight = run.data.sumW / run.data.n;
    const double mse = run.out.anova->vbget(kAnovaError, kAnovaMeanSquare);
    double press = 0.0;
    for (int r = 1; r <= run.data.n; ++r) {
        const double w = run.data.regressionWeights->vbget(r);
        const double g = forms[static_cast<std::size_t>(r - 1)] * w / (run.data.sumW - meanWeight);
        const double h = w / run.data.sumW + g;
        press += WriteLeaveOneOut(run, r, w, {g, h});
        WritePredictionErrors(run, r, mse, run.options.fixedIntercept ? g : h);
        run.lastLeverageTerm = g;
    }
    WritePress(run, press);
}

}  // namespace korvenrg::linear
