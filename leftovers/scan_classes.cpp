#include "leftovers/scan_classes.h"

#include <utility>

#include "leftovers/scan_steps.h"

namespace varnel {

TRegeditScanClasses::TRegeditScanClasses(const Platform& platform, const TFilterManage& filter,
                                         MessageStep processMessages)
    : context_(platform, filter, std::move(processMessages), runState_), sink_(context_) {}

void TRegeditScanClasses::SetUp(std::vector<TShowRegInfo>* registryResults,
                                std::vector<TFileInfo>* fileResults, std::uintptr_t ownerWindow,
                                const TSoftInfo& record, IImageList* images) {
  sink_.SetUp(registryResults, fileResults, images);
  ownerWindow_ = ownerWindow;
  if (!places_) {
    ownPlaces_ = std::make_unique<ProtectedPlaces>(context_.Machine(), std::vector<std::wstring>{});
    places_ = ownPlaces_.get();
  }
  context_.SetUp(record, *places_);
}

void TRegeditScanClasses::FullScan() {
  runState_ = ScanRunState::Running;
  const bool folder = !context_.InstallFolder().empty();
  // Each step runs only while nobody asked to stop.
  auto step = [&](bool needsFolder, auto&& run) {
    if (context_.Running() && (folder || !needsFolder)) run();
  };
  auto steps = [&](bool needsFolder,
                   std::initializer_list<void (*)(const ScanContext&, ScanSink&)> list) {
    for (auto run : list) step(needsFolder, [&] { run(context_, sink_); });
  };
  using namespace scan;
  ClearResults();
  sink_.CategoryRoot(ScanCategory::Toolbar, L"Toolbar");
  sink_.CategoryRoot(ScanCategory::Extensions, L"Extensions");
  sink_.CategoryRoot(ScanCategory::WebBrowser, L"WebBrowser");
  InstallerFindings installer;
  steps(true, {ComClasses});
  step(false, [&] {
    context_.LookUpFilterEntry();
    installer = Installer(context_, sink_);
  });
  steps(false, {AppIdNames});
  steps(true, {FileClasses, Extensions, Interfaces, Services, Firewall, RunValues, AppPaths,
               ShellExtensionsApproved, VendorKeys, AllFilesVerbs, ControlPanel, Clients, EventLog,
               MuiCache});
  steps(false, {MakerKey});
  step(false, [&] { Files(context_, sink_, installer); });
  runState_ = ScanRunState::Idle;
}

void TRegeditScanClasses::RunAlone(const Step& step) {
  runState_ = ScanRunState::Running;
  step(context_, sink_);
  runState_ = ScanRunState::Idle;
}

void TRegeditScanClasses::ToolbarScan(const std::wstring& toolbarClsid) {
  runState_ = ScanRunState::Running;
  scan::ToolbarValues(context_, sink_, toolbarClsid);
  runState_ = ScanRunState::Idle;
}

void TRegeditScanClasses::FileOnlyScan() {
  runState_ = ScanRunState::Running;
  // An existing file gives its folder; a folder that is gone stays itself,
  // since its parent belongs to another program or to everyone.
  context_.DeriveInstallFolder();
  context_.LookUpFilterEntry();
  scan::Files(context_, sink_, {});
  runState_ = ScanRunState::Idle;
}

}  // namespace varnel
