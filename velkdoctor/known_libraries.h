// What this program knows of the libraries: their type libraries are embedded in it, so it needs none of them at hand.
#pragma once

#include <string>
#include <vector>

#include "tools/typelib/library_file.h"

namespace velk {

struct KnownClass {
    std::wstring name;  // "CStack"
    std::wstring progId;
    CLSID clsid;
    std::vector<IID> interfaces;  // that of its members, and that of its events if it has any
};

struct KnownLibrary {
    std::wstring name;  // "VelkSupport"
    std::wstring file;  // "VelkSprt.dll"
    Version version;
    GUID guid;  // of the type library
    WORD major, minor;
    std::vector<KnownClass> classes;
};

std::vector<KnownLibrary> KnownLibraries();

// The folder of this program, with its final backslash.
std::wstring OwnFolder();

}  // namespace velk
