#include "deploy/doctor.h"

#include <cstring>
#include <fstream>
#include <iterator>

#include "platform/handles.h"

namespace velk::test {
namespace {

std::string Contents(const std::wstring& path) {
    std::ifstream file(path.c_str(), std::ios::binary);
    return {std::istreambuf_iterator<char>(file), {}};
}

}  // namespace

Answer RunDoctor(const std::wstring& arguments) {
    const ScratchFolder folder;
    const std::wstring path = folder.Path(L"output.txt");
    SECURITY_ATTRIBUTES inherited{sizeof(inherited), nullptr, TRUE};
    STARTUPINFOW startup{};
    startup.cb = sizeof(startup);
    startup.dwFlags = STARTF_USESTDHANDLES;
    PROCESS_INFORMATION process{};
    Answer answer;
    {
        const FileHandle output(
            CreateFileW(path.c_str(), GENERIC_WRITE, FILE_SHARE_READ, &inherited, CREATE_ALWAYS, 0, nullptr));
        startup.hStdOutput = startup.hStdError = output.get();
        std::wstring command = L"\"" + BuiltFile(L"velkdoctor.exe") + L"\" " + arguments;
        if (!CreateProcessW(nullptr, command.data(), nullptr, nullptr, TRUE, 0, nullptr, nullptr, &startup, &process))
            return answer;
        const FileHandle running(process.hProcess), thread(process.hThread);
        DWORD code = 0;
        if (WaitForSingleObject(running.get(), 60000) || !GetExitCodeProcess(running.get(), &code)) return answer;
        answer.code = static_cast<int>(code);
    }
    answer.text = Contents(path);
    return answer;
}

void SetText(HKEY root, const std::wstring& key, const wchar_t* name, const std::wstring& text, REGSAM view) {
    RegistryKey opened;
    const auto size = static_cast<DWORD>((text.size() + 1) * sizeof(wchar_t));
    ASSERT_EQ(0,
              RegCreateKeyExW(root, key.c_str(), 0, nullptr, 0, KEY_WRITE | view, nullptr, opened.Receive(), nullptr));
    ASSERT_EQ(0, RegSetValueExW(opened.get(), name, 0, REG_SZ, reinterpret_cast<const BYTE*>(text.c_str()), size));
}

std::wstring Altered(const ScratchFolder& folder, const std::wstring& name, const std::string& before, DWORD value) {
    std::string bytes = Contents(LibraryPath());
    const std::size_t found = bytes.find(before);
    EXPECT_NE(std::string::npos, found);
    std::memcpy(bytes.data() + found + before.size(), &value, sizeof value);
    return folder.Write(name, bytes);
}

}  // namespace velk::test
