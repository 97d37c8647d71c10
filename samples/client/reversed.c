// Prints its arguments in reverse order, by way of a stack: a client in C11.
//
//     reversed.exe one two three
//
// It is compiled together with velksprt_i.c, which holds the identifiers.
#define COBJMACROS
#include <windows.h>

#include <stdio.h>

#include "velksprt.h"

static HRESULT Push(_CStack* stack, const wchar_t* text) {
    VARIANT value;
    HRESULT result;
    V_VT(&value) = VT_BSTR;
    V_BSTR(&value) = SysAllocString(text);
    result = _CStack_Push(stack, &value);
    VariantClear(&value);
    return result;
}

// What the library says about the call that just failed.
static void PrintFailure(HRESULT result) {
    IErrorInfo* info = NULL;
    BSTR text = NULL;
    if (GetErrorInfo(0, &info) == S_OK) {
        IErrorInfo_GetDescription(info, &text);
        IErrorInfo_Release(info);
    }
    printf("Failed: 0x%08lX %ls\n", (unsigned long)result, text ? text : L"");
    SysFreeString(text);
}

static HRESULT PrintAll(_CStack* stack) {
    LONG count = 0;
    HRESULT result = _CStack_get_Count(stack, &count);
    for (; SUCCEEDED(result) && count > 0; --count) {
        VARIANT value;
        VariantInit(&value);
        result = _CStack_Pop(stack, &value);
        if (SUCCEEDED(result)) printf("%ls\n", V_BSTR(&value));
        VariantClear(&value);
    }
    return result;
}

int wmain(int count, wchar_t** arguments) {
    _CStack* stack = NULL;
    HRESULT result = CoInitialize(NULL);
    if (SUCCEEDED(result))
        result = CoCreateInstance(&CLSID_CStack, NULL, CLSCTX_INPROC_SERVER, &IID__CStack, (void**)&stack);
    for (int i = 1; SUCCEEDED(result) && i < count; ++i) result = Push(stack, arguments[i]);
    if (SUCCEEDED(result)) result = PrintAll(stack);
    if (FAILED(result)) PrintFailure(result);
    if (stack) _CStack_Release(stack);
    CoUninitialize();
    return FAILED(result);
}
