#include "frame/failure/failure.h"

#include <exception>
#include <new>

#include "frame/module/library.h"
#include "platform/com_ptr.h"
#include "platform/text.h"

namespace velk {
namespace {

Failure FromRuntimeError(const RuntimeError& error) {
    return {Thrown::Kind::Runtime, kRuntimeErrorBase + error.number(), error.number(), error.description(),
            ErrorSource::Library};
}

Failure FromClassError(const ClassError& error) {
    return {Thrown::Kind::Class, error.code(), error.code(), error.description(), error.source()};
}

Failure FromObjectError(const ObjectError& error) {
    const bool runtime = (error.code & ~0xFFFF) == kRuntimeErrorBase;
    const LONG number = runtime ? error.code - kRuntimeErrorBase : error.code;
    return {Thrown::Kind::Runtime, error.code, number, error.description, ErrorSource::Library, error.source};
}

Bstr SourceName(const Failure& failure, const wchar_t* className) {
    if (!failure.raisedBy.empty()) return Bstr(failure.raisedBy);
    if (failure.source == ErrorSource::Library) return Bstr(library::kIdentity.name);
    static const std::wstring file = library::FileBaseName() + L".";
    return Bstr(file + className);
}

}  // namespace

Failure FailureOf(const Thrown& thrown) {
    switch (thrown.kind()) {
        case Thrown::Kind::Runtime:
            return FromRuntimeError(static_cast<const RuntimeError&>(thrown));
        case Thrown::Kind::Class:
            return FromClassError(static_cast<const ClassError&>(thrown));
        default:
            return {Thrown::Kind::NullArgument, E_POINTER, E_POINTER, L"Invalid pointer", ErrorSource::Library};
    }
}

Failure CaughtFailure() {
    try {
        throw;
    } catch (const Thrown& thrown) {
        return FailureOf(thrown);
    } catch (const ObjectError& error) {
        return FromObjectError(error);
    } catch (const std::exception&) {  // no memory, or a container that would outgrow the address space
        return FromRuntimeError(RuntimeError(Error::OutOfMemory));
    } catch (...) {
        return FromRuntimeError(RuntimeError(Error::InvalidProcedureCall));
    }
}

HRESULT RaiseToClient(const Failure& failure, const wchar_t* className, REFIID iid) noexcept try {
    SetErrorInfo(0, nullptr);  // so that nobody reads an older error if there is no memory for this one
    ComPtr<ICreateErrorInfo> creator;
    if (FAILED(CreateErrorInfo(creator.Receive()))) return failure.code;
    creator->SetGUID(iid);
    creator->SetSource(SourceName(failure, className).get());
    creator->SetDescription(Bstr(failure.description).get());
    SetErrorInfo(0, creator.As<IErrorInfo>().get());
    return failure.code;
} catch (...) {  // out of memory: the code alone reaches the client
    return failure.code;
}

}  // namespace velk
