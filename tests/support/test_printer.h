#pragma once

#include <gtest/gtest.h>

#include <string>

#include "platform/platform.h"
#include "platform/text.h"
#include "support/departures.h"
#include "support/scratch_folder.h"

#include <winspool.h>

namespace velk::test {

// A printer that prints to a file, and the default printer for as long as it lives.
class TestPrinter {
  public:
    // Windows has a driver that needs no device; elsewhere one is made of a description.
    TestPrinter() {
        DWORD size = sizeof before_;
        GetDefaultPrinterA(before_, &size);
        if (WineVersion()) AddDriver();
        std::string driver = WineVersion() ? name_ : "Microsoft Print To PDF", port = "FILE:", processor = "winprint";
        PRINTER_INFO_2A info{};
        info.pPrinterName = name_.data();
        info.pPortName = port.data();
        info.pDriverName = driver.data();
        info.pPrintProcessor = processor.data();
        info.pDatatype = type_.data();
        const HANDLE printer = AddPrinterA(nullptr, 2, reinterpret_cast<BYTE*>(&info));
        EXPECT_TRUE(printer || GetLastError() == ERROR_PRINTER_ALREADY_EXISTS) << GetLastError();
        if (printer) ClosePrinter(printer);
        EXPECT_TRUE(SetDefaultPrinterA(name_.c_str())) << GetLastError();
    }
    TestPrinter(const TestPrinter&) = delete;
    TestPrinter& operator=(const TestPrinter&) = delete;
    ~TestPrinter() {
        PRINTER_DEFAULTSA access{nullptr, nullptr, PRINTER_ALL_ACCESS};
        HANDLE printer = nullptr;
        EXPECT_TRUE(OpenPrinterA(name_.data(), &printer, &access)) << GetLastError();
        EXPECT_TRUE(DeletePrinter(printer)) << GetLastError();
        ClosePrinter(printer);
        if (!*before_ || !SetDefaultPrinterA(before_)) WriteProfileStringA("windows", "device", nullptr);
    }

  private:
    static constexpr char kDescription[] =
        "*PPD-Adobe: \"4.3\"\r\n*OpenUI *PageSize: PickOne\r\n*DefaultPageSize: A4\r\n*PageSize A4/A4: \"\"\r\n"
        "*CloseUI: *PageSize\r\n*DefaultPaperDimension: A4\r\n*PaperDimension A4/A4: \"595 842\"\r\n";

    void AddDriver() {
        // The spooler's name for the programs that its drivers serve.
        std::string environment = sizeof(void*) == 4 ? "Windows NT x86" : "Windows x64", driver = "wineps.drv";
        const ScratchFolder folder;
        std::string description = ToAnsi(folder.Write(L"velk.ppd", kDescription));
        DRIVER_INFO_3A info{};
        info.cVersion = 3;
        info.pName = name_.data();
        info.pEnvironment = environment.data();
        info.pDriverPath = info.pConfigFile = driver.data();
        info.pDataFile = description.data();
        info.pDefaultDataType = type_.data();
        EXPECT_TRUE(AddPrinterDriverExA(nullptr, 3, reinterpret_cast<BYTE*>(&info),
                                        APD_COPY_NEW_FILES | APD_COPY_FROM_DIRECTORY))
            << GetLastError();
    }

    std::string name_ = "Velk Test Printer", type_ = "RAW";  // the spooler takes texts that it could write to
    char before_[256] = "";                                  // the default printer until now
};

}  // namespace velk::test
