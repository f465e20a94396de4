#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "uninstall/check_tree.h"

namespace varnel {
namespace {

// Root 0 with group 1 (leaves 2, 3) and group 4 (its only leaf 5); states are
// written as one digit per node in that order.
struct Tree {
  explicit Tree(const std::string& states) {
    const TreeNodeId root = tree.AddNode(kTreeRoot, L"App(3 items)", 0, 1, nullptr);
    const TreeNodeId first = tree.AddNode(root, L"Registry(2 items)", 0, 1, nullptr);
    tree.AddNode(first, L"a", 0, 1, std::make_unique<TMyTreeData>());
    tree.AddNode(first, L"b", 0, 1, std::make_unique<TMyTreeData>());
    const TreeNodeId second = tree.AddNode(root, L"File(1 item)", 0, 1, nullptr);
    tree.AddNode(second, L"c", 0, 1, std::make_unique<TMyTreeData>());
    // The starting states are reached by clicking the checked leaves.
    for (int leaf : {2, 3, 5})
      if (states[static_cast<std::size_t>(leaf)] == '2') tree.MouseDown(leaf, true);
    EXPECT_EQ(States(), states) << "set-up";
  }
  std::string States() const {
    std::string s;
    for (int i = 0; i < tree.Count(); ++i) s += static_cast<char>('0' + tree.At(i).state);
    return s;
  }
  CheckTree tree;
};

enum class Event { Expand, Box, Beside };
struct Step {
  Event event;
  int node = -1;
};

TEST(CheckTree, ClicksFollowTheDownwardAndUpwardRules) {
  const struct {
    const char* name;
    std::string before;
    std::vector<Step> steps;
    std::string after;
  } cases[] = {
      {"a leaf makes its group and root partial", "111111", {{Event::Box, 2}}, "332111"},
      {"the last unchecked child checks a partial group", "332111", {{Event::Box, 3}}, "322211"},
      {"unchecking a child makes the group partial again", "322211", {{Event::Box, 2}}, "331211"},
      {"an only child carries its parent", "111111", {{Event::Box, 5}}, "311122"},
      {"a partial node clears with its subtree", "332111", {{Event::Box, 1}}, "111111"},
      {"a root sets everything", "111111", {{Event::Box, 0}}, "222222"},
      {"a click beside the box toggles nothing", "111111", {{Event::Beside, 2}}, "111111"},
      {"the click after an expand toggles nothing", "111111",
       {{Event::Expand}, {Event::Box, 2}}, "111111"},
      {"the click after that toggles again", "111111",
       {{Event::Expand}, {Event::Box, 2}, {Event::Box, 2}}, "332111"},
  };
  for (const auto& c : cases) {
    Tree t(c.before);
    for (const Step& step : c.steps) {
      if (step.event == Event::Expand) t.tree.ExpandedOrCollapsed();
      if (step.event != Event::Expand) t.tree.MouseDown(step.node, step.event == Event::Box);
    }
    EXPECT_EQ(t.States(), c.after) << c.name;
    EXPECT_EQ(t.tree.DeleteEnabled(), c.after != "111111") << c.name;
  }
}

TEST(CheckTree, SelectAllTwiceClearsEverythingAndFindingsCarryTheChecks) {
  Tree t("111111");
  EXPECT_EQ(t.tree.SelectAll(L"select all", L"Select All", L"Deselect All"), L"Deselect All");
  EXPECT_EQ(t.States(), "222222");
  EXPECT_EQ(t.tree.SelectAll(L"Deselect All", L"Select All", L"Deselect All"), L"Select All");
  EXPECT_EQ(t.States(), "111111");
  t.tree.MouseDown(3, true);
  const auto roots = t.tree.Findings();
  ASSERT_EQ(roots.size(), 1u);
  ASSERT_EQ(roots[0].groups.size(), 2u);
  const auto& leaves = roots[0].groups[0].items;
  ASSERT_EQ(leaves.size(), 2u);
  EXPECT_EQ(leaves[1].caption, L"b");
  EXPECT_FALSE(leaves[0].checked);
  EXPECT_TRUE(leaves[1].checked);
}

}  // namespace
}  // namespace varnel
