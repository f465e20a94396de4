#pragma once

#include <atomic>
#include <memory>
#include <string>
#include <vector>

#include "inventory/soft_list.h"
#include "leftovers/image_list.h"
#include "leftovers/results_tree.h"
#include "leftovers/scan_classes.h"
#include "leftovers/scan_reads.h"

namespace varnel {

// What one scan found, in the order the results tree shows it.
struct ScanFindings {
  TSoftInfo Record;  // the record scanned (a made-up one for a file)
  std::vector<TShowRegInfo> Registry;
  std::vector<TFileInfo> Files;
  bool Stopped = false;
  int Count() const { return Stopped ? 0 : static_cast<int>(Registry.size() + Files.size()); }
};

// Runs the scan for one program at a time and turns its findings into a
// branch of the results tree.
class ScanDriver {
 public:
  // `filter` is the caller's and outlives the driver.
  ScanDriver(const Platform& platform, const TFilterManage& filter,
             TRegeditScanClasses::MessageStep processMessages = {});

  // The places every scan leaves alone; the caller's, outliving the scans.
  // Without them each scan reads the machine's and takes the other
  // programs' folders from the list it is given.
  void SetProtectedPlaces(const ProtectedPlaces* places) { places_ = places; }
  // Indexes of the list scanned in this run besides the one at hand (a
  // batch): their folders are not other programs'.
  void SetScannedTogether(std::vector<int> indexes) { together_ = std::move(indexes); }
  // When more than one program is scanned together, the scans up to EndBatch
  // read the registry trees and folders they walk once, at the first of them.
  // A lone scan reads only what it needs, live: the copy reads every key
  // whole and costs about a raw walk of the trees.
  void BeginBatch();
  void EndBatch() { batch_.reset(); }

  // Each holds one "%d"; the language table supplies them.
  std::wstring SingularPhrase = L"%d item";
  std::wstring PluralPhrase = L"%d items";

  // Scans list[index], or, when `filePath` is given or the index lies outside
  // the list, the disk around the file. `images` receives file icons (may be null).
  ScanFindings Collect(const SoftList& list, int index, const std::wstring& filePath,
                       IImageList* images);
  // The scan plus its branch in `tree`; returns the number of leftovers, 0
  // (and no branch) when nothing was found or the scan was stopped.
  // `listImages` are the software list's icons (may be null).
  int ScanProgram(const SoftList& list, const IImageList* listImages, int index,
                  IResultsTree& tree, const std::wstring& filePath, IImageList* treeImages);
  // The branch of findings already collected; the same return as ScanProgram.
  int AddBranch(const ScanFindings& found, const IImageList* listImages, IResultsTree& tree,
                IImageList* treeImages);

  // For the Stop button: the running scan leaves at its next item.
  void Stop();
  bool StopRequested() const { return stop_; }

  std::wstring CountPhrase(int count) const;

 private:
  Platform platform_;
  const TFilterManage& filter_;
  TRegeditScanClasses::MessageStep processMessages_;
  const ProtectedPlaces* places_ = nullptr;
  std::vector<int> together_;
  std::unique_ptr<ScanReads> batch_;
  std::atomic<bool> stop_{false};
  TRegeditScanClasses* active_ = nullptr;
};

// The phrase with its first "%d" replaced by the number.
std::wstring FormatCountPhrase(const std::wstring& phrase, int count);

}  // namespace varnel
