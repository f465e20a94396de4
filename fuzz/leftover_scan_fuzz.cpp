// Runs a full leftover scan over a registry and disk built from arbitrary
// bytes: names with backslashes, values of any type and length, values that
// name other keys, folders that loop back to the install folder.
#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

#include "leftovers/scan_driver.h"
#include "platform/memory/memory_platform.h"

namespace {

// Where the scanners look, so that the bytes land somewhere that matters.
constexpr const wchar_t* kPlaces[] = {
    L"SOFTWARE\\Classes\\CLSID\\{00000000-0000-4000-8000-000000000001}",
    L"SOFTWARE\\Classes\\CLSID\\{00000000-0000-4000-8000-000000000001}\\InprocServer32",
    L"SOFTWARE\\Classes\\CLSID\\{00000000-0000-4000-8000-000000000002}\\LocalServer32",
    L"SOFTWARE\\Classes\\AppID",
    L"SOFTWARE\\Classes\\TypeLib\\{00000000-0000-4000-8000-000000000003}\\1.0\\0\\win32",
    L"SOFTWARE\\Classes\\Interface\\{00000000-0000-4000-8000-000000000004}\\TypeLib",
    L"SOFTWARE\\Classes\\.fz",
    L"SOFTWARE\\Classes\\Fz.Doc\\shell\\open\\command",
    L"SOFTWARE\\Classes\\Fz.Doc\\shellex\\ContextMenuHandlers\\Fz",
    L"SOFTWARE\\Classes\\*\\shell\\Fz\\command",
    L"SOFTWARE\\Classes\\Installer\\Products",
    L"SOFTWARE\\Microsoft\\Windows\\CurrentVersion\\Run",
    L"SOFTWARE\\Microsoft\\Windows\\CurrentVersion\\App Paths\\fz.exe",
    L"SOFTWARE\\Microsoft\\Windows\\CurrentVersion\\Installer\\UserData\\S-1-5-18\\Components\\C1",
    L"SOFTWARE\\Clients\\Media\\Fz\\shell\\open\\command",
    L"SYSTEM\\CurrentControlSet\\services\\fz",
    L"SYSTEM\\CurrentControlSet\\services\\fz\\Enum",
    L"SYSTEM\\CurrentControlSet\\services\\eventlog\\Application\\fz",
    L"SOFTWARE\\Fz Vendor\\Fz",
    L"SOFTWARE\\Varnel\\Folder Guard",
};
constexpr std::size_t kPlaceCount = sizeof(kPlaces) / sizeof(kPlaces[0]);

class Reader {
 public:
  Reader(const std::uint8_t* data, std::size_t size) : data_(data), size_(size) {}
  bool Empty() const { return at_ >= size_; }
  std::uint8_t Byte() { return at_ < size_ ? data_[at_++] : 0; }
  std::wstring Text() {
    std::wstring s;
    for (std::size_t n = Byte() % 24; n > 0 && !Empty(); --n) s += static_cast<wchar_t>(Byte());
    return s;
  }
  std::vector<std::uint8_t> Bytes() {
    std::vector<std::uint8_t> b;
    for (std::size_t n = Byte() % 80; n > 0 && !Empty(); --n) b.push_back(Byte());
    return b;
  }

 private:
  const std::uint8_t* data_;
  std::size_t size_;
  std::size_t at_ = 0;
};

std::vector<std::uint8_t> Utf16(const std::wstring& s) {
  std::vector<std::uint8_t> b;
  for (wchar_t c : s) {
    b.push_back(static_cast<std::uint8_t>(c));
    b.push_back(static_cast<std::uint8_t>(c >> 8));
  }
  b.insert(b.end(), {0, 0});
  return b;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  varnel::mem::MemoryPlatform m;
  const std::wstring folder = L"C:\\Program Files\\Fz";
  m.files.AddFile(folder + L"\\fz.exe", "MZ");
  Reader in(data, size);
  while (!in.Empty()) {
    const std::uint8_t op = in.Byte();
    std::wstring path = kPlaces[op % kPlaceCount];
    if (op & 0x80) path += L"\\" + in.Text();
    const auto root = (op & 0x40) ? varnel::RegRoot::CurrentUser : varnel::RegRoot::LocalMachine;
    const std::wstring name = in.Text();
    varnel::RegValue value;
    value.type = in.Byte() % 12;
    // Half the values name the install folder, so the matching paths run too.
    value.data = (op & 0x20) ? Utf16(folder + in.Text()) : in.Bytes();
    m.registry.SetRaw(root, path, name, value, (op & 0x10) != 0);
    if (op & 0x08) m.files.AddFolder(folder + L"\\" + std::to_wstring(op) + in.Text());
  }
  varnel::SoftList list;
  list.push_back(std::make_unique<varnel::TSoftInfo>());
  list[0]->Name = L"Fz";
  list[0]->Publisher = L"Fz Vendor";
  list[0]->InstallLocation = folder;
  list[0]->KeyPath = L"\\SOFTWARE\\Microsoft\\Windows\\CurrentVersion\\Uninstall\\"
                     L"{00000000-0000-4000-8000-000000000009}";
  list[0]->Is64BitView = size % 2 == 0;
  const varnel::TFilterManage filter;
  varnel::ScanDriver driver(m.Get(), filter);
  driver.Collect(list, 0, L"", nullptr);
  return 0;
}
