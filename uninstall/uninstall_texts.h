#pragma once

#include <string>

namespace varnel {

// The uninstalling window's message texts with their built-in English; the
// window replaces them from its language table, the console tool keeps them.
struct UninstallTexts {
  std::wstring NoLeftFind = L"No left items found.";
  std::wstring CreateRestorePoint = L"Creating System Restore Point";
  std::wstring CreateRegBackup = L"Creating a full registry backup";
  std::wstring StandardUninstall = L"Standard Uninstall";
  std::wstring CreateRPFinish = L"Creating System Restore Point Finished.";
  std::wstring CreateRBFinish = L"Creating a Full Registry Backup Finished.";
  std::wstring Uninstalling = L"Uninstalling";
  std::wstring UninstallFinish = L"Uninstall Finished.";
  std::wstring Operation = L"Operation";
  std::wstring DateTime = L"Date";
  std::wstring ForcedUninstall = L"Forced Uninstall";
  std::wstring RemoveInBrowser = L"To be removed in %s";  // %s: the browser
};

}  // namespace varnel
