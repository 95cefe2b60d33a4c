/** The command line of `korven logit` beyond what all models share. */
#ifndef KORVENRG_FRONTEND_LOGIT_OPTIONS_H
#define KORVENRG_FRONTEND_LOGIT_OPTIONS_H

#include <CLI/CLI.hpp>
#include <string>

#include "options.h"

namespace korvenrg::frontend {

/** Empty, or what is wrong with a number that must lie between 0 and 1. */
std::string CheckProbability(const std::string& text);

void AddLogitOptions(CLI::App& command, Options& options);

/** Throws CLI::ValidationError for options that do not go together. */
void CheckLogitOptions(const CLI::App& command, const Options& options);

}  // namespace korvenrg::frontend

#endif
