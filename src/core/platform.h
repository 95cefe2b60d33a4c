/**
 * The platform layer: the export macro, automation strings (BSTR) and automation arrays (SAFEARRAY).
 *
 * On Windows these are the system's own types and functions. Elsewhere the same declarations stand here, with
 * the same memory layout and the same meaning, and the shared library exports the functions, so that a client
 * can make strings and arrays for its calls. This header is C as well as C++; it and its two source files are
 * the only place that asks which platform it is.
 */
#ifndef KORVENRG_CORE_PLATFORM_H
#define KORVENRG_CORE_PLATFORM_H

#ifdef _WIN32

#ifndef NOMINMAX
#define NOMINMAX
#endif
#ifndef WIN32_LEAN_AND_MEAN
#define WIN32_LEAN_AND_MEAN
#endif
#include <windows.h>

#include <oleauto.h>

#ifdef KORVENRG_BUILDING
#define KORVENRG_API __declspec(dllexport)
#else
#define KORVENRG_API
#endif

#else

#include <stdint.h>
#include <wchar.h>

#define KORVENRG_API __attribute__((visibility("default")))

/** One character of platform text. 4 bytes here, 2 on Windows. */
typedef wchar_t OLECHAR;

/** Points at the first character; the byte length stands in the 4 bytes before it, a zero character after the
 * text. Null is the empty string. */
typedef OLECHAR* BSTR;

/** 16-bit boolean: -1 true, 0 false. */
typedef short VARIANT_BOOL;
#define VARIANT_TRUE ((VARIANT_BOOL)-1)
#define VARIANT_FALSE ((VARIANT_BOOL)0)

/** Index of an array element. */
typedef int32_t LONG;

/** Outcome of an array operation: 0 success, negative failure. */
typedef int32_t HRESULT;
#define S_OK ((HRESULT)0)
#define E_INVALIDARG ((HRESULT)0x80070057)
#define E_OUTOFMEMORY ((HRESULT)0x8007000E)
#define E_UNEXPECTED ((HRESULT)0x8000FFFF)
#define DISP_E_BADINDEX ((HRESULT)0x8002000B)
#define DISP_E_ARRAYISLOCKED ((HRESULT)0x8002000D)

/** Element type of an automation array. */
typedef uint16_t VARTYPE;
enum
{
    VT_I2 = 2,
    VT_I4 = 3,
    VT_R4 = 4,
    VT_R8 = 5,
    VT_BSTR = 8,
    VT_BOOL = 11,
    VT_UI1 = 17,
    VT_INT = 22
};

/** Feature bits of a descriptor that this layer sets or honours. */
enum
{
    FADF_FIXEDSIZE = 0x0010,
    FADF_HAVEVARTYPE = 0x0080,
    FADF_BSTR = 0x0100
};

/** Extent of one dimension. */
typedef struct SAFEARRAYBOUND
{
    uint32_t cElements; /**< number of elements */
    int32_t lLbound;    /**< index of the first one */
} SAFEARRAYBOUND;

/** Array descriptor. rgsabound has cDims records, the rightmost dimension first. */
typedef struct SAFEARRAY
{
    uint16_t cDims;
    uint16_t fFeatures;
    uint32_t cbElements;
    uint32_t cLocks;
    void* pvData;
    SAFEARRAYBOUND rgsabound[1];
} SAFEARRAY;

#ifdef __cplusplus
extern "C" {
#endif

/** New string with the text up to the first zero character; null for null. */
KORVENRG_API BSTR SysAllocString(const OLECHAR* text);
/** New string of `length` characters, copied from `text`, or all zero when `text` is null. Null when memory
 * is out. */
KORVENRG_API BSTR SysAllocStringLen(const OLECHAR* text, unsigned length);
/** Replaces *string by a new one; `text` may lie inside the old one. Gives 0 when memory is out, else 1. */
KORVENRG_API int SysReAllocStringLen(BSTR* string, const OLECHAR* text, unsigned length);
/** Frees a string; null is allowed. */
KORVENRG_API void SysFreeString(BSTR string);
/** Number of characters; 0 for null. */
KORVENRG_API unsigned SysStringLen(BSTR string);
/** Number of bytes; 0 for null. */
KORVENRG_API unsigned SysStringByteLen(BSTR string);

/** New zero-filled array; `bounds` runs from the leftmost dimension to the rightmost. Null for a type outside
 * the list above, for no dimensions, or when memory is out. */
KORVENRG_API SAFEARRAY* SafeArrayCreate(VARTYPE type, unsigned dimensions, SAFEARRAYBOUND* bounds);
/** Frees data and descriptor, strings included. A locked array stays and DISP_E_ARRAYISLOCKED comes back. */
KORVENRG_API HRESULT SafeArrayDestroy(SAFEARRAY* array);
/** Changes the rightmost dimension to *bound (count and base). Keeps the data, fills growth with zero, frees
 * strings that fall off. Refuses a locked or fixed-size array. */
KORVENRG_API HRESULT SafeArrayRedim(SAFEARRAY* array, SAFEARRAYBOUND* bound);
/** Number of dimensions; 0 for null. */
KORVENRG_API unsigned SafeArrayGetDim(SAFEARRAY* array);
/** Bytes of one element; 0 for null. */
KORVENRG_API unsigned SafeArrayGetElemsize(SAFEARRAY* array);
/** Element type. */
KORVENRG_API HRESULT SafeArrayGetVartype(SAFEARRAY* array, VARTYPE* type);
/** First index of a dimension, counted from 1, the leftmost first. */
KORVENRG_API HRESULT SafeArrayGetLBound(SAFEARRAY* array, unsigned dimension, LONG* bound);
/** Last index of a dimension, counted from 1, the leftmost first. */
KORVENRG_API HRESULT SafeArrayGetUBound(SAFEARRAY* array, unsigned dimension, LONG* bound);
/** Adds one to the lock count. */
KORVENRG_API HRESULT SafeArrayLock(SAFEARRAY* array);
/** Takes one from the lock count. */
KORVENRG_API HRESULT SafeArrayUnlock(SAFEARRAY* array);
/** Locks, and gives the first element's address. */
KORVENRG_API HRESULT SafeArrayAccessData(SAFEARRAY* array, void** data);
/** Unlocks after SafeArrayAccessData. */
KORVENRG_API HRESULT SafeArrayUnaccessData(SAFEARRAY* array);
/** Address of the element at `indices`, leftmost first. Elements stand with the leftmost index fastest. */
KORVENRG_API HRESULT SafeArrayPtrOfIndex(SAFEARRAY* array, LONG* indices, void** element);
/** Copies one element out; a string element comes as a new string. */
KORVENRG_API HRESULT SafeArrayGetElement(SAFEARRAY* array, LONG* indices, void* value);
/** Copies one element in; for strings `value` is the string itself, its text is copied and the old string
 * freed. */
KORVENRG_API HRESULT SafeArrayPutElement(SAFEARRAY* array, LONG* indices, void* value);

#ifdef __cplusplus
}
#endif

#endif

#endif
