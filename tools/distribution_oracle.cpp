// Writes the reference tables of the distribution tests from the 70-digit oracle in distribution_reference.h.
// Needs Boost (headers only). Arguments stand in hexadecimal, so the oracle and the tests see the same
// doubles.
//
//     g++ -std=gnu++20 -O2 tools/distribution_oracle.cpp -o distribution_oracle -lquadmath
//     ./distribution_oracle tests/reference/distributions

#include <boost/multiprecision/float128.hpp>
#include <cmath>
#include <cstdio>
#include <fstream>
#include <functional>
#include <iostream>
#include <string>
#include <vector>

#include "comparison_reference.h"
#include "distribution_reference.h"

namespace {

using reference::Real;
using reference::Tails;

constexpr double kSmallestTail = 1e-300;
constexpr const char* kBelowRange = "0";  // stands for a tail below kSmallestTail: not compared

std::string Exact(double value)
{
    char text[40];
    if (std::isinf(value)) return "HUGE_VAL";
    std::snprintf(text, sizeof text, "%a", value);
    return text;
}

std::string Rounded(const Real& value)
{
    return abs(value) < kSmallestTail ? kBelowRange : value.str(20);
}

class Table
{
  public:
    Table(const std::string& folder, const std::string& name, const std::string& columns)
        : file_(folder + "/" + name + ".inc")
    {
        file_ << "// " << columns
              << "; written by tools/distribution_oracle.cpp. A tail of 0 is below 1e-300.\n";
    }

    void Row(const std::vector<double>& arguments, const std::vector<Real>& results)
    {
        file_ << "{";
        for (double argument : arguments)
            file_ << Exact(argument) << ", ";
        for (std::size_t i = 0; i < results.size(); i++)
            file_ << (i ? ", " : "") << Rounded(results[i]);
        file_ << "},\n";
    }

  private:
    std::ofstream file_;
};

// Both sides of every switch of method (40 degrees of freedom and 80, where expansions take over) and
// non-integers.
const std::vector<double> kDfs =
    {0.01, 0.1, 0.5, 1, 2, 3.25, 7, 15.75, 39.9, 40.1, 79.5, 81, 300, 4321.5, 1e6};
const std::vector<double> kDeviates =
    {-37, -20, -6.5, -6, -3, -1.25, -0.25, 0.01, 0.5, 1.5, 2.75, 6, 6.5, 20, 37};

void WriteStudent(const std::string& folder)
{
    Table table(folder, "student", "t, df, lower tail, upper tail");
    std::vector<double> dfs = kDfs;
    dfs.push_back(1e13);  // still a Student distribution far out
    for (double df : dfs)
        for (double t :
             {-25.0, -0.5, 1e-8, 0.3, 0.69, 0.71, 1.2, 1.5, 1.6, 2.5, 5.99, 6.01, 9.5, 36.0, 1e4, 1e12}) {
            const Tails tails = reference::Student(t, df);
            table.Row({t, df}, {tails.lower, tails.upper});
        }
}

void WriteChiSquare(const std::string& folder)
{
    Table table(folder, "chi_square", "x, df, lower tail, upper tail");
    for (double df : kDfs)
        for (double z : kDeviates) {
            const double x = df * std::exp(z * std::sqrt(2 / df));
            if (x > 1e5 * df) continue;
            const Tails tails = reference::ChiSquare(x, df);
            table.Row({x, df}, {tails.lower, tails.upper});
        }
}

void WriteFisher(const std::string& folder)
{
    Table table(folder, "fisher", "F, df1, df2, lower tail, upper tail");
    const std::vector<double> dfs = {0.02, 1, 3.25, 40.1, 120, 4321.5, 1e6};
    for (double df1 : dfs)
        for (double df2 : dfs)
            for (double z : kDeviates) {
                const double F = std::exp(z * std::sqrt(2 / df1 + 2 / df2));
                const Tails tails = reference::Fisher(F, df1, df2);
                table.Row({F, df1, df2}, {tails.lower, tails.upper});
            }
}

void WriteNormal(const std::string& folder)
{
    Table table(folder, "normal", "z, lower tail, upper tail");
    for (double z : {-37.0, -12.3, -5.0, -1.1, -1e-9, 0.4, 1.05, 2.8, 2.9, 8.4, 8.6, 20.0, 36.9}) {
        const Tails tails = reference::Normal(z);
        table.Row({z}, {tails.lower, tails.upper});
    }
}

void WriteFunction(const std::string& folder,
                   const std::string& name,
                   const std::vector<double>& arguments,
                   const std::function<Real(Real)>& function)
{
    Table table(folder, name, "x, value");
    for (double x : arguments)
        table.Row({x}, {function(Real(x))});
}

Real GammaOf(Real x)
{
    if (x > 0) return exp(reference::LogGamma(x));
    const Real pi = boost::math::constants::pi<Real>();
    return pi / (sin(pi * x) * exp(reference::LogGamma(1 - x)));
}

Real LogGammaOf(Real x)
{
    return x > 0 ? reference::LogGamma(x) : Real(log(abs(GammaOf(x))));
}

void WriteFunctions(const std::string& folder)
{
    const std::vector<double> positive = {1e-12,  0.004,  0.3,  0.75, 0.9997, 1.0001, 1.25, 1.6,
                                          1.9999, 2.0001, 2.6,  3.1,  5.5,    7.9,    8.1,  9.99,
                                          10.1,   23.9,   24.1, 31.5, 33.5,   150.25, 171.5};
    const std::vector<double> negative = {-1e-12, -0.4, -1.75, -2.3, -15.99, -23.5, -24.5, -80.3, -150.7};
    std::vector<double> both = positive;
    both.insert(both.end(), negative.begin(), negative.end());
    std::vector<double> large = both;
    large.insert(large.end(), {1e4, 123456.7, 1e9, 1e15});

    WriteFunction(folder, "log_gamma", large, LogGammaOf);
    WriteFunction(folder, "gamma", both, GammaOf);
    WriteFunction(folder, "digamma", large, [](Real x) { return boost::math::digamma(x); });
    WriteFunction(folder, "trigamma", large, [](Real x) { return boost::math::trigamma(x); });
    const std::vector<double> errors =
        {-6.5, -2.2, -0.76, -0.74, -1e-9, 0.3, 0.7499, 0.7501, 1.9, 2.1, 5.9, 6.1, 26.0};
    WriteFunction(folder, "erf", errors, [](Real x) { return boost::math::erf(x); });
    WriteFunction(folder, "erfc", errors, [](Real x) { return boost::math::erfc(x); });

    Table table(folder, "log_binomial", "n, k, log of the coefficient");
    const std::vector<std::pair<double, double>> pairs = {{5, 2},
                                                          {52, 5},
                                                          {10.5, 3.25},
                                                          {1e6, 3},
                                                          {1e6, 499999.5},
                                                          {1e15, 2},
                                                          {3, 0.01},
                                                          {0.5, 0.2},
                                                          {1.5, 1.25},
                                                          {1e9, 0.5},
                                                          {1000, 999.5},
                                                          {200, 100}};
    for (const auto& [n, k] : pairs) {
        const Real value = reference::LogGamma(Real(n) + 1) - reference::LogGamma(Real(k) + 1) -
                           reference::LogGamma(Real(n) - Real(k) + 1);
        table.Row({n, k}, {value});
    }
}

void WriteHypergeometric(const std::string& folder)
{
    Table table(folder, "hypergeometric", "t, marked, unmarked, drawn, lower tail, upper tail");
    const std::vector<std::vector<double>> rows = {{0, 2, 99998, 5},
                                                   {2, 30, 40, 12},
                                                   {10, 30, 40, 12},
                                                   {12, 12, 9, 15},
                                                   {61, 200, 700, 300},
                                                   {0, 200, 700, 300},
                                                   {199, 200, 700, 300},
                                                   {2499, 5000, 5000, 5000},
                                                   {2900, 5000, 5000, 5000},
                                                   {30, 1e6, 9.9e7, 1000},
                                                   {100400, 1e6, 9e6, 1e6},
                                                   {101900, 1e6, 9e6, 1e6}};
    for (const auto& row : rows) {
        const Tails tails = reference::Hypergeometric(row[0], row[1], row[2], row[3]);
        table.Row(row, {tails.lower, tails.upper});
    }
}

void WriteBinomial(const std::string& folder)
{
    Table table(folder, "binomial", "k, n, p, lower tail, upper tail, P(X = k)");
    const std::vector<std::vector<double>> rows = {{0, 1, 0.3},
                                                   {0, 20, 0.95},
                                                   {3, 10, 0.25},
                                                   {9, 10, 0.6},
                                                   {40, 100, 0.5},
                                                   {99, 100, 1e-3},
                                                   {2, 1000, 1e-90},
                                                   {0, 800, 0.55},
                                                   {790, 1000, 0.7},
                                                   {120, 4000, 0.02},
                                                   {3999, 4000, 0.9999},
                                                   {500200, 1e6, 0.5},
                                                   {470000, 1e6, 0.5},
                                                   {0, 1e9, 3.1e-8},
                                                   {12, 1e9, 3e-9},
                                                   {299500000, 1e9, 0.3},
                                                   {5, 9e15, 1e-16}};
    for (const auto& row : rows) {
        const Tails tails = reference::Binomial(row[0], row[1], row[2]);
        table.Row(row, {tails.lower, tails.upper, reference::BinomialPoint(row[0], row[1], row[2])});
    }
}

// Factors from the first to the last in equal steps; an equal 1 / sqrt(2) is taken to full precision for the range.
void WriteComparisons(const std::string& folder)
{
    using Quad = boost::multiprecision::float128;
    using reference::Comparison;
    Table table(folder,
                "comparisons",
                "law (0 range, 1 one-sided, 2 two-sided), k, first and last factor, df, t, upper tail");
    const double equal = std::sqrt(0.5);
    const std::vector<std::vector<double>> rows = {{3, equal, equal, 4, 2.5},
                                                   {5, equal, equal, 20.5, 7},
                                                   {40, equal, equal, 1000, 3.2},
                                                   {100, equal, equal, HUGE_VAL, 9},
                                                   {4, 0.4, 0.8, 12, 3},
                                                   {3, 0.6, 0.95, HUGE_VAL, 2},
                                                   {6, 0.3, 0.3, 3, 12}};
    for (int law = 0; law < 3; law++)
        for (const auto& row : rows) {
            const int k = static_cast<int>(row[0]);
            std::vector<Quad> lambda;
            for (int i = 0; i < k - 1; i++)
                lambda.push_back(row[1] + (row[2] - row[1]) / (k > 2 ? k - 2 : 1) * i);
            if (law == 0 && row[1] == equal) lambda.assign(lambda.size(), 1 / sqrt(Quad(2)));
            const reference::ComparisonOracle<Quad> oracle(static_cast<Comparison>(law), lambda);
            table.Row({static_cast<double>(law), row[0], row[1], row[2], row[3], row[4]},
                      {Real(oracle.Upper(row[3], row[4]))});
        }
}

}  // namespace

int main(int argc, char** argv)
{
    if (argc != 2) {
        std::cerr << "usage: distribution_oracle <folder>\n";
        return 1;
    }
    const std::string folder = argv[1];
    WriteStudent(folder);
    WriteChiSquare(folder);
    WriteFisher(folder);
    WriteNormal(folder);
    WriteFunctions(folder);
    WriteHypergeometric(folder);
    WriteBinomial(folder);
    WriteComparisons(folder);
    return 0;
}
