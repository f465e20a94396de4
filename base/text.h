#pragma once

#include <cstdint>
#include <span>
#include <string>
#include <string_view>
#include <vector>

// Text helpers shared by every layer. Strings hold UTF-16 code units, one per
// wchar_t, on every platform; case mapping is the same on every platform.
namespace varnel::text {

wchar_t ToUpper(wchar_t c);
wchar_t ToLower(wchar_t c);
std::wstring Upper(std::wstring_view s);
std::wstring Lower(std::wstring_view s);
bool SameText(std::wstring_view a, std::wstring_view b);
bool StartsWithText(std::wstring_view s, std::wstring_view prefix);
bool EndsWithText(std::wstring_view s, std::wstring_view suffix);

// Case-insensitive search; npos when absent.
std::size_t FindText(std::wstring_view haystack, std::wstring_view needle, std::size_t from = 0);
bool ContainsText(std::wstring_view haystack, std::wstring_view needle);

// Every occurrence, left to right, without rescanning replaced text.
std::wstring ReplaceAll(std::wstring_view s, std::wstring_view from, std::wstring_view to);
std::wstring ReplaceAllText(std::wstring_view s, std::wstring_view from, std::wstring_view to);
std::wstring RemoveAll(std::wstring_view s, std::wstring_view what);

// Blanks and control characters (<= U+0020) at the ends.
std::wstring Trim(std::wstring_view s);
std::wstring TrimLeft(std::wstring_view s);
std::wstring TrimRight(std::wstring_view s);

// A string opening with quote yields the quoted part, doubled quotes made
// single; anything else, or an unclosed quote, comes back unchanged.
std::wstring Dequote(std::wstring_view s, wchar_t quote);

std::wstring IncludeTrailingBackslash(std::wstring_view s);
std::wstring ExcludeTrailingBackslash(std::wstring_view s);
// Up to and including the last "\" or ":"; empty when there is none.
std::wstring ExtractFilePath(std::wstring_view path);
std::wstring ExtractFileName(std::wstring_view path);

// UTF-16LE bytes <-> code units. An odd trailing byte is dropped; the text
// stops at the first zero code unit.
std::wstring FromUtf16Bytes(std::span<const std::uint8_t> bytes);
std::vector<std::uint8_t> ToUtf16Bytes(std::wstring_view s, bool withTerminator = true);

std::string ToUtf8(std::wstring_view s);
std::wstring FromUtf8(std::string_view s);

// Narrow ASCII literal to wide (tests, fixed names).
std::wstring Widen(std::string_view ascii);

}  // namespace varnel::text
