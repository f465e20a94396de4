#pragma once

#include <cstdint>
#include <memory>
#include <string>

#include "leftovers/scan_results.h"

namespace varnel {

using TreeNodeId = std::intptr_t;
constexpr TreeNodeId kTreeRoot = 0;

// The results tree as the scan driver fills it; the results window's tree
// view implements it. Nodes own their data.
class IResultsTree {
 public:
  virtual ~IResultsTree() = default;
  virtual TreeNodeId AddNode(TreeNodeId parent, const std::wstring& caption, int image,
                             int stateIndex, std::unique_ptr<TMyTreeData> data) = 0;
};

}  // namespace varnel
