/** Cases that R wrote: data, options and expected tables. */
#pragma once

#include "design_fixture.h"
#include "support/reference_file.h"

namespace linear_test {

inline DesignProblem DesignOf(const Case& c)
{
    DesignProblem d;
    const Reference &x = c["x"], &q = c["q"], &factors = c["factors"];
    d.model.n = c["y"].rows;
    d.constraint = static_cast<int>(c["options"].Numbers()[0]);
    d.w = c["wc"].Numbers();
    for (int j = 1; j <= x.cols; ++j) {
        d.model.x.push_back(x.Column(j));
        d.labelX.push_back(L"x" + std::to_wstring(j));
    }
    for (int j = 1; j <= q.cols; ++j) {
        d.labelQ.push_back(L"q" + std::to_wstring(j));
        d.model.q.emplace_back();
        d.categories.emplace_back();
        for (double code : q.Column(j))
            d.model.q.back().push_back(L"level" + std::to_wstring(static_cast<int>(code)));
        const int levels = static_cast<int>(c["levels"].Numbers()[At(j)]);
        for (int k = 1; k <= levels; ++k)
            d.categories.back().push_back(L"level" + std::to_wstring(k));
    }
    for (int f = 1; f <= factors.rows; ++f) {
        const auto cell = [&](int col) { return static_cast<int>(factors.Column(col)[At(f)]); };
        d.type.push_back(cell(1));
        d.factors.emplace_back();
        for (int v = 1; v <= cell(2); ++v)
            d.factors.back().push_back(cell(2 + v));
    }
    return d;
}

}  // namespace linear_test
