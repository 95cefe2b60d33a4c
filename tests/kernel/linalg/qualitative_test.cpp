#include "kernel/linalg/qualitative.h"

#include <gtest/gtest.h>

#include <vector>

#include "core/limits.h"

namespace {

TEST(Qualitative, TypesThatHoldAQualitativeVariable)
{
    const int quali[] = {0, -1, 0, -1, -1};
    const int pure[] = {0, -1, 0, -1, 0};
    for (int type = 1; type <= 5; ++type) {
        EXPECT_EQ(isQuali(type), quali[type - 1]) << type;
        EXPECT_EQ(isQualiPure(type), pure[type - 1]) << type;
    }
}

struct Coding
{
    int constraint;
    std::vector<std::vector<double>> rows;  // a, c, b, unknown; then the second variable's u
};

// Categories are sorted by character codes: capitals first.
TEST(Qualitative, CategoriesFrequenciesAndCodes)
{
    matrix<std::wstring> texts(4, 2);
    const wchar_t* cells[] = {L"b", L"B", L"a", L"b", L"u", L"u", L"u", L"v"};
    for (int k = 1; k <= 8; ++k) {
        texts.vbset(k, cells[k - 1]);
    }
    double w[] = {1.5, 2, 0, 4};
    matrix<double> weights(4, 1, w, true);
    for (const short weightedOnly : {korvenrg::kFalse, korvenrg::kTrue}) {
        matrix<std::wstring>* labels = nullptr;
        matrix<double>* freq = nullptr;
        matrix<int>* counts = nullptr;
        matrix<std::wstring>* allLabels = nullptr;
        matrix<double>* allFreq = nullptr;
        matrix<int>* codes = nullptr;
        int maxCat = 0;
        M_InfoQuali(&texts, 4, 2, labels, freq, counts, allLabels, allFreq, &weights, &maxCat, weightedOnly);
        const int first = weightedOnly == 0 ? 3 : 2;
        EXPECT_EQ(maxCat, first);
        EXPECT_EQ(counts->vbget(1), first);
        EXPECT_EQ(counts->vbget(2), 2);
        EXPECT_EQ(labels->vbget(1, 1), L"B");
        EXPECT_EQ(freq->vbget(1, first), 5.5);
        EXPECT_EQ(labels->vbget(2, 3), L"");
        ASSERT_EQ(allLabels->rows, first + 2);
        EXPECT_EQ(allLabels->vbget(first + 2), L"v");
        EXPECT_EQ(allFreq->vbget(first + 1), 3.5);
        M_ReplaceCatByCodes(&texts, 4, 2, labels, counts, codes);
        EXPECT_EQ(codes->vbget(1, 1), first);
        EXPECT_EQ(codes->vbget(3, 1), weightedOnly == 0 ? 2 : 0) << "a category that is not there";
        EXPECT_EQ(codes->vbget(4, 2), 2);
        delete labels;
        delete freq;
        delete counts;
        delete allLabels;
        delete allFreq;
        delete codes;
    }
}

TEST(Qualitative, DisjunctiveTableUnderEachConstraint)
{
    const Coding codings[] = {
        {0, {{1, 0, 0, 1, 0}, {0, 0, 1, 0, 1}, {0, 1, 0, 1, 0}, {0, 0, 0, 0, 1}}},
        {1, {{1, 0, 0, 1, 0}, {0, 0, 1, 0, 1}, {0, 1, 0, 1, 0}, {0, 0, 0, 0, 1}}},
        {2, {{1, 0, 0, 1, 0}, {-1, -1, 1, -1, 1}, {0, 1, 0, 1, 0}, {0, 0, 0, -1, 1}}},
        {3, {{1, 0, 0, 1, 0}, {-0.5, -0.25, 1, -2, 1}, {0, 1, 0, 1, 0}, {0, 0, 0, -2, 1}}},
        {7, {{1, 0, 0, 1, 0}, {0, 0, 1, 0, 1}, {0, 1, 0, 1, 0}, {0, 0, 0, 0, 1}}},
    };
    matrix<std::wstring> texts(4, 2);
    const wchar_t* cells[] = {L"a", L"c", L"b", L"zz", L"u", L"v", L"u", L"v"};
    for (int k = 1; k <= 8; ++k) {
        texts.vbset(k, cells[k - 1]);
    }
    matrix<std::wstring> categories(2, 3);
    categories.vbset(1, 1, L"a");
    categories.vbset(1, 2, L"b");
    categories.vbset(1, 3, L"c");
    categories.vbset(2, 1, L"u");
    categories.vbset(2, 2, L"v");
    matrix<double> frequencies(2, 3);
    frequencies.vbset(1, 1, 4.0);
    frequencies.vbset(1, 2, 2.0);
    frequencies.vbset(1, 3, 8.0);
    frequencies.vbset(2, 1, 6.0);
    frequencies.vbset(2, 2, 3.0);
    matrix<int> counts(2, 1);
    counts.vbset(1, 3);
    counts.vbset(2, 2);
    for (const Coding& coding : codings) {
        matrix<double> out(4, 5, 99.0);
        BuildDisjunctiveTable(texts, 4, 2, 3, counts, categories, frequencies, out, coding.constraint, 0);
        for (int r = 1; r <= 4; ++r) {
            for (int j = 1; j <= 5; ++j) {
                EXPECT_EQ(out.vbget(r, j),
                          coding.rows[static_cast<std::size_t>(r - 1)][static_cast<std::size_t>(j - 1)])
                    << "constraint " << coding.constraint << " row " << r << " column " << j;
            }
        }
    }
    matrix<double> marked(4, 5);
    BuildDisjunctiveTable(texts, 4, 2, 3, counts, categories, frequencies, marked, 0, 1);
    EXPECT_EQ(marked.vbget(4, 3), korvenrg::kMissing);
    EXPECT_EQ(marked.vbget(4, 5), 1.0);
    EXPECT_EQ(marked.vbget(3, 3), 0.0);
}

}  // namespace
