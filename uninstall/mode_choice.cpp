#include "core/app_frame.h"
#include "core/data_folder.h"
#include "base/ext_ini_file.h"
#include "uninstall/uninstall_sequence.h"

namespace varnel {

namespace {

std::wstring ModeChoiceFile(const Platform& platform, bool create) {
  const std::wstring folder = UserDataFolder(TAppFrame(platform), create);
  return folder.empty() ? std::wstring() : folder + L"\\Select.ini";
}

}  // namespace

void SaveModeChoice(const Platform& platform, bool advanced) {
  const std::wstring file = ModeChoiceFile(platform, true);
  if (file.empty()) return;
  UpdateIniFile(platform, file, [advanced](TExtIniFile& ini) {
    ini.WriteInteger(L"Main", L"Advanced", advanced ? 1 : 0);
  });
}

bool LoadModeChoice(const Platform& platform) {
  const std::wstring file = ModeChoiceFile(platform, false);
  if (file.empty()) return false;
  TExtIniFile ini;
  if (!ini.LoadFromFile(platform, file)) return false;
  return ini.ReadInteger(L"Main", L"Advanced", 0) == 1;
}

}  // namespace varnel
