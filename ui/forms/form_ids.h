#pragma once

// Control ids of the uninstalling, log manager and forced-uninstall windows;
// the GUI tests drive them by these.
namespace varnel::forms {

namespace UninstallingId {
constexpr int ModeLabel = 100;
constexpr int Standard = 101;
constexpr int Advanced = 102;
constexpr int Scan = 110;
constexpr int Cancel = 111;
// Per step: marker, caption, description; the restore-point step has the
// backup's caption line too.
constexpr int MarkerFirst = 120;  // three markers, 120..122
constexpr int RestorePointCaption = 130;
constexpr int RegBackupCaption = 131;
constexpr int RestorePointInfo = 132;
constexpr int UninstallingCaption = 133;
constexpr int UninstallingInfo = 134;
constexpr int PowerScanCaption = 135;
constexpr int PowerScanInfo = 136;
}  // namespace UninstallingId

namespace LogManagerId {
constexpr int Title = 100;
constexpr int Info = 101;
constexpr int List = 102;
constexpr int Open = 110;
constexpr int Delete = 111;
constexpr int DeleteAll = 112;
constexpr int Cancel = 113;
constexpr int BackupsLabel = 103;
constexpr int Backups = 104;
constexpr int Room = 105;
constexpr int Restore = 114;
constexpr int DeleteBackup = 115;
}  // namespace LogManagerId

namespace ForceUninstallId {
constexpr int Title = 100;
constexpr int SubTitle = 101;
constexpr int FilePath = 102;
constexpr int FilePathLabel = 103;
constexpr int Browse = 104;
constexpr int NameLabel = 105;
constexpr int Name = 106;
constexpr int Search = 107;
constexpr int List = 108;
constexpr int DragInfo = 109;
constexpr int NextInfo = 110;
constexpr int Next = 111;
constexpr int Cancel = 112;
constexpr int MenuUninstall = 120;
constexpr int MenuOpenFolder = 121;
constexpr int MenuViewEntry = 122;
}  // namespace ForceUninstallId

namespace PowerScanId {
constexpr int Title = 100;
constexpr int Tree = 101;
constexpr int DeletePath = 102;
constexpr int Progress = 103;
constexpr int Delete = 110;
constexpr int Cancel = 111;
constexpr int SelectAll = 112;
}  // namespace PowerScanId

}  // namespace varnel::forms
