/** The model formula of the command line. */
#ifndef KORVENRG_FRONTEND_TERMS_H
#define KORVENRG_FRONTEND_TERMS_H

#include <string>
#include <string_view>
#include <vector>

namespace korvenrg::frontend {

/** One term: a single column is a main effect, several are their interaction. */
using Term = std::vector<std::string>;

/** Reads terms separated by spaces, names joined by `*` in an interaction (spaces around it allowed), a name
 * in double quotes where it holds spaces, `*` or quotes (doubled). Throws UserError for a `*` without two
 * names, an unclosed quote, no term at all, and a term given twice in whatever order of names. */
std::vector<Term> ParseTerms(std::string_view text);

/** The term as it is shown: names joined by `*`. */
std::string NameOf(const Term& term);

}  // namespace korvenrg::frontend

#endif
