#pragma once

#include "platform/shell.h"

namespace varnel::win32 {

class Win32Shell final : public IShell {
 public:
  std::intptr_t Execute(std::wstring_view verb, std::wstring_view file,
                        std::wstring_view parameters, std::wstring_view directory,
                        int show) override;
  bool ExecuteAndWaitIdle(std::wstring_view verb, std::wstring_view file, int show) override;
  bool ExtractIcons(std::wstring_view file, int index, IconHandle& small,
                    IconHandle& large) override;
  std::vector<std::uint8_t> IconBits(const IconHandle& icon) override;
  IconHandle IconFromBits(std::span<const std::uint8_t> bits) override;
  IconHandle SmallFileIcon(std::wstring_view path, int& systemIndex) override;
};

}  // namespace varnel::win32
