#pragma once

#include "platform/processes.h"

namespace varnel::win32 {

class Win32Processes final : public IProcesses {
 public:
  std::unique_ptr<IJob> StartInJob(std::wstring_view commandLine, int show) override;
  std::wstring ImageName(std::uint32_t processId) override;
};

class Win32RestorePoints final : public IRestorePoints {
 public:
  bool BeginRestorePoint(std::wstring_view description) override;
};

}  // namespace varnel::win32
