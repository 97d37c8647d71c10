#include "frame/failure.h"

#include <gtest/gtest.h>

namespace velk {
namespace {

TEST(RuntimeError, EachNumberHasItsText) {
    const std::pair<int, const wchar_t*> cases[] = {
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
        {12, L"Application-defined or object-defined error"},
    };
    for (const auto& [number, text] : cases) EXPECT_STREQ(text, RuntimeError(number).description());
}

// What a caller may branch on must not depend on which of the platform's near synonyms a call failed with.
TEST(RuntimeError, StandsForFailedCalls) {
    const std::pair<int, std::vector<DWORD>> system[] = {
        {53, {ERROR_FILE_NOT_FOUND}},
        {76, {ERROR_PATH_NOT_FOUND, ERROR_BAD_PATHNAME, ERROR_INVALID_DRIVE, ERROR_BAD_NETPATH, ERROR_BAD_NET_NAME}},
        {52, {ERROR_INVALID_NAME, ERROR_FILENAME_EXCED_RANGE}},
        {70, {ERROR_ACCESS_DENIED, ERROR_SHARING_VIOLATION, ERROR_LOCK_VIOLATION, ERROR_WRITE_PROTECT}},
        {71, {ERROR_NOT_READY}},
        {7, {ERROR_NOT_ENOUGH_MEMORY, ERROR_OUTOFMEMORY}},
        {61, {ERROR_DISK_FULL, ERROR_HANDLE_DISK_FULL}},
        {57, {ERROR_CRC, ERROR_READ_FAULT, ERROR_WRITE_FAULT}},
        {75, {ERROR_DIRECTORY, ERROR_SUCCESS, ERROR_ALREADY_EXISTS}},
    };
    for (const auto& [number, errors] : system) {
        for (const DWORD error : errors) EXPECT_EQ(number, FromSystemError(error).number()) << error;
    }
    const std::pair<int, HRESULT> automation[] = {
        {6, DISP_E_OVERFLOW}, {7, E_OUTOFMEMORY},         {9, DISP_E_BADINDEX}, {13, DISP_E_TYPEMISMATCH},
        {70, E_ACCESSDENIED}, {429, REGDB_E_CLASSNOTREG}, {5, E_INVALIDARG},    {5, E_FAIL},
    };
    for (const auto& [number, result] : automation) EXPECT_EQ(number, FromComError(result).number()) << result;
}

// An error that an earlier call left behind must not be taken for this one's.
TEST(Failure, ReplacesTheThreadsOlderErrorInformation) {
    const Failure older{Failure::Kind::Class, E_FAIL, 0, L"older", ErrorSource::Library};
    const Failure newer{Failure::Kind::Class, E_ABORT, 0, L"newer", ErrorSource::Library};
    EXPECT_EQ(E_FAIL, RaiseToClient(older, L"CSome", IID_NULL));
    EXPECT_EQ(E_ABORT, RaiseToClient(newer, L"CSome", IID_NULL));
    IErrorInfo* info = nullptr;
    ASSERT_EQ(S_OK, GetErrorInfo(0, &info));
    BSTR text = nullptr;
    info->GetDescription(&text);
    EXPECT_STREQ(L"newer", text);
    SysFreeString(text);
    info->Release();
    EXPECT_EQ(S_FALSE, GetErrorInfo(0, &info));
}

}  // namespace
}  // namespace velk
