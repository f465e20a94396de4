#include "ui/soft_commands.h"

#include <cstdio>

#include "core/registry_location.h"
#include "base/text.h"

namespace varnel {

SoftMenuState MenuStateFor(const Platform& platform, const SoftRow* selected) {
  SoftMenuState state;
  if (!selected) return state;
  state.uninstall = true;
  state.searchOnline = true;
  const std::wstring& folder = selected->sub[SubItem::InstallLocation];
  state.openFolder = !folder.empty() && platform.files.DirectoryExists(folder);
  const RegRoot root = RootKeyFromName(selected->sub[SubItem::RootKey]);
  std::wstring_view key = selected->sub[SubItem::KeyPath];
  while (!key.empty() && key.front() == L'\\') key.remove_prefix(1);
  if (root != RegRoot::Invalid && !key.empty()) {
    const bool use64 = selected->sub[SubItem::Is64BitView] != L"0";
    auto opened = platform.registry.OpenKey(root, key, RegAccess::Read, use64);
    state.viewEntry = opened && opened->ValueExists(L"DisplayName");
  }
  return state;
}

int RecordIndexOf(std::wstring_view text) {
  if (text.empty() || text.size() > 9) return -1;
  int value = 0;
  std::size_t i = 0;
  const bool negative = text[0] == L'-' || text[0] == L'+';
  if (negative) i = 1;
  if (i == text.size()) return -1;
  for (; i < text.size(); ++i) {
    if (text[i] < L'0' || text[i] > L'9') return -1;
    value = value * 10 + (text[i] - L'0');
  }
  return text[0] == L'-' ? -value : value;
}

bool MayRemoveEntry(int index) { return index > 0; }

std::wstring RegistryKeyOf(const SoftRow& row) {
  return row.sub[SubItem::RootKey] + row.sub[SubItem::KeyPath];
}

std::wstring EncodeSearchName(std::wstring_view name) {
  std::wstring out;
  for (unsigned char byte : text::ToUtf8(name)) {
    wchar_t piece[4];
    std::swprintf(piece, 4, L"%%%.2x", static_cast<unsigned>(byte));
    out += piece;
  }
  return out;
}

std::wstring SearchOnlineParameter(std::wstring_view caption) {
  return L"https://www.bing.com/search?source=hp&q=" + EncodeSearchName(caption) +
         L"&meta=&aq=f&aqi=g10&aql=&oq=&gs_rfai=";
}

void OpenHelpLink(const Platform& platform, std::wstring_view help) {
  if (help == L"-") return;
  if (platform.shell.Execute(L"open", help, L"", L"", ShowCmd::Normal) < 33)
    platform.shell.Execute(L"open", kSearchBrowser, help, L"", ShowCmd::Normal);
}

std::vector<std::wstring> UninstallJobs(bool batchMode,
                                        const std::vector<const SoftRow*>& checked,
                                        const SoftRow* selected) {
  std::vector<std::wstring> jobs;
  if (batchMode) {
    for (const SoftRow* row : checked)
      if (row) jobs.push_back(row->sub[SubItem::RecordIndex]);
  } else if (selected) {
    jobs.push_back(selected->sub[SubItem::RecordIndex]);
  }
  return jobs;
}

}  // namespace varnel
