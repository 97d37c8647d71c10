/* A client of the published headers, as C and as C++: interfaces, classes and calls. Only compiled. */
#if defined(_MSC_VER) && defined(__cplusplus)
#include <rpc.h>
#include <rpcndr.h>
/* Wine 8's headers leave these empty; Microsoft's define them like this. */
#undef DECLSPEC_UUID
#undef MIDL_INTERFACE
#define DECLSPEC_UUID(id) __declspec(uuid(id))
#define MIDL_INTERFACE(id) struct __declspec(uuid(id)) __declspec(novtable)
#endif
#define COBJMACROS
#include "velksprt.h"
#include "velksub.h"

#ifdef __cplusplus
HRESULT MakeStack(_CStack** stack) {
    void** result = reinterpret_cast<void**>(stack);
    return CoCreateInstance(__uuidof(CStack), nullptr, CLSCTX_INPROC_SERVER, __uuidof(_CStack), result);
}
HRESULT Push(_CStack* stack, VARIANT* value) { return stack->Push(value); }
HRESULT MakeHooks(void** hooks) {
    return CoCreateInstance(__uuidof(HookManager), nullptr, CLSCTX_INPROC_SERVER, IID_IUnknown, hooks);
}
#else
HRESULT MakeStack(_CStack** stack) {
    return CoCreateInstance(&CLSID_CStack, NULL, CLSCTX_INPROC_SERVER, &IID__CStack, (void**)stack);
}
HRESULT Push(_CStack* stack, VARIANT* value) { return _CStack_Push(stack, value); }
HRESULT MakeHooks(void** hooks) {
    return CoCreateInstance(&CLSID_HookManager, NULL, CLSCTX_INPROC_SERVER, &IID_IUnknown, hooks);
}
#endif
