#pragma once

#include <cstdint>
#include <memory>
#include <span>
#include <string_view>
#include <vector>

namespace varnel {

namespace ShowCmd {
constexpr int Hide = 0;
constexpr int Normal = 1;
constexpr int Maximize = 3;
}  // namespace ShowCmd

// An icon owned by whoever holds the last copy; opaque outside the backend.
using IconHandle = std::shared_ptr<void>;

class IShell {
 public:
  virtual ~IShell() = default;
  // ShellExecuteW with no owner window; returns its result (> 32 is success).
  virtual std::intptr_t Execute(std::wstring_view verb, std::wstring_view file,
                                std::wstring_view parameters, std::wstring_view directory,
                                int show) = 0;
  // Starts the file and waits, without time-out, until it is idle for input.
  virtual bool ExecuteAndWaitIdle(std::wstring_view verb, std::wstring_view file, int show) = 0;
  // The small and the large icon at `index` of an icon, exe or dll file (a
  // negative index is a resource id). False, both empty, unless both exist.
  virtual bool ExtractIcons(std::wstring_view file, int index, IconHandle& small,
                            IconHandle& large) = 0;
  // An icon's picture as bytes that IconFromBits turns back into the same
  // icon, for keeping icons in a file; empty when it cannot be read.
  virtual std::vector<std::uint8_t> IconBits(const IconHandle& icon) = 0;
  // Null for bytes that IconBits did not make (they come from a file).
  virtual IconHandle IconFromBits(std::span<const std::uint8_t> bits) = 0;
  // The shell's small icon for a file or folder, and its index in the system
  // image list (equal icons share an index); empty and -1 when there is none.
  virtual IconHandle SmallFileIcon(std::wstring_view path, int& systemIndex) = 0;
};

}  // namespace varnel
