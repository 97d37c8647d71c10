#pragma once

#include <gtest/gtest.h>

#include <string>

#include "platform/platform.h"
#include "platform/text.h"
#include "support/departures.h"
#include "support/scratch_folder.h"

#include <winspool.h>

namespace velk::test {

// A printer that prints to a file, where there is none, and the default one for as long as it lives.
class TestPrinter {
  public:
    TestPrinter() {
        char before[256];
        DWORD size = sizeof before;
        if (GetDefaultPrinterA(before, &size)) return;
        // Windows has a driver that needs no device; elsewhere one is made of a description.
        if (WineVersion()) AddDriver();
        std::string driver = WineVersion() ? name_ : "Microsoft Print To PDF", port = "FILE:", processor = "winprint";
        PRINTER_INFO_2A info{};
        info.pPrinterName = name_.data();
        info.pDriverName = driver.data();
        info.pPortName = port.data();
        info.pPrintProcessor = processor.data();
        info.pDatatype = type_.data();
        printer_ = AddPrinterA(nullptr, 2, reinterpret_cast<BYTE*>(&info));
        EXPECT_TRUE(printer_ && SetDefaultPrinterA(name_.c_str())) << GetLastError();
    }
    TestPrinter(const TestPrinter&) = delete;
    TestPrinter& operator=(const TestPrinter&) = delete;
    ~TestPrinter() {
        if (!printer_) return;
        EXPECT_TRUE(DeletePrinter(printer_)) << GetLastError();
        ClosePrinter(printer_);
        WriteProfileStringA("windows", "device", nullptr);
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
    HANDLE printer_ = nullptr;
};

}  // namespace velk::test
