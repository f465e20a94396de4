#include "base/text.h"

#include <algorithm>

namespace varnel::text {

namespace {

// Simple one-to-one mappings of the scripts that program and folder names use.
wchar_t UpperOf(wchar_t c) {
  const auto u = static_cast<std::uint32_t>(c);
  if (u < 0x80) return (u >= 'a' && u <= 'z') ? static_cast<wchar_t>(u - 32) : c;
  if ((u >= 0xE0 && u <= 0xFE && u != 0xF7)) return static_cast<wchar_t>(u - 32);
  if (u == 0xFF) return static_cast<wchar_t>(0x178);
  if (u >= 0x100 && u <= 0x17F) {
    // Latin Extended-A pairs: even upper, odd lower, except the shifted runs.
    if ((u >= 0x139 && u <= 0x148) || (u >= 0x179 && u <= 0x17E))
      return (u % 2 == 0) ? static_cast<wchar_t>(u - 1) : c;
    if (u == 0x131) return L'I';
    if (u == 0x138 || u == 0x149 || u == 0x17F) return c;
    return (u % 2 == 1) ? static_cast<wchar_t>(u - 1) : c;
  }
  if (u >= 0x3B1 && u <= 0x3CB && u != 0x3C2) return static_cast<wchar_t>(u - 32);
  if (u >= 0x430 && u <= 0x44F) return static_cast<wchar_t>(u - 32);
  if (u >= 0x450 && u <= 0x45F) return static_cast<wchar_t>(u - 80);
  if (u >= 0xFF41 && u <= 0xFF5A) return static_cast<wchar_t>(u - 32);
  return c;
}

wchar_t LowerOf(wchar_t c) {
  const auto u = static_cast<std::uint32_t>(c);
  if (u < 0x80) return (u >= 'A' && u <= 'Z') ? static_cast<wchar_t>(u + 32) : c;
  if (u >= 0xC0 && u <= 0xDE && u != 0xD7) return static_cast<wchar_t>(u + 32);
  if (u == 0x178) return static_cast<wchar_t>(0xFF);
  if (u >= 0x100 && u <= 0x17F) {
    if ((u >= 0x139 && u <= 0x148) || (u >= 0x179 && u <= 0x17E))
      return (u % 2 == 1) ? static_cast<wchar_t>(u + 1) : c;
    if (u == 0x130) return L'i';
    if (u == 0x138 || u == 0x149 || u == 0x17F) return c;
    return (u % 2 == 0) ? static_cast<wchar_t>(u + 1) : c;
  }
  if (u >= 0x391 && u <= 0x3AB && u != 0x3A2) return static_cast<wchar_t>(u + 32);
  if (u >= 0x410 && u <= 0x42F) return static_cast<wchar_t>(u + 32);
  if (u >= 0x400 && u <= 0x40F) return static_cast<wchar_t>(u + 80);
  if (u >= 0xFF21 && u <= 0xFF3A) return static_cast<wchar_t>(u + 32);
  return c;
}

bool IsBlank(wchar_t c) { return static_cast<std::uint32_t>(c) <= 0x20; }

template <typename Eq>
std::wstring ReplaceWith(std::wstring_view s, std::wstring_view from, std::wstring_view to,
                         Eq find) {
  if (from.empty()) return std::wstring(s);
  std::wstring out;
  out.reserve(s.size());
  std::size_t pos = 0;
  for (;;) {
    const std::size_t hit = find(s, from, pos);
    if (hit == std::wstring_view::npos) break;
    out.append(s.substr(pos, hit - pos));
    out.append(to);
    pos = hit + from.size();
  }
  out.append(s.substr(pos));
  return out;
}

}  // namespace

wchar_t ToUpper(wchar_t c) { return UpperOf(c); }
wchar_t ToLower(wchar_t c) { return LowerOf(c); }

std::wstring Upper(std::wstring_view s) {
  std::wstring r(s);
  for (auto& c : r) c = UpperOf(c);
  return r;
}

std::wstring Lower(std::wstring_view s) {
  std::wstring r(s);
  for (auto& c : r) c = LowerOf(c);
  return r;
}

bool SameText(std::wstring_view a, std::wstring_view b) {
  if (a.size() != b.size()) return false;
  for (std::size_t i = 0; i < a.size(); ++i)
    if (a[i] != b[i] && UpperOf(a[i]) != UpperOf(b[i])) return false;
  return true;
}

bool StartsWithText(std::wstring_view s, std::wstring_view prefix) {
  return s.size() >= prefix.size() && SameText(s.substr(0, prefix.size()), prefix);
}

bool EndsWithText(std::wstring_view s, std::wstring_view suffix) {
  return s.size() >= suffix.size() && SameText(s.substr(s.size() - suffix.size()), suffix);
}

std::size_t FindText(std::wstring_view haystack, std::wstring_view needle, std::size_t from) {
  if (needle.empty()) return from <= haystack.size() ? from : std::wstring_view::npos;
  if (haystack.size() < needle.size()) return std::wstring_view::npos;
  const wchar_t first = UpperOf(needle[0]);
  for (std::size_t i = from; i + needle.size() <= haystack.size(); ++i) {
    if (UpperOf(haystack[i]) != first) continue;
    if (SameText(haystack.substr(i, needle.size()), needle)) return i;
  }
  return std::wstring_view::npos;
}

bool ContainsText(std::wstring_view haystack, std::wstring_view needle) {
  return FindText(haystack, needle) != std::wstring_view::npos;
}

std::wstring ReplaceAll(std::wstring_view s, std::wstring_view from, std::wstring_view to) {
  return ReplaceWith(s, from, to, [](std::wstring_view h, std::wstring_view n, std::size_t p) {
    return h.find(n, p);
  });
}

std::wstring ReplaceAllText(std::wstring_view s, std::wstring_view from, std::wstring_view to) {
  return ReplaceWith(s, from, to, [](std::wstring_view h, std::wstring_view n, std::size_t p) {
    return FindText(h, n, p);
  });
}

std::wstring RemoveAll(std::wstring_view s, std::wstring_view what) {
  return ReplaceAll(s, what, L"");
}

std::wstring TrimLeft(std::wstring_view s) {
  std::size_t b = 0;
  while (b < s.size() && IsBlank(s[b])) ++b;
  return std::wstring(s.substr(b));
}

std::wstring TrimRight(std::wstring_view s) {
  std::size_t e = s.size();
  while (e > 0 && IsBlank(s[e - 1])) --e;
  return std::wstring(s.substr(0, e));
}

std::wstring Trim(std::wstring_view s) { return TrimLeft(TrimRight(s)); }

std::wstring Dequote(std::wstring_view s, wchar_t quote) {
  if (s.empty() || s[0] != quote) return std::wstring(s);
  std::wstring inner;
  std::size_t i = 1;
  while (i < s.size()) {
    if (s[i] == quote) {
      if (i + 1 < s.size() && s[i + 1] == quote) {
        inner.push_back(quote);
        i += 2;
        continue;
      }
      ++i;
      break;
    }
    inner.push_back(s[i++]);
  }
  const bool atEnd = i >= s.size();
  // Nothing extracted, or the text ran out, and it does not end in a quote.
  if ((inner.empty() || atEnd) && s.back() != quote) return std::wstring(s);
  return inner;
}

std::wstring IncludeTrailingBackslash(std::wstring_view s) {
  std::wstring r(s);
  if (r.empty() || r.back() != L'\\') r.push_back(L'\\');
  return r;
}

std::wstring ExcludeTrailingBackslash(std::wstring_view s) {
  std::wstring r(s);
  if (!r.empty() && r.back() == L'\\') r.pop_back();
  return r;
}

std::wstring ExtractFilePath(std::wstring_view path) {
  const std::size_t p = path.find_last_of(L"\\:");
  return p == std::wstring_view::npos ? std::wstring() : std::wstring(path.substr(0, p + 1));
}

std::wstring ExtractFileName(std::wstring_view path) {
  const std::size_t p = path.find_last_of(L"\\:");
  return std::wstring(p == std::wstring_view::npos ? path : path.substr(p + 1));
}

std::wstring FromUtf16Bytes(std::span<const std::uint8_t> bytes) {
  std::wstring r;
  r.reserve(bytes.size() / 2);
  for (std::size_t i = 0; i + 1 < bytes.size(); i += 2) {
    const auto unit = static_cast<wchar_t>(bytes[i] | (bytes[i + 1] << 8));
    if (unit == 0) break;
    r.push_back(unit);
  }
  return r;
}

std::vector<std::uint8_t> ToUtf16Bytes(std::wstring_view s, bool withTerminator) {
  std::vector<std::uint8_t> r;
  r.reserve((s.size() + 1) * 2);
  for (wchar_t c : s) {
    const auto u = static_cast<std::uint32_t>(c) & 0xFFFFu;
    r.push_back(static_cast<std::uint8_t>(u & 0xFF));
    r.push_back(static_cast<std::uint8_t>(u >> 8));
  }
  if (withTerminator) {
    r.push_back(0);
    r.push_back(0);
  }
  return r;
}

std::string ToUtf8(std::wstring_view s) {
  std::string r;
  r.reserve(s.size());
  for (std::size_t i = 0; i < s.size(); ++i) {
    std::uint32_t cp = static_cast<std::uint32_t>(s[i]) & 0xFFFFu;
    if (cp >= 0xD800 && cp <= 0xDBFF && i + 1 < s.size()) {
      const std::uint32_t lo = static_cast<std::uint32_t>(s[i + 1]) & 0xFFFFu;
      if (lo >= 0xDC00 && lo <= 0xDFFF) {
        cp = 0x10000 + ((cp - 0xD800) << 10) + (lo - 0xDC00);
        ++i;
      }
    }
    if (cp < 0x80) {
      r.push_back(static_cast<char>(cp));
    } else if (cp < 0x800) {
      r.push_back(static_cast<char>(0xC0 | (cp >> 6)));
      r.push_back(static_cast<char>(0x80 | (cp & 0x3F)));
    } else if (cp < 0x10000) {
      r.push_back(static_cast<char>(0xE0 | (cp >> 12)));
      r.push_back(static_cast<char>(0x80 | ((cp >> 6) & 0x3F)));
      r.push_back(static_cast<char>(0x80 | (cp & 0x3F)));
    } else {
      r.push_back(static_cast<char>(0xF0 | (cp >> 18)));
      r.push_back(static_cast<char>(0x80 | ((cp >> 12) & 0x3F)));
      r.push_back(static_cast<char>(0x80 | ((cp >> 6) & 0x3F)));
      r.push_back(static_cast<char>(0x80 | (cp & 0x3F)));
    }
  }
  return r;
}

std::wstring FromUtf8(std::string_view s) {
  std::wstring r;
  r.reserve(s.size());
  std::size_t i = 0;
  while (i < s.size()) {
    const auto b = static_cast<unsigned char>(s[i]);
    std::uint32_t cp = 0xFFFD;
    std::size_t len = 1;
    if (b < 0x80) {
      cp = b;
    } else if ((b & 0xE0) == 0xC0) {
      len = 2;
    } else if ((b & 0xF0) == 0xE0) {
      len = 3;
    } else if ((b & 0xF8) == 0xF0) {
      len = 4;
    }
    if (len > 1) {
      if (i + len > s.size()) {
        len = 1;
      } else {
        cp = b & (0x7F >> len);
        for (std::size_t k = 1; k < len; ++k) {
          const auto c = static_cast<unsigned char>(s[i + k]);
          if ((c & 0xC0) != 0x80) {
            cp = 0xFFFD;
            len = k;
            break;
          }
          cp = (cp << 6) | (c & 0x3F);
        }
      }
    }
    i += len;
    if (cp >= 0x10000 && cp <= 0x10FFFF) {
      cp -= 0x10000;
      r.push_back(static_cast<wchar_t>(0xD800 + (cp >> 10)));
      r.push_back(static_cast<wchar_t>(0xDC00 + (cp & 0x3FF)));
    } else {
      r.push_back(static_cast<wchar_t>(cp > 0x10FFFF ? 0xFFFD : cp));
    }
  }
  return r;
}

std::wstring Widen(std::string_view ascii) { return std::wstring(ascii.begin(), ascii.end()); }

}  // namespace varnel::text
