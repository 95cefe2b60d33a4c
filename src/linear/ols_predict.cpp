#include "linear/ols_predict.h"

#include "core/limits.h"
#include "linear/new_rows.h"

// The prediction:
//   - read the finished fit; without a column in the model only the intercept counts
//   - predict the rows
//   - leverages, errors and bounds; for a validation sample its residuals, Cook's distances and fit
void cOLSPredict([[maybe_unused]] int n,
                 int nPred,
                 int p,
                 int pFinal,
                 matrix<double>* XPred,
                 matrix<double>* iCoeffs,
                 double alpha,
                 short InterceptFixed,
                 matrix<int>* ioFactSubRemoved,
                 matrix<double>* oStDevYPred,
                 matrix<double>* RTilda,
                 matrix<double>* Mean,
                 matrix<double>* Stdev,
                 matrix<double>* Wc,
                 matrix<double>* Wr,
                 matrix<double>* oYPred,
                 short iIsValid,
                 matrix<double>* ioFitCoeffs,
                 matrix<double>* iYValid,
                 matrix<double>* oResiduals,
                 matrix<double>* oCooksD,
                 matrix<double>* oAdjPredValid)
{
    using namespace korvenrg::linear;
    if (nPred < 0 || p < 0) return;
    const FitSummary fit = ReadFitSummary(*ioFitCoeffs, alpha, InterceptFixed == korvenrg::kTrue);
    const FittedColumns model{.p = pFinal > 0 ? p : 0,
                              .intercept = iCoeffs->vbget(p + 1),
                              .coefficients = iCoeffs,
                              .states = ioFactSubRemoved,
                              .swept = RTilda,
                              .mean = Mean,
                              .stDev = Stdev};
    NewRows rows{.n = nPred,
                 .isValidation = iIsValid == korvenrg::kTrue,
                 .x = XPred,
                 .caseWeights = Wc,
                 .regressionWeights = Wr,
                 .response = iYValid,
                 .errors = oStDevYPred,
                 .residuals = oResiduals,
                 .cooksD = oCooksD,
                 .adjusted = oAdjPredValid,
                 .fit = ioFitCoeffs,
                 .prediction = {}};
    ApplyModel(model, rows);
    for (int r = 1; r <= nPred; ++r) {
        oYPred->vbset(r, rows.prediction[static_cast<std::size_t>(r - 1)]);
    }
    WriteNewRows(fit, model, rows);
}
