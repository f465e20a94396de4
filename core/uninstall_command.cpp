#include "core/uninstall_command.h"

#include <algorithm>
#include <array>

#include "core/safe_folder.h"
#include "base/text.h"

namespace varnel {

namespace {

constexpr std::size_t kNpos = std::wstring::npos;

// ExpandEnvironmentStringsW is handed this many characters, terminator
// included; a longer expansion is a failed call.
constexpr std::size_t kExpandBuffer = 520;

constexpr std::array<std::wstring_view, 14> kExecutableExtensions = {
    L".exe", L".dll", L".ocx", L".sys", L".cpl", L".bpl", L".cmd",
    L".vbs", L".ser", L".bin", L".drv", L".com", L".bat", L".vxd"};

constexpr std::array<std::wstring_view, 4> kLaunchers = {L"RUNDLL.EXE", L"RUNDLL32.EXE",
                                                         L"RUNDLL32", L"RUNDLL"};

bool Contains(std::wstring_view s, std::wstring_view what) { return s.find(what) != kNpos; }

// Everything before the first `what`; the whole string when it is absent.
std::wstring Before(std::wstring_view s, std::wstring_view what) {
  return std::wstring(s.substr(0, s.find(what)));
}

// Replaces a reference standing at the start of `s` by its expansion.
void ExpandLeadingReference(ISystem& system, std::wstring& s, std::wstring_view reference) {
  if (!Contains(text::Upper(s), text::Upper(reference))) return;
  const auto expanded = system.ExpandEnvironment(reference);
  if (!expanded || expanded->size() >= kExpandBuffer) return;
  s.erase(0, std::min(reference.size(), s.size()));
  s = *expanded + L"\\" + s;
  s = text::ReplaceAll(s, L"\\\\", L"\\");
}

bool RemovesLauncher(std::wstring_view s, std::wstring_view name, LauncherRule rule) {
  const std::wstring spaced = L" " + std::wstring(name);
  const std::size_t spacedAt = s.find(spaced);
  switch (rule) {
    case LauncherRule::UninstallerDate:
      // The first " NAME" must not open the string.
      return s.starts_with(name) || (spacedAt != kNpos && spacedAt > 0);
    case LauncherRule::InstallFolder:
      return Contains(s, name);
    case LauncherRule::FolderPath:
      return s.starts_with(name) || spacedAt != kNpos;
  }
  return false;
}

// Which command the record's date and folder are taken from.
std::wstring CommandOf(const UninstallSource& source, bool addonOverrides) {
  std::wstring s = text::Upper(source.uninstallString);
  if (Contains(s, L"MSIEXEC.EXE /")) s = source.productCode;
  if (addonOverrides && source.isBrowserAddon) s = source.addonPath;
  return s;
}

// The file a record's command names, or the command cut after its first
// executable extension when no such file exists.
std::wstring UninstallerPath(const TAppFrame& frame, std::wstring s, LauncherRule rule) {
  if (s.empty()) return s;
  s = CleanUninstallCommand(frame, s, rule);
  if (!frame.Machine().files.FileExists(s)) s = CutAtExecutableExtension(s);
  return s;
}

}  // namespace

std::wstring GetFileFromCommandLine(const TAppFrame& frame, std::wstring_view command) {
  std::wstring s = text::RemoveAll(command, L";");
  s = Before(s, L"/");
  s = text::RemoveAll(s, L"\\??\\");

  ISystem& system = frame.Machine().system;
  for (std::wstring_view reference : {L"%windir%", L"%systemroot%", L"%programfiles%"})
    ExpandLeadingReference(system, s, reference);

  if (const std::size_t p = text::Lower(s).find(L"\\systemroot"); p != kNpos) {
    // The count is 12 - p for the 1-based p; only p = 1 removes the token.
    const std::size_t position = p + 1;
    if (position < 12) s.erase(p, std::min<std::size_t>(12 - position, s.size() - p));
    s = frame.GetWindowsDir() + s;
  }

  s = text::RemoveAll(s, L"%1");
  s = Before(s, L",");
  if (Contains(s, L" -")) s = Before(s, L"-");

  s = text::Dequote(s, L'"');
  if (const std::size_t q = s.find(L'"'); q != kNpos) s.erase(q);

  if (const std::size_t colon = s.find(L":\\"); colon != kNpos && colon > 1)
    s.erase(0, colon - 1);

  constexpr std::wstring_view kRunDll = L"rundll32.exe ";
  if (s.size() < kRunDll.size() || text::Lower(s.substr(0, kRunDll.size())) != kRunDll) return s;
  s.erase(0, kRunDll.size());
  IFileSystem& files = frame.Machine().files;
  if (files.FileExists(s)) return s;
  for (const std::wstring& folder : {frame.GetWindowsDir(), frame.GetSystemDir()}) {
    std::wstring candidate = folder + L"\\" + s;
    if (files.FileExists(candidate)) return candidate;
  }
  return s;
}

std::wstring CutAtExecutableExtension(std::wstring_view s) {
  const std::wstring lower = text::Lower(s);
  std::size_t first = kNpos;
  for (std::wstring_view extension : kExecutableExtensions)
    first = std::min(first, lower.find(extension));
  if (first == kNpos) return std::wstring(s);
  return std::wstring(s.substr(0, first + 4));
}

std::wstring CleanUninstallCommand(const TAppFrame& frame, std::wstring_view command,
                                   LauncherRule rule) {
  std::wstring s = text::RemoveAll(command, L"\"");
  s = text::RemoveAll(s, L"\\??\\");
  s = text::ReplaceAll(s, L"\\\\", L"\\");
  std::wstring allUsers;
  frame.ExpandPathMacros(s, allUsers);

  for (std::wstring_view name : kLaunchers)
    if (RemovesLauncher(s, name, rule)) s = text::RemoveAll(s, name);

  constexpr std::wstring_view kVbRemover = L"ST6UNST.EXE -N";
  if (const std::size_t p = s.find(kVbRemover); p != kNpos)
    s.erase(0, std::min(p + 15, s.size()));  // the blank after "-N" goes too

  if (Contains(s, L"DPINST.EXE") || Contains(s, L"DPINST32.EXE") || Contains(s, L"DPINST64.EXE")) {
    // 1-based positions: the copy starts at pos("/U ") + 3 and takes
    // pos(".INF") + 3 characters, a length rather than an end.
    const std::size_t u = s.find(L"/U ");
    const std::size_t inf = s.find(L".INF");
    const std::size_t start = (u == kNpos ? 0 : u + 1) + 3 - 1;
    const std::size_t count = (inf == kNpos ? 0 : inf + 1) + 3;
    s = start < s.size() ? s.substr(start, count) : std::wstring();
  }
  return text::Trim(s);
}

TDateTime GetUninstallerFileDate(const TAppFrame& frame, const UninstallSource& source) {
  const std::wstring path =
      UninstallerPath(frame, CommandOf(source, true), LauncherRule::UninstallerDate);
  IFileSystem& files = frame.Machine().files;
  if (!files.FileExists(path)) return 0;
  const auto info = files.GetFileInfo(path);
  if (!info) return 0;
  return FileTimeToLocalDateTime(frame.Machine().system, info->creationTime);
}

std::wstring GetInstallFolderFromUninstallString(const TAppFrame& frame,
                                                 const UninstallSource& source) {
  const std::wstring folder = text::ExtractFilePath(
      UninstallerPath(frame, CommandOf(source, false), LauncherRule::InstallFolder));
  if (folder.empty() || !frame.Machine().files.DirectoryExists(folder)) return {};
  if (!IsSafeFolder(frame.Machine(), folder)) return {};
  return folder;
}

std::wstring CleanFolderPath(const TAppFrame& frame, std::wstring_view path) {
  std::wstring folder = CleanUninstallCommand(frame, path, LauncherRule::FolderPath);
  if (folder.empty() || !frame.Machine().files.DirectoryExists(folder)) return {};
  return folder;
}

std::wstring MsiProductCodeToPackedGuid(std::wstring_view code) {
  if (code.size() != 38 || code.front() != L'{' || code.back() != L'}') return {};
  std::wstring digits;
  for (std::size_t i = 1; i < 37; ++i) {
    const wchar_t c = code[i];
    const bool hyphen = i == 9 || i == 14 || i == 19 || i == 24;
    const bool hex =
        (c >= L'0' && c <= L'9') || (c >= L'a' && c <= L'f') || (c >= L'A' && c <= L'F');
    if (hyphen ? c != L'-' : !hex) return {};
    if (!hyphen) digits.push_back(text::ToUpper(c));
  }
  // The first three groups reversed whole, the last eight bytes nibble-swapped.
  std::reverse(digits.begin(), digits.begin() + 8);
  std::reverse(digits.begin() + 8, digits.begin() + 12);
  std::reverse(digits.begin() + 12, digits.begin() + 16);
  for (std::size_t i = 16; i < 32; i += 2) std::swap(digits[i], digits[i + 1]);
  return digits;
}

}  // namespace varnel
