#include "facts/values.h"

#include <algorithm>
#include <cwchar>
#include <stdexcept>
#include <tuple>
#include <utility>

#include "platform/text.h"
#include "support/late_bound.h"

namespace velk::facts {
namespace {

// Characters with an escape, and what stands for each behind the backslash.
constexpr std::wstring_view kEscaped{L"\0\r\n\t\"\\", 6}, kEscapes = L"0rnt\"\\";

// What stands behind the values of a type.
constexpr std::pair<std::wstring_view, VARTYPE> kMarks[] = {
    {L"i", VT_I2},  {L" as I1", VT_I1},   {L" as Int", VT_INT},        {L" as Date", VT_DATE},
    {L"b", VT_UI1}, {L" as UI2", VT_UI2}, {L" as UI8", VT_UI8},        {L" as Decimal", VT_DECIMAL},
    {L"f", VT_R4},  {L" as UI4", VT_UI4}, {L" as UInt", VT_UINT},      {L" as Error", VT_ERROR},
    {L"c", VT_CY},  {L" as I8", VT_I8},   {L" as Unknown", VT_UNKNOWN}};

constexpr std::tuple<std::wstring_view, VARTYPE, LONG> kConstants[] = {
    {L"Empty", VT_EMPTY, 0},          {L"Null", VT_NULL, 0},
    {L"Nothing", VT_DISPATCH, 0},     {L"Nothing as Unknown", VT_UNKNOWN, 0},
    {L"NullText", VT_BSTR, 0},        {L"Missing", VT_ERROR, DISP_E_PARAMNOTFOUND},
    {L"True", VT_BOOL, VARIANT_TRUE}, {L"False", VT_BOOL, VARIANT_FALSE}};

Variant Converted(VARIANT value, VARTYPE type) {
    Variant made;
    if (FAILED(VariantChangeTypeEx(&made, &value, LOCALE_INVARIANT, VARIANT_ALPHABOOL, type))) {
        throw std::runtime_error("a value that does not fit its type");
    }
    return made;
}

Variant NumberOf(std::wstring text) {
    VARTYPE type = text.find(L'.') != text.npos ? VT_R8 : VT_I4;
    if (text.starts_with(L"0x")) return Converted(test::Text(L"&H" + text.substr(2)), type);
    for (const auto& [mark, marked] : kMarks) {
        if (text.ends_with(mark)) type = marked, text.resize(text.size() - mark.size());
    }
    const VARTYPE number = type == VT_ERROR ? VARTYPE{VT_I4} : type;
    Variant made = Converted(test::Text(text), number);
    made.vt = type;
    return made;
}

Variant BytesOf(std::wstring_view quoted) {
    const std::string bytes = ToAnsi(Unquote(quoted));
    return test::Owned(test::Arg(SysAllocStringByteLen(bytes.data(), static_cast<UINT>(bytes.size()))));
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
    for (const auto& [name, type, content] : kConstants) {
        if (name == text) return made.vt = type, made.lVal = content, std::move(made);
    }
    const bool byReference = text.starts_with(L'&');
    const auto found = variables.find(text.substr(byReference));
    if (found == variables.end()) throw std::runtime_error("no value: " + ToAnsi(text));
    if (byReference) return test::Owned(test::Arg(&found->second));
    VariantCopy(&made, &found->second);
    return made;
}

std::wstring ItemsOf(SAFEARRAY* array) {
    if (!array) return L"";
    const LONG first = array->rgsabound[0].lLbound;
    VARTYPE type = VT_EMPTY;
    SafeArrayGetVartype(array, &type);
    std::vector<std::wstring> shown;
    for (auto* at = static_cast<std::byte*>(array->pvData); shown.size() < array->rgsabound[0].cElements;) {
        Variant item;
        VARIANT place = test::Ref(type, std::exchange(at, at + array->cbElements));
        VariantCopyInd(&item, &place);
        shown.push_back(Show(item));
    }
    return (first ? std::to_wstring(first) + L": " : L"") + Joined(shown);
}

// The size of what comes next: a text in quotes, or one character.
std::size_t NextIn(std::wstring_view text) {
    if (!text.starts_with(L'"')) return 1;
    std::size_t end = 1;
    while (end < text.size() && text[end] != L'"') end += text[end] == L'\\' ? 2 : 1;
    return std::min(end + 1, text.size());
}

// The same, or a word of other characters.
std::size_t WordIn(std::wstring_view text) {
    const std::size_t size = std::min(text.find_first_of(L"\" ,[]\n"), text.size());
    return size > 0 ? size : std::min(NextIn(text), text.size());
}

// Where a separator stands first, outside texts and brackets.
std::size_t FindOutside(std::wstring_view text, std::wstring_view separator) {
    for (std::size_t i = 0, depth = 0; i < text.size(); i += NextIn(text.substr(i))) {
        if (depth == 0 && text.substr(i).starts_with(separator)) return i;
        depth += (text[i] == L'[') - (text[i] == L']');
    }
    return text.npos;
}

}  // namespace

std::wstring_view Trim(std::wstring_view text) {
    text.remove_prefix(std::min(text.find_first_not_of(L' '), text.size()));
    return text.substr(0, text.find_last_not_of(L' ') + 1);
}

bool Alike(std::wstring_view pattern, std::wstring_view line) {
    for (std::size_t size; !pattern.empty(); pattern.remove_prefix(size)) {
        const std::wstring_view word = pattern.substr(0, size = WordIn(pattern));
        if (word != L"_" && !line.starts_with(word)) return false;
        line.remove_prefix(word == L"_" ? WordIn(line) : size);
    }
    return true;
}

std::vector<std::wstring> Split(std::wstring_view text, std::wstring_view separator) {
    std::vector<std::wstring> pieces;
    for (std::size_t at; (at = FindOutside(text, separator)) != text.npos; text.remove_prefix(at + separator.size()))
        pieces.emplace_back(Trim(text.substr(0, at)));
    if (const auto last = Trim(text); !last.empty() || !pieces.empty()) pieces.emplace_back(last);
    return pieces;
}

std::wstring Cut(std::wstring& text, std::wstring_view separator) {
    const std::size_t at = FindOutside(text, separator);
    if (at == text.npos) return L"";
    const std::wstring rest(Trim(std::wstring_view(text).substr(at + separator.size())));
    text = Trim(std::wstring_view(text).substr(0, at));
    return rest;
}

std::wstring Joined(const std::vector<std::wstring>& texts) {
    std::wstring joined;
    for (const std::wstring& text : texts) joined += (joined.empty() ? L"" : L", ") + text;
    return joined;
}

std::wstring Unquote(std::wstring_view quoted) {
    std::wstring text;
    for (std::size_t i = 1; i + 1 < quoted.size(); ++i) {
        if (quoted[i] != L'\\') {
            text += quoted[i];
        } else if (quoted[++i] == L'u') {
            text += static_cast<wchar_t>(std::stoul(std::wstring(quoted.substr(i + 1, 4)), nullptr, 16));
            i += 4;
        } else {
            text += kEscaped.at(kEscapes.find(quoted[i]));
        }
    }
    return text;
}

std::wstring Quote(std::wstring_view text) {
    std::wstring quoted = L"\"";
    for (const wchar_t character : text) {
        wchar_t shown[8] = {character};
        const std::size_t escape = kEscaped.find(character);
        if (character < L' ' || character > L'~') swprintf(shown, 8, L"\\u%04X", static_cast<unsigned>(character));
        if (escape != kEscaped.npos) shown[0] = L'\\', shown[1] = kEscapes[escape], shown[2] = L'\0';
        quoted += shown;
    }
    return quoted + L'"';
}
std::wstring Quote(std::string_view bytes) { return Quote(Wide(FromAnsi(bytes))); }

Variant ValueOf(std::wstring_view text, Variables& variables) {
    if (const auto parts = Split(text, L" + "); parts.size() > 1) {
        std::wstring joined;
        for (const std::wstring& part : parts) joined += View(ValueOf(part, variables).bstrVal);
        return test::Text(joined);
    }
    if (const auto parts = Split(text, L" * "); parts.size() == 2) {
        std::wstring repeated;
        for (int i = std::stoi(parts[1]); i > 0; --i) repeated += Unquote(parts[0]);
        return test::Text(repeated);
    }
    if (text.starts_with(L'"')) return test::Text(Unquote(text));
    if (text.starts_with(L"bytes ")) return BytesOf(text.substr(6));
    if (text.starts_with(L'[')) return ArrayOf(text.substr(1, text.size() - 2), variables);
    if (text.find_first_of(L"-0123456789") == 0) return NumberOf(std::wstring(text));
    return NamedValue(text, variables);
}

std::wstring Show(const VARIANT& value) {
    if (value.vt & VT_ARRAY) return L"[" + ItemsOf(value.parray) + L"]";
    for (const auto& [name, type, content] : kConstants) {
        if (value.vt == type && (type <= VT_NULL || value.lVal == content)) return std::wstring(name);
    }
    if (value.vt == VT_BSTR) {
        const UINT size = SysStringByteLen(value.bstrVal);
        if (size % 2 == 0) return Quote(View(value.bstrVal));
        return L"bytes " + Quote(std::string_view(reinterpret_cast<const char*>(value.bstrVal), size));
    }
    std::wstring shown = L"object";
    if (value.vt == VT_ERROR)
        shown = std::to_wstring(value.scode);
    else if (value.vt != VT_DISPATCH && value.vt != VT_UNKNOWN)
        shown = View(Converted(value, VT_BSTR).bstrVal);
    if (value.vt == VT_R8 && shown.find_first_of(L".E") == shown.npos) shown += L".0";
    for (const auto& [mark, type] : kMarks) {
        if (value.vt == type) shown += mark;
    }
    return shown;
}

}  // namespace velk::facts
