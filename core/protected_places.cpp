#include "core/protected_places.h"

#include "core/path_resolution.h"
#include "base/text.h"
#include "platform/csidl.h"

namespace varnel {

namespace {

constexpr std::wstring_view kProfileList =
    L"SOFTWARE\\Microsoft\\Windows NT\\CurrentVersion\\ProfileList";
constexpr std::wstring_view kShellFolders =
    L"Software\\Microsoft\\Windows\\CurrentVersion\\Explorer\\Shell Folders";
constexpr std::wstring_view kUserShellFolders =
    L"Software\\Microsoft\\Windows\\CurrentVersion\\Explorer\\User Shell Folders";
constexpr std::wstring_view kCurrentVersion = L"SOFTWARE\\Microsoft\\Windows\\CurrentVersion";

// The known folders below a profile root, as Windows lays them out.
constexpr std::wstring_view kProfileFolders[] = {
    L"Desktop",
    L"Documents",
    L"Downloads",
    L"Pictures",
    L"Music",
    L"Videos",
    L"Favorites",
    L"Links",
    L"Contacts",
    L"Searches",
    L"Saved Games",
    L"AppData",
    L"AppData\\Local",
    L"AppData\\LocalLow",
    L"AppData\\Roaming",
    L"AppData\\Local\\Temp",
    L"AppData\\Local\\Programs",
    L"AppData\\Roaming\\Microsoft\\Windows\\Start Menu\\Programs\\Startup",
    L"AppData\\Roaming\\Microsoft\\Windows\\Recent",
    L"AppData\\Roaming\\Microsoft\\Windows\\SendTo",
    L"AppData\\Roaming\\Microsoft\\Windows\\Templates",
    L"AppData\\Local\\Microsoft\\Windows",
};

// Special folders that hold the user's or everybody's own things.
constexpr int kKnownFolders[] = {
    Csidl::Desktop,          Csidl::DesktopDirectory,    Csidl::Programs,
    Csidl::Personal,         Csidl::Favorites,           Csidl::Startup,
    Csidl::Recent,           Csidl::SendTo,              Csidl::StartMenu,
    Csidl::MyMusic,          Csidl::MyVideo,             Csidl::NetHood,
    Csidl::Templates,        Csidl::CommonStartMenu,     Csidl::CommonPrograms,
    Csidl::CommonStartup,    Csidl::CommonDesktopDirectory, Csidl::AppData,
    Csidl::PrintHood,        Csidl::LocalAppData,        Csidl::CommonFavorites,
    Csidl::InternetCache,    Csidl::Cookies,             Csidl::History,
    Csidl::MyPictures,       Csidl::Profile,             Csidl::CommonTemplates,
    Csidl::CommonDocuments,  Csidl::CommonAdminTools,    Csidl::AdminTools,
    Csidl::CommonMusic,      Csidl::CommonPictures,      Csidl::CommonVideo,
    Csidl::CdBurnArea,
};

std::wstring ReadText(const IRegistryKey& key, std::wstring_view name) {
  const auto value = key.ReadValue(name);
  if (!value || (value->type != RegType::String && value->type != RegType::ExpandString))
    return {};
  return text::FromUtf16Bytes(value->data);
}

bool IsDriveRoot(std::wstring_view resolved) {
  return resolved.size() == 3 && resolved[1] == L':' && resolved[2] == L'\\';
}

bool IsLocal(std::wstring_view resolved) {
  return resolved.size() >= 3 && resolved[1] == L':' && resolved[2] == L'\\';
}

// Whether `path` is `folder` or holds it.
bool Holds(std::wstring_view path, std::wstring_view folder) {
  return PathIsOrIsBelow(folder, path);
}

}  // namespace

std::wstring RefusalReason(Refusal refusal) {
  switch (refusal) {
    case Refusal::None: return L"allowed";
    case Refusal::Unresolvable: return L"not a local path";
    case Refusal::DriveRoot: return L"drive root";
    case Refusal::WindowsFolder: return L"Windows folder";
    case Refusal::SystemRoot: return L"system folder";
    case Refusal::ProfileFolder: return L"user profile folder";
    case Refusal::HoldsProtected: return L"holds a protected folder";
    case Refusal::OtherProgram: return L"another program's folder";
    case Refusal::RegistryRoot: return L"registry key owned by Windows";
    case Refusal::Link: return L"junction or symbolic link";
  }
  return L"refused";
}

ProtectedPlaces::ProtectedPlaces(const Platform& platform,
                                 const std::vector<std::wstring>& otherProgramFolders)
    : platform_(platform) {
  ISystem& system = platform.system;
  for (const auto& folder : {system.WindowsDirectory(), system.SystemDirectory(),
                             system.SpecialFolder(Csidl::Windows),
                             system.SpecialFolder(Csidl::System),
                             system.SpecialFolder(Csidl::SystemX86)}) {
    auto resolved = ResolvePath(platform, folder);
    if (IsLocal(resolved) && !IsDriveRoot(resolved)) windowsFolders_.push_back(resolved);
  }
  for (const wchar_t* name : {L"WINDIR", L"SYSTEMROOT"}) {
    auto resolved = ResolvePath(platform, system.EnvironmentVariable(name).value_or(L""));
    if (IsLocal(resolved) && !IsDriveRoot(resolved)) windowsFolders_.push_back(resolved);
  }

  for (int csidl : {Csidl::ProgramFiles, Csidl::ProgramFilesX86, Csidl::ProgramFilesCommon,
                    Csidl::ProgramFilesCommonX86, Csidl::CommonAppData})
    AddFolder(system.SpecialFolder(csidl), Refusal::SystemRoot);
  for (const wchar_t* name :
       {L"PROGRAMFILES", L"PROGRAMFILES(X86)", L"PROGRAMW6432", L"COMMONPROGRAMFILES",
        L"COMMONPROGRAMFILES(X86)", L"COMMONPROGRAMW6432", L"PROGRAMDATA", L"ALLUSERSPROFILE"})
    AddFolder(system.EnvironmentVariable(name).value_or(L""), Refusal::SystemRoot);
  for (bool use64 : {false, true}) {
    if (auto key = platform.registry.OpenKey(RegRoot::LocalMachine, kCurrentVersion,
                                             RegAccess::Read, use64)) {
      for (const wchar_t* name : {L"ProgramFilesDir", L"ProgramFilesDir (x86)",
                                  L"ProgramW6432Dir", L"CommonFilesDir"})
        AddFolder(ReadText(*key, name), Refusal::SystemRoot, true);
    }
  }

  // Every profile the machine knows, with the folders Windows makes in it.
  std::vector<std::wstring> profiles;
  for (int csidl : {Csidl::Profile})
    profiles.push_back(system.SpecialFolder(csidl));
  for (const wchar_t* name : {L"USERPROFILE", L"PUBLIC"})
    profiles.push_back(system.EnvironmentVariable(name).value_or(L""));
  for (bool use64 : {false, true}) {
    auto list = platform.registry.OpenKey(RegRoot::LocalMachine, kProfileList, RegAccess::Read,
                                          use64);
    if (!list) continue;
    for (const wchar_t* name : {L"ProfilesDirectory", L"Default", L"Public"}) {
      auto folder = ReadText(*list, name);
      if (std::wstring_view(name) == L"ProfilesDirectory")
        AddFolder(folder, Refusal::SystemRoot, true);
      else
        profiles.push_back(folder);
    }
    for (const auto& sid : list->SubKeyNames()) {
      auto profile = platform.registry.OpenKey(RegRoot::LocalMachine,
                                               std::wstring(kProfileList) + L"\\" + sid,
                                               RegAccess::Read, use64);
      if (profile) profiles.push_back(ReadText(*profile, L"ProfileImagePath"));
    }
  }
  for (const auto& profile : profiles) {
    auto resolved = ResolvePath(platform, profile, true);
    if (!IsLocal(resolved) || IsDriveRoot(resolved)) continue;
    // The folder holding the profiles is the Users root.
    AddFolder(text::ExcludeTrailingBackslash(text::ExtractFilePath(resolved)),
              Refusal::SystemRoot);
    AddFolder(resolved, Refusal::ProfileFolder);
    for (auto below : kProfileFolders)
      AddFolder(resolved + L"\\" + std::wstring(below), Refusal::ProfileFolder);
    for (const auto& menu : {std::wstring(L"AppData\\Roaming\\Microsoft\\Windows\\Start Menu"),
                             std::wstring(L"Start Menu")})
      AddFolder(resolved + L"\\" + menu + L"\\Programs", Refusal::ProfileFolder);
  }
  for (int csidl : kKnownFolders) AddFolder(system.SpecialFolder(csidl), Refusal::ProfileFolder);
  // Folders the user moved elsewhere are named in the shell's own keys.
  for (auto [path, expand] : {std::pair{kShellFolders, false}, {kUserShellFolders, true}}) {
    for (auto root : {RegRoot::CurrentUser, RegRoot::LocalMachine}) {
      auto key = platform.registry.OpenKey(root, path, RegAccess::Read, false);
      if (!key) continue;
      for (const auto& name : key->ValueNames())
        AddFolder(ReadText(*key, name), Refusal::ProfileFolder, expand);
    }
  }

  for (const auto& folder : otherProgramFolders) {
    auto resolved = ResolvePath(platform, folder);
    // A location naming the program's file stands for its folder, as in a scan.
    if (IsLocal(resolved) && platform.files.FileExists(resolved))
      resolved = text::ExcludeTrailingBackslash(text::ExtractFilePath(resolved));
    if (resolved.empty() || CheckPlace(resolved) != Refusal::None) continue;
    bool known = false;
    for (const auto& other : otherPrograms_) known = known || text::SameText(other, resolved);
    if (!known) otherPrograms_.push_back(std::move(resolved));
  }
}

void ProtectedPlaces::AddFolder(std::wstring_view path, Refusal kind, bool expand) {
  auto resolved = ResolvePath(platform_, path, expand);
  // A drive root is refused on its own; one given here would only widen
  // the "holds" test to nothing new.
  if (!IsLocal(resolved) || IsDriveRoot(resolved)) return;
  for (std::size_t i = 0; i < folders_.size(); ++i) {
    if (text::SameText(folders_[i], resolved)) {
      // The stronger kind wins: a system root stays one when a profile
      // setting names it too.
      if (kind == Refusal::SystemRoot) kinds_[i] = kind;
      return;
    }
  }
  folders_.push_back(std::move(resolved));
  kinds_.push_back(kind);
}

Refusal ProtectedPlaces::CheckPlace(std::wstring_view resolved) const {
  if (!IsLocal(resolved)) return Refusal::Unresolvable;
  if (IsDriveRoot(resolved)) return Refusal::DriveRoot;
  for (const auto& windows : windowsFolders_)
    if (PathIsOrIsBelow(resolved, windows)) return Refusal::WindowsFolder;
  for (std::size_t i = 0; i < folders_.size(); ++i)
    if (text::SameText(resolved, folders_[i])) return kinds_[i];
  for (const auto& windows : windowsFolders_)
    if (Holds(resolved, windows)) return Refusal::HoldsProtected;
  for (const auto& folder : folders_)
    if (Holds(resolved, folder)) return Refusal::HoldsProtected;
  return Refusal::None;
}

Refusal ProtectedPlaces::CheckOthers(std::wstring_view resolved) const {
  for (const auto& other : otherPrograms_)
    if (PathIsOrIsBelow(resolved, other) || Holds(resolved, other)) return Refusal::OtherProgram;
  return Refusal::None;
}

Refusal ProtectedPlaces::CheckInstallFolder(std::wstring_view resolved) const {
  if (auto refusal = CheckPlace(resolved); refusal != Refusal::None) return refusal;
  if (auto refusal = CheckOthers(resolved); refusal != Refusal::None) return refusal;
  if (PathCrossesLink(platform_, resolved, true)) return Refusal::Link;
  return Refusal::None;
}

Refusal ProtectedPlaces::CheckDeletion(std::wstring_view resolved,
                                       std::wstring_view productCode) const {
  if (!IsLocal(resolved)) return Refusal::Unresolvable;
  if (IsDriveRoot(resolved)) return Refusal::DriveRoot;
  for (const auto& windows : windowsFolders_) {
    if (!PathIsOrIsBelow(resolved, windows)) continue;
    // The installer keeps a product's icons and transforms in a folder
    // named by its code; that folder is the product's own.
    const bool ownCache = productCode.size() == 38 && productCode.front() == L'{' &&
                          productCode.back() == L'}' &&
                          productCode.find_first_of(L"\\/.") == std::wstring_view::npos &&
                          PathIsOrIsBelow(resolved, windows + L"\\Installer\\" +
                                                        std::wstring(productCode));
    if (!ownCache) return Refusal::WindowsFolder;
  }
  for (std::size_t i = 0; i < folders_.size(); ++i)
    if (text::SameText(resolved, folders_[i])) return kinds_[i];
  for (const auto& windows : windowsFolders_)
    if (Holds(resolved, windows)) return Refusal::HoldsProtected;
  for (const auto& folder : folders_)
    if (Holds(resolved, folder)) return Refusal::HoldsProtected;
  if (auto refusal = CheckOthers(resolved); refusal != Refusal::None) return refusal;
  if (PathCrossesLink(platform_, resolved, false)) return Refusal::Link;
  return Refusal::None;
}

}  // namespace varnel
