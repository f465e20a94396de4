#pragma once

#include <string>
#include <string_view>

namespace varnel {

// The caption lines of the uninstalling window the sequence writes to.
enum class StepLine { RestorePoint, RegBackup, Uninstalling, PowerScanning };

// What the uninstall sequence asks of its window; the console tool and the
// tests have their own.
class IUninstallView {
 public:
  virtual ~IUninstallView() = default;
  // The step markers: 0..3 as the window's step table says, other values
  // hide every marker.
  virtual void SetStep(int step) = 0;
  virtual std::wstring Caption(StepLine line) const = 0;
  virtual void SetCaption(StepLine line, std::wstring_view text) = 0;
  // The running uninstall's animated marker stops and hides.
  virtual void HideUninstallMarker() = 0;
  // Advanced mode, once the uninstallers are done: "Powerful Scan" may start.
  virtual void EnableScan() = 0;
  // Lets pending window messages run; called at every pass of every wait.
  virtual void ProcessMessages() = 0;
  // Standard mode's completion notice (an OK box owned by the window).
  virtual void ShowMessage(std::wstring_view text) = 0;
  // The mode chosen now; the user may switch while an uninstaller runs.
  virtual bool AdvancedChosen() const = 0;
  virtual void CloseWindow() = 0;
};

}  // namespace varnel
