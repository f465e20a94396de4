// Feeds arbitrary UTF-16 text to every command interpreter routine.
#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>

#include "base/date_time.h"
#include "core/uninstall_command.h"
#include "platform/memory/memory_platform.h"

namespace {

using varnel::LauncherRule;

// A machine with the files and folders realistic commands point at.
varnel::mem::MemoryPlatform& Machine() {
  static varnel::mem::MemoryPlatform* machine = [] {
    auto* m = new varnel::mem::MemoryPlatform();
    m->files.AddFile(L"C:\\Program Files\\App\\unins000.exe", "MZ");
    m->files.AddFile(L"C:\\Program Files\\App\\app.dll", "MZ");
    m->files.AddFile(L"C:\\Windows\\system32\\msiexec.exe", "MZ");
    m->files.AddFile(L"C:\\Windows\\system32\\shell32.dll", "MZ");
    m->files.AddFile(L"C:\\Windows\\ST6UNST.EXE", "MZ");
    m->files.AddFile(L"C:\\APP\\ST6UNST.LOG", "log");
    m->files.AddFile(L"C:\\DRV\\X.INF", "inf");
    m->files.AddFile(L"C:\\Users\\test\\ext\\install.rdf", "<RDF/>");
    m->files.AddFile(L"C:\\Users\\test\\Desktop\\u.exe", "MZ");
    m->files.SetTimes(L"C:\\Program Files\\App\\unins000.exe", 129'000'000'000'000'000ULL, 0, 0);
    m->files.SetTimes(L"C:\\Users\\test\\ext\\install.rdf", ~0ULL, 0, 0);
    m->system.utcOffsetMinutes = 60;
    return m;
  }();
  return *machine;
}

bool IsHex(wchar_t c) {
  return (c >= L'0' && c <= L'9') || (c >= L'A' && c <= L'F');
}

void Check(bool promise) {
  if (!promise) __builtin_trap();
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  if (size < 1) return 0;
  // The first byte picks the add-on flag and where the text splits into an
  // uninstall string and a product code or add-on path.
  const std::uint8_t control = data[0];
  std::wstring text;
  for (std::size_t i = 1; i + 1 < size; i += 2)
    text.push_back(static_cast<wchar_t>(data[i] | (data[i + 1] << 8)));
  const std::size_t split = text.empty() ? 0 : (control >> 1) % (text.size() + 1);
  const std::wstring_view command = std::wstring_view(text).substr(0, split);
  const std::wstring_view other = std::wstring_view(text).substr(split);

  auto& m = Machine();
  const varnel::TAppFrame frame(m.Get());

  varnel::GetFileFromCommandLine(frame, text);
  const std::wstring cut = varnel::CutAtExecutableExtension(text);
  Check(cut.size() <= text.size() && text.starts_with(cut));
  for (auto rule : {LauncherRule::UninstallerDate, LauncherRule::InstallFolder,
                    LauncherRule::FolderPath}) {
    // Quotes go and the ends are trimmed; the macro folders of this machine
    // bring in neither.
    const std::wstring cleaned = varnel::CleanUninstallCommand(frame, text, rule);
    Check(cleaned.find(L'"') == std::wstring::npos);
    Check(cleaned.empty() || (cleaned.front() > L' ' && cleaned.back() > L' '));
  }

  varnel::UninstallSource source;
  source.uninstallString = command;
  source.productCode = other;
  source.isBrowserAddon = control & 1;
  source.addonPath = other;
  const varnel::TDateTime date = varnel::GetUninstallerFileDate(frame, source);
  Check(date == 0 || varnel::DecodeDateTime(date).year != 0);

  const std::wstring folder = varnel::GetInstallFolderFromUninstallString(frame, source);
  Check(folder.empty() || (folder.back() == L'\\' && m.files.DirectoryExists(folder) &&
                           folder.find(L'%') == std::wstring::npos));
  const std::wstring cleanFolder = varnel::CleanFolderPath(frame, text);
  Check(cleanFolder.empty() || m.files.DirectoryExists(cleanFolder));

  const std::wstring packed = varnel::MsiProductCodeToPackedGuid(text);
  Check(packed.empty() || packed.size() == 32);
  for (wchar_t c : packed) Check(IsHex(c));
  return 0;
}
