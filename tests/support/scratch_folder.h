#pragma once

#include <string>
#include <string_view>

namespace velk::test {

// A folder of its own for one test, gone with all it holds when the test ends.
class ScratchFolder {
  public:
    ScratchFolder();
    ScratchFolder(const ScratchFolder&) = delete;
    ScratchFolder& operator=(const ScratchFolder&) = delete;
    ~ScratchFolder();

    const std::wstring& path() const noexcept { return path_; }
    std::wstring Path(std::wstring_view name) const { return path_ + L"\\" + std::wstring(name); }
    // Writes a file and returns its path.
    std::wstring Write(std::wstring_view name, std::string_view bytes) const;
    std::wstring MakeFolder(std::wstring_view name) const;

  private:
    std::wstring path_;
};

}  // namespace velk::test
