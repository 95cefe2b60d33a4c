#include "terms.h"

#include <fmt/format.h>
#include <fmt/ranges.h>

#include <algorithm>
#include <set>

#include "user_error.h"

namespace korvenrg::frontend {
namespace {

std::string TakeQuotedName(std::string_view& text)
{
    std::string name;
    text.remove_prefix(1);
    for (;;) {
        if (text.empty()) throw UserError("--terms: a double quote is not closed");
        const char letter = text.front();
        text.remove_prefix(1);
        if (letter == '"' && !text.starts_with('"')) return name;
        if (letter == '"') text.remove_prefix(1);
        name.push_back(letter);
    }
}

std::string TakePlainName(std::string_view& text)
{
    const std::size_t length = std::min(text.find_first_of(" \t\n*\""), text.size());
    std::string name(text.substr(0, length));
    text.remove_prefix(length);
    return name;
}

void SkipSpaces(std::string_view& text)
{
    text.remove_prefix(std::min(text.find_first_not_of(" \t\n"), text.size()));
}

void RefuseRepeatedTerms(const std::vector<Term>& terms)
{
    std::set<Term> seen;
    for (const Term& term : terms) {
        Term sorted = term;
        std::sort(sorted.begin(), sorted.end());
        if (!seen.insert(sorted).second)
            throw UserError(fmt::format("--terms names '{}' twice", NameOf(term)));
    }
}

}  // namespace

std::vector<Term> ParseTerms(std::string_view text)
{
    std::vector<Term> terms;
    bool joined = false;  // a `*` waits for its right-hand name
    for (SkipSpaces(text); !text.empty(); SkipSpaces(text)) {
        if (text.front() == '*') {
            if (joined || terms.empty()) throw UserError("--terms: '*' needs a name on either side");
            joined = true;
            text.remove_prefix(1);
            continue;
        }
        std::string name = text.front() == '"' ? TakeQuotedName(text) : TakePlainName(text);
        if (!joined) terms.emplace_back();
        terms.back().push_back(std::move(name));
        joined = false;
    }
    if (joined) throw UserError("--terms: '*' needs a name on either side");
    if (terms.empty()) throw UserError("--terms names no column");
    RefuseRepeatedTerms(terms);
    return terms;
}

std::string NameOf(const Term& term)
{
    return fmt::format("{}", fmt::join(term, "*"));
}

}  // namespace korvenrg::frontend
