#include "inventory/toolbar_folding.h"

#include <optional>

#include "base/text.h"

namespace varnel {
namespace {

// Substring test of upper-cased texts; an empty needle is never contained.
bool Holds(const std::wstring& haystack, const std::wstring& needle) {
  return !needle.empty() && haystack.find(needle) != std::wstring::npos;
}

}  // namespace

void FoldToolbars(IFileSystem& files, SoftList& list, std::size_t firstToolbar) {
  std::size_t programs = std::min(firstToolbar, list.size());
  // Short forms cost a disk query each; ask once per program.
  std::vector<std::optional<std::wstring>> shortLocations(programs);
  auto shortLocationOf = [&](std::size_t p) -> const std::wstring& {
    if (!shortLocations[p]) {
      shortLocations[p] = text::Upper(files.ShortPathName(list[p]->InstallLocation));
    }
    return *shortLocations[p];
  };
  const std::wstring kToolbar = L"TOOLBAR";

  for (std::size_t t = programs; t < list.size(); ++t) {
    TSoftInfo& toolbar = *list[t];
    if (toolbar.Hidden) continue;
    std::wstring toolbarName = text::Upper(toolbar.Name);
    std::wstring toolbarLocation = text::Upper(toolbar.InstallLocation);
    std::wstring toolbarShort = text::Upper(files.ShortPathName(toolbar.InstallLocation));
    for (std::size_t p = 0; p < programs; ++p) {
      TSoftInfo& program = *list[p];
      if (program.Hidden) continue;
      std::wstring programName = text::Upper(program.Name);
      bool sameName = Holds(programName, toolbarName);
      if (!sameName && !Holds(shortLocationOf(p), toolbarShort)) continue;
      if (!sameName && !Holds(programName, kToolbar) && !Holds(toolbarLocation, kToolbar)) continue;
      program.IsToolbar = true;
      program.ToolbarClsid = toolbar.ToolbarClsid;
      program.ToolbarFile = toolbar.ToolbarFile;
      toolbar.Hidden = true;
      break;
    }
  }
}

}  // namespace varnel
