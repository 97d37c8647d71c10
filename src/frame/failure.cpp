#include "frame/failure.h"

#include <algorithm>
#include <iterator>
#include <new>
#include <stdexcept>

#include "frame/com_ptr.h"
#include "frame/library.h"
#include "frame/text.h"

namespace velk {
namespace {

struct SystemErrorNumber {
    DWORD error;
    int number;
};

constexpr SystemErrorNumber kSystemErrors[] = {
    {ERROR_FILE_NOT_FOUND, 53},
    {ERROR_PATH_NOT_FOUND, 76},
    {ERROR_BAD_PATHNAME, 76},
    {ERROR_INVALID_DRIVE, 76},
    {ERROR_BAD_NETPATH, 76},
    {ERROR_BAD_NET_NAME, 76},
    {ERROR_INVALID_NAME, 52},
    {ERROR_FILENAME_EXCED_RANGE, 52},
    {ERROR_BUFFER_OVERFLOW, 52},
    {ERROR_ACCESS_DENIED, 70},
    {ERROR_SHARING_VIOLATION, 70},
    {ERROR_LOCK_VIOLATION, 70},
    {ERROR_WRITE_PROTECT, 70},
    {ERROR_NOT_READY, 71},
    {ERROR_NOT_ENOUGH_MEMORY, 7},
    {ERROR_OUTOFMEMORY, 7},
    {ERROR_DISK_FULL, 61},
    {ERROR_HANDLE_DISK_FULL, 61},
    {ERROR_INVALID_PARAMETER, 5},
    {ERROR_CRC, 57},
    {ERROR_SEEK, 57},
    {ERROR_READ_FAULT, 57},
    {ERROR_WRITE_FAULT, 57},
    {ERROR_GEN_FAILURE, 57},
    {ERROR_IO_DEVICE, 57},
    {ERROR_DIRECTORY, 75},
};

struct ComErrorNumber {
    HRESULT result;
    int number;
};

constexpr ComErrorNumber kComErrors[] = {
    {DISP_E_OVERFLOW, 6},      {E_OUTOFMEMORY, 7},      {DISP_E_BADINDEX, 9}, {DISP_E_DIVBYZERO, 11},
    {DISP_E_TYPEMISMATCH, 13}, {DISP_E_BADVARTYPE, 13}, {E_ACCESSDENIED, 70}, {REGDB_E_CLASSNOTREG, 429},
};

// A failed call of which nothing better is known.
constexpr int kInvalidCall = 5;
constexpr int kPathAccess = 75;

Failure FromRuntimeError(const RuntimeError& error) {
    return {Failure::Kind::Runtime, kRuntimeErrorBase + error.number(), error.number(), error.description(),
            ErrorSource::Library};
}

std::wstring SourceName(ErrorSource source, const wchar_t* className) {
    if (source == ErrorSource::Library) return library::kIdentity.name;
    return library::FileBaseName() + L"." + className;
}

}  // namespace

RuntimeError FromSystemError(DWORD error) noexcept {
    const auto* found = std::find_if(std::begin(kSystemErrors), std::end(kSystemErrors),
                                     [error](const SystemErrorNumber& entry) { return entry.error == error; });
    return RuntimeError(found == std::end(kSystemErrors) ? kPathAccess : found->number);
}

RuntimeError FromComError(HRESULT result) noexcept {
    const auto* found = std::find_if(std::begin(kComErrors), std::end(kComErrors),
                                     [result](const ComErrorNumber& entry) { return entry.result == result; });
    return RuntimeError(found == std::end(kComErrors) ? kInvalidCall : found->number);
}

Failure CaughtFailure() {
    try {
        throw;
    } catch (const RuntimeError& error) {
        return FromRuntimeError(error);
    } catch (const ClassError& error) {
        return {Failure::Kind::Class, error.code(), error.code(), error.description(), error.source()};
    } catch (const NullArgument&) {
        return {Failure::Kind::NullArgument, E_POINTER, E_POINTER, L"Invalid pointer", ErrorSource::Library};
    } catch (const std::bad_alloc&) {
        return FromRuntimeError(RuntimeError(7));
    } catch (const std::length_error&) {  // a container that would outgrow the address space
        return FromRuntimeError(RuntimeError(7));
    } catch (...) {
        return FromRuntimeError(RuntimeError(kInvalidCall));
    }
}

HRESULT RaiseToClient(const Failure& failure, const wchar_t* className, REFIID iid) noexcept try {
    SetErrorInfo(0, nullptr);  // so that nobody reads an older error if there is no memory for this one
    ComPtr<ICreateErrorInfo> creator;
    if (FAILED(CreateErrorInfo(creator.Receive()))) return failure.code;
    creator->SetGUID(iid);
    creator->SetSource(Bstr(SourceName(failure.source, className)).get());
    creator->SetDescription(Bstr(failure.description).get());
    SetErrorInfo(0, creator.As<IErrorInfo>().get());
    return failure.code;
} catch (...) {  // out of memory: the code alone reaches the client
    return failure.code;
}

}  // namespace velk
