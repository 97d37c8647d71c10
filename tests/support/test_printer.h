#pragma once

namespace velk::test {

// A printer that prints to a file, and the default printer for as long as it lives.
class TestPrinter {
  public:
    TestPrinter();
    TestPrinter(const TestPrinter&) = delete;
    TestPrinter& operator=(const TestPrinter&) = delete;
    ~TestPrinter();

    static constexpr const char* kName = "Velk Test Printer";

  private:
    char before_[256] = "";  // the default printer until now
};

}  // namespace velk::test
