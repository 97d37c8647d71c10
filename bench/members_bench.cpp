// What single members of the library cost a client, against the platform's own way to do the same: late-bound calls
// with every kind of argument against the type information's call, failing, events, creation.
#include <cstdio>
#include <string>
#include <unordered_map>
#include <vector>

#include "frame/failure/failure.h"
#include "list_values.h"
#include "platform/text.h"
#include "ratio.h"
#include "support/bare_dispatch.h"
#include "support/client.h"
#include "support/scratch_folder.h"

namespace {

using namespace velk;
using bench::ValueOf;

struct LateCall {
    const char* name;
    const CLSID& clsid;
    const wchar_t* member;
    WORD flags;
    std::vector<VARIANT> arguments;  // the last one first
    double target;
};

bool Compare(const LateCall& call, std::vector<VARIANT> arguments) {
    const auto object = test::CreateUnknown(call.clsid).As<IDispatch>();
    if (const auto list = object.As<_CLinkedList>()) {
        LONG index = 0;
        VARIANT value{};
        list->Add(&value, nullptr, nullptr, &index);
        list->MoveFirst();
    }
    ComPtr<ITypeInfo> info;
    auto* name = const_cast<LPOLESTR>(call.member);
    DISPID id = 0, put = DISPID_PROPERTYPUT;
    if (FAILED(object->GetTypeInfo(0, 0, info.Receive()))) return false;
    if (FAILED(object->GetIDsOfNames(IID_NULL, &name, 1, 0, &id))) return false;
    const UINT named = call.flags == DISPATCH_PROPERTYPUT ? 1 : 0;
    DISPPARAMS given{arguments.data(), named ? &put : nullptr, static_cast<UINT>(arguments.size()), named};
    VARIANT result;
    VARIANT* const place = named ? nullptr : &result;
    HRESULT ended = S_OK;
    const bool met = bench::Compare(
        call.name, call.target,
        [&] { ended |= object->Invoke(id, IID_NULL, 0, call.flags, &given, place, nullptr, nullptr); },
        [&] { info->Invoke(object.get(), id, call.flags, &given, place, nullptr, nullptr); });
    if (ended != S_OK) std::puts("it failed");
    return met && ended == S_OK;
}

bool LateCalls() {
    const CLSID &list = __uuidof(::CLinkedList), &stack = __uuidof(::CStack), &builder = __uuidof(::CConCat),
                &checksum = __uuidof(::CCRC32);
    VARIANT variable = ValueOf(VT_I4, LONG{1});
    const Bstr piece(L"text"), text(std::wstring(16384, L'x'));
    const LateCall calls[] = {
        {"late: Long by value", list, L"Move", DISPATCH_METHOD, {ValueOf(VT_I4, LONG{1})}, 12},
        {"late: script's variable", list, L"Move", DISPATCH_METHOD, {ValueOf(VT_BYREF | VT_VARIANT, &variable)}, 11},
        {"late: Long by reference", list, L"Move", DISPATCH_METHOD, {ValueOf(VT_BYREF | VT_I4, &variable.lVal)}, 11},
        {"late: Double for a Long", list, L"Move", DISPATCH_METHOD, {ValueOf(VT_R8, 1.0)}, 11},
        {"late: property put", stack, L"GrowBy", DISPATCH_PROPERTYPUT, {ValueOf(VT_I4, LONG{9})}, 13},
        {"late: Item(i) = value",
         list,
         L"Item",
         DISPATCH_PROPERTYPUT,
         {ValueOf(VT_I4, LONG{7}), ValueOf(VT_I2, SHORT{1})},
         12},
        {"late: optional left out", list, L"Item", DISPATCH_PROPERTYGET, {}, 12},
        {"late: no result", list, L"MoveFirst", DISPATCH_METHOD, {}, 22},
        {"late: String by value", builder, L"Append", DISPATCH_METHOD, {ValueOf(VT_BSTR, piece.get())}, 15},
        {"late: number for a String", builder, L"Append", DISPATCH_METHOD, {ValueOf(VT_I4, LONG{12345})}, 7},
        {"late: checksum of 16384", checksum, L"GetCRCFromString", DISPATCH_METHOD, {ValueOf(VT_BSTR, text.get())}, 9},
        {"late: the same as bytes",
         checksum,
         L"GetCRCFromStringAscii",
         DISPATCH_METHOD,
         {ValueOf(VT_BSTR, text.get())},
         3},
    };
    bool met = true;
    for (const LateCall& call : calls) met &= Compare(call, call.arguments);
    return met;
}

// Nothing but what any class has to do: throw, catch, and leave an error object.
HRESULT RaiseBare() try { throw ClassError(E_FAIL, L"Object not initialized"); } catch (const ClassError& error) {
    ComPtr<ICreateErrorInfo> creator;
    CreateErrorInfo(creator.Receive());
    creator->SetDescription(Bstr(error.description()).get());
    SetErrorInfo(0, creator.As<IErrorInfo>().get());
    return error.code();
}

bool Failing() {
    const auto file = test::CreateObject<_CDatFile>(__uuidof(::CDatFile));
    return bench::Compare(
        "member that raises", 0.75,
        [&] {
            Bstr text;
            file->GetHumanReadable(text.Receive());
        },
        [] { RaiseBare(); });
}

class Sink final : public test::BareDispatch {
  public:
    // A caller does not know the sink behind the interface, so nothing of it may become a part of the caller.
    [[gnu::noinline]] STDMETHODIMP Invoke(DISPID, REFIID, LCID, WORD, DISPPARAMS*, VARIANT*, EXCEPINFO*,
                                          UINT*) noexcept override {
        ++events;
        return S_OK;
    }
    long events = 0;
};

// A text raises about as many events as it has bytes.
bool Events(const char* name, int sinks, double target) {
    const auto source = test::CreateObject<_CCRC32>(__uuidof(::CCRC32));
    ComPtr<IConnectionPoint> point;
    source.As<IConnectionPointContainer>()->FindConnectionPoint(__uuidof(__CCRC32), point.Receive());
    const auto sink = ComPtr<Sink>::Attach(new Sink);
    DWORD cookie = 0;
    for (int i = 0; i < sinks; ++i) point->Advise(sink.get(), &cookie);
    const Bstr text(std::wstring(1000, L'x'));
    BSTR given = text.get();
    LONG result = 0;
    IDispatch* bare = sink.get();
    source->GetCRCFromString(&given, &result);
    const long events = sink->events;
    return bench::Compare(
        name, target, [&] { source->GetCRCFromString(&given, &result); },
        [&] {
            DISPPARAMS none{};
            for (int i = 0; i < events; ++i) {
                asm volatile("" : "+r"(bare));
                bare->Invoke(1, IID_NULL, 0, DISPATCH_METHOD, &none, nullptr, nullptr, nullptr);
            }
        });
}

// A file whose seal is wrong can be looked up all the same.
bool Lookup() {
    std::string text = "[BEGIN]\r\n";
    std::unordered_map<std::wstring, std::wstring> peer;
    for (int i = 0; i < 10'000; ++i) {
        const std::string number = std::to_string(i);
        text += "CELL" + number + ".HR=Load of cell " + number + "\r\n";
        peer[L"CELL" + std::to_wstring(i) + L".HR"] = L"Load of cell " + std::to_wstring(i);
    }
    const test::ScratchFolder folder;
    const Bstr path(folder.Write(L"cells.dat", text + "[END]\r\n@CRC=1\r\n")), parameter(L"CELL7777");
    BSTR pathGiven = path.get(), parameterGiven = parameter.get();
    const auto file = test::CreateObject<_CDatFile>(__uuidof(::CDatFile));
    file->Initialize(&pathGiven, nullptr);
    file->put_Parameter(&parameterGiven);
    const std::wstring kept = L"CELL7777", suffix = L".HR";
    UINT ours = 0, theirs = 0;
    const bool met = bench::Compare(
        "lookup, unordered_map", 0.9,
        [&] {
            Bstr found;
            file->GetHumanReadable(found.Receive());
            ours = SysStringLen(found.get());
        },
        [&] { theirs = SysStringLen(Bstr(peer.find(kept + suffix)->second).get()); });
    if (ours != theirs) std::puts("The results differ.");
    return met && ours == theirs;
}

bool Creation() {
    ComPtr<IClassFactory> factory;
    const auto create = [&](REFCLSID clsid) {
        return [factory = [&] {
            ComPtr<IClassFactory> found;
            test::GetClassObject(clsid, IID_IClassFactory, found.ReceiveVoid());
            return found;
        }()] {
            ComPtr<IUnknown> object;
            factory->CreateInstance(nullptr, IID_IUnknown, object.ReceiveVoid());
        };
    };
    const auto font = [] {
        ComPtr<IFont> made;
        FONTDESC description{
            sizeof(FONTDESC), const_cast<LPOLESTR>(L"MS Sans Serif"), {{82500, 0}}, FW_NORMAL, 0, 0, 0, 0};
        OleCreateFontIndirect(&description, IID_IFont, made.ReceiveVoid());
    };
    const auto lookup = [] {
        CLSID clsid;
        CLSIDFromProgID(L"Velk1.Resources", &clsid);
    };
    bool met = bench::Compare("CFontDialog, StdFont", 0.8, create(__uuidof(::CFontDialog)), font);
    met &= bench::Compare("CDatFile, one lookup", 0.9, create(__uuidof(::CDatFile)), lookup);
    const auto arrow = [shape = LoadCursorW(nullptr, IDC_ARROW)] { SetCursor(shape); };
    met &=
        bench::Compare("CHourglass, SetCursor", 0.7, create(__uuidof(::CHourglass)), arrow);  // its value is never set
    met &= bench::Compare("CLinkedList, StdFont", 7, create(__uuidof(::CLinkedList)), font);
    return met;
}

}  // namespace

int main() {
    CoInitializeEx(nullptr, COINIT_APARTMENTTHREADED);
    bool met = LateCalls();
    met &= Failing();
    met &= Events("event, one sink", 1, 0.5);
    met &= Events("event, two sinks", 2, 0.5);
    met &= Lookup();
    met &= Creation();
    return met ? 0 : 1;
}
