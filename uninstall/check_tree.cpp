#include "uninstall/check_tree.h"

#include <algorithm>

#include "base/text.h"

namespace varnel {

TreeNodeId CheckTree::AddNode(TreeNodeId parent, const std::wstring& caption, int image,
                              int stateIndex, std::unique_ptr<TMyTreeData> data) {
  const int index = Count();
  const int up = IndexOf(parent);
  Node node;
  node.parent = parent != kTreeRoot && up >= 0 && up < index ? up : -1;
  node.caption = caption;
  node.image = image;
  node.state = stateIndex >= CheckState::Unchecked && stateIndex <= CheckState::Partial
                   ? stateIndex
                   : CheckState::Unchecked;
  node.data = std::move(data);
  if (node.parent >= 0) {
    Ref(node.parent).children.push_back(index);
  } else {
    roots_.push_back(index);
  }
  nodes_.push_back(std::move(node));
  return static_cast<TreeNodeId>(index + 1);
}

std::vector<int> CheckTree::TreeOrder() const {
  std::vector<int> order;
  order.reserve(nodes_.size());
  std::vector<int> stack(roots_.rbegin(), roots_.rend());
  while (!stack.empty()) {
    const int node = stack.back();
    stack.pop_back();
    order.push_back(node);
    const auto& children = At(node).children;
    stack.insert(stack.end(), children.rbegin(), children.rend());
  }
  return order;
}

void CheckTree::Clear() {
  nodes_.clear();
  roots_.clear();
  expanded_ = false;
}

bool CheckTree::MouseDown(int node, bool onCheckBox) {
  if (expanded_) {
    expanded_ = false;
    return false;
  }
  if (node < 0 || node >= Count() || !onCheckBox) return false;
  Toggle(node);
  return true;
}

void CheckTree::Toggle(int node) {
  if (node < 0 || node >= Count()) return;
  const int state =
      At(node).state == CheckState::Unchecked ? CheckState::Checked : CheckState::Unchecked;
  Down(node, state);
  Up(node);
}

void CheckTree::Down(int node, int state) {
  Ref(node).state = state;
  for (int child : At(node).children) Down(child, state);
}

void CheckTree::Up(int node) {
  for (int parent = At(node).parent; parent >= 0; node = parent, parent = At(node).parent) {
    Node& up = Ref(parent);
    const int state = At(node).state;
    if (up.children.size() == 1) {
      up.state = state;
      continue;
    }
    if (up.state == state) return;
    const bool allSame = std::all_of(up.children.begin(), up.children.end(),
                                     [&](int sibling) { return At(sibling).state == state; });
    if (!allSame) {
      up.state = CheckState::Partial;
    } else if (state != CheckState::Partial) {
      up.state = state;
    }
  }
}

void CheckTree::SetAll(int state) {
  for (Node& node : nodes_) node.state = state;
}

std::wstring CheckTree::SelectAll(std::wstring_view caption, const std::wstring& selectAll,
                                  const std::wstring& deselectAll) {
  if (!text::SameText(caption, selectAll)) {
    SetAll(CheckState::Unchecked);
    return selectAll;
  }
  SetAll(CheckState::Checked);
  return deselectAll;
}

bool CheckTree::DeleteEnabled() const {
  return std::any_of(nodes_.begin(), nodes_.end(),
                     [](const Node& node) { return node.state != CheckState::Unchecked; });
}

std::vector<LeftoverRoot> CheckTree::Findings() const {
  std::vector<LeftoverRoot> roots;
  for (int r : roots_) {
    LeftoverRoot& root = roots.emplace_back();
    root.caption = At(r).caption;
    for (int g : At(r).children) {
      LeftoverGroup& group = root.groups.emplace_back();
      group.caption = At(g).caption;
      for (int l : At(g).children) {
        const Node& leaf = At(l);
        if (!leaf.data) continue;
        group.items.push_back({leaf.caption, *leaf.data, leaf.state == CheckState::Checked});
      }
    }
  }
  return roots;
}

}  // namespace varnel
