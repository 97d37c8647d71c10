#include "support/test_printer.h"

#include <gtest/gtest.h>

#include <string>

#include "platform/handles.h"
#include "platform/platform.h"
#include "support/departures.h"

#include <winspool.h>

namespace velk::test {
namespace {

constexpr char kDescription[] =
    "*PPD-Adobe: \"4.3\"\r\n*FormatVersion: \"4.3\"\r\n*LanguageVersion: English\r\n*LanguageEncoding: WindowsANSI\r\n"
    "*PCFileName: \"VELK.PPD\"\r\n*Product: \"(Velk)\"\r\n*PSVersion: \"(3010) 1\"\r\n*Manufacturer: \"Velk\"\r\n"
    "*ModelName: \"Velk Test Printer\"\r\n*ShortNickName: \"Velk Test Printer\"\r\n*NickName: \"Velk Test Printer\"\r\n"
    "*LanguageLevel: \"3\"\r\n*ColorDevice: True\r\n*DefaultResolution: 300dpi\r\n"
    "*OpenUI *PageSize: PickOne\r\n*DefaultPageSize: A4\r\n*PageSize A4/A4: \"\"\r\n*CloseUI: *PageSize\r\n"
    "*DefaultImageableArea: A4\r\n*ImageableArea A4/A4: \"18 18 577 824\"\r\n"
    "*DefaultPaperDimension: A4\r\n*PaperDimension A4/A4: \"595 842\"\r\n";

// The spooler's name for the programs that its drivers serve.
std::string Environment() { return sizeof(void*) == 4 ? "Windows NT x86" : "Windows x64"; }

std::string DriverFolder() {
    char folder[MAX_PATH] = "";
    DWORD size = 0;
    std::string environment = Environment();
    EXPECT_TRUE(
        GetPrinterDriverDirectoryA(nullptr, environment.data(), 1, reinterpret_cast<BYTE*>(folder), MAX_PATH, &size));
    return std::string(folder) + "\\3";
}

void WriteDescription(const std::string& path) {
    const FileHandle file(CreateFileA(path.c_str(), GENERIC_WRITE, 0, nullptr, CREATE_ALWAYS, 0, nullptr));
    DWORD written = 0;
    EXPECT_TRUE(WriteFile(file.get(), kDescription, sizeof(kDescription) - 1, &written, nullptr)) << path;
}

void AddDriver(std::string description) {
    std::string name = TestPrinter::kName, environment = Environment(), driver = "wineps.drv", type = "RAW";
    DRIVER_INFO_3A info{};
    info.cVersion = 3;
    info.pName = name.data();
    info.pEnvironment = environment.data();
    info.pDriverPath = driver.data();
    info.pDataFile = description.data();
    info.pConfigFile = driver.data();
    info.pDefaultDataType = type.data();
    EXPECT_TRUE(
        AddPrinterDriverExA(nullptr, 3, reinterpret_cast<BYTE*>(&info), APD_COPY_NEW_FILES | APD_COPY_FROM_DIRECTORY))
        << GetLastError();
}

void AddPrinterWith(std::string driver) {
    std::string name = TestPrinter::kName, port = "FILE:", processor = "winprint", type = "RAW";
    PRINTER_INFO_2A info{};
    info.pPrinterName = name.data();
    info.pPortName = port.data();
    info.pDriverName = driver.data();
    info.pPrintProcessor = processor.data();
    info.pDatatype = type.data();
    const HANDLE printer = AddPrinterA(nullptr, 2, reinterpret_cast<BYTE*>(&info));
    EXPECT_TRUE(printer || GetLastError() == ERROR_PRINTER_ALREADY_EXISTS) << GetLastError();
    if (printer) ClosePrinter(printer);
}

}  // namespace

// Windows has a driver that needs no device; elsewhere one is made of a description.
TestPrinter::TestPrinter() {
    DWORD size = sizeof before_;
    GetDefaultPrinterA(before_, &size);
    if (WineVersion()) {
        const std::string folder = DriverFolder();
        CreateDirectoryA(folder.c_str(), nullptr);
        WriteDescription(folder + "\\velk.ppd");
        AddDriver(folder + "\\velk.ppd");
        AddPrinterWith(kName);
    } else {
        AddPrinterWith("Microsoft Print To PDF");
    }
    EXPECT_TRUE(SetDefaultPrinterA(kName)) << GetLastError();
}

TestPrinter::~TestPrinter() {
    std::string name = kName;
    PRINTER_DEFAULTSA access{nullptr, nullptr, PRINTER_ALL_ACCESS};
    HANDLE printer = nullptr;
    EXPECT_TRUE(OpenPrinterA(name.data(), &printer, &access)) << GetLastError();
    EXPECT_TRUE(DeletePrinter(printer)) << GetLastError();
    ClosePrinter(printer);
    if (!*before_ || !SetDefaultPrinterA(before_)) WriteProfileStringA("windows", "device", nullptr);
}

}  // namespace velk::test
