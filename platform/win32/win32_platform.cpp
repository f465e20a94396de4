#include "platform/win32/win32_platform.h"

#include "platform/win32/win32_file_system.h"
#include "platform/win32/win32_processes.h"
#include "platform/win32/win32_registry.h"
#include "platform/win32/win32_shell.h"
#include "platform/win32/win32_system.h"
#include "platform/win32/win32_window_steering.h"

namespace varnel::win32 {

struct Win32Platform::Impl {
  Win32System system;
  Win32Registry registry{system.IsWow64()};
  Win32FileSystem files;
  Win32Shell shell;
  Win32WindowSteering windows;
  Win32Processes processes;
  Win32RestorePoints restorePoints;
};

Win32Platform::Win32Platform() : impl_(std::make_unique<Impl>()) {}
Win32Platform::~Win32Platform() = default;

Platform Win32Platform::Get() {
  return Platform{impl_->registry, impl_->files,   impl_->system,       impl_->shell,
                  impl_->windows,  impl_->processes, impl_->restorePoints};
}

}  // namespace varnel::win32
