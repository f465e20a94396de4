#pragma once

#include <cstdint>
#include <functional>
#include <memory>
#include <string>
#include <vector>

#include "core/protected_places.h"
#include "inventory/soft_info.h"
#include "leftovers/filter_manage.h"
#include "leftovers/image_list.h"
#include "leftovers/scan_context.h"
#include "leftovers/scan_results.h"
#include "leftovers/scan_sink.h"
#include "platform/platform.h"

namespace varnel {

// Finds what one program left behind in the registry and on disk: runs the
// steps in their fixed order over a read-only context, filing what they find
// in a sink. Lives for the scan of one program; runs on the GUI thread,
// calling the message step once per item so that a Stop button can be served.
class TRegeditScanClasses {
 public:
  using MessageStep = ScanContext::MessageStep;
  using Step = std::function<void(const ScanContext&, ScanSink&)>;

  // `filter` is the caller's and must outlive the scan.
  TRegeditScanClasses(const Platform& platform, const TFilterManage& filter,
                      MessageStep processMessages = {});
  TRegeditScanClasses(const TRegeditScanClasses&) = delete;
  TRegeditScanClasses& operator=(const TRegeditScanClasses&) = delete;

  // The places no finding may be; given before SetUp (the caller's, it must
  // outlive the scan). Without one, SetUp reads the machine's own and knows
  // no other programs.
  void SetProtectedPlaces(const ProtectedPlaces* places) { places_ = places; }

  // The result lists stay the caller's; `images` may be null (no icons then).
  void SetUp(std::vector<TShowRegInfo>* registryResults, std::vector<TFileInfo>* fileResults,
             std::uintptr_t ownerWindow, const TSoftInfo& record, IImageList* images);
  void FullScan();
  // The toolbar's browser entries (and its class keys when they lie in the folder).
  void ToolbarScan(const std::wstring& toolbarClsid);
  // Disk only, from an install location that may name a file.
  void FileOnlyScan();
  void Stop() { runState_ = ScanRunState::StopRequested; }
  // Runs one step on its own, in the run state a full scan gives it.
  void RunAlone(const Step& step);
  void ClearResults() { sink_.ClearResults(); }
  ScanRunState RunState() const { return runState_; }

  const ScanContext& Context() const { return context_; }
  const ScanSink& Sink() const { return sink_; }
  std::uintptr_t OwnerWindow() const { return ownerWindow_; }

 private:
  ScanRunState runState_ = ScanRunState::Idle;
  ScanContext context_;
  ScanSink sink_;
  const ProtectedPlaces* places_ = nullptr;
  std::unique_ptr<ProtectedPlaces> ownPlaces_;
  std::uintptr_t ownerWindow_ = 0;
};

}  // namespace varnel
