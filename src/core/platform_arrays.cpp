#include "core/platform.h"

#ifndef _WIN32

#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <cstring>

namespace {

// Sixteen bytes stand in front of a descriptor; its element type is the last 4-byte word of them.
constexpr std::size_t kHiddenBytes = 16;

std::uint32_t& TypeWordOf(SAFEARRAY* array)
{
    return *(reinterpret_cast<std::uint32_t*>(array) - 1);
}

std::uint32_t BytesOfType(VARTYPE type)
{
    switch (type) {
        case VT_UI1:
            return 1;
        case VT_I2:
        case VT_BOOL:
            return 2;
        case VT_I4:
        case VT_INT:
        case VT_R4:
            return 4;
        case VT_R8:
        case VT_BSTR:
            return 8;
        default:
            return 0;
    }
}

std::size_t CountOfElements(const SAFEARRAY* array)
{
    std::size_t count = 1;
    for (int d = 0; d < array->cDims; ++d) {
        count *= array->rgsabound[d].cElements;
    }
    return count;
}

bool HoldsStrings(const SAFEARRAY* array)
{
    return (array->fFeatures & FADF_BSTR) != 0;
}

void FreeStrings(SAFEARRAY* array, std::size_t first, std::size_t end)
{
    auto** strings = static_cast<BSTR*>(array->pvData);
    for (std::size_t i = first; i < end; ++i) {
        SysFreeString(strings[i]);
        strings[i] = nullptr;
    }
}

// An array of no elements has a data pointer too.
std::size_t BlockBytes(std::size_t elements, std::uint32_t elementBytes)
{
    return elements == 0 ? 1 : elements * elementBytes;
}

// Record of the dimension counted from 1, the leftmost first, or null.
const SAFEARRAYBOUND* BoundOf(const SAFEARRAY* array, unsigned dimension)
{
    if (array == nullptr || dimension < 1 || dimension > array->cDims) return nullptr;
    return &array->rgsabound[array->cDims - dimension];
}

}  // namespace

SAFEARRAY* SafeArrayCreate(VARTYPE type, unsigned dimensions, SAFEARRAYBOUND* bounds)
{
    const std::uint32_t elementBytes = BytesOfType(type);
    if (elementBytes == 0 || dimensions == 0 || dimensions > UINT16_MAX || bounds == nullptr) return nullptr;

    const std::size_t bytes =
        kHiddenBytes + offsetof(SAFEARRAY, rgsabound) + dimensions * sizeof(SAFEARRAYBOUND);
    auto* block = static_cast<char*>(std::calloc(1, bytes));
    if (block == nullptr) return nullptr;
    auto* array = reinterpret_cast<SAFEARRAY*>(block + kHiddenBytes);
    TypeWordOf(array) = type;
    array->cDims = static_cast<std::uint16_t>(dimensions);
    array->fFeatures = type == VT_BSTR ? FADF_HAVEVARTYPE | FADF_BSTR : FADF_HAVEVARTYPE;
    array->cbElements = elementBytes;
    for (unsigned d = 0; d < dimensions; ++d) {
        array->rgsabound[dimensions - 1 - d] = bounds[d];
    }
    array->pvData = std::calloc(1, BlockBytes(CountOfElements(array), elementBytes));
    if (array->pvData == nullptr) {
        std::free(block);
        return nullptr;
    }
    return array;
}

HRESULT SafeArrayDestroy(SAFEARRAY* array)
{
    if (array == nullptr) return S_OK;
    if (array->cLocks > 0) return DISP_E_ARRAYISLOCKED;
    if (HoldsStrings(array)) FreeStrings(array, 0, CountOfElements(array));
    std::free(array->pvData);
    std::free(reinterpret_cast<char*>(array) - kHiddenBytes);
    return S_OK;
}

HRESULT SafeArrayRedim(SAFEARRAY* array, SAFEARRAYBOUND* bound)
{
    if (array == nullptr || bound == nullptr) return E_INVALIDARG;
    if (array->cLocks > 0 || (array->fFeatures & FADF_FIXEDSIZE) != 0) return DISP_E_ARRAYISLOCKED;

    const SAFEARRAYBOUND old = array->rgsabound[0];
    const std::size_t oldCount = CountOfElements(array);
    array->rgsabound[0] = *bound;
    const std::size_t newCount = CountOfElements(array);
    if (HoldsStrings(array) && newCount < oldCount) FreeStrings(array, newCount, oldCount);
    void* data = std::realloc(array->pvData, BlockBytes(newCount, array->cbElements));
    if (data == nullptr) {
        array->rgsabound[0] = old;
        return E_OUTOFMEMORY;
    }
    array->pvData = data;
    if (newCount > oldCount) {
        std::memset(static_cast<char*>(data) + oldCount * array->cbElements,
                    0,
                    (newCount - oldCount) * array->cbElements);
    }
    return S_OK;
}

unsigned SafeArrayGetDim(SAFEARRAY* array)
{
    return array == nullptr ? 0U : array->cDims;
}

unsigned SafeArrayGetElemsize(SAFEARRAY* array)
{
    return array == nullptr ? 0U : array->cbElements;
}

HRESULT SafeArrayGetVartype(SAFEARRAY* array, VARTYPE* type)
{
    if (array == nullptr || type == nullptr) return E_INVALIDARG;
    *type = static_cast<VARTYPE>(TypeWordOf(array));
    return S_OK;
}

HRESULT SafeArrayGetLBound(SAFEARRAY* array, unsigned dimension, int32_t* bound)
{
    if (array == nullptr || bound == nullptr) return E_INVALIDARG;
    const SAFEARRAYBOUND* record = BoundOf(array, dimension);
    if (record == nullptr) return DISP_E_BADINDEX;
    *bound = record->lLbound;
    return S_OK;
}

HRESULT SafeArrayGetUBound(SAFEARRAY* array, unsigned dimension, int32_t* bound)
{
    if (array == nullptr || bound == nullptr) return E_INVALIDARG;
    const SAFEARRAYBOUND* record = BoundOf(array, dimension);
    if (record == nullptr) return DISP_E_BADINDEX;
    *bound = static_cast<int32_t>(record->lLbound + static_cast<std::int64_t>(record->cElements) - 1);
    return S_OK;
}

HRESULT SafeArrayLock(SAFEARRAY* array)
{
    if (array == nullptr) return E_INVALIDARG;
    array->cLocks += 1;
    return S_OK;
}

HRESULT SafeArrayUnlock(SAFEARRAY* array)
{
    if (array == nullptr) return E_INVALIDARG;
    if (array->cLocks == 0) return E_UNEXPECTED;
    array->cLocks -= 1;
    return S_OK;
}

HRESULT SafeArrayAccessData(SAFEARRAY* array, void** data)
{
    if (array == nullptr || data == nullptr) return E_INVALIDARG;
    *data = array->pvData;
    return SafeArrayLock(array);
}

HRESULT SafeArrayUnaccessData(SAFEARRAY* array)
{
    return SafeArrayUnlock(array);
}

HRESULT SafeArrayPtrOfIndex(SAFEARRAY* array, int32_t* indices, void** element)
{
    if (array == nullptr || indices == nullptr || element == nullptr) return E_INVALIDARG;
    std::size_t position = 0;
    for (int d = 0; d < array->cDims; ++d) {
        const SAFEARRAYBOUND& bound = array->rgsabound[d];
        const std::int64_t offset = std::int64_t{indices[array->cDims - 1 - d]} - bound.lLbound;
        if (offset < 0 || offset >= std::int64_t{bound.cElements}) return DISP_E_BADINDEX;
        position = position * bound.cElements + static_cast<std::size_t>(offset);
    }
    *element = static_cast<char*>(array->pvData) + position * array->cbElements;
    return S_OK;
}

HRESULT SafeArrayGetElement(SAFEARRAY* array, int32_t* indices, void* value)
{
    void* element = nullptr;
    const HRESULT found = SafeArrayPtrOfIndex(array, indices, &element);
    if (found != S_OK) return found;
    if (!HoldsStrings(array)) {
        std::memcpy(value, element, array->cbElements);
        return S_OK;
    }
    const BSTR held = *static_cast<BSTR*>(element);
    BSTR copy = held == nullptr ? nullptr : SysAllocStringLen(held, SysStringLen(held));
    if (held != nullptr && copy == nullptr) return E_OUTOFMEMORY;
    *static_cast<BSTR*>(value) = copy;
    return S_OK;
}

HRESULT SafeArrayPutElement(SAFEARRAY* array, int32_t* indices, void* value)
{
    void* element = nullptr;
    const HRESULT found = SafeArrayPtrOfIndex(array, indices, &element);
    if (found != S_OK) return found;
    if (!HoldsStrings(array)) {
        std::memcpy(element, value, array->cbElements);
        return S_OK;
    }
    auto* text = static_cast<BSTR>(value);
    BSTR copy = text == nullptr ? nullptr : SysAllocStringLen(text, SysStringLen(text));
    if (text != nullptr && copy == nullptr) return E_OUTOFMEMORY;
    SysFreeString(*static_cast<BSTR*>(element));
    *static_cast<BSTR*>(element) = copy;
    return S_OK;
}

#endif
