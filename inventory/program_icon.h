#pragma once

#include <cstdint>
#include <string>
#include <string_view>

#include "core/app_frame.h"
#include "inventory/soft_info.h"

namespace varnel {

struct ProgramIcon {
  std::wstring file;       // empty when no existing file was found
  std::int32_t index = 0;  // within the file; negative is a resource id
};

// The number after the last "," of an icon location ("app.exe,-101"); 0 when
// there is none or it is not a plain integer.
std::int32_t IconIndexOf(std::wstring_view location);

// Where the program's icon is, first that names an existing file:
//   1. "DisplayIcon", through GetFileFromCommandLine, with its ",N" index;
//   2. for an Installer product, "ProductIcon" of its
//      HKEY_CLASSES_ROOT\Installer\Products key, read the same way.
// The uninstaller itself is not taken: its icon is the setup tool's, not the
// program's, and its file would stand for the program's last use.
ProgramIcon FindProgramIcon(const TAppFrame& frame, const TSoftInfo& info);

}  // namespace varnel
