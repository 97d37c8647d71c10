// What a client can call, read from the type library: what is added to it later is covered without a change here.
#pragma once

#include <string>
#include <vector>

#include "platform/com_ptr.h"
#include "platform/platform.h"

namespace velk::test {

struct Taken {
    VARTYPE type;
    bool byReference;
};

struct Member {
    std::wstring name;
    DISPID id;
    WORD kind;  // DISPATCH_ flag
    ULONG_PTR slot;
    std::vector<Taken> parameters;
    std::vector<VARTYPE> words;  // what goes on the stack for each, and for the result

    bool IsLet() const noexcept { return (kind & (DISPATCH_PROPERTYPUT | DISPATCH_PROPERTYPUTREF)) != 0; }
};

struct Class {
    std::wstring name;
    CLSID clsid;
    HMODULE library;
    std::vector<Member> members;

    ComPtr<IDispatch> MakeObject() const;
};

inline std::string Narrow(const std::wstring& text) { return {text.begin(), text.end()}; }

// Of one of the built libraries, by its file's name.
const std::vector<Class>& ReadClasses(const wchar_t* library);
HMODULE LoadBuilt(const wchar_t* library);
bool CanUnload(HMODULE library);

inline constexpr VARTYPE kPointer = sizeof(void*) == 4 ? VT_UI4 : VT_UI8;

inline constexpr const wchar_t* kMain = L"VelkSprt.dll";
inline constexpr const wchar_t* kHooks = L"VelkSub.dll";

}  // namespace velk::test
