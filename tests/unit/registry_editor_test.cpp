#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "core/registry_editor.h"
#include "platform/memory/memory_platform.h"

namespace varnel {
namespace {

class RegistryEditorTest : public testing::Test {
 protected:
  void AddEditor() {
    editor = m.windows.AddWindow(L"RegEdit_RegEdit");
    tree = m.windows.AddWindow(L"SysTreeView32", editor);
    list = m.windows.AddWindow(L"SysListView32", editor);
  }
  // The recorded traffic as "window what", characters as themselves.
  std::vector<std::string> Traffic() const {
    using Msg = mem::MemoryWindows::Message;
    std::vector<std::string> out;
    for (const auto& msg : m.windows.messages) {
      std::string s = msg.window == editor ? "editor " : msg.window == tree ? "tree " : "list ";
      const std::string v = std::to_string(msg.value);
      s += msg.kind == Msg::Show    ? "show " + v
           : msg.kind == Msg::Front ? "front"
           : msg.kind == Msg::Focus ? "focus"
           : msg.kind == Msg::KeyDown ? "key " + v
                                      : "char " + std::string(1, static_cast<char>(msg.value));
      out.push_back(s);
    }
    return out;
  }
  static void Type(std::vector<std::string>& out, const char* who, const std::string& text) {
    for (char c : text) out.push_back(std::string(who) + " char " + c);
  }
  mem::MemoryPlatform m;
  WindowId editor = 0, tree = 0, list = 0;
};

TEST_F(RegistryEditorTest, WalksTheTreeByKeysAndSelectsTheValue) {
  AddEditor();
  EXPECT_TRUE(OpenRegistryEditorAt(m.Get(), L"HKEY_CURRENT_USER\\Software\\Ab", L"Path x", true));
  std::vector<std::string> want = {"editor show 3", "editor front"};
  want.insert(want.end(), 20, "tree key 37");  // fold back to the root
  want.insert(want.end(), {"tree front", "tree focus", "tree key 39"});
  Type(want, "tree", "HKEY_CURRENT_USER");
  want.push_back("tree key 39");
  Type(want, "tree", "Software");
  want.push_back("tree key 39");
  Type(want, "tree", "Ab");
  want.insert(want.end(), {"list front", "list focus", "list key 36"});
  Type(want, "list", "PATH X");
  EXPECT_EQ(Traffic(), want);
  EXPECT_EQ(m.system.sleptMs, 500u);  // after folding, per level, before the list
  EXPECT_TRUE(m.shell.calls.empty());  // an open editor is reused

  m.windows.messages.clear();
  EXPECT_TRUE(OpenRegistryEditorAt(m.Get(), L"\\HKEY_USERS", L"", false));
  const auto again = Traffic();
  EXPECT_EQ(again[24], "tree key 39");  // the leading "\" is not doubled
  EXPECT_EQ(again[25], "tree char H");
  EXPECT_EQ(again.back(), "list key 36");
}

TEST_F(RegistryEditorTest, StartsTheEditorWithRedirectionOffOnlyForThe64BitView) {
  std::vector<int> depthAtStart;
  m.shell.onStart = [&](const mem::MemoryShell::Call&) {
    depthAtStart.push_back(m.system.redirectionDisabledDepth);
  };
  EXPECT_FALSE(OpenRegistryEditorAt(m.Get(), L"HKEY_USERS", L"v", false));
  EXPECT_TRUE(m.windows.messages.empty());

  m.shell.onStart = [&](const mem::MemoryShell::Call&) {
    depthAtStart.push_back(m.system.redirectionDisabledDepth);
    AddEditor();
  };
  EXPECT_TRUE(OpenRegistryEditorAt(m.Get(), L"HKEY_LOCAL_MACHINE\\Software", L"v", true));
  EXPECT_EQ(depthAtStart, (std::vector<int>{0, 1}));
  EXPECT_EQ(m.system.redirectionDisabledDepth, 0);
  ASSERT_EQ(m.shell.calls.size(), 2u);
  EXPECT_EQ(m.shell.calls[1].verb, L"open");
  EXPECT_EQ(m.shell.calls[1].file, L"regedit.exe");
  EXPECT_EQ(m.shell.calls[1].show, ShowCmd::Maximize);
  EXPECT_TRUE(m.shell.calls[1].waitedIdle);
  EXPECT_EQ(Traffic().front(), "editor show 3");
}

}  // namespace
}  // namespace varnel
