// Reading and writing settings through the DLL, as a client calls it, against the bare platform calls that it stands
// for. Wine answers registry calls from another process, so those lines show mostly the way there and back.
#include <cstdio>
#include <string>

#include "platform/text.h"
#include "ratio.h"
#include "support/client.h"
#include "support/scratch_folder.h"

namespace {

using namespace velk;

constexpr double kMostTimes = 1.2;
constexpr DWORD kAccess = 0x3F;
const char* const kValues[] = {"1250 kg", "1251 kg"};  // in turns: the platform does not write what is there already

bool CompareCost(const char* name, auto&& ours, auto&& bare) {
    return bench::Compare(name, 1 / kMostTimes, ours, bare);
}

bool MeasureIniFile() {
    const test::ScratchFolder folder;
    std::string text = "[Window]\r\nLeft=10\r\n[Scale]\r\n";
    for (int i = 0; i < 100; ++i) text += "Cell" + std::to_string(i) + "=1250 kg\r\n";
    const std::wstring path = folder.Write(L"bench.ini", text);
    const std::string file = ToAnsi(path);
    const auto ini = test::CreateObject<_CIniFile>(__uuidof(::CIniFile));
    const Bstr nameHeld(path), sectionHeld(L"Scale"), keyHeld(L"Cell50");
    const Bstr valuesHeld[] = {Bstr(L"1250 kg"), Bstr(L"1251 kg")};
    BSTR name = nameHeld.get(), section = sectionHeld.get(), key = keyHeld.get();
    ini->Init(&name);

    const auto read = [&] {
        Bstr value;
        ini->GetStringValue(&section, &key, value.Receive());
    };
    const auto readBare = [&] {
        WIN32_FIND_DATAA found;
        FindClose(FindFirstFileA(file.c_str(), &found));
        char value[255];
        GetPrivateProfileStringA("Scale", "Cell50", "", value, sizeof value, file.c_str());
    };
    int turn = 0;
    const auto write = [&] {
        BSTR value = valuesHeld[++turn % 2].get();
        ini->SaveStringValue(&section, &key, &value);
    };
    const auto writeBare = [&] {
        WritePrivateProfileStringA("Scale", "Cell50", kValues[++turn % 2], file.c_str());
        WritePrivateProfileStringA(nullptr, nullptr, nullptr, file.c_str());
    };
    const auto list = [&] {
        SAFEARRAY* keys = nullptr;
        LONG count = 0;
        ini->EnumerateAllKeys(&section, &keys, &count);
        SafeArrayDestroy(keys);
    };
    const auto listBare = [&] {
        char keys[8192];
        WIN32_FIND_DATAA found;
        FindClose(FindFirstFileA(file.c_str(), &found));
        GetPrivateProfileStringA("Scale", nullptr, "", keys, sizeof keys, file.c_str());
    };
    bool met = CompareCost("INI file, read", read, readBare);
    met &= CompareCost("INI file, keys of 100", list, listBare);
    return CompareCost("INI file, write", write, writeBare) && met;
}

bool MeasureRegistry() {
    const char* const path = "SOFTWARE\\VelkBench\\Scale\\Settings";
    const auto settings = test::CreateObject<_CProgramSettings>(__uuidof(::CProgramSettings));
    const Bstr baseHeld(L"VelkBench"), programHeld(L"Scale"), entryHeld(L"Load"), defaultHeld(L"");
    const Bstr valuesHeld[] = {Bstr(L"1250 kg"), Bstr(L"1251 kg")};
    BSTR base = baseHeld.get(), program = programHeld.get(), entry = entryHeld.get(), other = defaultHeld.get();
    EnumProgramSettingsRoot root = psrHKEY_CURRENT_USER;
    settings->put_RootKey(&root);
    settings->put_RegBase(&base);
    settings->put_Program(&program);

    int turn = 0;
    const auto write = [&] {
        BSTR value = valuesHeld[++turn % 2].get();
        settings->WriteEntry(&entry, &value);
    };
    const auto writeBare = [&] {
        HKEY key = nullptr;
        RegCreateKeyExA(HKEY_CURRENT_USER, path, 0, nullptr, 0, kAccess, nullptr, &key, nullptr);
        RegSetValueExA(key, "Load", 0, REG_SZ, reinterpret_cast<const BYTE*>(kValues[++turn % 2]), 8);
        RegCloseKey(key);
    };
    const bool met = CompareCost("registry, write", write, writeBare);
    const auto read = [&] {
        Bstr value;
        settings->ReadEntry(&entry, &other, value.Receive());
    };
    const auto readBare = [&] {
        HKEY key = nullptr;
        DWORD type = 0, size = 0;
        char value[8];
        RegOpenKeyExA(HKEY_CURRENT_USER, path, 0, kAccess, &key);
        RegQueryValueExA(key, "Load", nullptr, &type, nullptr, &size);
        RegQueryValueExA(key, "Load", nullptr, &type, reinterpret_cast<BYTE*>(value), &size);
        RegCloseKey(key);
    };
    const bool metToo = CompareCost("registry, read", read, readBare);
    RegDeleteTreeA(HKEY_CURRENT_USER, "SOFTWARE\\VelkBench");
    return met && metToo;
}

}  // namespace

int main() {
    CoInitializeEx(nullptr, COINIT_APARTMENTTHREADED);
    const bool met = MeasureIniFile();
    return MeasureRegistry() && met ? 0 : 1;
}
