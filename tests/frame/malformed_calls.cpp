// Calls every member of every class with arguments that no sane client passes, mixed with sane ones. Whatever comes in,
// the library answers with a proper code, stays alive and leaks nothing. The order is random but always the same.
#include <gtest/gtest.h>

#include <algorithm>
#include <cstdio>
#include <deque>
#include <map>
#include <random>
#include <set>

#include "frame/value_object.h"
#include "support/client.h"
#include "support/late_bound.h"
#include "support/malloc_spy.h"
#include "support/scratch_folder.h"
#include "tools/type_reader.h"

namespace velk::test {
namespace {

constexpr unsigned kSeed = 20030117;
constexpr int kCalls = 200'000;
constexpr int kCallsAnObject = 100;

// "CClass.Member" of what cannot be called here, each with the reason.
const std::set<std::wstring> kLeftOut{
    // Wait for a person.
    L"CFileDialog.Show",
    L"CFontDialog.Show",
    L"CPrintDialog.Show",
};

std::mt19937 engine(kSeed);

int Below(int limit) { return static_cast<int>(engine() % static_cast<unsigned>(limit)); }
bool OneIn(int count) { return Below(count) == 0; }
template <class Values>
auto& AnyOf(Values& values) {
    return values[static_cast<std::size_t>(Below(static_cast<int>(std::size(values))))];
}

struct Taken {
    VARTYPE type;
    bool byReference;
};

struct Member {
    std::wstring name;
    DISPID id;
    WORD kind;
    std::vector<Taken> parameters;
};

struct Class {
    std::wstring name;
    CLSID clsid;
    std::vector<Member> members;
};

Taken Resolve(const Type& type, const TYPEDESC& description) {
    if (description.vt == VT_PTR) {
        const Taken target = Resolve(type, *description.lptdesc);
        return {target.type, target.type != VT_DISPATCH || description.lptdesc->vt != VT_USERDEFINED};
    }
    if (description.vt == VT_SAFEARRAY) return {static_cast<VARTYPE>(VT_ARRAY | description.lptdesc->vt), false};
    if (description.vt != VT_USERDEFINED) return {description.vt, false};
    Type named;
    ThrowIfFailed(type->GetRefTypeInfo(description.hreftype, named.Receive()));
    const auto attributes = AttributesOf(named);
    if (attributes->typekind == TKIND_ALIAS) return Resolve(named, attributes->tdescAlias);
    return {static_cast<VARTYPE>(attributes->typekind == TKIND_ENUM ? VT_I4 : VT_DISPATCH), false};
}

Member ReadMember(const Type& type, const FUNCDESC& function) {
    Member member{DocumentationOf(type, function.memid).name, function.memid, static_cast<WORD>(function.invkind), {}};
    for (SHORT i = 0; i < function.cParams; ++i) {
        const ELEMDESC& parameter = function.lprgelemdescParam[i];
        if (parameter.paramdesc.wParamFlags & PARAMFLAG_FRETVAL) continue;
        member.parameters.push_back(Resolve(type, parameter.tdesc));
    }
    return member;
}

std::vector<Class> ReadClasses() {
    std::vector<Class> classes;
    for (const Type& coclass : TypesOf(LoadTypes(LibraryPath().c_str()))) {
        if (AttributesOf(coclass)->typekind != TKIND_COCLASS) continue;
        Class read{NameOf(coclass), AttributesOf(coclass)->guid, {}};
        const Type face = OwnMembers(Implemented(coclass, 0));
        for (UINT i = 0; i < AttributesOf(face)->cFuncs; ++i) {
            Member member = ReadMember(face, *FunctionOf(face, i));
            if (!kLeftOut.count(read.name + L"." + member.name)) read.members.push_back(std::move(member));
        }
        classes.push_back(std::move(read));
    }
    return classes;
}

Variant Of(VARTYPE type, LONGLONG bits = 0) {
    Variant value;
    value.vt = type;
    value.llVal = bits;
    return value;
}

// ---- Values that own what they hold ----

std::wstring AnyText() {
    static const wchar_t* const kTexts[] = {L"",    L"0",    L"-1",         L"1e999",
                                            L"abc", L"True", L"12/31/1999", L"C:\\none\\x.dat"};
    if (OneIn(2)) return AnyOf(kTexts);
    std::wstring text(static_cast<std::size_t>(OneIn(200) ? Below(100'000) : Below(40)), L' ');
    for (wchar_t& c : text) c = static_cast<wchar_t>(OneIn(3) ? engine() : L'!' + Below(90));
    return text;
}

Variant TextValue() { return Of(VT_BSTR, OneIn(10) ? 0 : reinterpret_cast<LONG_PTR>(Bstr(AnyText()).Detach())); }

Variant NumberValue() {
    static const LONGLONG kBits[] = {
        0, 1, -1, 7, 0x7FFF, 0x8000, 0x7FFFFFFF, 0x80000000, 0x7FF8000000000000, 0x7FF0000000000000};
    static const VARTYPE kTypes[] = {VT_EMPTY, VT_NULL,  VT_I2,   VT_I4,   VT_R4,     VT_R8,  VT_CY,
                                     VT_DATE,  VT_ERROR, VT_BOOL, VT_I1,   VT_UI1,    VT_UI2, VT_UI4,
                                     VT_I8,    VT_UI8,   VT_INT,  VT_UINT, VT_DECIMAL};
    Variant value = Of(AnyOf(kTypes), OneIn(3) ? static_cast<LONGLONG>(engine()) << Below(32) : AnyOf(kBits));
    if (value.vt == VT_DECIMAL) value.decVal.Hi32 = engine();
    return value;
}

// The objects that calls pass. Reading one runs foreign code.
std::vector<ComPtr<ValueObject>> objects;

Variant ObjectValue() {
    const VARTYPE type = OneIn(3) ? VT_UNKNOWN : VT_DISPATCH;
    return Of(type, OneIn(4) ? 0 : reinterpret_cast<LONG_PTR>(ComPtr<ValueObject>(AnyOf(objects)).Detach()));
}

Variant SimpleValue() { return OneIn(3) ? TextValue() : OneIn(3) ? ObjectValue() : NumberValue(); }

void Fill(SAFEARRAY* array, VARTYPE type) {
    std::size_t count = 1;
    for (USHORT i = 0; i < array->cDims; ++i) count *= array->rgsabound[i].cElements;
    for (std::size_t i = 0; i < count; ++i) {
        if (type == VT_BSTR) static_cast<BSTR*>(array->pvData)[i] = TextValue().Detach().bstrVal;
        if (type == VT_VARIANT) static_cast<VARIANT*>(array->pvData)[i] = SimpleValue().Detach();
    }
}

Variant StringArray() {
    SAFEARRAY* const array = SafeArrayCreateVector(VT_BSTR, OneIn(2), static_cast<ULONG>(Below(5)));
    Fill(array, VT_BSTR);
    return Of(VT_ARRAY | VT_BSTR, reinterpret_cast<LONG_PTR>(array));
}

// Of any type, dimensions and bounds; sometimes not allocated, without data, or of another type than its value says.
Variant ArrayValue() {
    static const VARTYPE kTypes[] = {VT_BSTR, VT_VARIANT, VT_BSTR, VT_VARIANT, VT_I4, VT_UI1, VT_R8, VT_DISPATCH};
    static const LONG kLowest[] = {0, 1, -3, 0x7FFFFFF0};
    const VARTYPE type = AnyOf(kTypes);
    const VARTYPE said = VT_ARRAY | (OneIn(8) ? AnyOf(kTypes) : type);
    if (OneIn(8)) return Of(said);
    SAFEARRAY* array = nullptr;
    const UINT dimensions = OneIn(2) ? 1 : static_cast<UINT>(1 + Below(3));
    SAFEARRAYBOUND bounds[3];
    for (SAFEARRAYBOUND& bound : bounds) bound = {static_cast<ULONG>(Below(5)), AnyOf(kLowest)};
    if (OneIn(8)) {
        SafeArrayAllocDescriptorEx(type, dimensions, &array);
        std::copy_n(bounds, dimensions, array->rgsabound);
    } else {
        array = SafeArrayCreate(type, dimensions, bounds);
        Fill(array, type);
    }
    return Of(said, reinterpret_cast<LONG_PTR>(array));
}

// A type that may not exist, without contents: no client can pass a pointer of a kind that nobody knows.
Variant WildValue() {
    const auto type = static_cast<VARTYPE>(OneIn(2) ? engine() : Below(80) | (Below(8) << 12));
    return Of(type);
}

Variant AnyValue() {
    if (OneIn(8)) return WildValue();
    return OneIn(4) ? ArrayValue() : SimpleValue();
}

Variant SaneValue(VARTYPE type) {
    switch (type) {
        case VT_VARIANT:
            return OneIn(5) ? StringArray() : SimpleValue();
        case VT_BSTR:
            return TextValue();
        case VT_DISPATCH:
        case VT_UNKNOWN:
            return ObjectValue();
        case VT_ARRAY | VT_BSTR:
            return OneIn(5) ? Of(type) : StringArray();
        case VT_R8: {
            Variant value = Of(type);
            value.dblVal = Below(1000) / 8.0;
            return value;
        }
        default:
            return Of(type, Below(5));
    }
}

// ---- Arguments ----

// The client's side of one call: its values and variables, which go with it.
class Client {
  public:
    Client() noexcept { current_ = this; }
    Client(const Client&) = delete;
    Client& operator=(const Client&) = delete;
    ~Client() { current_ = nullptr; }

    // An argument as a client that knows the member passes it.
    VARIANT Sane(Taken taken) {
        Variant value = OneIn(4) ? SimpleValue() : SaneValue(taken.type);
        if (value.vt != taken.type || OneIn(3)) return OneIn(2) ? Plain(std::move(value)) : Variable(std::move(value));
        return taken.byReference ? Reference(std::move(value)) : Plain(std::move(value));
    }

    VARIANT Any() {
        switch (Below(8)) {
            case 0:
                return OneIn(3) ? Missing() : Arg(static_cast<VARIANT*>(nullptr));
            case 1:
                return variables_.empty() ? Missing() : Arg(AnyOf(variables_));
            case 2:
            case 3:
                return Variable(AnyValue());
            case 4: {
                Variant indirect;
                static_cast<VARIANT&>(indirect) = OneIn(2) ? Reference(AnyValue()) : Variable(AnyValue());
                return Variable(std::move(indirect));
            }
            case 5:
                return Reference(AnyValue());
            default:
                return Plain(AnyValue());
        }
    }

    // While a default property is read or an event handled, foreign code changes one of the client's variables.
    static void Interfere() {
        if (!current_ || current_->variables_.empty() || OneIn(2)) return;
        VARIANT* const variable = AnyOf(current_->variables_);
        if (SUCCEEDED(VariantClear(variable)))
            *variable = OneIn(2) ? AnyValue().Detach() : Ref(static_cast<VARTYPE>(VT_I2 + Below(20)), nullptr);
    }

  private:
    Variant& Keep(Variant value) { return values_.emplace_back(std::move(value)); }

    VARIANT Plain(Variant value) { return Keep(std::move(value)); }
    VARIANT Variable(Variant value) {
        variables_.push_back(&Keep(std::move(value)));
        return Arg(variables_.back());
    }
    VARIANT Reference(Variant value) {
        Variant& kept = Keep(std::move(value));
        const bool whole = kept.vt == VT_DECIMAL || kept.vt == VT_VARIANT;
        return Ref(kept.vt, whole || kept.vt & VT_BYREF ? nullptr : &kept.llVal);
    }

    static inline Client* current_ = nullptr;
    std::deque<Variant> values_;
    std::vector<VARIANT*> variables_;
};

// ---- Calls ----

struct Request {
    DISPID id;
    WORD flags;
    IID iid = IID_NULL;
    std::vector<VARIANT> arguments{};
    std::vector<DISPID> names = std::vector<DISPID>(64, DISPID_PROPERTYPUT);
    DISPPARAMS parameters{};
    bool isNull = false;
};

void Damage(Request& request, Client& client) {
    static const DISPID kIds[] = {0, -1, -3, -4, -5, 3, 99, 0x7FFFFFFF, static_cast<DISPID>(0x80000000)};
    DISPPARAMS& parameters = request.parameters;
    switch (Below(12)) {
        case 0:
            parameters.cArgs = static_cast<UINT>(Below(static_cast<int>(parameters.cArgs) + 1));
            break;
        case 1:
            for (int i = 1 + Below(20); i > 0; --i) request.arguments.push_back(client.Any());
            parameters.rgvarg = request.arguments.data();
            parameters.cArgs = static_cast<UINT>(request.arguments.size());
            break;
        case 2:
            parameters.rgvarg = nullptr;
            break;
        case 3:
            parameters.rgdispidNamedArgs = nullptr;
            parameters.cNamedArgs = static_cast<UINT>(Below(3));
            break;
        case 4:
        case 5:
            parameters.cNamedArgs = static_cast<UINT>(Below(static_cast<int>(parameters.cArgs) + 2));
            for (DISPID& name : request.names) name = OneIn(3) ? AnyOf(kIds) : Below(4);
            break;
        case 6:
            parameters.cArgs = 0xFFFFFFFF - static_cast<UINT>(Below(3));
            break;
        case 7:
            parameters.cNamedArgs = 0xFFFFFFFF - static_cast<UINT>(Below(3));
            break;
        case 8:
            request.id = AnyOf(kIds);
            break;
        case 9:
            request.flags = static_cast<WORD>(OneIn(2) ? Below(16) : engine());
            break;
        case 10:
            request.iid = OneIn(2) ? IID_IDispatch : IID_IUnknown;
            break;
        default:
            request.isNull = true;
    }
}

Request Prepare(const Member& member, Client& client, bool sane) {
    Request request{member.id, member.kind};
    for (const Taken taken : member.parameters) {
        request.arguments.push_back(sane || OneIn(2) ? client.Sane(taken) : client.Any());
    }
    std::reverse(request.arguments.begin(), request.arguments.end());
    const bool isLet = (member.kind & (INVOKE_PROPERTYPUT | INVOKE_PROPERTYPUTREF)) != 0;
    request.parameters = {request.arguments.data(), request.names.data(), static_cast<UINT>(request.arguments.size()),
                          isLet ? 1u : 0u};
    if (!sane && OneIn(2)) Damage(request, client);
    return request;
}

bool IsProper(HRESULT answer) {
    const bool automation = answer >= DISP_E_UNKNOWNINTERFACE && answer <= DISP_E_BUFFERTOOSMALL;
    return answer == S_OK || automation || answer == E_INVALIDARG || answer == E_POINTER || answer == E_OUTOFMEMORY;
}

const Class* currentClass = nullptr;
const Member* currentMember = nullptr;
int callsMade = 0;

std::string Where() {
    char text[200];
    std::snprintf(text, sizeof(text), "call %d, %ls.%ls", callsMade, currentClass->name.c_str(),
                  currentMember->name.c_str());
    return text;
}

LONG WINAPI TellWhere(EXCEPTION_POINTERS* crash) {
    std::printf("crash %08lx at %s\n", crash->ExceptionRecord->ExceptionCode, Where().c_str());
    std::fflush(stdout);
    return EXCEPTION_EXECUTE_HANDLER;
}

class Campaign {
  public:
    void Run(const std::vector<Class>& classes, int calls) {
        const int last = callsMade + calls;
        while (callsMade < last) {
            currentClass = &AnyOf(classes);
            const ComPtr<IDispatch> object = CreateObject<IDispatch>(currentClass->clsid);
            ComPtr<IConnectionPoint> point = OneIn(3) ? EventsOf(object) : nullptr;
            DWORD cookie = 0;
            const HRESULT advised = point ? point->Advise(AnyOf(objects).get(), &cookie) : S_OK;
            EXPECT_EQ(S_OK, advised);
            for (int i = 0; i < kCallsAnObject; ++i) Call(object.get());
            if (point) point->Unadvise(cookie);
        }
        SetErrorInfo(0, nullptr);
    }

    void Print() const {
        std::printf("seed %u, %d calls\n", kSeed, callsMade);
        for (const auto& [answer, count] : answers_) std::printf("%08lx %7d\n", answer, count);
    }

  private:
    static ComPtr<IConnectionPoint> EventsOf(const ComPtr<IDispatch>& object) {
        ComPtr<IEnumConnectionPoints> points;
        ComPtr<IConnectionPoint> point;
        const auto container = object.As<IConnectionPointContainer>();
        if (container) container->EnumConnectionPoints(points.Receive());
        if (points) points->Next(1, point.Receive(), nullptr);
        return point;
    }

    void Call(IDispatch* object) {
        if (currentClass->members.empty()) return;
        currentMember = &AnyOf(currentClass->members);
        ++callsMade;
        Client client;
        if (OneIn(20)) return AskForNames(object);
        Request request = Prepare(*currentMember, client, OneIn(3));
        Variant result;
        EXCEPINFO exception{};
        UINT badArgument = 0;
        const bool wantsException = !OneIn(4);
        const LCID locale = OneIn(2) ? LOCALE_USER_DEFAULT : engine() & 0xFFFF;
        const HRESULT answer = object->Invoke(
            request.id, request.iid, locale, request.flags, request.isNull ? nullptr : &request.parameters,
            OneIn(4) ? nullptr : &result, wantsException ? &exception : nullptr, OneIn(4) ? nullptr : &badArgument);
        Check(answer);
        if (answer == DISP_E_EXCEPTION && wantsException) {
            EXPECT_TRUE(FAILED(exception.scode) && SysStringLen(exception.bstrDescription)) << Where();
        } else {
            EXPECT_TRUE(!exception.scode && !exception.bstrDescription) << Where();
        }
        EXPECT_TRUE(SUCCEEDED(answer) || result.vt == VT_EMPTY) << Where();
        for (const BSTR text : {exception.bstrSource, exception.bstrDescription, exception.bstrHelpFile})
            SysFreeString(text);
    }

    void AskForNames(IDispatch* object) {
        std::wstring names[3];
        LPOLESTR given[3];
        for (int i = 0; i < 3; ++i) {
            names[i] = OneIn(2) ? currentMember->name : AnyText();
            given[i] = OneIn(10) ? nullptr : names[i].data();
        }
        DISPID ids[3];
        Check(object->GetIDsOfNames(OneIn(10) ? IID_IDispatch : IID_NULL, OneIn(10) ? nullptr : given,
                                    static_cast<UINT>(Below(4)), engine(), OneIn(10) ? nullptr : ids));
    }

    void Check(HRESULT answer) {
        ++answers_[static_cast<ULONG>(answer)];
        EXPECT_TRUE(IsProper(answer)) << Where() << std::hex << ": " << answer;
    }

    std::map<ULONG, int> answers_;
};

void MakeObjects() {
    const Variant text = Text(L"12");
    for (const VARIANT& value : {Arg(12L), static_cast<const VARIANT&>(text), Missing()}) {
        objects.push_back(ValueObject::Make(value));
    }
    for (const HRESULT answer : {E_FAIL, DISP_E_EXCEPTION, DISP_E_MEMBERNOTFOUND, E_OUTOFMEMORY, RPC_E_DISCONNECTED}) {
        objects.push_back(ValueObject::Make(Arg(0L)));
        objects.back()->answer = answer;
    }
    for (const auto& object : objects) object->onRead = &Client::Interfere;
}

TEST(MalformedCalls, GetAProperAnswerAndLeaveNothingBehind) {
    SetUnhandledExceptionFilter(&TellWhere);
    const std::vector<Class> classes = ReadClasses();
    ASSERT_FALSE(classes.empty());
    MakeObjects();
    Campaign campaign;
    campaign.Run(classes, static_cast<int>(classes.size()) * 10 * kCallsAnObject);  // until all that stays is there
    const LONG blocks = MallocSpy::Alive();
    const std::size_t handles = OpenHandles();
    campaign.Run(classes, kCalls);
    campaign.Print();
    EXPECT_EQ(blocks, MallocSpy::Alive());
    EXPECT_EQ(handles, OpenHandles());
    for (const auto& object : objects) EXPECT_EQ(1u, object->count());
    EXPECT_TRUE(CanUnload());
    objects.clear();
}

}  // namespace
}  // namespace velk::test
