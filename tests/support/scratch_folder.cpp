#include "support/scratch_folder.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>

#include "platform/platform.h"

namespace velk::test {

namespace fs = std::filesystem;

// A program that was stopped leaves its folder behind, and process numbers come again: the first free name is taken.
ScratchFolder::ScratchFolder() {
    const std::wstring prefix = L"velk-" + std::to_wstring(GetCurrentProcessId()) + L"-";
    int number = 0;
    do {
        path_ = (fs::temp_directory_path() / (prefix + std::to_wstring(number++))).wstring();
    } while (!fs::create_directory(path_));
}

ScratchFolder::~ScratchFolder() {
    std::error_code ignored;
    fs::remove_all(path_, ignored);
}

std::wstring ScratchFolder::Write(std::wstring_view name, std::string_view bytes) const {
    EXPECT_TRUE(std::ofstream(fs::path(Path(name)), std::ios::binary) << bytes << std::flush);
    return Path(name);
}

std::wstring ScratchFolder::MakeFolder(std::wstring_view name) const {
    EXPECT_TRUE(fs::create_directory(Path(name)));
    return Path(name);
}

}  // namespace velk::test
