#pragma once

// Special-folder ids as the shell numbers them.
namespace varnel::Csidl {
constexpr int Desktop = 0x0000;
constexpr int Programs = 0x0002;
constexpr int Personal = 0x0005;
constexpr int Favorites = 0x0006;
constexpr int Startup = 0x0007;
constexpr int Recent = 0x0008;
constexpr int SendTo = 0x0009;
constexpr int StartMenu = 0x000B;
constexpr int MyMusic = 0x000D;
constexpr int MyVideo = 0x000E;
constexpr int DesktopDirectory = 0x0010;
constexpr int NetHood = 0x0013;
constexpr int Fonts = 0x0014;
constexpr int Templates = 0x0015;
constexpr int CommonStartMenu = 0x0016;
constexpr int CommonPrograms = 0x0017;
constexpr int CommonStartup = 0x0018;
constexpr int CommonDesktopDirectory = 0x0019;
constexpr int AppData = 0x001A;
constexpr int PrintHood = 0x001B;
constexpr int LocalAppData = 0x001C;
constexpr int CommonFavorites = 0x001F;
constexpr int InternetCache = 0x0020;
constexpr int Cookies = 0x0021;
constexpr int History = 0x0022;
constexpr int CommonAppData = 0x0023;
constexpr int Windows = 0x0024;
constexpr int System = 0x0025;
constexpr int ProgramFiles = 0x0026;
constexpr int MyPictures = 0x0027;
constexpr int Profile = 0x0028;
constexpr int SystemX86 = 0x0029;
constexpr int ProgramFilesX86 = 0x002A;
constexpr int ProgramFilesCommon = 0x002B;
constexpr int ProgramFilesCommonX86 = 0x002C;
constexpr int CommonTemplates = 0x002D;
constexpr int CommonDocuments = 0x002E;
constexpr int CommonAdminTools = 0x002F;
constexpr int AdminTools = 0x0030;
constexpr int CommonMusic = 0x0035;
constexpr int CommonPictures = 0x0036;
constexpr int CommonVideo = 0x0037;
constexpr int Resources = 0x0038;
constexpr int CdBurnArea = 0x003B;
}  // namespace varnel::Csidl
