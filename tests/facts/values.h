// Values as facts write them. Each text stands for one type, so that what a member gives is compared as text:
//   12 Long   12i Integer   12b Byte   1.5 Double   1.5f Single   12c Currency   True False   "text"   Empty Null
//   Nothing Missing NullText   7 as UI4: the other types, by their VT_ names   bytes "abc": a text of an odd number of
//   bytes [1, "a"] an array of variants (shown so whatever it holds; [1: "a"] is one from index 1) a name: a variable's
//   value   &name: the variable itself, as scripts hand it over
// In a text \0 \r \n \t \" \\ and \u20AC stand for characters, and $dir for the scenario's own folder. "x" * 600
// repeats a text, "a" + "b" joins two.
#pragma once

#include <map>
#include <string>
#include <string_view>
#include <vector>

#include "platform/variant.h"

namespace velk::facts {

using Variables = std::map<std::wstring, Variant, std::less<>>;

// Pieces between separators that stand outside texts and brackets, without the blanks round them.
std::vector<std::wstring> Split(std::wstring_view text, std::wstring_view separator);

// What follows the first separator, which is taken away with it; empty for none.
std::wstring Cut(std::wstring& text, std::wstring_view separator);

// Whether a line begins as a pattern does, in which _ stands for any word.
bool Alike(std::wstring_view pattern, std::wstring_view line);

std::wstring_view Trim(std::wstring_view text);

std::wstring Joined(const std::vector<std::wstring>& texts);  // with commas

// What the escapes of a quoted text stand for.
std::wstring Unquote(std::wstring_view quoted);
std::wstring Quote(std::wstring_view text);
std::wstring Quote(std::string_view bytes);

// Throws a text that says what is wrong with the line.
Variant ValueOf(std::wstring_view text, Variables& variables);

std::wstring Show(const VARIANT& value);

}  // namespace velk::facts
