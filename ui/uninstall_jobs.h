#pragma once

#include <utility>
#include <vector>

namespace varnel {

// What the main window hands to the uninstalling window: record indexes of
// the inventory and the job mode (0: uninstall the listed programs).
class TUninstallJobs {
 public:
  void SetJobs(std::vector<int> indexes, int mode) {
    jobs_ = std::move(indexes);
    mode_ = mode;
    ++handOvers_;
  }
  const std::vector<int>& Jobs() const { return jobs_; }
  int Mode() const { return mode_; }
  int HandOvers() const { return handOvers_; }

 private:
  std::vector<int> jobs_;
  int mode_ = 0;
  int handOvers_ = 0;
};

}  // namespace varnel
