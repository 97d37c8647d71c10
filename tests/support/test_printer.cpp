#include "support/test_printer.h"

#include <gtest/gtest.h>

#include <fstream>
#include <string>

#include "platform/platform.h"
#include "support/departures.h"

#include <winspool.h>

namespace velk::test {
namespace {

constexpr char kDescription[] =
    "*PPD-Adobe: \"4.3\"\r\n*NickName: \"Velk Test Printer\"\r\n*ColorDevice: True\r\n*DefaultResolution: 300dpi\r\n"
    "*OpenUI *PageSize: PickOne\r\n*DefaultPageSize: A4\r\n*PageSize A4/A4: \"\"\r\n*CloseUI: *PageSize\r\n"
    "*DefaultImageableArea: A4\r\n*ImageableArea A4/A4: \"18 18 577 824\"\r\n"
    "*DefaultPaperDimension: A4\r\n*PaperDimension A4/A4: \"595 842\"\r\n";

// The spooler takes texts that it could write to.
std::string name = TestPrinter::kName, port = "FILE:", processor = "winprint", type = "RAW", driver = "wineps.drv";
std::string environment =
    sizeof(void*) == 4 ? "Windows NT x86" : "Windows x64";  // of the programs that a driver serves

void AddDriver() {
    char folder[MAX_PATH] = "";
    DWORD size = 0;
    EXPECT_TRUE(
        GetPrinterDriverDirectoryA(nullptr, environment.data(), 1, reinterpret_cast<BYTE*>(folder), MAX_PATH, &size));
    std::string description = std::string(folder) + "\\3\\velk.ppd";
    CreateDirectoryA((std::string(folder) + "\\3").c_str(), nullptr);
    EXPECT_TRUE(std::ofstream(description, std::ios::binary) << kDescription << std::flush) << description;
    DRIVER_INFO_3A info{};
    info.cVersion = 3;
    info.pName = name.data();
    info.pEnvironment = environment.data();
    info.pDriverPath = info.pConfigFile = driver.data();
    info.pDataFile = description.data();
    info.pDefaultDataType = type.data();
    EXPECT_TRUE(
        AddPrinterDriverExA(nullptr, 3, reinterpret_cast<BYTE*>(&info), APD_COPY_NEW_FILES | APD_COPY_FROM_DIRECTORY))
        << GetLastError();
}

}  // namespace

// Windows has a driver that needs no device; elsewhere one is made of a description.
TestPrinter::TestPrinter() {
    DWORD size = sizeof before_;
    GetDefaultPrinterA(before_, &size);
    if (WineVersion()) AddDriver();
    std::string served = WineVersion() ? name : "Microsoft Print To PDF";
    PRINTER_INFO_2A info{};
    info.pPrinterName = name.data();
    info.pPortName = port.data();
    info.pDriverName = served.data();
    info.pPrintProcessor = processor.data();
    info.pDatatype = type.data();
    const HANDLE printer = AddPrinterA(nullptr, 2, reinterpret_cast<BYTE*>(&info));
    EXPECT_TRUE(printer || GetLastError() == ERROR_PRINTER_ALREADY_EXISTS) << GetLastError();
    if (printer) ClosePrinter(printer);
    EXPECT_TRUE(SetDefaultPrinterA(kName)) << GetLastError();
}

TestPrinter::~TestPrinter() {
    PRINTER_DEFAULTSA access{nullptr, nullptr, PRINTER_ALL_ACCESS};
    HANDLE printer = nullptr;
    EXPECT_TRUE(OpenPrinterA(name.data(), &printer, &access)) << GetLastError();
    EXPECT_TRUE(DeletePrinter(printer)) << GetLastError();
    ClosePrinter(printer);
    if (!*before_ || !SetDefaultPrinterA(before_)) WriteProfileStringA("windows", "device", nullptr);
}

}  // namespace velk::test
