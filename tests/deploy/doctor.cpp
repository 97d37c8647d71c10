#include "deploy/doctor.h"

#include <cstring>
#include <fstream>
#include <iterator>

namespace velk::test {

std::string Contents(const std::wstring& path) {
    std::ifstream file(path.c_str(), std::ios::binary);
    return {std::istreambuf_iterator<char>(file), {}};
}

Answer RunDoctor(const std::wstring& arguments, const std::string& typed) {
    const ScratchFolder folder;
    const std::wstring output = folder.Path(L"output.txt");
    const std::wstring command = L"\"\"" + BuiltFile(L"velkdoctor.exe") + L"\" " + arguments + L" <\"" +
                                 folder.Write(L"input.txt", typed) + L"\" >\"" + output + L"\"\"";
    const int code = _wsystem(command.c_str());
    return {code, Contents(output)};
}

std::wstring Altered(const ScratchFolder& folder, const std::wstring& name, const std::string& before, DWORD value) {
    std::string bytes = Contents(LibraryPath());
    const std::size_t found = bytes.find(before);
    EXPECT_NE(std::string::npos, found);
    std::memcpy(bytes.data() + found + before.size(), &value, sizeof value);
    return folder.Write(name, bytes);
}

}  // namespace velk::test
