/* The three simplest doors, from C: an array of numbers and an array of texts. */
#include <korvenrg.h>

#include <stdio.h>

int main(void)
{
    double numbers[4] = {0.5, 1.25, -3.0, 10.25};
    const OLECHAR* words[5] = {L"1", L"0", L"1", L"Vexa", L"1"};
    BSTR texts[5];
    for (int i = 0; i < 5; ++i) {
        texts[i] = SysAllocString(words[i]);
    }

    const double sum = Cpp_SUM(numbers, 4);
    const int named = Cpp_Count(texts, 5);
    const int leadingOnes = Cpp_CheckBoolean(texts, 5);
    const int none = Cpp_Count(texts, 0);
    printf("sum %g, texts with the name %d, ones before the first other text %d\n", sum, named, leadingOnes);

    for (int i = 0; i < 5; ++i) {
        SysFreeString(texts[i]);
    }
    return sum == 9.0 && named == 1 && leadingOnes == 2 && none == -1 ? 0 : 1;
}
