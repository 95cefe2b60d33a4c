#include "exports/korvenrg.h"
#include "exports/marshalling.h"
#include "kernel/linalg/vector_moments.h"
#include "kernel/text/text_conversion.h"

using korvenrg::exports::adopted;
using korvenrg::exports::copied;

namespace {

constexpr char kWord[] = "Vexa";
constexpr int kEmptyArray = -1;

}  // namespace

double Cpp_SUM(double* A, int size)
{
    return V_Sum2<double>(adopted(A, size, 1), size);
}

int Cpp_Count(BSTR* A, int size)
{
    if (size == 0) return kEmptyArray;
    return korvenrg::text::CountNarrowed(copied(A, size, 1), size, kWord);
}

int Cpp_CheckBoolean(BSTR* A, int size)
{
    return korvenrg::text::CountLeadingOnes(copied(A, size, 1), size);
}
