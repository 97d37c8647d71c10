// Computes the checksum of a file and shows how far it is, or checks a file against a checksum:
//
//     file_checksum.exe C:\data\large.bin
//     file_checksum.exe C:\data\large.bin CBF43926
//
// An early-bound client that needs nothing but velksprt.h and the library beside it.
#include <windows.h>

#include <cstdio>
#include <cstdlib>
#include <cwchar>

#include "velksprt.h"

namespace {

// Receives the events of CCRC32. It lives on the stack of main and so counts no references.
class ProgressBar : public IDispatch {
  public:
    STDMETHODIMP QueryInterface(REFIID id, void** result) override {
        const bool known = id == IID_IUnknown || id == IID_IDispatch || id == __uuidof(__CCRC32);
        *result = known ? this : nullptr;
        return known ? S_OK : E_NOINTERFACE;
    }
    STDMETHODIMP_(ULONG) AddRef() override { return 1; }
    STDMETHODIMP_(ULONG) Release() override { return 1; }
    STDMETHODIMP GetTypeInfoCount(UINT* count) override { return *count = 0, S_OK; }
    STDMETHODIMP GetTypeInfo(UINT, LCID, ITypeInfo**) override { return E_NOTIMPL; }
    STDMETHODIMP GetIDsOfNames(REFIID, LPOLESTR*, UINT, LCID, DISPID*) override { return E_NOTIMPL; }

    STDMETHODIMP Invoke(DISPID member, REFIID, LCID, WORD, DISPPARAMS* given, VARIANT*, EXCEPINFO*, UINT*) override {
        constexpr DISPID kProgress = 1;
        if (member != kProgress || given->cArgs != 1 || given->rgvarg[0].vt != (VT_BYREF | VT_R4)) return S_OK;
        Show(static_cast<int>(*given->rgvarg[0].pfltVal * 100));  // the event gives a fraction from 0 to 1
        return S_OK;
    }

  private:
    void Show(int percent) {
        if (percent == shown_) return;
        shown_ = percent;
        constexpr char kFull[] = "##################################################";
        std::printf("\r[%-50.*s] %3d %%", percent / 2, kFull, percent);
        std::fflush(stdout);
    }

    int shown_ = -1;
};

// What the library says about the call that just failed.
int Failed(HRESULT code) {
    IErrorInfo* info = nullptr;
    BSTR text = nullptr;
    if (GetErrorInfo(0, &info) == S_OK) {
        info->GetDescription(&text);
        info->Release();
    }
    std::printf("Failed: 0x%08lX %ls\n", code, text ? text : L"");
    SysFreeString(text);
    return 1;
}

// Connects a sink to the events of an object.
HRESULT Connect(IUnknown* object, IUnknown* sink, DWORD* cookie) {
    IConnectionPointContainer* container = nullptr;
    IConnectionPoint* point = nullptr;
    HRESULT result = object->QueryInterface(IID_IConnectionPointContainer, reinterpret_cast<void**>(&container));
    if (SUCCEEDED(result)) result = container->FindConnectionPoint(__uuidof(__CCRC32), &point);
    if (SUCCEEDED(result)) result = point->Advise(sink, cookie);
    if (point) point->Release();
    if (container) container->Release();
    return result;
}

int Report(const wchar_t* path, LONG checksum, const wchar_t* expected) {
    std::printf("\n%08lX  %ls\n", checksum, path);
    if (!expected || std::wcstoul(expected, nullptr, 16) == static_cast<unsigned long>(checksum)) return 0;
    std::printf("Expected %ls: the file is not the one that it should be.\n", expected);
    return 1;
}

int Compute(const wchar_t* path, const wchar_t* expected) {
    _CCRC32* crc = nullptr;
    HRESULT result = CoCreateInstance(__uuidof(CCRC32), nullptr, CLSCTX_INPROC_SERVER, __uuidof(_CCRC32),
                                      reinterpret_cast<void**>(&crc));
    if (FAILED(result)) return Failed(result);
    ProgressBar bar;
    DWORD cookie = 0;
    BSTR name = SysAllocString(path);
    LONG checksum = 0;
    result = Connect(crc, &bar, &cookie);
    if (SUCCEEDED(result)) result = crc->put_InputFileName(name);
    if (SUCCEEDED(result)) result = crc->GetCRCFromFile(&checksum);
    SysFreeString(name);
    crc->Release();  // the connection goes with it
    return FAILED(result) ? Failed(result) : Report(path, checksum, expected);
}

}  // namespace

int wmain(int count, wchar_t** arguments) {
    if (count != 2 && count != 3) {
        std::puts("Usage: file_checksum FILE [CHECKSUM]");
        return 2;
    }
    if (GetFileAttributesW(arguments[1]) == INVALID_FILE_ATTRIBUTES) {
        std::printf("No file %ls\n", arguments[1]);  // whose checksum would be 0
        return 2;
    }
    CoInitializeEx(nullptr, COINIT_APARTMENTTHREADED);
    const int result = Compute(arguments[1], count == 3 ? arguments[2] : nullptr);
    CoUninitialize();
    return result;
}
