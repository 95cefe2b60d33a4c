#include "kernel/datasets/owned_columns.h"

#include <cstddef>

namespace korvenrg::datasets {

template <typename T>
void GrowVector(std::unique_ptr<matrix<T>>& vector, int count)
{
    if (vector == nullptr || vector->safeArray == nullptr || vector->rows >= count) return;
    SAFEARRAY* array = vector->safeArray;
    vector.reset();
    SAFEARRAYBOUND bound = array->rgsabound[0];
    bound.cElements = static_cast<decltype(bound.cElements)>(count);
    SafeArrayRedim(array, &bound);
    vector = std::make_unique<matrix<T>>(array);
}

template void GrowVector(std::unique_ptr<matrix<double>>&, int);
template void GrowVector(std::unique_ptr<matrix<int>>&, int);
template void GrowVector(std::unique_ptr<matrix<short>>&, int);
template void GrowVector(std::unique_ptr<matrix<std::wstring>>&, int);

}  // namespace korvenrg::datasets

template <typename T>
cST_MVect<T>::cST_MVect(ST_MVect* source)
    : columns(source->columns),
      secondDimension(source->secondDimension),
      thirdCount(source->thirdCount),
      rows(source->rows),
      record(source),
      table(korvenrg::datasets::ArrayOf<int>(source->table)),
      labels(korvenrg::datasets::ArrayOf<std::wstring>(source->labels))
{
    for (int j = 0; j < columns && source->vectors != nullptr; ++j) {
        vectors.push_back(std::make_unique<matrix<T>>(korvenrg::datasets::ArrayOf<T>(source->vectors[j])));
    }
}

template <typename T>
matrix<T>* cST_MVect<T>::Column(int j) const
{
    if (j < 1 || static_cast<std::size_t>(j) > vectors.size()) return nullptr;
    return vectors[static_cast<std::size_t>(j - 1)].get();
}

template <typename T>
void cST_MVect<T>::SetRows(int count)
{
    rows = count;
    record->rows = count;
}

template class cST_MVect<double>;
template class cST_MVect<short>;
template class cST_MVect<std::wstring>;
