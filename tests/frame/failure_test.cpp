#include "frame/failure/failure.h"

#include <gtest/gtest.h>

#include <utility>
#include <vector>

namespace velk {
namespace {

// What a caller may branch on must not depend on which of the platform's near synonyms a call failed with.
TEST(RuntimeError, StandsForFailedCalls) {
    const std::pair<int, std::vector<DWORD>> system[] = {
        {53, {ERROR_FILE_NOT_FOUND}},
        {76, {ERROR_PATH_NOT_FOUND, ERROR_BAD_PATHNAME, ERROR_INVALID_DRIVE, ERROR_BAD_NETPATH, ERROR_BAD_NET_NAME}},
        {52, {ERROR_INVALID_NAME, ERROR_FILENAME_EXCED_RANGE, ERROR_BUFFER_OVERFLOW}},
        {70, {ERROR_ACCESS_DENIED, ERROR_SHARING_VIOLATION, ERROR_LOCK_VIOLATION, ERROR_WRITE_PROTECT}},
        {71, {ERROR_NOT_READY}},
        {7, {ERROR_NOT_ENOUGH_MEMORY, ERROR_OUTOFMEMORY}},
        {61, {ERROR_DISK_FULL, ERROR_HANDLE_DISK_FULL}},
        {5, {ERROR_INVALID_PARAMETER}},
        {57, {ERROR_CRC, ERROR_SEEK, ERROR_READ_FAULT, ERROR_WRITE_FAULT, ERROR_GEN_FAILURE, ERROR_IO_DEVICE}},
        {75, {ERROR_DIRECTORY, ERROR_SUCCESS, ERROR_ALREADY_EXISTS}},
    };
    for (const auto& [number, errors] : system) {
        for (const DWORD error : errors) EXPECT_EQ(number, FromSystemError(error).number()) << error;
    }
    const std::pair<int, HRESULT> automation[] = {
        {6, DISP_E_OVERFLOW},   {7, E_OUTOFMEMORY},
        {9, DISP_E_BADINDEX},   {13, DISP_E_TYPEMISMATCH},
        {11, DISP_E_DIVBYZERO}, {13, DISP_E_BADVARTYPE},
        {70, E_ACCESSDENIED},   {429, REGDB_E_CLASSNOTREG},
        {5, E_INVALIDARG},      {5, E_FAIL},
    };
    for (const auto& [number, result] : automation) EXPECT_EQ(number, FromComError(result).number()) << result;
}

}  // namespace
}  // namespace velk
