// varnel-cli: the inventory and the uninstall engine for scripts.
#include <windows.h>

#include <string>
#include <vector>

#include "cli/list_command.h"
#include "base/text.h"
#include "platform/win32/win32_platform.h"

namespace {

// A console gets UTF-16 so that any name shows; a pipe or file gets UTF-8.
void Write(DWORD which, const std::string& utf8) {
  if (utf8.empty()) return;
  HANDLE out = GetStdHandle(which);
  if (out == nullptr || out == INVALID_HANDLE_VALUE) return;
  DWORD mode = 0;
  DWORD written = 0;
  if (GetConsoleMode(out, &mode)) {
    std::wstring wide = varnel::text::FromUtf8(utf8);
    WriteConsoleW(out, wide.data(), static_cast<DWORD>(wide.size()), &written, nullptr);
    return;
  }
  std::size_t done = 0;
  while (done < utf8.size()) {
    DWORD chunk = static_cast<DWORD>(std::min<std::size_t>(utf8.size() - done, 1u << 20));
    if (!WriteFile(out, utf8.data() + done, chunk, &written, nullptr) || written == 0) return;
    done += written;
  }
}

}  // namespace

int wmain(int argc, wchar_t** argv) {
  std::vector<std::wstring> args(argv + 1, argv + argc);
  std::string out;
  std::string err;
  int code = varnel::cli::ExitCode::Failed;
  try {
    varnel::win32::Win32Platform machine;
    // Progress goes out at once; the result only when the command is done.
    code = varnel::cli::RunCli(machine.Get(), args, out, err,
                               [](const std::string& line) { Write(STD_ERROR_HANDLE, line); });
  } catch (const std::exception& e) {
    err += std::string("varnel-cli: ") + e.what() + "\n";
    code = varnel::cli::ExitCode::Failed;
  }
  Write(STD_OUTPUT_HANDLE, out);
  Write(STD_ERROR_HANDLE, err);
  return code;
}
