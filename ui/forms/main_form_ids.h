#pragma once

// Control and command ids of the main window; the GUI tests drive it by them.
namespace varnel::forms::MainId {
constexpr int CategoryFirst = 1000;  // six buttons, 1000..1005
constexpr int SearchEdit = 1010;
constexpr int SearchClear = 1011;
constexpr int List = 1020;
constexpr int Uninstall = 1030;
constexpr int BatchUninstall = 1031;
constexpr int ForceUninstall = 1032;
constexpr int More = 1033;
constexpr int DetailsIcon = 1040;
constexpr int DetailsName = 1041;
constexpr int DetailsVersionTitle = 1042;
constexpr int DetailsVersion = 1043;
constexpr int DetailsPublisherTitle = 1044;
constexpr int DetailsPublisher = 1045;
constexpr int DetailsHelpTitle = 1046;
constexpr int DetailsHelp = 1047;
constexpr int DetailsIdle = 1048;
constexpr int BottomInfo = 1050;

constexpr int MenuUninstall = 2001;
constexpr int MenuRemoveEntry = 2002;
constexpr int MenuRefresh = 2003;
constexpr int MenuViewIcons = 2004;
constexpr int MenuViewDetails = 2005;
constexpr int MenuOpenFolder = 2006;
constexpr int MenuViewEntry = 2007;
constexpr int MenuSearchOnline = 2008;
constexpr int MenuExportList = 2101;
constexpr int MenuLogManagement = 2102;
constexpr int MenuRestorePoint = 2103;

// List columns: name, size, date. The other sub-items stay with the row's
// data, out of reach of screen readers.
constexpr int VisibleColumns = 3;

}  // namespace varnel::forms::MainId
