#pragma once

#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "leftovers/results_tree.h"
#include "uninstall/leftover_deletion.h"

namespace varnel {

// A node's check box as its state image index.
namespace CheckState {
constexpr int NoBox = 0;
constexpr int Unchecked = 1;
constexpr int Checked = 2;
constexpr int Partial = 3;  // some descendants checked
}  // namespace CheckState

// The results tree without a window: what the scan added, with the check
// boxes and their rules. The results window mirrors it node for node (node
// index = position in the order added); the console tool uses it as it is.
class CheckTree : public IResultsTree {
 public:
  struct Node {
    int parent = -1;
    std::vector<int> children;
    std::wstring caption;
    int image = -1;
    int state = CheckState::Unchecked;
    std::unique_ptr<TMyTreeData> data;
  };

  // IResultsTree: ids are node index + 1, so that kTreeRoot stays free.
  TreeNodeId AddNode(TreeNodeId parent, const std::wstring& caption, int image, int stateIndex,
                     std::unique_ptr<TMyTreeData> data) override;

  static int IndexOf(TreeNodeId id) { return static_cast<int>(id) - 1; }
  int Count() const { return static_cast<int>(nodes_.size()); }
  const Node& At(int node) const { return nodes_[static_cast<std::size_t>(node)]; }
  const std::vector<int>& Roots() const { return roots_; }
  // Every node in tree order: each node before its children.
  std::vector<int> TreeOrder() const;
  void Clear();

  // An expand or a collapse: the next mouse-down toggles nothing, so that a
  // click on an expand button never changes a check.
  void ExpandedOrCollapsed() { expanded_ = true; }
  // A mouse-down on `node` (-1: none), `onCheckBox` when it hit the state
  // image. True when a state changed.
  bool MouseDown(int node, bool onCheckBox);
  // Unchecked becomes checked, anything else unchecked; the change goes down
  // to every descendant and up through the ancestors.
  void Toggle(int node);
  // Every node to `state`.
  void SetAll(int state);

  // Select All and Deselect All share one button: a caption other than
  // `selectAll` (without regard to case) clears every check, else all are
  // checked. Returns the button's new caption.
  std::wstring SelectAll(std::wstring_view caption, const std::wstring& selectAll,
                         const std::wstring& deselectAll);

  // Delete is offered while any node is not unchecked.
  bool DeleteEnabled() const;

  // Roots, their groups and the groups' leaves with their data and whether
  // they are checked; leaves without data and deeper levels are left out.
  std::vector<LeftoverRoot> Findings() const;

 private:
  Node& Ref(int node) { return nodes_[static_cast<std::size_t>(node)]; }
  void Down(int node, int state);
  void Up(int node);

  std::vector<Node> nodes_;
  std::vector<int> roots_;
  bool expanded_ = false;
};

}  // namespace varnel
