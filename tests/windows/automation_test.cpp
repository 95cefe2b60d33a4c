/** The library as a script host meets it: its type library, the doors behind it, and the runtime's strings. */
#ifndef NOMINMAX
#define NOMINMAX
#endif
#include <gtest/gtest.h>
#include <windows.h>

#include <oleauto.h>

#include <array>
#include <cwchar>
#include <string>
#include <vector>

namespace {

struct ExpectedParameter
{
    const wchar_t* name;
    VARTYPE type;
    int indirections;
    unsigned flags;
};

struct ExpectedDoor
{
    const wchar_t* name;
    const char* symbol;
    VARTYPE result;
    std::vector<ExpectedParameter> parameters;
};

// What korvenrg.h says.
const std::vector<ExpectedDoor> kDoors = {
#include "expected_doors.inc"
};

constexpr unsigned kMostNames = 80;

std::wstring Taken(BSTR string)
{
    std::wstring text(string, SysStringLen(string));
    SysFreeString(string);
    return text;
}

class TypeLibrary : public testing::Test
{
  protected:
    void SetUp() override
    {
        module_ = LoadLibraryW(L"korvenrg.dll");
        ASSERT_NE(module_, nullptr) << "error " << GetLastError();
        std::array<wchar_t, MAX_PATH> path{};
        GetModuleFileNameW(module_, path.data(), MAX_PATH);
        ASSERT_EQ(LoadTypeLibEx(path.data(), REGKIND_NONE, &library_), S_OK);
        ASSERT_EQ(library_->GetTypeInfoCount(), 1U);
        ASSERT_EQ(library_->GetTypeInfo(0, &info_), S_OK);
        ASSERT_EQ(info_->GetTypeAttr(&attributes_), S_OK);
    }

    void TearDown() override
    {
        if (attributes_ != nullptr) info_->ReleaseTypeAttr(attributes_);
        if (info_ != nullptr) info_->Release();
        if (library_ != nullptr) library_->Release();
    }

    // The door's address, as the type library resolves it.
    void* AddressOf(const wchar_t* name)
    {
        auto* spelled = const_cast<wchar_t*>(name);
        MEMBERID member = MEMBERID_NIL;
        void* address = nullptr;
        EXPECT_EQ(info_->GetIDsOfNames(&spelled, 1, &member), S_OK);
        EXPECT_EQ(info_->AddressOfMember(member, INVOKE_FUNC, &address), S_OK);
        return address;
    }

    // Calls a door through the runtime's own dispatch.
    VARIANT Call(const wchar_t* name, VARTYPE result, std::vector<VARIANTARG> arguments)
    {
        std::vector<VARTYPE> types;
        std::vector<VARIANTARG*> pointers;
        for (VARIANTARG& argument : arguments) {
            types.push_back(argument.vt);
            pointers.push_back(&argument);
        }
        VARIANT value;
        VariantInit(&value);
        const auto address = reinterpret_cast<ULONG_PTR>(AddressOf(name));
        EXPECT_EQ(DispCallFunc(nullptr,
                               address,
                               CC_STDCALL,
                               result,
                               static_cast<UINT>(arguments.size()),
                               types.data(),
                               pointers.data(),
                               &value),
                  S_OK);
        return value;
    }

    HMODULE module_ = nullptr;
    ITypeLib* library_ = nullptr;
    ITypeInfo* info_ = nullptr;
    TYPEATTR* attributes_ = nullptr;
};

VARIANTARG Number(int value)
{
    VARIANTARG argument;
    VariantInit(&argument);
    argument.vt = VT_I4;
    argument.lVal = value;
    return argument;
}

VARIANTARG Numbers(double* values)
{
    VARIANTARG argument;
    VariantInit(&argument);
    argument.vt = VT_BYREF | VT_R8;
    argument.pdblVal = values;
    return argument;
}

VARIANTARG Integers(int* values)
{
    VARIANTARG argument;
    VariantInit(&argument);
    argument.vt = VT_BYREF | VT_INT;
    argument.pintVal = values;
    return argument;
}

VARIANTARG Texts(BSTR* values)
{
    VARIANTARG argument;
    VariantInit(&argument);
    argument.vt = VT_BYREF | VT_BSTR;
    argument.pbstrVal = values;
    return argument;
}

TEST_F(TypeLibrary, IsNamedAfterTheModule)
{
    BSTR name = nullptr;
    ASSERT_EQ(library_->GetDocumentation(-1, &name, nullptr, nullptr, nullptr), S_OK);
    EXPECT_EQ(Taken(name), L"KORVENRG");
    EXPECT_EQ(attributes_->typekind, TKIND_MODULE);
}

// Every function: its name, entry, result, and each parameter's name, type and flags.
TEST_F(TypeLibrary, TellsWhatTheHeaderTells)
{
    ASSERT_EQ(attributes_->cFuncs, kDoors.size());
    for (UINT f = 0; f < kDoors.size(); ++f) {
        const ExpectedDoor& door = kDoors[f];
        SCOPED_TRACE(door.symbol);
        FUNCDESC* function = nullptr;
        ASSERT_EQ(info_->GetFuncDesc(f, &function), S_OK);
        EXPECT_EQ(function->elemdescFunc.tdesc.vt, door.result);
        EXPECT_EQ(function->callconv, CC_STDCALL);
        ASSERT_EQ(static_cast<std::size_t>(function->cParams), door.parameters.size());

        std::array<BSTR, kMostNames> names{};
        UINT count = 0;
        ASSERT_EQ(info_->GetNames(function->memid, names.data(), kMostNames, &count), S_OK);
        ASSERT_EQ(count, door.parameters.size() + 1);
        EXPECT_EQ(Taken(names[0]), door.name);
        for (std::size_t k = 0; k < door.parameters.size(); ++k) {
            const ExpectedParameter& parameter = door.parameters[k];
            EXPECT_EQ(Taken(names[k + 1]), parameter.name);
            const ELEMDESC& element = function->lprgelemdescParam[k];
            const TYPEDESC* type = &element.tdesc;
            for (int star = 0; star < parameter.indirections; ++star) {
                ASSERT_EQ(type->vt, VT_PTR);
                type = type->lptdesc;
            }
            EXPECT_EQ(type->vt, parameter.type) << "parameter " << k;
            EXPECT_EQ(element.paramdesc.wParamFlags, parameter.flags) << "parameter " << k;
        }

        BSTR dll = nullptr;
        BSTR entry = nullptr;
        WORD ordinal = 0;
        EXPECT_EQ(info_->GetDllEntry(function->memid, INVOKE_FUNC, &dll, &entry, &ordinal), S_OK);
        EXPECT_EQ(Taken(dll), L"korvenrg.dll");
        EXPECT_EQ(Taken(entry), door.name);
        const FARPROC exported = GetProcAddress(module_, door.symbol);
        EXPECT_NE(exported, nullptr);
        EXPECT_EQ(AddressOf(door.name), reinterpret_cast<void*>(exported));
        info_->ReleaseFuncDesc(function);
    }
}

// Stated by hand, so that a fault of the generator cannot hide behind its own table.
TEST_F(TypeLibrary, DescribesTheSumAsWritten)
{
    const ExpectedDoor& sum = kDoors.front();
    EXPECT_STREQ(sum.name, L"Cpp_SUM");
    EXPECT_EQ(sum.result, VT_R8);
    ASSERT_EQ(sum.parameters.size(), 2U);
    EXPECT_STREQ(sum.parameters[0].name, L"A");
    EXPECT_EQ(sum.parameters[0].type, VT_R8);
    EXPECT_EQ(sum.parameters[0].indirections, 1);
    EXPECT_EQ(sum.parameters[0].flags, static_cast<unsigned>(PARAMFLAG_FIN));
    EXPECT_EQ(sum.parameters[1].type, VT_I4);
}

TEST_F(TypeLibrary, DoorsOfEachResultTypeAnswerTheDispatch)
{
    double values[] = {1.5, 2.5, -1.0};
    const VARIANT sum = Call(L"Cpp_SUM", VT_R8, {Numbers(values), Number(3)});
    EXPECT_EQ(sum.vt, VT_R8);
    EXPECT_EQ(sum.dblVal, 3.0);

    BSTR texts[] = {SysAllocString(L"Vexa"), nullptr, SysAllocString(L"Vexa ")};
    const VARIANT count = Call(L"Cpp_Count", VT_I4, {Texts(texts), Number(3)});
    EXPECT_EQ(count.lVal, 1);
    for (BSTR text : texts) {
        SysFreeString(text);
    }

    int groups[] = {1, 1};
    double frequencies[] = {2.0, 0.0};
    int cells = 2;
    const VARIANT partly =
        Call(L"Cpp_CheckInteractions", VT_BOOL, {Integers(groups), Numbers(frequencies), Integers(&cells)});
    EXPECT_EQ(partly.boolVal, VARIANT_TRUE);

    double table[5] = {};
    double centred[3] = {};
    Call(L"Cpp_NoFixedComput",
         VT_EMPTY,
         {Number(3), Number(1), Numbers(values), Numbers(table), Numbers(centred)});
    EXPECT_EQ(table[0], 2.0);
    EXPECT_EQ(centred[1], 1.5);
}

}  // namespace
