#pragma once

#include <atomic>
#include <exception>
#include <functional>
#include <memory>
#include <string>

#include "inventory/gui_dispatcher.h"
#include "inventory/inventory_view.h"
#include "inventory/soft_list.h"
#include "platform/platform.h"

namespace varnel {

// Completes the records in the background: install folder, size on disk,
// icon, install date, last access; keeps what it finds in the cache file.
// Every change to a record happens on the GUI thread, through the dispatcher.
class TAnalysisThread {
 public:
  // Where a failure of the pass or of one record goes; called on the GUI
  // thread. The pass goes on after a record's failure.
  using ErrorHandler = std::function<void(std::exception_ptr)>;

  TAnalysisThread(const Platform& platform, GuiDispatcher& dispatcher, std::wstring cacheFile,
                  ErrorHandler onError = {});
  // Stops a pass in progress and waits for the thread, serving its
  // hand-overs meanwhile; the cache of the records already done is saved.
  ~TAnalysisThread();
  TAnalysisThread(const TAnalysisThread&) = delete;
  TAnalysisThread& operator=(const TAnalysisThread&) = delete;

  // Before Start. `view` may be null: no icons are extracted then, and no
  // rows repainted. Sets "finished" and clears "stop".
  void SetJobs(IInventoryView* view, SoftList* list);
  // Starts the thread, idle until RunPass.
  void Start();
  // Clears "stop" and "finished": the thread runs one pass over the list.
  void RunPass();
  // Sets "stop": the pass ends after the record in hand, its row unpainted;
  // a pass asked for but not begun yet ends at once.
  void RequestStop();
  bool Finished() const { return finished_; }
  bool Running() const;
  // GUI thread: waits until the pass has ended, serving hand-overs.
  void WaitForPass();

 private:
  struct Worker;
  std::unique_ptr<Worker> worker_;
  std::atomic<bool> finished_{true};
  std::atomic<bool> stop_{false};
};

}  // namespace varnel
