// What a client can call, read from the type library: what is added to it later is covered without a change here.
#pragma once

#include <string>
#include <vector>

#include "frame/platform.h"

namespace velk::test {

struct Taken {
    VARTYPE type;
    bool byReference;
};

struct Member {
    std::wstring name;
    DISPID id;
    WORD kind;  // DISPATCH_ flag
    std::vector<Taken> parameters;

    bool IsLet() const noexcept { return (kind & (DISPATCH_PROPERTYPUT | DISPATCH_PROPERTYPUTREF)) != 0; }
};

struct Class {
    std::wstring name;
    CLSID clsid;
    std::vector<Member> members;
};

std::vector<Class> ReadClasses();

}  // namespace velk::test
