// Late-bound calls against the platform's own way on the same object, against the direct call, and against the
// platform's dictionary object.
#include <algorithm>
#include <cstdio>
#include <string>
#include <vector>

#include "ratio.h"
#include "support/client.h"

namespace {

using namespace velk;

DISPPARAMS noArguments{};

DISPID IdOf(IDispatch* object, LPOLESTR name) {
    DISPID id = DISPID_UNKNOWN;
    object->GetIDsOfNames(IID_NULL, &name, 1, LOCALE_USER_DEFAULT, &id);
    return id;
}

LONG GetLong(IDispatch* object, DISPID id) {
    VARIANT result;
    object->Invoke(id, IID_NULL, LOCALE_USER_DEFAULT, DISPATCH_PROPERTYGET, &noArguments, &result, nullptr, nullptr);
    return result.lVal;
}

// At most `target` times the peer's time, which is a report with the ratio the other way round.
bool CompareCost(const char* name, double most, auto&& ours, auto&& peer) {
    return bench::Compare(name, 1 / most, ours, peer);
}

bool PropertyGet(_CLinkedList* object, ITypeInfo* info) {
    LONG value = 0;
    wchar_t name[] = L"Count";
    const DISPID count = IdOf(object, name);
    const auto late = [&] { value = GetLong(object, count); };
    const auto direct = [&] { object->get_Count(&value); };
    const auto platform = [&] {
        VARIANT result;
        info->Invoke(object, count, DISPATCH_PROPERTYGET, &noArguments, &result, nullptr, nullptr);
        value = result.lVal;
    };
    bool met = bench::Compare("get, platform's Invoke", 20, late, platform);
    met &= CompareCost("get, direct call", 8, late, direct);
    bench::Keep(value);
    return met;
}

std::vector<std::wstring> NamesOf(ITypeInfo* info) {
    std::vector<std::wstring> names;
    for (DISPID id = 1; id <= 31; ++id) {
        BSTR name = nullptr;
        UINT count = 0;
        if (FAILED(info->GetNames(id, &name, 1, &count)) || count == 0) continue;
        names.emplace_back(name);
        SysFreeString(name);
    }
    return names;
}

bool NameLookup(_CLinkedList* object, ITypeInfo* info) {
    double ours = 0, platform = 0, best = 1e9, worst = 0;
    DISPID id = 0;
    for (std::wstring& name : NamesOf(info)) {
        LPOLESTR raw = name.data();
        const auto medians =
            bench::MedianTimes([&] { id = IdOf(object, raw); }, [&] { info->GetIDsOfNames(&raw, 1, &id); });
        ours += medians[0];
        platform += medians[1];
        best = std::min(best, medians[0]);
        worst = std::max(worst, medians[0]);
    }
    bench::Keep(id);
    bool met = bench::Report("all names, platform's lookup", ours, platform, 20);
    met &= bench::Report("worst name, best name", worst, best, 0.5);
    return met;
}

bool NamedCall(_CLinkedList* object) {
    CLSID clsid;
    ComPtr<IDispatch> dictionary;
    CLSIDFromProgID(L"Scripting.Dictionary", &clsid);
    CoCreateInstance(clsid, nullptr, CLSCTX_INPROC_SERVER, IID_IDispatch, dictionary.ReceiveVoid());
    if (!dictionary) return false;
    wchar_t count[] = L"Count";
    LONG value = 0;
    const bool met = bench::Compare(
        "name and get, dictionary", 30, [&] { value = GetLong(object, IdOf(object, count)); },
        [&] { value = GetLong(dictionary.get(), IdOf(dictionary.get(), count)); });
    bench::Keep(value);
    return met;
}

}  // namespace

int main() {
    CoInitializeEx(nullptr, COINIT_APARTMENTTHREADED);
    const auto list = test::CreateObject<_CLinkedList>(__uuidof(CLinkedList));
    ComPtr<ITypeInfo> info;
    if (FAILED(list->GetTypeInfo(0, LOCALE_USER_DEFAULT, info.Receive()))) return 1;
    bool met = PropertyGet(list.get(), info.get());
    met &= NameLookup(list.get(), info.get());
    met &= NamedCall(list.get());
    return met ? 0 : 1;
}
