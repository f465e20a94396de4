#include <gtest/gtest.h>

#include <cstring>

#include "base/text.h"
#include "platform/memory/memory_platform.h"
#include "uninstall/quiet_command.h"

namespace varnel {
namespace {

constexpr std::wstring_view kUninstall =
    L"\\Software\\Microsoft\\Windows\\CurrentVersion\\Uninstall\\";
constexpr std::wstring_view kCode = L"{6BA67843-0D45-48E2-9A39-FC786CBE3C43}";

void Put32(std::string& bytes, std::size_t at, std::uint32_t v) {
  if (bytes.size() < at + 4) bytes.resize(at + 4, '\0');
  for (int i = 0; i < 4; ++i) bytes[at + i] = static_cast<char>(v >> (8 * i));
}

// A PE file whose one section ends at 0x600, followed by `overlay`; `inImage`
// is placed inside the section.
std::string Program(std::string_view overlay, std::string_view inImage = {}) {
  std::string bytes(0x600, '\0');
  bytes[0] = 'M';
  bytes[1] = 'Z';
  Put32(bytes, 0x3C, 0x80);
  std::memcpy(bytes.data() + 0x80, "PE\0\0", 4);
  Put32(bytes, 0x84, 0x8664u | 1u << 16);  // machine, one section
  Put32(bytes, 0x94, 0xF0);                // optional header size
  Put32(bytes, 0x188 + 16, 0x200);         // raw size
  Put32(bytes, 0x188 + 20, 0x400);         // raw pointer
  if (!inImage.empty()) bytes.replace(0x400, inImage.size(), inImage);
  return bytes + std::string(overlay);
}

std::string NsisHeader(std::uint32_t flags) {
  std::string header;
  Put32(header, 0, flags);
  Put32(header, 4, 0xDEADBEEFu);
  return header + "NullsoftInst" + std::string(8, '\0');
}

std::string InnoUninstaller() {
  std::string bytes = Program("");
  std::memcpy(bytes.data() + 0x30, "InUn", 4);
  return bytes;
}

// The command the quiet form is, or a part of the reason there is none.
TEST(QuietCommandTest, EachTechnologyGetsItsOwnQuietFormWhateverTheFileIsCalled) {
  const std::wstring pf = L"C:\\Program Files\\Acme\\";
  const std::wstring code(kCode), msi = L"MsiExec.exe /X" + code + L" /qn /norestart";
  struct Case {
    const char* what;
    std::wstring key, command;  // the Uninstall key's name, its UninstallString
    std::wstring file;          // written with `bytes` when not empty
    std::string bytes;
    std::wstring registered;    // QuietUninstallString
    bool windowsInstaller;
    std::wstring expected;
  } cases[] = {
      {"registered form wins", L"Notes", L"\"" + pf + L"uninst.exe\"", pf + L"uninst.exe",
       Program(NsisHeader(1)), L" \"" + pf + L"uninst.exe\" /S /quiet ", false,
       L"\"" + pf + L"uninst.exe\" /S /quiet"},
      {"msi removal form", code, L"MsiExec.exe /X" + code, L"", "", L"", false, msi},
      {"msi repair form becomes removal", L"Ledger", L"msiexec /i " + code, L"", "", L"", false,
       msi},
      {"msi code from the key name", code, L"MsiExec.exe", L"", "", L"", true, msi},
      {"msi without a code", L"Ledger", L"MsiExec.exe /X", L"", "", L"", false,
       L"without a product code"},
      {"nsis named like inno", L"A", L"\"%PROGRAMFILES%\\Acme\\unins000.exe\"",
       pf + L"unins000.exe", Program(NsisHeader(1) + "compressed"), L"", false,
       L"\"" + pf + L"unins000.exe\" /S"},
      {"nsis folder argument stays last", L"I", L"\"" + pf + L"uninst.exe\" _?=" + pf,
       pf + L"uninst.exe", Program(NsisHeader(1)), L"", false,
       L"\"" + pf + L"uninst.exe\" /S _?=" + pf},
      {"inno named like nsis", L"B", pf + L"uninst.exe", pf + L"uninst.exe", InnoUninstaller(),
       L"", false, pf + L"uninst.exe /VERYSILENT /SUPPRESSMSGBOXES /NORESTART"},
      {"plain program named uninstall", L"C", pf + L"uninstall.exe", pf + L"uninstall.exe",
       Program("data"), L"", false, L"no quiet form known"},
      {"nsis marker inside the image", L"D", pf + L"uninstall.exe", pf + L"uninstall.exe",
       Program("", NsisHeader(1)), L"", false, L"no quiet form known"},
      {"nsis installer", L"E", pf + L"setup.exe", pf + L"setup.exe", Program(NsisHeader(0)), L"",
       false, L"installer, not an uninstaller"},
      {"not a program", L"F", pf + L"uninst.exe", pf + L"uninst.exe", "InUn", L"", false,
       L"no quiet form known"},
      {"missing uninstaller", L"G", pf + L"gone.exe", L"", "", L"", false, L"does not exist"},
      {"no command", L"H", L"  ", L"", "", L"", false, L"no uninstall command"},
  };
  for (const Case& c : cases) {
    SCOPED_TRACE(c.what);
    mem::MemoryPlatform m;
    TSoftInfo info;
    info.RootKey = L"HKEY_LOCAL_MACHINE";
    info.KeyPath = std::wstring(kUninstall) + c.key;
    info.Is64BitView = true;
    info.UninstallString = c.command;
    m.registry.SetString(RegRoot::LocalMachine, info.KeyPath, L"UninstallString", c.command, true);
    if (!c.registered.empty())
      m.registry.SetString(RegRoot::LocalMachine, info.KeyPath, L"QuietUninstallString",
                           c.registered, true);
    if (c.windowsInstaller)
      m.registry.SetDWord(RegRoot::LocalMachine, info.KeyPath, L"WindowsInstaller", 1, true);
    if (!c.file.empty()) m.files.AddFile(c.file, c.bytes);

    const QuietCommand quiet = FindQuietCommand(m.Get(), info);
    if (quiet.Usable()) {
      EXPECT_EQ(quiet.command, c.expected);
    } else {
      EXPECT_TRUE(quiet.command.empty());
      EXPECT_TRUE(text::ContainsText(quiet.reason, c.expected)) << text::ToUtf8(quiet.reason);
    }
  }
}

// The header's scan reads a bounded part of the file, however large it is.
TEST(QuietCommandTest, OnlyTheHeaderAndTheStartOfTheOverlayAreRead) {
  mem::MemoryPlatform m;
  const std::wstring file = L"C:\\big\\uninst.exe";
  std::string bytes = Program(NsisHeader(1));
  bytes.resize(8u << 20, 'x');
  m.files.AddFile(file, bytes);
  EXPECT_EQ(ReadUninstallerKind(m.files, file), UninstallerKind::Nsis);
  bytes = Program(std::string(2u << 20, 'x') + NsisHeader(1));
  m.files.AddFile(file, bytes);
  EXPECT_EQ(ReadUninstallerKind(m.files, file), UninstallerKind::Unknown)
      << "a header megabytes past the image is not looked for";
}

}  // namespace
}  // namespace varnel
