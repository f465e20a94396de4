#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace varnel {

// Captions with an access key each ("&" before it): a key a caption already
// names is kept; the others take the first letter or digit no caption took
// before them, a word's first one preferred. A lone "&" that names no key is
// doubled so it shows as itself; a caption with no free letter gets none.
std::vector<std::wstring> WithAccessKeys(const std::vector<std::wstring>& captions);

// A menu item's new caption: `text`, followed by the shortcut after the tab
// in `current` when `text` names none (the shortcut is the program's, a
// translation leaves it out).
std::wstring KeepShortcut(std::wstring_view current, std::wstring_view text);

}  // namespace varnel
