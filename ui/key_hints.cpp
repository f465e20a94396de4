#include "ui/key_hints.h"

#include <cwctype>
#include <set>

#include "base/text.h"

namespace varnel {

namespace {

bool IsKey(wchar_t c) { return std::iswalnum(static_cast<wint_t>(c)) != 0; }

// The position of the key `caption` names after an "&", or npos.
std::size_t NamedKey(const std::wstring& caption) {
  for (std::size_t i = 0; i + 1 < caption.size(); ++i) {
    if (caption[i] != L'&') continue;
    if (caption[i + 1] == L'&') {
      ++i;
      continue;
    }
    if (IsKey(caption[i + 1])) return i + 1;
  }
  return std::wstring::npos;
}

// Every "&" that is neither doubled nor before a key, doubled.
std::wstring EscapeLoneAmpersands(const std::wstring& caption) {
  std::wstring out;
  for (std::size_t i = 0; i < caption.size(); ++i) {
    out += caption[i];
    if (caption[i] != L'&') continue;
    if (i + 1 < caption.size() && caption[i + 1] == L'&') {
      out += caption[++i];
    } else if (i + 1 >= caption.size() || !IsKey(caption[i + 1])) {
      out += L'&';
    }
  }
  return out;
}

}  // namespace

std::vector<std::wstring> WithAccessKeys(const std::vector<std::wstring>& captions) {
  std::vector<std::wstring> out;
  std::set<wchar_t> taken;
  for (const std::wstring& caption : captions) {
    const std::wstring escaped = EscapeLoneAmpersands(caption);
    out.push_back(escaped);
    const std::size_t named = NamedKey(escaped);
    if (named != std::wstring::npos) taken.insert(text::ToUpper(escaped[named]));
  }
  for (std::wstring& caption : out) {
    if (NamedKey(caption) != std::wstring::npos) continue;
    std::size_t chosen = std::wstring::npos;
    for (const bool wordStartsOnly : {true, false}) {
      for (std::size_t i = 0; i < caption.size() && chosen == std::wstring::npos; ++i) {
        const bool wordStart = i == 0 || !IsKey(caption[i - 1]);
        if (IsKey(caption[i]) && (wordStart || !wordStartsOnly) &&
            !taken.count(text::ToUpper(caption[i])) && (i == 0 || caption[i - 1] != L'&'))
          chosen = i;
      }
      if (chosen != std::wstring::npos) break;
    }
    if (chosen == std::wstring::npos) continue;
    taken.insert(text::ToUpper(caption[chosen]));
    caption.insert(chosen, 1, L'&');
  }
  return out;
}

std::wstring KeepShortcut(std::wstring_view current, std::wstring_view text) {
  std::wstring full(text);
  const std::size_t tab = current.find(L'\t');
  if (full.find(L'\t') == std::wstring::npos && tab != std::wstring_view::npos)
    full += current.substr(tab);
  return full;
}

}  // namespace varnel
