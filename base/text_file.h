#pragma once

#include <cstdint>
#include <functional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "platform/platform.h"

// Text files as the product reads and writes them: a byte-order mark names
// the encoding, text without one is in the system's ANSI code page, and what
// the product writes is UTF-8 with a mark.
namespace varnel {

enum class TextEncoding { Ansi, Utf8, Utf16LE, Utf16BE };

// The mark is dropped. Broken UTF-8 and a stray odd byte of UTF-16 become
// U+FFFD; zero characters are kept.
std::wstring DecodeText(ISystem& system, std::span<const std::uint8_t> bytes,
                        TextEncoding* encoding = nullptr);
std::vector<std::uint8_t> EncodeUtf8WithBom(std::wstring_view text);

// Breaks at CRLF, LF or a lone CR; a break at the very end opens no further
// line. The views point into `text`.
std::vector<std::wstring_view> SplitLines(std::wstring_view text);

// False, text empty, when the file cannot be read.
bool ReadTextFile(const Platform& platform, std::wstring_view path, std::wstring& text);
// Written beside the file ("<path>.tmp") and moved into its place, so a
// crash or a full disk leaves the old file whole.
bool WriteTextFile(IFileSystem& files, std::wstring_view path, std::wstring_view text);
// Reads the file (empty text when there is none), lets `change` edit the
// text and writes it back. A file that exists but cannot be read, say while
// another process writes it, is left alone and the result is false: writing
// the change alone would drop the rest.
bool UpdateTextFile(const Platform& platform, std::wstring_view path,
                    const std::function<void(std::wstring&)>& change);

}  // namespace varnel
