#pragma once

#include "platform/file_system.h"
#include "platform/processes.h"
#include "platform/registry.h"
#include "platform/shell.h"
#include "platform/system.h"
#include "platform/window_steering.h"

namespace varnel {

// Everything the logic may ask of the machine, handed to constructors.
struct Platform {
  IRegistry& registry;
  IFileSystem& files;
  ISystem& system;
  IShell& shell;
  IWindowSteering& windows;
  IProcesses& processes;
  IRestorePoints& restorePoints;
};

}  // namespace varnel
