#include "facts/values.h"

#include <algorithm>
#include <cwchar>
#include <stdexcept>
#include <utility>

#include "platform/text.h"
#include "support/late_bound.h"

namespace velk::facts {
namespace {

constexpr std::pair<wchar_t, wchar_t> kEscapes[] = {{L'0', L'\0'}, {L'r', L'\r'}, {L'n', L'\n'},
                                                    {L't', L'\t'}, {L'"', L'"'},  {L'\\', L'\\'}};

struct Suffix {
    wchar_t mark;
    VARTYPE type;
};
constexpr Suffix kSuffixes[] = {{L'i', VT_I2}, {L'b', VT_UI1}, {L'f', VT_R4}, {L'c', VT_CY}};
constexpr std::pair<std::wstring_view, VARTYPE> kTypes[] = {
    {L"I1", VT_I1},           {L"UI2", VT_UI2},     {L"UI4", VT_UI4},        {L"I8", VT_I8},
    {L"UI8", VT_UI8},         {L"Int", VT_INT},     {L"UInt", VT_UINT},      {L"Date", VT_DATE},
    {L"Decimal", VT_DECIMAL}, {L"Error", VT_ERROR}, {L"Unknown", VT_UNKNOWN}};

Variant Converted(VARIANT value, VARTYPE type) {
    Variant made;
    if (FAILED(VariantChangeTypeEx(&made, &value, LOCALE_INVARIANT, VARIANT_ALPHABOOL, type))) {
        throw std::runtime_error("a value that does not fit its type");
    }
    return made;
}

Variant NumberOf(std::wstring text) {
    if (text.starts_with(L"0x"))
        return Converted(test::Arg(static_cast<LONG>(std::wcstoul(text.c_str(), nullptr, 16))), VT_I4);
    VARTYPE type = text.find(L'.') != text.npos ? VT_R8 : VT_I4;
    for (const Suffix& suffix : kSuffixes) {
        if (text.back() == suffix.mark) type = suffix.type, text.pop_back();
    }
    return Converted(test::Text(text), type);
}

// Errors and objects are no numbers: they only get another type.
Variant TypedValue(const std::wstring& text, std::wstring_view typeName, Variables& variables) {
    for (const auto& [name, type] : kTypes) {
        if (name != typeName) continue;
        if (type != VT_ERROR && type != VT_UNKNOWN) return Converted(test::Text(text), type);
        Variant made = ValueOf(text, variables);
        made.vt = type;
        return made;
    }
    throw std::runtime_error("no type: " + ToAnsi(typeName));
}

Variant BytesOf(std::wstring_view quoted) {
    const std::string bytes = ToAnsi(Unquote(quoted));
    Variant made;
    made.bstrVal = SysAllocStringByteLen(bytes.data(), static_cast<UINT>(bytes.size()));
    made.vt = VT_BSTR;
    return made;
}

std::wstring ShowText(BSTR text) {
    const UINT size = SysStringByteLen(text);
    if (!text) return L"NullText";
    if (size % 2 == 0) return Quote(View(text));
    return L"bytes " + Quote(Wide(FromAnsi({reinterpret_cast<const char*>(text), size})));
}

Variant ArrayOf(std::wstring_view inside, Variables& variables) {
    const auto items = Split(inside, L",");
    Variant made;
    made.parray = SafeArrayCreateVector(VT_VARIANT, 0, static_cast<ULONG>(items.size()));
    made.vt = VT_ARRAY | VT_VARIANT;
    for (std::size_t i = 0; i < items.size(); ++i) {
        static_cast<VARIANT*>(made.parray->pvData)[i] = ValueOf(items[i], variables).Detach();
    }
    return made;
}

Variant NamedValue(std::wstring_view text, Variables& variables) {
    Variant made;
    if (text == L"Empty") return made;
    if (text == L"Null") return made.vt = VT_NULL, std::move(made);
    if (text == L"Nothing") return made.vt = VT_DISPATCH, std::move(made);
    if (text == L"NullText") return made.vt = VT_BSTR, std::move(made);
    if (text == L"Missing") return static_cast<VARIANT&>(made) = test::Missing(), std::move(made);
    if (text == L"True" || text == L"False") return Converted(test::Arg(text == L"True"), VT_BOOL);
    const bool byReference = text.starts_with(L'&');
    const auto found = variables.find(text.substr(byReference));
    if (found == variables.end()) throw std::runtime_error("no value: " + ToAnsi(text));
    if (byReference) {
        static_cast<VARIANT&>(made) = test::Arg(&found->second);
    } else {
        VariantCopy(&made, &found->second);
    }
    return made;
}

std::wstring ItemsOf(SAFEARRAY* array) {
    if (!array || array->cDims != 1) return L"";
    const LONG first = array->rgsabound[0].lLbound;
    std::wstring shown = first ? std::to_wstring(first) + L": " : L"";
    VARTYPE type = VT_EMPTY;
    SafeArrayGetVartype(array, &type);
    for (LONG i = first, n = 0; n < static_cast<LONG>(array->rgsabound[0].cElements); ++i, ++n) {
        Variant item;
        item.vt = type;
        SafeArrayGetElement(array, &i, type == VT_VARIANT ? static_cast<void*>(&item) : &item.byref);
        shown += (n ? L", " : L"") + Show(item);
    }
    return shown;
}

}  // namespace

std::wstring_view Trim(std::wstring_view text) {
    while (text.starts_with(L' ')) text.remove_prefix(1);
    while (text.ends_with(L' ')) text.remove_suffix(1);
    return text;
}

bool Alike(std::wstring_view pattern, std::wstring_view line) {
    constexpr std::wstring_view kEnds = L" ,]\n", kEndsHere = L",]\n";  // "dc 1" is one
    std::size_t at = 0;
    bool quoted = false, escaping = false;
    for (std::size_t i = 0; i < pattern.size(); ++i, ++at) {
        const bool escaped = std::exchange(escaping, !escaping && pattern[i] == L'\\');
        const bool isWord = (i == 0 || pattern[i - 1] == L' ' || pattern[i - 1] == L'[') &&
                            (i + 1 == pattern.size() || kEnds.find(pattern[i + 1]) != kEnds.npos);
        if (pattern[i] == L'_' && isWord && !quoted) {
            if (at < line.size() && line[at] == L'"') at = line.find(L'"', at + 1);
            at = std::min({line.find_first_of(kEndsHere, at), line.find(L" quietly", at), line.size()}) - 1;
        } else if (at >= line.size() || pattern[i] != line[at]) {
            return false;
        } else if (pattern[i] == L'"' && !escaped) {
            quoted = !quoted;
        }
    }
    return true;
}

std::vector<std::wstring> Split(std::wstring_view text, std::wstring_view separator) {
    std::vector<std::wstring> pieces;
    std::size_t start = 0, depth = 0;
    bool quoted = false;
    for (std::size_t i = 0; i < text.size(); ++i) {
        if (quoted && text[i] == L'\\') {
            ++i;
        } else if (text[i] == L'"') {
            quoted = !quoted;
        } else if (!quoted && (text[i] == L'[' || text[i] == L']')) {
            depth += text[i] == L'[' ? 1 : -1;
        } else if (!quoted && depth == 0 && text.substr(i).starts_with(separator)) {
            pieces.emplace_back(Trim(text.substr(start, i - start)));
            start = i + separator.size();
            i = start - 1;
        }
    }
    if (const auto last = Trim(text.substr(start)); !last.empty() || !pieces.empty()) pieces.emplace_back(last);
    return pieces;
}

std::wstring Unquote(std::wstring_view quoted) {
    std::wstring text;
    for (std::size_t i = 1; i + 1 < quoted.size(); ++i) {
        if (quoted[i] != L'\\') {
            text += quoted[i];
        } else if (quoted[++i] == L'u') {
            text += static_cast<wchar_t>(std::wcstoul(std::wstring(quoted.substr(i + 1, 4)).c_str(), nullptr, 16));
            i += 4;
        } else {
            for (const auto& [mark, character] : kEscapes) {
                if (mark == quoted[i]) text += character;
            }
        }
    }
    return text;
}

std::wstring Quote(std::wstring_view text) {
    std::wstring quoted = L"\"";
    for (const wchar_t character : text) {
        const wchar_t* escaped = nullptr;
        for (const auto& [mark, meant] : kEscapes) {
            if (meant == character) escaped = &mark;
        }
        wchar_t code[8];
        swprintf(code, 8, L"\\u%04X", static_cast<unsigned>(character));
        quoted += escaped                                ? std::wstring{L'\\', *escaped}
                  : character > L'~' || character < L' ' ? code
                                                         : std::wstring(1, character);
    }
    return quoted + L'"';
}

Variant ValueOf(std::wstring_view text, Variables& variables) {
    if (const auto parts = Split(text, L"*"); parts.size() == 2 && Split(text, L" + ").size() == 1) {
        std::wstring repeated;
        for (int i = std::stoi(parts[1]); i > 0; --i) repeated += Unquote(parts[0]);
        return test::Text(repeated);
    }
    if (const auto parts = Split(text, L" as "); parts.size() == 2) return TypedValue(parts[0], parts[1], variables);
    if (const auto parts = Split(text, L" + "); parts.size() == 2) {
        return test::Text(std::wstring(View(ValueOf(parts[0], variables).bstrVal)) +
                          std::wstring(View(ValueOf(parts[1], variables).bstrVal)));
    }
    if (text.starts_with(L'"')) return test::Text(Unquote(text));
    if (text.starts_with(L"bytes ")) return BytesOf(text.substr(6));
    if (text.starts_with(L'[')) return ArrayOf(text.substr(1, text.size() - 2), variables);
    if (text.find_first_of(L"-0123456789") == 0) return NumberOf(std::wstring(text));
    return NamedValue(text, variables);
}

std::wstring Show(const VARIANT& value) {
    if (value.vt & VT_ARRAY) return L"[" + ItemsOf(value.parray) + L"]";
    switch (value.vt) {
        case VT_EMPTY:
            return L"Empty";
        case VT_NULL:
            return L"Null";
        case VT_BSTR:
            return ShowText(value.bstrVal);
        case VT_DISPATCH:
            return value.punkVal ? L"object" : L"Nothing";
        case VT_UNKNOWN:
            return value.punkVal ? L"object as Unknown" : L"Nothing as Unknown";
        case VT_ERROR:
            return value.scode == DISP_E_PARAMNOTFOUND ? L"Missing" : std::to_wstring(value.scode) + L" as Error";
        default:
            break;
    }
    std::wstring shown(View(Converted(value, VT_BSTR).bstrVal));
    if (value.vt == VT_R8 && shown.find_first_of(L".E") == shown.npos) shown += L".0";
    for (const Suffix& suffix : kSuffixes) {
        if (value.vt == suffix.type) shown += suffix.mark;
    }
    for (const auto& [name, type] : kTypes) {
        if (value.vt == type) shown += L" as " + std::wstring(name);
    }
    return shown;
}

}  // namespace velk::facts
