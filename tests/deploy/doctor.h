// Runs velkdoctor as a person does, and fakes what it has to recognise.
#pragma once

#include <gtest/gtest.h>

#include <string>

#include "support/client.h"
#include "support/scratch_folder.h"

namespace velk::test {

struct Answer {
    int code = -1;
    std::string text;
};

Answer RunDoctor(const std::wstring& arguments, const std::string& typed = "");

std::string Contents(const std::wstring& path);

// A copy of a DLL in which one 32-bit number, found by the number before it, has another value.
std::wstring Altered(const ScratchFolder& folder, const std::wstring& name, const std::string& before, DWORD value);

// Each test starts and ends without the library in the registry.
class Deployed : public testing::Test {
  protected:
    void SetUp() override { Unregister(); }
    void TearDown() override { Unregister(); }

    static HRESULT Register() { return Export<decltype(&DllRegisterServer)>("DllRegisterServer")(); }
    static HRESULT Unregister() { return Export<decltype(&DllUnregisterServer)>("DllUnregisterServer")(); }
};

}  // namespace velk::test
