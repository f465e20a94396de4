#pragma once

#include <string>

#include "core/app_frame.h"
#include "base/date_time.h"
#include "inventory/soft_info.h"

namespace varnel {

// The command interpreter applied to a record: its uninstall string, the
// product code its key is named by, and for a browser add-on its manifest.
TDateTime GetUninstallerFileDate(const TAppFrame& frame, const TSoftInfo& info);
std::wstring GetInstallFolderFromUninstallString(const TAppFrame& frame, const TSoftInfo& info);

}  // namespace varnel
