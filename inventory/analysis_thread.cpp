#include "inventory/analysis_thread.h"

#include <condition_variable>
#include <exception>
#include <mutex>
#include <system_error>
#include <thread>
#include <utility>
#include <vector>

#include "core/app_frame.h"
#include "base/date_time.h"
#include "core/file_size.h"
#include "core/uninstall_command.h"
#include "inventory/folder_size.h"
#include "inventory/icon_cache.h"
#include "inventory/last_access.h"
#include "inventory/program_icon.h"
#include "inventory/record_commands.h"
#include "inventory/software_cache.h"
#include "base/ext_ini_file.h"

namespace varnel {

namespace {

constexpr auto kIdlePoll = std::chrono::milliseconds(100);
constexpr auto kDrainSlice = std::chrono::milliseconds(5);
// Records whose cached icons one hand-over restores: few enough that the
// GUI thread stays responsive, many enough that a warm start is not a
// thousand hand-overs.
constexpr std::size_t kRestoreBatch = 64;

// What the worker found for one record, handed to the GUI thread.
struct Findings {
  std::wstring folder;
  std::int64_t size = 0;
  ProgramIcon icon;
  IconHandle small, large;
  std::vector<std::uint8_t> smallBits, largeBits;  // for the icon cache
  TDateTime installDate = 0;
  std::wstring installDateText;
  TDateTime lastAccess = 0;
};

// Without image lists there is no image to wait for.
bool IsComplete(const TSoftInfo& info, bool withImages) {
  return !info.InstallLocation.empty() && info.Size > 0 &&
         (!withImages || info.ImageIndex > 0) && info.InstallDate != 0;
}

}  // namespace

struct TAnalysisThread::Worker {
  Worker(TAnalysisThread& owner, const Platform& platform, GuiDispatcher& dispatcher,
         std::wstring cacheFile, ErrorHandler onError)
      : owner(owner),
        platform(platform),
        dispatcher(dispatcher),
        cacheFile(std::move(cacheFile)),
        onError(std::move(onError)) {}

  TAnalysisThread& owner;
  const Platform platform;
  GuiDispatcher& dispatcher;
  const std::wstring cacheFile;
  const ErrorHandler onError;
  // Set before Start; the records and the view are touched on the GUI thread only.
  IInventoryView* view = nullptr;
  SoftList* list = nullptr;

  std::thread thread;
  std::atomic<bool> terminated{false};
  std::atomic<bool> exited{false};
  // Only to cut the idle sleep short; the flags themselves need no lock.
  std::mutex sleepMutex;
  std::condition_variable wake;

  bool Stopping() const { return owner.stop_ || terminated; }

  void Wake() {
    { std::lock_guard lock(sleepMutex); }
    wake.notify_all();
  }

  void Main() {
    while (!terminated) {
      {
        std::unique_lock lock(sleepMutex);
        wake.wait_for(lock, kIdlePoll, [&] { return terminated || !owner.finished_; });
      }
      if (terminated) break;
      if (owner.finished_) continue;
      // Only what this pass finds; it goes into the file as the file stands
      // at the end, so nothing another process wrote meanwhile is lost.
      TExtIniFile found;
      try {
        IconCache icons;
        const std::wstring iconFile = IconCacheFileFor(cacheFile);
        if (view) {
          icons.Load(platform.files, iconFile);
          RestoreIcons(icons);
        }
        RunPass(found, icons);
        if (icons.Changed()) icons.Save(platform.files, iconFile);
      } catch (...) {
        Report(std::current_exception());
      }
      try {
        // A cache that cannot be saved is only lost work.
        SaveSoftwareCache(platform, cacheFile, found);
      } catch (...) {
        Report(std::current_exception());
      }
      owner.finished_ = true;
    }
    exited = true;
  }

  // Gives the records without an image their cached icons, a batch per
  // hand-over, so that the pass finds them complete.
  void RestoreIcons(const IconCache& icons) {
    if (icons.Size() == 0) return;
    struct Restored {
      std::size_t index;
      const TSoftInfo* record;
      IconHandle small, large;
    };
    for (std::size_t first = 0; !Stopping(); first += kRestoreBatch) {
      std::vector<std::pair<const TSoftInfo*, TSoftInfo>> batch;
      const bool served = dispatcher.Invoke([&] {
        for (std::size_t i = first; list && i < list->size() && i < first + kRestoreBatch; ++i) {
          const TSoftInfo* record = (*list)[i].get();
          batch.emplace_back(record, record ? *record : TSoftInfo{});
        }
      });
      if (!served || batch.empty()) return;
      std::vector<Restored> restored;
      for (std::size_t k = 0; k < batch.size(); ++k) {
        const auto& [record, copy] = batch[k];
        if (!record || copy.Hidden || copy.ImageIndex != 0) continue;
        const IconCache::Entry* entry = icons.Find(platform.system, copy);
        if (!entry) continue;
        Restored r{first + k, record, platform.shell.IconFromBits(entry->small),
                   platform.shell.IconFromBits(entry->large)};
        if (r.small && r.large) restored.push_back(std::move(r));
      }
      if (Stopping()) return;
      if (!restored.empty()) {
        dispatcher.Invoke([&] {
          for (const Restored& r : restored) {
            if (Stopping() || !list || r.index >= list->size() ||
                (*list)[r.index].get() != r.record)
              continue;
            TSoftInfo& info = *(*list)[r.index];
            if (info.ImageIndex != 0) continue;
            info.ImageIndex = view->AddIcons(r.small, r.large);
            view->UpdateRow(static_cast<int>(r.index), info);
          }
        });
      }
    }
  }

  // The application's handler, on the GUI thread like every other report.
  void Report(std::exception_ptr error) noexcept {
    if (!onError) return;
    try {
      dispatcher.Invoke([&] { onError(error); });
    } catch (...) {
      // The handler itself failed: there is nowhere further to report to.
    }
  }

  void RunPass(TExtIniFile& cache, IconCache& icons) {
    TAppFrame frame(platform);
    const bool tracking = LastAccessTracking(platform);
    bool more = true;
    for (std::size_t i = 0; more && !Stopping(); ++i) {
      try {
        more = AnalyseRecord(i, frame, tracking, cache, icons);
      } catch (...) {
        // One record's failure leaves the others to do.
        Report(std::current_exception());
      }
    }
  }

  // False when there is no record i or the GUI thread serves no more.
  bool AnalyseRecord(std::size_t i, const TAppFrame& frame, bool tracking, TExtIniFile& cache,
                     IconCache& icons) {
    // A copy taken on the GUI thread: the worker never reads a record the
    // GUI thread may be changing.
    bool inList = false;
    const TSoftInfo* record = nullptr;
    TSoftInfo snapshot;
    const bool served = dispatcher.Invoke([&] {
      if (!list || i >= list->size()) return;
      inList = true;
      record = (*list)[i].get();
      if (record) snapshot = *record;
    });
    if (!served || !inList) return false;
    if (!record || snapshot.Hidden || IsComplete(snapshot, view != nullptr)) return true;
    Findings found = Analyse(frame, snapshot, tracking);
    if (Stopping()) return false;
    dispatcher.Invoke([&] { Update(i, record, found, cache, icons); });
    return true;
  }

  Findings Analyse(const TAppFrame& frame, const TSoftInfo& info, bool tracking) {
    Findings found;
    if (info.InstallLocation.empty())
      found.folder = GetInstallFolderFromUninstallString(frame, info);
    if (info.Size <= 0) {
      const std::wstring folder = SizeFolderOf(platform.files, info, found.folder);
      found.size = SafeFolderSize(platform, folder, [this] { return Stopping(); });
    }
    if (info.ImageIndex <= 0) {
      found.icon = FindProgramIcon(frame, info);
      if (view && !found.icon.file.empty() &&
          !platform.shell.ExtractIcons(found.icon.file, found.icon.index, found.small,
                                       found.large)) {
        found.small.reset();
        found.large.reset();
      }
      if (found.small && found.large) {
        found.smallBits = platform.shell.IconBits(found.small);
        found.largeBits = platform.shell.IconBits(found.large);
      }
    }
    found.installDate = GetUninstallerFileDate(frame, info);
    if (found.installDate != 0)
      found.installDateText = FormatShortDate(platform.system, found.installDate);
    found.lastAccess = FileLastAccessDate(
        platform, GetFileFromCommandLine(frame, info.DisplayIcon), tracking);
    return found;
  }

  // GUI thread, while the worker waits (so the icon cache is the GUI
  // thread's for the while).
  void Update(std::size_t i, const TSoftInfo* record, Findings& found, TExtIniFile& cache,
              IconCache& icons) {
    if (Stopping()) return;
    // The list may have been rebuilt since the copy was taken.
    if (!list || i >= list->size() || (*list)[i].get() != record) return;
    TSoftInfo& info = *(*list)[i];
    const std::wstring& section = info.Name;

    bool iconAdded = false;
    if (view && found.small && found.large) {
      const int index = view->AddIcons(found.small, found.large);
      if (info.ImageIndex == 0) info.ImageIndex = index;
      iconAdded = true;
    }
    bool filled = false;
    if (info.Size == 0) {
      info.Size = found.size;
      info.SizeText = FormatFileSize(platform.system, info.Size);
      cache.WriteInt64(section, cache_key::Size, info.Size);
      cache.WriteString(section, cache_key::SizeText, info.SizeText);
      filled = true;
    }
    if (info.InstallLocation.empty()) {
      info.InstallLocation = found.folder;
      cache.WriteString(section, cache_key::Location, info.InstallLocation);
      filled = true;
    }
    if (info.DisplayIcon.empty()) {
      info.DisplayIcon = found.icon.file;
      info.IconIndex = found.icon.index;
      cache.WriteString(section, cache_key::DisplayIcon, info.DisplayIcon);
      cache.WriteInteger(section, cache_key::IconIndex, info.IconIndex);
      filled = true;
    }
    if (info.InstallDateText.empty()) {
      info.InstallDate = found.installDate;
      info.InstallDateText = found.installDateText;
      cache.WriteString(section, cache_key::InstallDateText, info.InstallDateText);
      cache.WriteFloat(section, cache_key::InstallDate, info.InstallDate);
      filled = true;
    }
    if (found.lastAccess != info.LastAccessDate) {
      info.LastAccessDate = found.lastAccess;
      cache.WriteFloat(section, cache_key::LastAccessDate, info.LastAccessDate);
    }
    // A new last access date alone leaves the fingerprint as it was.
    if (filled) {
      cache.WriteString(section, cache_key::Fingerprint,
                        CacheFingerprint(platform.system, info.InstallDateText,
                                         info.UninstallString));
    }
    // Keyed by the fields as they now stand, as the cache section is.
    if (iconAdded && !found.smallBits.empty() && !found.largeBits.empty())
      icons.Store(platform.system, info, std::move(found.smallBits), std::move(found.largeBits));
    if (view) view->UpdateRow(static_cast<int>(i), info);
  }
};

TAnalysisThread::TAnalysisThread(const Platform& platform, GuiDispatcher& dispatcher,
                                 std::wstring cacheFile, ErrorHandler onError)
    : worker_(std::make_unique<Worker>(*this, platform, dispatcher, std::move(cacheFile),
                                       std::move(onError))) {}

TAnalysisThread::~TAnalysisThread() {
  Worker& w = *worker_;
  w.terminated = true;
  stop_ = true;
  w.Wake();
  if (!w.thread.joinable()) return;
  // The worker may be waiting for a hand-over; serving it is what lets it end.
  while (!w.exited) w.dispatcher.WaitAndDrain(kDrainSlice);
  w.thread.join();
}

void TAnalysisThread::SetJobs(IInventoryView* view, SoftList* list) {
  worker_->view = view;
  worker_->list = list;
  finished_ = true;
  stop_ = false;
}

void TAnalysisThread::Start() {
  Worker& w = *worker_;
  if (w.thread.joinable()) return;
  try {
    w.thread = std::thread([&w] { w.Main(); });
  } catch (const std::system_error&) {
    // No thread: Running() stays false and the records keep what they have.
  }
}

void TAnalysisThread::RunPass() {
  // Cleared here, not when the worker wakes, so that a stop asked for in
  // between still ends this pass.
  stop_ = false;
  finished_ = false;
  worker_->Wake();
}

void TAnalysisThread::RequestStop() { stop_ = true; }

bool TAnalysisThread::Running() const {
  return worker_->thread.joinable() && !worker_->exited;
}

void TAnalysisThread::WaitForPass() {
  while (!finished_ && Running()) worker_->dispatcher.WaitAndDrain(kDrainSlice);
}

}  // namespace varnel
