#include "kernel/linalg/row_forms.h"

#include <gtest/gtest.h>

#include <random>

#include "support/tolerances.h"

namespace {

using namespace korvenrg::linalg;
using namespace korvenrg::test;

enum class Form
{
    kPositiveDefinite,
    kIndefinite,
    kUnsymmetric
};

// Around lanes, tiles and blocks; each kind of form against the plain double sum.
TEST(QuadraticForms, MatchThePlainSum)
{
    std::mt19937 generator(5);
    std::uniform_real_distribution<double> uniform(-2.0, 2.0);
    for (const Form kind : {Form::kPositiveDefinite, Form::kIndefinite, Form::kUnsymmetric}) {
        for (const int n : {1, 8, 33, 127, 128, 130, 300}) {
            for (const std::size_t q : {1U, 3U, 4U, 5U, 8U}) {
                std::vector<std::vector<double>> x(q, std::vector<double>(static_cast<std::size_t>(n)));
                std::vector<const double*> columns;
                std::vector<double> centres;
                for (auto& column : x) {
                    for (double& cell : column) {
                        cell = uniform(generator);
                    }
                    columns.push_back(column.data());
                    centres.push_back(uniform(generator));
                }
                std::vector<double> form(q * q);
                for (std::size_t i = 0; i < q; ++i) {
                    for (std::size_t j = 0; j <= i; ++j) {
                        form[j * q + i] = form[i * q + j] = uniform(generator);
                    }
                    form[i * q + i] = kind == Form::kIndefinite ? -3.0 : 20.0;
                }
                if (kind == Form::kUnsymmetric && q > 1) form[1] = 0.0;

                std::vector<double> forms(static_cast<std::size_t>(n));
                QuadraticForms(columns, n, centres.data(), form.data(), forms.data());
                for (std::size_t r = 0; r < static_cast<std::size_t>(n); ++r) {
                    double sum = 0.0;
                    double size = 0.0;
                    for (std::size_t a = 0; a < q; ++a) {
                        for (std::size_t b = 0; b < q; ++b) {
                            const double term =
                                (x[a][r] - centres[a]) * form[b * q + a] * (x[b][r] - centres[b]);
                            sum += term;
                            size += std::abs(term);
                        }
                    }
                    ASSERT_NEAR(forms[r], sum, kRoundoff * size) << n << " x " << q;
                }
            }
        }
    }
}

}  // namespace
