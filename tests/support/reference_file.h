/** Cases that another program wrote: data, options and expected tables. */
#pragma once

#include <gtest/gtest.h>

#include <cmath>
#include <fstream>
#include <functional>
#include <map>
#include <sstream>
#include <string>

#include "support/result_table.h"
#include "support/tolerances.h"

namespace korvenrg::test {

/** One table of a reference file; cells are numbers, "missing", "kept" or "any". */
struct Reference
{
    int rows = 0, cols = 0;
    std::vector<std::string> cells;

    Vector Numbers() const
    {
        Vector numbers;
        for (const auto& cell : cells)
            numbers.push_back(std::stod(cell));
        return numbers;
    }
    Vector Column(int j) const
    {
        const auto all = Numbers();
        return {all.begin() + rows * (j - 1), all.begin() + rows * j};
    }
};

struct Case
{
    std::string name;
    std::map<std::string, Reference> tables;

    const Reference& operator[](const std::string& table) const
    {
        return tables.at(table);
    }
};

inline std::vector<Case> ReadCases(const std::string& file)
{
    std::ifstream in(std::string(KORVENRG_REFERENCE_DIR) + "/" + file);
    std::vector<Case> cases;
    for (std::string line; std::getline(in, line);) {
        std::istringstream words(line);
        std::string name;
        words >> name;
        if (name == "case") {
            cases.emplace_back();
            words >> cases.back().name;
            continue;
        }
        Reference& table = cases.back().tables[name];
        words >> table.rows >> table.cols;
        for (std::string cell; words >> cell;)
            table.cells.push_back(cell);
    }
    return cases;
}

/** The size of a cell that is a difference, by row and column. Its relative error is that of its terms. */
using Scale = std::function<double(int, int)>;

/** Agreement to `tolerance` of the expected value, or of the scale where that is larger. */
inline void ExpectTable(const Table& actual,
                        const Reference& expected,
                        const char* name,
                        const Scale& scale = {},
                        double tolerance = kPrinted)
{
    ASSERT_EQ(actual.rows, expected.rows) << name;
    double worst = 0.0;
    for (int c = 1; c <= expected.cols; ++c)
        for (int r = 1; r <= expected.rows; ++r) {
            const std::string& want = expected.cells[actual.Position(r, c)];
            const double got = actual(r, c);
            if (want == "any") continue;
            if (want == "kept") {
                EXPECT_TRUE(actual.Kept(r, c)) << name << "(" << r << "," << c << ") became " << got;
            } else if (want == "missing") {
                EXPECT_EQ(got, kMissing) << name << "(" << r << "," << c << ")";
            } else {
                const double value = std::stod(want);
                const double error = got == value ? 0.0
                                                  : std::abs(got - value) /
                                                        std::max(std::abs(value), scale ? scale(r, c) : 0.0);
                EXPECT_LE(error, tolerance)
                    << name << "(" << r << "," << c << ") is " << got << ", R has " << value;
                worst = std::max(worst, error);
            }
        }
    static std::map<std::string, double> all;
    all[name] = std::max(all[name], worst);
    ::testing::Test::RecordProperty(std::string("worst_") + name, std::to_string(std::log10(all[name])));
}

}  // namespace korvenrg::test
