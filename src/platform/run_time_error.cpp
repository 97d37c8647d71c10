#include "platform/run_time_error.h"

#include <algorithm>
#include <iterator>

namespace velk {
namespace {

struct Text {
    Error number;
    const wchar_t* description;
};

constexpr Text kTexts[] = {
    {Error::InvalidProcedureCall, L"Invalid procedure call or argument"},
    {Error::Overflow, L"Overflow"},
    {Error::OutOfMemory, L"Out of memory"},
    {Error::SubscriptOutOfRange, L"Subscript out of range"},
    {Error::DivisionByZero, L"Division by zero"},
    {Error::TypeMismatch, L"Type mismatch"},
    {Error::BadFileName, L"Bad file name or number"},
    {Error::FileNotFound, L"File not found"},
    {Error::DeviceIo, L"Device I/O error"},
    {Error::DiskFull, L"Disk full"},
    {Error::PermissionDenied, L"Permission denied"},
    {Error::DiskNotReady, L"Disk not ready"},
    {Error::PathFileAccess, L"Path/File access error"},
    {Error::PathNotFound, L"Path not found"},
    {Error::ObjectNotSet, L"Object variable or With block variable not set"},
    {Error::CannotCreateObject, L"ActiveX component can't create object"},
    {Error::KeyExists, L"This key is already associated with an element of this collection"},
};

}  // namespace

const wchar_t* RuntimeError::description() const noexcept {
    const auto* found =
        std::find_if(std::begin(kTexts), std::end(kTexts), [this](const Text& text) { return text.number == error_; });
    return found == std::end(kTexts) ? L"Application-defined or object-defined error" : found->description;
}

}  // namespace velk
