#pragma once

#include <string_view>

#include "platform/platform.h"

namespace varnel {

// Whether a folder may be taken as a program's own folder. Refuses a path
// still holding "%", a drive root, and exactly five folders: the user's
// desktop, start menu and recent documents, the system and the Windows
// directory. Their subfolders pass.
bool IsSafeFolder(const Platform& platform, std::wstring_view path);

}  // namespace varnel
