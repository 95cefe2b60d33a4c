/** Calls of the design table doors, with guarded outputs and text arrays. */
#pragma once

#include <algorithm>
#include <string>
#include <vector>

#include "ols_fixture.h"

namespace linear_test {

using Text = std::vector<std::wstring>;

/** A guarded array of platform strings that frees what it or a door put into its cells. */
class TextArray
{
  public:
    explicit TextArray(size_t size) : cells_(size) {}
    explicit TextArray(const Text& texts) : TextArray(texts.size())
    {
        for (size_t i = 0; i < texts.size(); ++i)
            cells_[i] = SysAllocString(texts[i].c_str());
    }
    TextArray(const TextArray&) = delete;
    TextArray& operator=(const TextArray&) = delete;
    ~TextArray()
    {
        for (size_t i = 0; i < cells_.size(); ++i)
            if (!cells_.IsSentinel(i)) SysFreeString(cells_[i]);
    }
    BSTR* data()
    {
        return cells_.data();
    }
    Text Read(size_t size) const
    {
        Text texts;
        for (size_t i = 0; i < size; ++i)
            texts.push_back(cells_[i] == nullptr ? L"" : cells_[i]);
        return texts;
    }
    bool IntactGuards() const
    {
        return cells_.IntactGuards();
    }

  private:
    GuardedArray<BSTR> cells_;
};

/** Rows of quantitative (row by row) and text variables. */
struct Rows
{
    std::vector<Vector> x;  // one vector per variable
    std::vector<Text> q;
    int n = 0;
};

enum class Form
{
    kOlder,
    kOlderProducts,
    kNewer
};

struct DesignProblem
{
    Rows model, valid, predict;
    Vector w;
    Text labelX, labelQ;
    std::vector<Text> categories;
    std::vector<Integers> factors;  // variables of each factor
    Integers type, active;
    std::vector<Integers> nested;  // pairs (a, b): a nested in b
    int constraint = 0;
    int reserved = -1;  // columns; -1: what GetXModelSize says
};

struct DesignResults
{
    int p, n, nValid, nPred, nf, code = 0, pMod = 0, pMod2 = 0;
    Table model{n, p}, valid{nValid, p}, predict{nPred, p}, design{p, p}, freq{p, 1};
    GuardedArray<int> parents{At(p + 1)}, parentsList{At(p * nf + 1)}, nbSub{At(nf + 1)}, removed{At(p + 1)},
        cleaned{At(p + 1)};
    Text labels{}, simpleLabels{};
    OlsProblem fit{};  // the factors as they were handed over
};

template <class T>
std::vector<T> Joined(const std::vector<std::vector<T>>& columns)
{
    std::vector<T> all;
    for (const auto& column : columns)
        all.insert(all.end(), column.begin(), column.end());
    return all;
}

inline DesignResults BuildDesign(const DesignProblem& d, Form form = Form::kNewer)
{
    const int pX = static_cast<int>(d.labelX.size()), pQ = static_cast<int>(d.labelQ.size());
    const int nf = static_cast<int>(d.factors.size()), n = d.model.n;
    int interlevel = 1;
    for (const auto& f : d.factors)
        interlevel = std::max(interlevel, static_cast<int>(f.size()));
    Integers nbVars, listVars(static_cast<size_t>(nf * interlevel), 0), nbCat, type = d.type,
                                                                               active = d.active;
    for (size_t f = 0; f < d.factors.size(); ++f) {
        nbVars.push_back(static_cast<int>(d.factors[f].size()));
        for (size_t v = 0; v < d.factors[f].size(); ++v)
            listVars[v * d.factors.size() + f] = d.factors[f][v];
    }
    if (active.empty()) active.assign(d.factors.size(), 1);
    int maxCat = 1, totalCat = 0;
    for (const Text& c : d.categories) {
        nbCat.push_back(static_cast<int>(c.size()));
        maxCat = std::max(maxCat, nbCat.back());
        totalCat += nbCat.back();
    }
    // Categories and their weighted frequencies, pQ x maxCat.
    Text cats(static_cast<size_t>(pQ * maxCat));
    Vector freq(cats.size(), 0.0), w = d.w;
    if (w.empty()) w.assign(static_cast<size_t>(n), 1.0);
    for (size_t v = 0; v < d.categories.size(); ++v)
        for (size_t c = 0; c < d.categories[v].size(); ++c) {
            cats[c * static_cast<size_t>(pQ) + v] = d.categories[v][c];
            for (size_t i = 0; i < static_cast<size_t>(n); ++i)
                if (d.model.q[v][i] == d.categories[v][c]) freq[c * static_cast<size_t>(pQ) + v] += w[i];
        }
    Text labelsX = d.labelX;
    labelsX.resize(static_cast<size_t>(pX + totalCat));
    Integers nestedPair{0, 0}, nestedMat(static_cast<size_t>(nf * nf), 0);
    for (const auto& pair : d.nested) {
        nestedPair = pair;
        nestedMat[static_cast<size_t>((pair[1] - 1) * nf + pair[0] - 1)] = 1;
    }
    // clang-format off
    const int size = GetXModelSize(nf, pX, pQ, interlevel, nbCat.data(), type.data(), listVars.data(), nbVars.data(),
        active.data());
    // clang-format on
    const int reserved = d.reserved >= 0 ? d.reserved : size;

    Vector x = Joined(d.model.x), xValid = Joined(d.valid.x), xPred = Joined(d.predict.x);
    TextArray q(Joined(d.model.q)), qValid(Joined(d.valid.q)), qPred(Joined(d.predict.q)), lx(labelsX),
        lq(d.labelQ), cat(cats), labels(static_cast<size_t>(reserved)), simple(static_cast<size_t>(reserved));
    DesignResults r{reserved, n, d.valid.n, d.predict.n, nf};
    GuardedArray<int> pMod(Integers{reserved}), pMod2(1);
    const auto withValid = korvenrg::AsFlag(d.valid.n > 0), withPred = korvenrg::AsFlag(d.predict.n > 0);
    // clang-format off
    if (form == Form::kNewer)
        r.code = BuildModelTable2(x.data(), n, pX, q.data(), pQ, w.data(), lx.data(), lq.data(), interlevel,
            d.constraint, nf, labels.data(), simple.data(), r.parents.data(), r.parentsList.data(), r.nbSub.data(),
            r.freq.cells.data(), r.removed.data(), r.cleaned.data(), type.data(), listVars.data(), nbVars.data(),
            active.data(), r.design.cells.data(), nestedPair.data(), nestedMat.data(), maxCat, totalCat, nbCat.data(),
            cat.data(), freq.data(), withValid, xValid.data(), qValid.data(), d.valid.n, withPred, xPred.data(),
            qPred.data(), d.predict.n, r.model.cells.data(), r.valid.cells.data(), r.predict.cells.data(), pMod.data(),
            pMod2.data());
    else
        r.code = BuildModelTable(x.data(), n, pX, q.data(), pQ, w.data(), lx.data(), lq.data(), interlevel,
            d.constraint, korvenrg::AsFlag(form == Form::kOlderProducts), nf, labels.data(), r.parents.data(),
            r.freq.cells.data(), r.removed.data(), type.data(), listVars.data(), nbVars.data(), active.data(),
            r.design.cells.data(), korvenrg::AsFlag(!d.nested.empty()), nestedPair.data(), maxCat, totalCat,
            nbCat.data(), cat.data(), freq.data(), withValid, xValid.data(), qValid.data(), d.valid.n, withPred,
            xPred.data(), qPred.data(), d.predict.n, r.model.cells.data(), r.valid.cells.data(),
            r.predict.cells.data(), pMod.data());
    // clang-format on
    for (const Table* t : {&r.model, &r.valid, &r.predict, &r.design, &r.freq})
        EXPECT_TRUE(t->cells.IntactGuards());
    for (const auto* a : {&r.parents, &r.parentsList, &r.nbSub, &r.removed, &r.cleaned, &pMod, &pMod2})
        EXPECT_TRUE(a->IntactGuards());
    EXPECT_TRUE(labels.IntactGuards() && simple.IntactGuards());
    r.pMod = pMod[0];
    r.pMod2 = pMod2[0];
    r.labels = labels.Read(static_cast<size_t>(std::min(r.pMod, reserved)));
    r.simpleLabels = simple.Read(static_cast<size_t>(std::min(r.pMod, reserved)));
    r.fit.interlevel = interlevel;
    r.fit.type = type;
    r.fit.active = active;
    r.fit.nbVars = nbVars;
    r.fit.listVars = listVars;
    return r;
}

/** The fit of a built table: columns, states and factors as described. */
inline OlsProblem FitOf(const DesignResults& d, const Vector& y, int constraint)
{
    OlsProblem q = d.fit;
    q.n = d.n;
    q.p = d.p;
    q.y = y;
    q.wc.assign(y.size(), 1.0);
    q.wr.assign(y.size(), 1.0);
    for (int j = 1; j <= d.p; ++j) {
        const Vector column = d.model.Column(j), design = d.design.Column(j);
        q.x.insert(q.x.end(), column.begin(), column.end());
        q.design.insert(q.design.end(), design.begin(), design.end());
        q.parents.push_back(d.parents[At(j)]);
        q.states.push_back(d.removed[At(j)]);
    }
    for (int f = 1; f <= d.nf; ++f)
        q.nbSub.push_back(d.nbSub[At(f)]);
    q.options[kConstraint] = constraint;
    return q;
}

}  // namespace linear_test
