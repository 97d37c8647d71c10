#include "frame/run_time_error.h"

#include <algorithm>
#include <iterator>

namespace velk {
namespace {

struct Text {
    int number;
    const wchar_t* description;
};

constexpr Text kTexts[] = {
    {5, L"Invalid procedure call or argument"},
    {6, L"Overflow"},
    {7, L"Out of memory"},
    {9, L"Subscript out of range"},
    {11, L"Division by zero"},
    {13, L"Type mismatch"},
    {52, L"Bad file name or number"},
    {53, L"File not found"},
    {57, L"Device I/O error"},
    {61, L"Disk full"},
    {70, L"Permission denied"},
    {71, L"Disk not ready"},
    {75, L"Path/File access error"},
    {76, L"Path not found"},
    {91, L"Object variable or With block variable not set"},
    {429, L"ActiveX component can't create object"},
    {457, L"This key is already associated with an element of this collection"},
};

}  // namespace

const wchar_t* RuntimeError::description() const noexcept {
    const auto* found =
        std::find_if(std::begin(kTexts), std::end(kTexts), [this](const Text& text) { return text.number == number_; });
    return found == std::end(kTexts) ? L"Application-defined or object-defined error" : found->description;
}

}  // namespace velk
