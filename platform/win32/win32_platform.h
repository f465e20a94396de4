#pragma once

#include <memory>

#include "platform/platform.h"

// The real machine. Safe to include without <windows.h>.
namespace varnel::win32 {

class Win32Platform {
 public:
  Win32Platform();
  ~Win32Platform();
  Win32Platform(const Win32Platform&) = delete;
  Win32Platform& operator=(const Win32Platform&) = delete;

  Platform Get();

 private:
  struct Impl;
  std::unique_ptr<Impl> impl_;
};

}  // namespace varnel::win32
