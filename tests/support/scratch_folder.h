#pragma once

#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <string>
#include <string_view>

#include "platform/platform.h"

namespace velk::test {

// A folder of its own for one test, gone with all it holds when the test ends. A program that was stopped leaves its
// folder behind, and process numbers come again: the first free name is taken.
class ScratchFolder {
  public:
    ScratchFolder() {
        const std::wstring prefix = L"velk-" + std::to_wstring(GetCurrentProcessId()) + L"-";
        int number = 0;
        do {
            path_ = (std::filesystem::temp_directory_path() / (prefix + std::to_wstring(number++))).wstring();
        } while (!std::filesystem::create_directory(path_));
    }
    ScratchFolder(const ScratchFolder&) = delete;
    ScratchFolder& operator=(const ScratchFolder&) = delete;
    ~ScratchFolder() {
        std::error_code ignored;
        std::filesystem::remove_all(path_, ignored);
    }

    const std::wstring& path() const noexcept { return path_; }
    std::wstring Path(std::wstring_view name) const { return path_ + L"\\" + std::wstring(name); }
    // Writes a file and returns its path.
    std::wstring Write(std::wstring_view name, std::string_view bytes) const {
        EXPECT_TRUE(std::ofstream(std::filesystem::path(Path(name)), std::ios::binary) << bytes << std::flush);
        return Path(name);
    }

  private:
    std::wstring path_;
};

}  // namespace velk::test
