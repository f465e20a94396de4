#include "platform/win32/win32_processes.h"

#include <windows.h>

#include <algorithm>
#include <cstring>

#include "platform/win32/unique_handle.h"

namespace varnel::win32 {

namespace {

class Win32Job final : public IJob {
 public:
  Win32Job(UniqueHandle job, UniqueHandle process, bool assigned)
      : job_(std::move(job)), process_(std::move(process)), assigned_(assigned) {}

  std::optional<std::vector<std::uint32_t>> ProcessIds(std::size_t capacity) override {
    if (!assigned_) {
      // Outside any job of ours only the started process itself can be followed.
      if (ExitCode()) return std::vector<std::uint32_t>{};
      return std::vector<std::uint32_t>{static_cast<std::uint32_t>(GetProcessId(process_.get()))};
    }
    // The list's header is two DWORDs, then one ULONG_PTR per id.
    const std::size_t bytes =
        offsetof(JOBOBJECT_BASIC_PROCESS_ID_LIST, ProcessIdList) + capacity * sizeof(ULONG_PTR);
    std::vector<std::uint8_t> buffer(std::max(bytes, sizeof(JOBOBJECT_BASIC_PROCESS_ID_LIST)));
    auto* list = reinterpret_cast<JOBOBJECT_BASIC_PROCESS_ID_LIST*>(buffer.data());
    if (!QueryInformationJobObject(job_.get(), JobObjectBasicProcessIdList, list,
                                   static_cast<DWORD>(bytes), nullptr))
      return std::nullopt;
    std::vector<std::uint32_t> ids;
    const DWORD count = std::min<DWORD>(list->NumberOfProcessIdsInList,
                                        static_cast<DWORD>(capacity));
    for (DWORD i = 0; i < count; ++i) ids.push_back(static_cast<std::uint32_t>(list->ProcessIdList[i]));
    return ids;
  }

  std::optional<std::uint32_t> ExitCode() override {
    DWORD code = 0;
    if (!GetExitCodeProcess(process_.get(), &code) || code == STILL_ACTIVE) return std::nullopt;
    return code;
  }

 private:
  UniqueHandle job_;
  UniqueHandle process_;
  bool assigned_;
};

// Never closed: the release would end the restore point, which is kept open.
#pragma pack(push, 1)
struct RestorePointInfo {
  DWORD eventType;
  DWORD restorePointType;
  INT64 sequenceNumber;
  WCHAR description[256];
};
struct RestoreManagerStatus {
  DWORD status;
  INT64 sequenceNumber;
};
#pragma pack(pop)

constexpr DWORD kBeginSystemChange = 100;
constexpr DWORD kEndSystemChange = 101;
constexpr DWORD kApplicationInstall = 0;
constexpr DWORD kCancelledOperation = 13;

}  // namespace

std::unique_ptr<IJob> Win32Processes::StartInJob(std::wstring_view commandLine, int show) {
  // Under Wine the first window program on a desktop starts the desktop's own
  // process (explorer.exe) as its child: started from inside the job, it would
  // stay in it for as long as this program lives. Asking for the desktop here
  // makes it ours; on Windows the desktop is always there.
  GetDesktopWindow();
  UniqueHandle job(CreateJobObjectW(nullptr, nullptr));
  if (!job) return nullptr;
  std::wstring command(commandLine);
  STARTUPINFOW startup{};
  startup.cb = sizeof startup;
  startup.dwFlags = STARTF_USESHOWWINDOW;
  startup.wShowWindow = static_cast<WORD>(show);
  PROCESS_INFORMATION info{};
  // Suspended until it is in the job, so nothing it starts escapes the wait.
  const DWORD flags = CREATE_BREAKAWAY_FROM_JOB | CREATE_SUSPENDED;
  BOOL started = CreateProcessW(nullptr, command.data(), nullptr, nullptr, FALSE, flags, nullptr,
                                nullptr, &startup, &info);
  if (!started && GetLastError() == ERROR_ACCESS_DENIED) {
    // Inside a job that forbids breaking away: the new job nests in it.
    started = CreateProcessW(nullptr, command.data(), nullptr, nullptr, FALSE, CREATE_SUSPENDED,
                             nullptr, nullptr, &startup, &info);
  }
  if (!started) return nullptr;
  UniqueHandle process(info.hProcess);
  UniqueHandle thread(info.hThread);
  const bool assigned = AssignProcessToJobObject(job.get(), process.get()) != FALSE;
  ResumeThread(thread.get());
  return std::make_unique<Win32Job>(std::move(job), std::move(process), assigned);
}

std::wstring Win32Processes::ImageName(std::uint32_t processId) {
  UniqueHandle process(OpenProcess(PROCESS_QUERY_LIMITED_INFORMATION, FALSE, processId));
  if (!process) return {};
  std::wstring path(32768, L'\0');
  DWORD size = static_cast<DWORD>(path.size());
  if (!QueryFullProcessImageNameW(process.get(), 0, path.data(), &size)) return {};
  path.resize(size);
  const auto slash = path.find_last_of(L"\\/");
  return slash == std::wstring::npos ? path : path.substr(slash + 1);
}

bool Win32RestorePoints::BeginRestorePoint(std::wstring_view description) {
  using SetRestorePoint = BOOL(WINAPI*)(RestorePointInfo*, RestoreManagerStatus*);
  // The restore service is reached through COM on the calling (worker) thread.
  ComScope com;
  UniqueModule library(LoadLibraryW(L"SrClient.dll"));
  auto set = GetProc<SetRestorePoint>(library.get(), "SRSetRestorePointW");
  if (!set) return false;
  RestorePointInfo point{};
  point.eventType = kBeginSystemChange;
  point.restorePointType = kApplicationInstall;
  point.sequenceNumber = 0;
  const std::size_t length = std::min<std::size_t>(description.size(), 255);
  std::memcpy(point.description, description.data(), length * sizeof(wchar_t));
  RestoreManagerStatus status{};
  const bool ok = set(&point, &status) != FALSE;
  if (ok) {
    // The closing record is prepared but deliberately not submitted.
    point.eventType = kEndSystemChange;
    point.restorePointType = kCancelledOperation;
    point.sequenceNumber = status.sequenceNumber;
  }
  return ok;
}

}  // namespace varnel::win32
