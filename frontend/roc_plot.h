/** The ROC curve and the classification as a drawing. */
#ifndef KORVENRG_FRONTEND_ROC_PLOT_H
#define KORVENRG_FRONTEND_ROC_PLOT_H

#include <string>

#include "logit_fit.h"

namespace korvenrg::frontend {

/** An SVG document. */
std::string RocDrawing(const LogitFit& fit, const Options& options);

}  // namespace korvenrg::frontend

#endif
