#include "uninstall/quiet_command.h"

#include <algorithm>
#include <cstdint>
#include <cstring>
#include <optional>
#include <vector>

#include "core/app_frame.h"
#include "core/registry_values.h"
#include "base/text.h"
#include "core/uninstall_command.h"

namespace varnel {

namespace {

// The DOS and PE headers with the section table; a program whose table lies
// further in is not one of the uninstallers known here.
constexpr std::size_t kHeadBytes = 4096;
// NSIS puts its header at the first 512-byte boundary after the loader's
// image; a signature or padding may push it a little further.
constexpr std::size_t kOverlayWindow = 64 * 1024;
constexpr std::size_t kNsisAlign = 512;
// Inno Setup marks a copy of its engine that acts as uninstaller with "InUn"
// in a reserved field of the DOS header.
constexpr std::size_t kInnoModeOffset = 0x30;
constexpr std::string_view kInnoUninstallerMode = "InUn";
// NSIS's first header: flags, 0xDEADBEEF, "NullsoftInst", then two lengths.
constexpr std::uint32_t kNsisSignature = 0xDEADBEEFu;
constexpr std::string_view kNsisMagic = "NullsoftInst";
constexpr std::uint32_t kNsisUninstallFlag = 1;

std::optional<std::uint32_t> ReadU32(const std::vector<std::uint8_t>& bytes, std::size_t at) {
  if (at > bytes.size() || bytes.size() - at < 4) return std::nullopt;
  return static_cast<std::uint32_t>(bytes[at]) | static_cast<std::uint32_t>(bytes[at + 1]) << 8 |
         static_cast<std::uint32_t>(bytes[at + 2]) << 16 |
         static_cast<std::uint32_t>(bytes[at + 3]) << 24;
}

std::optional<std::uint32_t> ReadU16(const std::vector<std::uint8_t>& bytes, std::size_t at) {
  if (at > bytes.size() || bytes.size() - at < 2) return std::nullopt;
  return static_cast<std::uint32_t>(bytes[at]) | static_cast<std::uint32_t>(bytes[at + 1]) << 8;
}

bool HasText(const std::vector<std::uint8_t>& bytes, std::size_t at, std::string_view text) {
  return at <= bytes.size() && bytes.size() - at >= text.size() &&
         std::memcmp(bytes.data() + at, text.data(), text.size()) == 0;
}

// Where the image's sections end in the file: what follows is the overlay.
std::optional<std::uint64_t> OverlayStart(const std::vector<std::uint8_t>& head) {
  const auto pe = ReadU32(head, 0x3C);
  if (!pe || !HasText(head, *pe, std::string_view("PE\0\0", 4))) return std::nullopt;
  const auto sections = ReadU16(head, *pe + 6);
  const auto optionalSize = ReadU16(head, *pe + 20);
  if (!sections || !optionalSize) return std::nullopt;
  const std::size_t table = *pe + 24 + *optionalSize;
  std::uint64_t end = 0;
  for (std::uint32_t i = 0; i < *sections; ++i) {
    const auto rawSize = ReadU32(head, table + 40 * i + 16);
    const auto rawPointer = ReadU32(head, table + 40 * i + 20);
    if (!rawSize || !rawPointer) return std::nullopt;
    end = std::max<std::uint64_t>(end, std::uint64_t{*rawPointer} + *rawSize);
  }
  return end;
}

UninstallerKind NsisKind(IFileSystem& files, std::wstring_view path,
                         const std::vector<std::uint8_t>& head) {
  const auto overlay = OverlayStart(head);
  if (!overlay) return UninstallerKind::Unknown;
  const std::uint64_t from = *overlay / kNsisAlign * kNsisAlign;
  std::vector<std::uint8_t> window;
  if (!files.ReadFilePart(path, from, kOverlayWindow, window)) return UninstallerKind::Unknown;
  for (std::size_t at = 0; at + 20 <= window.size(); at += kNsisAlign) {
    if (ReadU32(window, at + 4) == kNsisSignature && HasText(window, at + 8, kNsisMagic)) {
      return (*ReadU32(window, at) & kNsisUninstallFlag) ? UninstallerKind::Nsis
                                                          : UninstallerKind::NsisInstaller;
    }
  }
  return UninstallerKind::Unknown;
}

bool IsMsiExec(const TAppFrame& frame, const std::wstring& command) {
  const std::wstring file = text::Trim(GetFileFromCommandLine(frame, command));
  const std::wstring name = text::ExtractFileName(file);
  return text::SameText(name, L"msiexec.exe") || text::SameText(name, L"msiexec");
}

std::wstring Quoted(const std::wstring& path) { return L"\"" + path + L"\""; }

}  // namespace

UninstallerKind ReadUninstallerKind(IFileSystem& files, std::wstring_view path) {
  std::vector<std::uint8_t> head;
  if (!files.ReadFilePart(path, 0, kHeadBytes, head) || !HasText(head, 0, "MZ"))
    return UninstallerKind::Unknown;
  if (HasText(head, kInnoModeOffset, kInnoUninstallerMode)) return UninstallerKind::InnoSetup;
  return NsisKind(files, path, head);
}

std::wstring ProductCodeInCommand(std::wstring_view command) {
  const std::wstring upper = text::Upper(command);
  for (std::size_t at = 0; (at = upper.find(L'/', at)) != std::wstring::npos; ++at) {
    if (at + 1 >= upper.size() || (upper[at + 1] != L'X' && upper[at + 1] != L'I')) continue;
    std::size_t code = at + 2;
    while (code < upper.size() && upper[code] == L' ') ++code;
    if (code + 38 <= command.size() && IsProductCode(command.substr(code, 38)))
      return std::wstring(command.substr(code, 38));
  }
  return {};
}

QuietCommand FindQuietCommand(const Platform& platform, const TSoftInfo& info) {
  QuietCommand quiet;
  if (IsBrowserAddon(info)) {
    quiet.kind = UninstallerKind::BrowserAddon;
    return quiet;
  }
  const std::wstring registered = text::Trim(ReadRegistryString(
      platform.registry, info.RootKey, info.KeyPath, L"QuietUninstallString", info.Is64BitView));
  if (!registered.empty()) {
    quiet.kind = UninstallerKind::Registered;
    quiet.command = registered;
    return quiet;
  }

  TAppFrame frame(platform);
  std::wstring command = text::Trim(info.UninstallString);
  std::wstring allUsers;
  frame.ExpandPathMacros(command, allUsers);
  if (command.empty()) {
    quiet.reason = L"the entry has no uninstall command";
    return quiet;
  }

  const bool windowsInstaller =
      IsMsiExec(frame, command) ||
      ReadRegistryInt64(platform.registry, info.RootKey, info.KeyPath, L"WindowsInstaller",
                        info.Is64BitView) == 1;
  if (windowsInstaller) {
    quiet.kind = UninstallerKind::WindowsInstaller;
    std::wstring code = ProductCodeInCommand(command);
    if (code.empty()) code = MsiProductCode(info);
    if (code.empty()) {
      quiet.reason = L"a Windows Installer entry without a product code";
      return quiet;
    }
    // The repair form (/I) of many entries becomes removal as well.
    quiet.command = L"MsiExec.exe /X" + code + L" /qn /norestart";
    return quiet;
  }

  const std::wstring file = text::Trim(GetFileFromCommandLine(frame, command));
  if (file.empty() || !platform.files.FileExists(file)) {
    quiet.reason = L"the uninstaller " + Quoted(file) + L" does not exist";
    return quiet;
  }
  quiet.kind = ReadUninstallerKind(platform.files, file);
  switch (quiet.kind) {
    case UninstallerKind::Nsis: {
      // NSIS takes everything after "_?=" as the folder: "/S" goes before it.
      const std::size_t folder = command.find(L" _?=");
      quiet.command = folder == std::wstring::npos
                          ? command + L" /S"
                          : command.substr(0, folder) + L" /S" + command.substr(folder);
      break;
    }
    case UninstallerKind::InnoSetup:
      quiet.command = command + L" /VERYSILENT /SUPPRESSMSGBOXES /NORESTART";
      break;
    case UninstallerKind::NsisInstaller:
      quiet.reason = Quoted(file) + L" is an NSIS installer, not an uninstaller";
      break;
    default:
      quiet.reason = L"no quiet form known for " + Quoted(file) +
                     L" (not Windows Installer, NSIS or Inno Setup)";
      break;
  }
  return quiet;
}

}  // namespace varnel
