#pragma once

#include <optional>
#include <string>
#include <string_view>

#include "platform/system.h"

namespace varnel {

struct TFileVersionText {
  std::wstring CompanyName;
  std::wstring FileDescription;
  std::wstring FileVersion;
  std::wstring InternalName;
  std::wstring LegalCopyright;
  std::wstring LegalTrademarks;
  std::wstring OriginalFileName;
  std::wstring ProductName;
  std::wstring ProductVersion;
  std::wstring Comments;
};

// The string table of the first translation; nullopt when the file has no
// readable version resource. Missing entries stay empty.
std::optional<TFileVersionText> ReadFileVersionText(ISystem& system, std::wstring_view fileName);

// field 1..9: CompanyName..ProductVersion, 0: Comments, 10: the "WOW Version"
// entry. "Unknown" without a readable version resource; empty for a missing
// entry or a field outside 0..10.
std::wstring GetFileVersionText(ISystem& system, std::wstring_view fileName, int field);

}  // namespace varnel
