#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace varnel {

// A job object around one started program and everything it starts.
// Destroying it closes the handles only: no process is killed or waited for.
class IJob {
 public:
  virtual ~IJob() = default;
  // The ids of the processes in the job now, the query given room for
  // `capacity` ids; nullopt when the query fails (also when more processes
  // are in the job than fit).
  virtual std::optional<std::vector<std::uint32_t>> ProcessIds(std::size_t capacity) = 0;
  // The started process's exit code; nullopt while it runs or when unknown.
  virtual std::optional<std::uint32_t> ExitCode() = 0;
};

class IProcesses {
 public:
  virtual ~IProcesses() = default;
  // Starts `commandLine` (no application name, shown with `show`) inside a
  // new job object, breaking away from a job this program may be in, and
  // assigned to the job before it runs; null when it cannot be started.
  virtual std::unique_ptr<IJob> StartInJob(std::wstring_view commandLine, int show) = 0;
  // The executable's file name (no folder) of a running process; empty when
  // the process is gone or cannot be asked.
  virtual std::wstring ImageName(std::uint32_t processId) = 0;
};

// System restore, through the system's own library.
class IRestorePoints {
 public:
  virtual ~IRestorePoints() = default;
  // Opens a restore point for an application install with `description`
  // and never closes it. False when the library or its entry is missing or
  // the call fails.
  virtual bool BeginRestorePoint(std::wstring_view description) = 0;
};

}  // namespace varnel
