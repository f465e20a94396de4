#pragma once

#include <atomic>
#include <string>
#include <string_view>
#include <vector>

#include "leftovers/scan_results.h"
#include "platform/platform.h"
#include "uninstall/deletion_guard.h"

namespace varnel {

// The results tree as the deletion reads it: one root per program scanned
// ("Name(n items)"), its groups ("Registry(..)", "File(..)") and their leaves.
struct LeftoverLeaf {
  std::wstring caption;
  TMyTreeData data;
  bool checked = false;
};
struct LeftoverGroup {
  std::wstring caption;
  std::vector<LeftoverLeaf> items;
};
struct LeftoverRoot {
  std::wstring caption;
  std::vector<LeftoverGroup> groups;
};

// The results window's texts with their built-in English; the window reads
// them from its language table, the console tool keeps them.
struct DeletionTexts {
  std::wstring Deleting = L"Deleting";
  std::wstring Option = L"Operation";
  std::wstring PowerfulScan = L"Powerful Scan";
  std::wstring DateTime = L"Date";
};

// What the run shows while it works; the window has its label and progress
// bar, the console tool its own.
class IDeletionProgress {
 public:
  virtual ~IDeletionProgress() = default;
  virtual void SetCaption(std::wstring_view text) = 0;
  // 0..100: the items done so far against every node of the tree.
  virtual void SetPosition(int percent) = 0;
  // Lets pending window messages run, so that Cancel can be pressed.
  virtual void ProcessMessages() = 0;
};

struct DeletionResult {
  std::vector<std::wstring> logLines;  // the run's block of the day's log
  // Every item handed to the guard, in the order it was: the checked
  // registry items and files, then every folder of the tree.
  std::vector<DeletionOutcome> outcomes;
  int deleted = 0;    // items gone now or queued for the next start
  int skipped = 0;    // items the guard refused
  bool cancelled = false;
  std::wstring logFile;  // empty when cancelled or the log could not be written
};

// Deletes what the results tree holds checked and logs it:
// - per root "[" + caption before "(" + "]", the operation and the date; per
//   group an empty line and "------" + caption before "(" + "------"; per
//   checked leaf "Deleted Registry Key|Registry Value|File|Folder " + item
//   (a key has neither value name nor data; a default value is a value);
//   after a group's lines "Skipped <item>: <reason>" for what the guard refused;
// - checked registry items and files go at once (a locked file at the next
//   start), folders in a last pass over every folder of the tree, checked or
//   not: a program's folder goes with the program, whatever the tree says;
// - the cancel flag is read before every root and item; once set, no
//   further pass runs and nothing is logged.
class LeftoverDeletion {
 public:
  LeftoverDeletion(const Platform& platform, DeletionGuard& guard, DeletionTexts texts);

  DeletionResult Run(const std::vector<LeftoverRoot>& roots, IDeletionProgress& progress,
                     const std::atomic<bool>& cancel);

 private:
  Platform platform_;
  DeletionGuard& guard_;
  DeletionTexts texts_;
};

// The part of a root or group caption before its first "("; empty without one.
std::wstring CaptionName(std::wstring_view caption);

}  // namespace varnel
