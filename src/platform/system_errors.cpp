#include "platform/system_errors.h"

#include <algorithm>
#include <iterator>

#include "platform/com_ptr.h"
#include "platform/text.h"

namespace velk {
namespace {

struct SystemErrorNumber {
    DWORD error;
    Error number;
};

constexpr SystemErrorNumber kSystemErrors[] = {
    {ERROR_FILE_NOT_FOUND, Error::FileNotFound},
    {ERROR_PATH_NOT_FOUND, Error::PathNotFound},
    {ERROR_BAD_PATHNAME, Error::PathNotFound},
    {ERROR_INVALID_DRIVE, Error::PathNotFound},
    {ERROR_BAD_NETPATH, Error::PathNotFound},
    {ERROR_BAD_NET_NAME, Error::PathNotFound},
    {ERROR_INVALID_NAME, Error::BadFileName},
    {ERROR_FILENAME_EXCED_RANGE, Error::BadFileName},
    {ERROR_BUFFER_OVERFLOW, Error::BadFileName},
    {ERROR_ACCESS_DENIED, Error::PermissionDenied},
    {ERROR_SHARING_VIOLATION, Error::PermissionDenied},
    {ERROR_LOCK_VIOLATION, Error::PermissionDenied},
    {ERROR_WRITE_PROTECT, Error::PermissionDenied},
    {ERROR_NOT_READY, Error::DiskNotReady},
    {ERROR_NOT_ENOUGH_MEMORY, Error::OutOfMemory},
    {ERROR_OUTOFMEMORY, Error::OutOfMemory},
    {ERROR_DISK_FULL, Error::DiskFull},
    {ERROR_HANDLE_DISK_FULL, Error::DiskFull},
    {ERROR_INVALID_PARAMETER, Error::InvalidProcedureCall},
    {ERROR_CRC, Error::DeviceIo},
    {ERROR_SEEK, Error::DeviceIo},
    {ERROR_READ_FAULT, Error::DeviceIo},
    {ERROR_WRITE_FAULT, Error::DeviceIo},
    {ERROR_GEN_FAILURE, Error::DeviceIo},
    {ERROR_IO_DEVICE, Error::DeviceIo},
    {ERROR_DIRECTORY, Error::PathFileAccess},
};

struct ComErrorNumber {
    HRESULT result;
    Error number;
};

constexpr ComErrorNumber kComErrors[] = {
    {DISP_E_OVERFLOW, Error::Overflow},
    {E_OUTOFMEMORY, Error::OutOfMemory},
    {DISP_E_BADINDEX, Error::SubscriptOutOfRange},
    {DISP_E_DIVBYZERO, Error::DivisionByZero},
    {DISP_E_TYPEMISMATCH, Error::TypeMismatch},
    {DISP_E_BADVARTYPE, Error::TypeMismatch},
    {E_ACCESSDENIED, Error::PermissionDenied},
    {REGDB_E_CLASSNOTREG, Error::CannotCreateObject},
};

const ComErrorNumber* Find(HRESULT result) noexcept {
    const auto* const end = std::end(kComErrors);
    const auto* const found = std::find_if(std::begin(kComErrors), end,
                                           [result](const ComErrorNumber& entry) { return entry.result == result; });
    return found == end ? nullptr : found;
}

// Only what an object with this interface says it sets: what else the thread has is of an earlier failure.
ComPtr<IErrorInfo> ErrorInfoOf(IUnknown* object, REFIID iid) noexcept {
    ComPtr<IErrorInfo> info;
    const auto speaks = ComPtr<IUnknown>(object).As<ISupportErrorInfo>();
    if (speaks && speaks->InterfaceSupportsErrorInfo(iid) == S_OK) GetErrorInfo(0, info.Receive());
    return info;
}

}  // namespace

RuntimeError FromSystemError(DWORD error) noexcept {
    const auto* found = std::find_if(std::begin(kSystemErrors), std::end(kSystemErrors),
                                     [error](const SystemErrorNumber& entry) { return entry.error == error; });
    return RuntimeError(found == std::end(kSystemErrors) ? Error::PathFileAccess : found->number);
}

RuntimeError FromComError(HRESULT result) noexcept {
    const ComErrorNumber* const found = Find(result);
    return RuntimeError(found ? found->number : Error::InvalidProcedureCall);
}

void ThrowIfMemberFailed(HRESULT result, IUnknown* object, REFIID iid) {
    if (SUCCEEDED(result)) return;
    const ComPtr<IErrorInfo> info = ErrorInfoOf(object, iid);
    if (!info && Find(result)) throw FromComError(result);
    Bstr source, description;
    if (info) info->GetSource(source.Receive()), info->GetDescription(description.Receive());
    const std::wstring_view said = View(description.get());
    throw ObjectError{result, std::wstring(View(source.get())),
                      std::wstring(said.empty() ? L"Automation error" : said)};
}

}  // namespace velk
