#pragma once

namespace velk::test {

// A PostScript printer that prints to a file, and the default printer for as long as it lives.
class TestPrinter {
  public:
    TestPrinter();
    TestPrinter(const TestPrinter&) = delete;
    TestPrinter& operator=(const TestPrinter&) = delete;
    ~TestPrinter();

    static constexpr const char* kName = "Velk Test Printer";
};

}  // namespace velk::test
