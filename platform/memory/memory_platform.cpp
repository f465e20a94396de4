#include "platform/memory/memory_platform.h"

#include "platform/csidl.h"

namespace varnel::mem {

namespace {

constexpr wchar_t kProfile[] = L"C:\\Users\\test";
constexpr wchar_t kRoaming[] = L"C:\\Users\\test\\AppData\\Roaming";
constexpr wchar_t kLocal[] = L"C:\\Users\\test\\AppData\\Local";
constexpr wchar_t kStartMenu[] = L"C:\\Users\\test\\AppData\\Roaming\\Microsoft\\Windows\\Start Menu";
constexpr wchar_t kCommonStartMenu[] = L"C:\\ProgramData\\Microsoft\\Windows\\Start Menu";

std::map<int, std::wstring> DefaultFolders() {
  const std::wstring profile = kProfile, roaming = kRoaming, local = kLocal;
  const std::wstring startMenu = kStartMenu, commonStartMenu = kCommonStartMenu;
  return {
      {Csidl::Desktop, profile + L"\\Desktop"},
      {Csidl::DesktopDirectory, profile + L"\\Desktop"},
      {Csidl::Programs, startMenu + L"\\Programs"},
      {Csidl::Personal, profile + L"\\Documents"},
      {Csidl::Favorites, profile + L"\\Favorites"},
      {Csidl::Startup, startMenu + L"\\Programs\\Startup"},
      {Csidl::Recent, roaming + L"\\Microsoft\\Windows\\Recent"},
      {Csidl::SendTo, roaming + L"\\Microsoft\\Windows\\SendTo"},
      {Csidl::StartMenu, startMenu},
      {Csidl::MyMusic, profile + L"\\Music"},
      {Csidl::MyVideo, profile + L"\\Videos"},
      {Csidl::NetHood, roaming + L"\\Microsoft\\Windows\\Network Shortcuts"},
      {Csidl::Fonts, L"C:\\Windows\\Fonts"},
      {Csidl::Templates, roaming + L"\\Microsoft\\Windows\\Templates"},
      {Csidl::CommonStartMenu, commonStartMenu},
      {Csidl::CommonPrograms, commonStartMenu + L"\\Programs"},
      {Csidl::CommonStartup, commonStartMenu + L"\\Programs\\Startup"},
      {Csidl::CommonDesktopDirectory, L"C:\\Users\\Public\\Desktop"},
      {Csidl::AppData, roaming},
      {Csidl::PrintHood, roaming + L"\\Microsoft\\Windows\\Printer Shortcuts"},
      {Csidl::LocalAppData, local},
      {Csidl::CommonFavorites, profile + L"\\Favorites"},
      {Csidl::InternetCache, local + L"\\Microsoft\\Windows\\INetCache"},
      {Csidl::Cookies, local + L"\\Microsoft\\Windows\\INetCookies"},
      {Csidl::History, local + L"\\Microsoft\\Windows\\History"},
      {Csidl::CommonAppData, L"C:\\ProgramData"},
      {Csidl::Windows, L"C:\\Windows"},
      {Csidl::System, L"C:\\Windows\\system32"},
      {Csidl::ProgramFiles, L"C:\\Program Files"},
      {Csidl::MyPictures, profile + L"\\Pictures"},
      {Csidl::Profile, profile},
      {Csidl::SystemX86, L"C:\\Windows\\SysWOW64"},
      {Csidl::ProgramFilesX86, L"C:\\Program Files (x86)"},
      {Csidl::ProgramFilesCommon, L"C:\\Program Files\\Common Files"},
      {Csidl::ProgramFilesCommonX86, L"C:\\Program Files (x86)\\Common Files"},
      {Csidl::CommonTemplates, L"C:\\ProgramData\\Microsoft\\Windows\\Templates"},
      {Csidl::CommonDocuments, L"C:\\Users\\Public\\Documents"},
      {Csidl::CommonAdminTools, commonStartMenu + L"\\Programs\\Administrative Tools"},
      {Csidl::AdminTools, startMenu + L"\\Programs\\Administrative Tools"},
      {Csidl::CommonMusic, L"C:\\Users\\Public\\Music"},
      {Csidl::CommonPictures, L"C:\\Users\\Public\\Pictures"},
      {Csidl::CommonVideo, L"C:\\Users\\Public\\Videos"},
      {Csidl::Resources, L"C:\\Windows\\resources"},
      {Csidl::CdBurnArea, local + L"\\Microsoft\\Windows\\Burn\\Burn"},
  };
}

}  // namespace

MemoryPlatform::MemoryPlatform()
    : registry(faults), files(faults), system(faults, registry) {
  system.specialFolders = DefaultFolders();
  system.environment = {
      {L"USERPROFILE", kProfile},
      {L"USERNAME", L"test"},
      {L"APPDATA", kRoaming},
      {L"LOCALAPPDATA", kLocal},
      {L"TEMP", std::wstring(kLocal) + L"\\Temp"},
      {L"TMP", std::wstring(kLocal) + L"\\Temp"},
      {L"WINDIR", L"C:\\Windows"},
      {L"SYSTEMROOT", L"C:\\Windows"},
      {L"SYSTEMDRIVE", L"C:"},
      {L"PROGRAMFILES", L"C:\\Program Files"},
      {L"PROGRAMFILES(X86)", L"C:\\Program Files (x86)"},
      {L"COMMONPROGRAMFILES", L"C:\\Program Files\\Common Files"},
      {L"PROGRAMDATA", L"C:\\ProgramData"},
      {L"ALLUSERSPROFILE", L"C:\\ProgramData"},
      {L"PUBLIC", L"C:\\Users\\Public"},
  };

  files.AddFolder(L"C:\\");
  for (const auto& [_, folder] : system.specialFolders) files.AddFolder(folder);
  files.AddFolder(system.tempDir);
  files.AddFile(L"C:\\Windows\\regedit.exe", "MZ");
  files.AddFile(L"C:\\Windows\\system32\\rundll32.exe", "MZ");

  const wchar_t* shellFolders =
      L"Software\\Microsoft\\Windows\\CurrentVersion\\Explorer\\Shell Folders";
  const std::pair<const wchar_t*, int> named[] = {
      {L"Desktop", Csidl::DesktopDirectory}, {L"Start Menu", Csidl::StartMenu},
      {L"Recent", Csidl::Recent},            {L"Programs", Csidl::Programs},
      {L"Personal", Csidl::Personal},        {L"AppData", Csidl::AppData},
      {L"Local AppData", Csidl::LocalAppData}, {L"Startup", Csidl::Startup},
      {L"Favorites", Csidl::Favorites},
  };
  for (const auto& [name, csidl] : named)
    registry.SetString(RegRoot::CurrentUser, shellFolders, name, system.specialFolders[csidl]);
  const wchar_t* uninstall = L"Software\\Microsoft\\Windows\\CurrentVersion\\Uninstall";
  registry.SetString(RegRoot::LocalMachine, L"Software\\Microsoft\\Windows\\CurrentVersion",
                     L"ProgramFilesDir", L"C:\\Program Files", true);
  registry.SetString(RegRoot::LocalMachine, L"Software\\Microsoft\\Windows\\CurrentVersion",
                     L"ProgramFilesDir", L"C:\\Program Files (x86)", false);
  for (bool use64 : {true, false}) registry.CreateKey(RegRoot::LocalMachine, uninstall, use64);
  registry.CreateKey(RegRoot::CurrentUser, uninstall, true);
}

}  // namespace varnel::mem
