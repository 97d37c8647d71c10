// Writes the call plans of a type library's dual interfaces, which the library embeds beside it: reading them from the
// type library in each process would cost more than creating an object and calling it. src/frame/dispatch/call_plan.cpp
// reads them and tells their form.
#include <cstdio>
#include <fstream>
#include <iterator>
#include <string>

#include "frame/dispatch/call_plan.h"
#include "tools/typelib/failed.h"
#include "tools/typelib/resolved_type.h"

namespace velk {
namespace {

Variant DefaultOf(VARTYPE type, const PARAMDESC& description) {
    Variant value;
    if (description.wParamFlags & PARAMFLAG_FHASDEFAULT) {
        VARIANT& stated = description.pparamdescex->varDefaultValue;
        ThrowIfFailed(type == VT_VARIANT ? VariantCopy(&value, &stated) : VariantChangeType(&value, &stated, 0, type));
    } else if (type == VT_VARIANT) {
        value.vt = VT_ERROR;
        value.scode = DISP_E_PARAMNOTFOUND;
    } else {
        value.vt = type;
        value.llVal = 0;
    }
    return value;
}

class Writer {
  public:
    const std::string& bytes() const noexcept { return bytes_; }

    template <class T>
    void Put(const T& value) {
        bytes_.append(reinterpret_cast<const char*>(&value), sizeof value);
    }
    void PutWord(std::size_t value) {
        if (value > 0xFFFF) Unsupported();
        Put(static_cast<WORD>(value));
    }
    void PutText(std::wstring_view text) {
        PutWord(text.size());
        for (const wchar_t character : text) {
            if (character > 0x7F) Unsupported();
            bytes_ += static_cast<char>(character);
        }
    }
    void PutBlock(const Writer& block) {
        Put(static_cast<DWORD>(block.bytes_.size()));
        bytes_ += block.bytes_;
    }

  private:
    std::string bytes_;
};

void PutDefault(Writer& writer, const Variant& value) {
    if (value.vt != VT_BSTR && !IsSelfContained(value.vt) && value.byref) Unsupported();
    writer.PutWord(value.vt);
    if (value.vt == VT_BSTR) {
        writer.PutText(View(value.bstrVal));
    } else {
        writer.Put(value.llVal);
    }
}

void PutParameter(Writer& writer, const Type& info, const ELEMDESC& element, BSTR name) {
    const ResolvedType type = Resolve(info, element.tdesc);
    const bool optional = (element.paramdesc.wParamFlags & (PARAMFLAG_FOPT | PARAMFLAG_FHASDEFAULT)) != 0;
    writer.PutText(View(name));
    writer.PutWord(type.type);
    writer.PutWord(type.byReference);
    writer.PutWord(optional);
    if (type.type == VT_DISPATCH || type.type == VT_UNKNOWN) writer.Put(type.iid);
    if (optional) PutDefault(writer, DefaultOf(type.type, element.paramdesc));
}

// The member's name followed by its parameters' names. A property's new value has none.
std::vector<Bstr> NamesOf(const Type& info, const FUNCDESC& function) {
    BSTR raw[kMaxArguments + 2] = {};
    UINT count = 0;
    ThrowIfFailed(info->GetNames(function.memid, raw, ARRAYSIZE(raw), &count));
    std::vector<Bstr> names(ARRAYSIZE(raw));
    for (UINT i = 0; i < count; ++i) *names[i].Receive() = raw[i];
    return names;
}

void PutMember(Writer& writer, const Type& info, const FUNCDESC& function) {
    const std::vector<Bstr> names = NamesOf(info, function);
    const bool hasResult = function.cParams > 0 &&
                           (function.lprgelemdescParam[function.cParams - 1].paramdesc.wParamFlags & PARAMFLAG_FRETVAL);
    const int parameters = function.cParams - (hasResult ? 1 : 0);
    if (parameters > static_cast<int>(kMaxArguments) || function.memid < 0) Unsupported();
    writer.PutText(View(names[0].get()));
    writer.PutWord(static_cast<std::size_t>(function.memid));
    writer.PutWord(function.invkind);
    writer.PutWord(static_cast<std::size_t>(function.oVft) / sizeof(void*));
    writer.PutWord(hasResult ? Resolve(info, function.lprgelemdescParam[parameters].tdesc).type : VARTYPE{VT_EMPTY});
    writer.PutWord(static_cast<std::size_t>(parameters));
    for (int i = 0; i < parameters; ++i)
        PutParameter(writer, info, function.lprgelemdescParam[i], names[static_cast<std::size_t>(i) + 1].get());
}

std::string PlansOf(const TypeLib& library) {
    Writer plans;
    for (const Type& type : TypesOf(library)) {
        const auto attributes = AttributesOf(type);
        if (attributes->typekind != TKIND_DISPATCH || !(attributes->wTypeFlags & TYPEFLAG_FDUAL)) continue;
        const Type own = OwnMembers(type);
        const UINT count = AttributesOf(own)->cFuncs;
        Writer members;
        members.PutWord(count);
        for (UINT i = 0; i < count; ++i) PutMember(members, own, *FunctionOf(own, i));
        plans.Put(attributes->guid);
        plans.PutBlock(members);
    }
    return plans.bytes();
}

std::wstring Widen(const char* text) { return {text, text + std::char_traits<char>::length(text)}; }

// What a built library has embedded.
std::string EmbeddedIn(const std::wstring& path) {
    const HMODULE module = LoadLibraryExW(path.c_str(), nullptr, LOAD_LIBRARY_AS_DATAFILE);
    const HRSRC found = FindResourceW(module, MAKEINTRESOURCEW(1), kCallPlans);
    const auto* bytes = static_cast<const char*>(LockResource(LoadResource(module, found)));
    return bytes ? std::string(bytes, SizeofResource(module, found)) : std::string();
}

int Run(const char* command, const char* path, const char* output) {
    const std::string plans = PlansOf(LoadTypes(Widen(path).c_str()));
    if (*command == 'c') return EmbeddedIn(Widen(path)) == plans ? 0 : (std::puts("not the type library's plans"), 1);
    std::ofstream file(output, std::ios::binary);
    file.write(plans.data(), static_cast<std::streamsize>(plans.size()));
    return file.flush() ? 0 : 1;
}

}  // namespace
}  // namespace velk

int main(int count, char** arguments) try {
    if (count != 4 && count != 3) return std::puts("usage: call_plans write TYPES OUTPUT | check LIBRARY"), 2;
    return velk::Run(arguments[1], arguments[2], arguments[count - 1]);
} catch (...) {
    return velk::Failed("call_plans");
}
