#include "ui/language_catalog.h"

#include "base/text.h"

namespace varnel {

namespace {

constexpr std::wstring_view kPrefix = L"Uninstaller_";

constexpr CatalogText kMain[] = {
    {L"UninstallForm_Main.Caption", L"Varnel Uninstaller", L"Varnel Uninstaller"},
    {L"Label_AllProgrames.Caption", L"All Programs", L"Alle Programme"},
    {L"Label_Toolbar.Caption", L"Toolbars", L"Symbolleisten"},
    {L"Label_RecentlyInstalled.Caption", L"Recently Installed", L"K\u00fcrzlich installiert"},
    {L"Label_LargeProgrames.Caption", L"Large Programs", L"Gro\u00dfe Programme"},
    {L"Label_RarelyUsed.Caption", L"Rarely Used", L"Selten verwendet"},
    {L"Label_WindowsUpdates.Caption", L"Windows Updates", L"Windows-Updates"},
    {L"Label_Uninstall.Caption", L"Uninstall", L"Deinstallieren"},
    {L"Label_BatchUninstall.Caption", L"Batch Uninstall", L"Mehrfach deinstallieren"},
    {L"Label_ForcedUninstalled.Caption", L"Forced Uninstall", L"Erzwungene Deinstallation"},
    {L"Label_Manager.Caption", L"More", L"Mehr"},
    {L"Label_Details_VersionTitle.Caption", L"Version:", L"Version:"},
    {L"Label_Details_PublisherTitle.Caption", L"Publisher:", L"Herausgeber:"},
    {L"Label_Details_HelpInfoTitle.Caption", L"Help Info:", L"Hilfe:"},
    {L"Label_Details_Idle.Caption", L"Select a program to see its details.",
     L"W\u00e4hlen Sie ein Programm, um Details zu sehen."},
    {L"ListView_SoftwareList.Columns[0].Caption", L"Software Name", L"Programmname"},
    {L"ListView_SoftwareList.Columns[1].Caption", L"Size", L"Gr\u00f6\u00dfe"},
    {L"ListView_SoftwareList.Columns[2].Caption", L"Install Date", L"Installationsdatum"},
    {L"PopMenu_Uninstall.Caption", L"Uninstall", L"Deinstallieren"},
    {L"PopMenu_RemoveEntry.Caption", L"Remove Entry", L"Eintrag entfernen"},
    {L"PopMenu_Refresh.Caption", L"Refresh", L"Aktualisieren"},
    {L"PopMenu_ViewStyle.Caption", L"View Style", L"Ansicht"},
    {L"PopMenu_ViewStyle_Icon.Caption", L"Icons", L"Symbole"},
    {L"PopMenu_ViewStyle_Details.Caption", L"Details", L"Details"},
    {L"PopMenu_OpenFolder.Caption", L"Open Directory", L"Ordner \u00f6ffnen"},
    {L"PopMenu_ViewEntry.Caption", L"View Entry", L"Eintrag anzeigen"},
    {L"PopMenu_SearchOnline.Caption", L"Search Online", L"Online suchen"},
    {L"PopupMenu_Manager_EAL.Caption", L"Export Application List", L"Programmliste exportieren"},
    {L"PopupMenu_Manager_LM.Caption", L"Log Management ", L"Protokollverwaltung "},
    {L"PopupMenu_Manager_VRP.Caption", L"View Restore Point", L"Wiederherstellungspunkte"},
};

constexpr CatalogText kMainMessages[] = {
    {L"M_SoftwareList", L"Software List", L"Programmliste"},
    {L"M_AppVersion", L"Application Version", L"Programmversion"},
    {L"M_ExportTime", L"Exported Time", L"Exportiert am"},
    {L"M_SaveDlgName", L"Software List", L"Programmliste"},
    {L"M_SaveDate", L"Date", L"Datum"},
    {L"M_SaveName", L"Software Name", L"Programmname"},
    {L"M_SaveVersion", L"Version", L"Version"},
    {L"M_SavePublisher", L"Publisher", L"Herausgeber"},
    {L"M_SaveInstallTime", L"Install Time", L"Installiert am"},
    {L"M_SaveUseSize", L"Size", L"Gr\u00f6\u00dfe"},
    {L"M_SaveHelpinfo", L"Help info", L"Hilfe"},
    {L"M_SaveUninstallCmd", L"Uninstall Command", L"Deinstallationsbefehl"},
    {L"M_SaveRegistryKey", L"Registry Key", L"Registrierungsschl\u00fcssel"},
    {L"M_UnknowsOSType", L"Unknown operation system", L"Unbekanntes Betriebssystem"},
    {L"M_SearchSoftware", L"Search Software", L"Programm suchen"},
    {L"M_SureUninstall", L"Are you sure you want to uninstall the selected programs?",
     L"M\u00f6chten Sie die ausgew\u00e4hlten Programme wirklich deinstallieren?"},
    {L"M_SelectProgram", L"Please select a program at first.",
     L"Bitte w\u00e4hlen Sie zuerst ein Programm aus."},
    {L"M_SelectOneItem", L"Please select at least one program.",
     L"Bitte w\u00e4hlen Sie mindestens ein Programm aus."},
    {L"M_SureRemoveEntry", L"Are you sure to remove the selected program entry?",
     L"M\u00f6chten Sie den ausgew\u00e4hlten Programmeintrag wirklich entfernen?"},
    {L"M_SoftwareFormat", L"Software Name (Total:%d)", L"Programmname (Gesamt:%d)"},
    {L"M_OneItem", L"1 Item", L"1 Eintrag"},
    {L"M_Items", L"%d Items", L"%d Eintr\u00e4ge"},
    {L"M_GroupPrograms", L"Programs", L"Programme"},
    {L"M_GroupToolbars", L"Toolbars and add-ons", L"Symbolleisten und Add-ons"},
    {L"M_GroupUpdates", L"Windows updates", L"Windows-Updates"},
};

constexpr CatalogText kUninstalling[] = {
    {L"Uninstalling_Form.Caption", L"Uninstalling", L"Deinstallation"},
    {L"Label_UninstallMode.Caption", L"Uninstall Mode:", L"Deinstallationsmodus:"},
    {L"Label_Standard.Caption", L"Standard", L"Standard"},
    {L"Label_Advanced.Caption", L"Advanced", L"Erweitert"},
    {L"Label_CreateSystemRestorePoint.Caption", L"Creating System Restore Point",
     L"Systemwiederherstellungspunkt wird erstellt"},
    {L"Label_CreateRegBackup.Caption", L"Creating a full registry backup",
     L"Vollst\u00e4ndige Sicherung der Registrierung wird erstellt"},
    {L"Label_CreateRestore_Info.Caption",
     L"Create a restore point here and you can undo the changes if something unexpected "
     L"happened.",
     L"Mit einem Wiederherstellungspunkt k\u00f6nnen Sie die \u00c4nderungen r\u00fcckg\u00e4ngig "
     L"machen, falls etwas Unerwartetes geschieht."},
    {L"Label_Uninstalling.Caption", L"Standard Uninstall", L"Standard-Deinstallation"},
    {L"Label_StdCall_Info.Caption", L"Built-in uninstall by using the application's uninstaller.",
     L"Deinstallation mit dem eigenen Deinstallationsprogramm der Anwendung."},
    {L"Label_PowerScanning.Caption", L"Powerful Scan", L"Gr\u00fcndliche Suche"},
    {L"Label_PowerscanInfo.Caption",
     L"Scan for leftover items in the Registry and on the hard drive.",
     L"Nach Resten in der Registrierung und auf der Festplatte suchen."},
    {L"Button_Scan.Caption", L"Powerful Scan", L"Gr\u00fcndliche Suche"},
    {L"Button_Cancel.Caption", L"Cancel", L"Abbrechen"},
};

constexpr CatalogText kUninstallingMessages[] = {
    {L"M_NoLeftFind", L"No left items found.", L"Keine Reste gefunden."},
    {L"M_CreateRestorePoint", L"Creating System Restore Point",
     L"Systemwiederherstellungspunkt wird erstellt"},
    {L"M_CreateRegBackup", L"Creating a full registry backup",
     L"Vollst\u00e4ndige Sicherung der Registrierung wird erstellt"},
    {L"M_StandardUninstall", L"Standard Uninstall", L"Standard-Deinstallation"},
    {L"M_RemoveInBrowser", L"To be removed in %s", L"In %s zu entfernen"},
    {L"M_CreateRPFinish", L"Creating System Restore Point Finished.",
     L"Systemwiederherstellungspunkt erstellt."},
    {L"M_CreateRBFinish", L"Creating a Full Registry Backup Finished.",
     L"Vollst\u00e4ndige Sicherung der Registrierung erstellt."},
    {L"M_Uninstalling", L"Uninstalling", L"Deinstallation von"},
    {L"M_UninstallFinish", L"Uninstall Finished.", L"Deinstallation abgeschlossen."},
    {L"M_Operation", L"Operation", L"Vorgang"},
    {L"M_DateTime", L"Date", L"Datum"},
    {L"M_ForcedUninstall", L"Forced Uninstall", L"Erzwungene Deinstallation"},
};

constexpr CatalogText kForceUninstall[] = {
    {L"ForceUninstall_Form.Caption", L"Forced Uninstall", L"Erzwungene Deinstallation"},
    {L"Label_Title.Caption", L"Varnel Forced Uninstaller", L"Varnel Erzwungene Deinstallation"},
    {L"Label_SubTitle.Caption", L"Uninstall programs and clean all leftover items thoroughly.",
     L"Programme deinstallieren und alle Reste gr\u00fcndlich entfernen."},
    {L"Label_FileFullPath.Caption", L"File full path:", L"Vollst\u00e4ndiger Dateipfad:"},
    {L"Button_Browse.Caption", L"Browse...", L"Durchsuchen..."},
    {L"Label_ExactName.Caption", L"Program's exact name:", L"Genauer Programmname:"},
    {L"Button_Serach.Caption", L"Search", L"Suchen"},
    {L"ListView_Search.Columns[0].Caption", L"Display Name", L"Anzeigename"},
    {L"ListView_Search.Columns[1].Caption", L"Size", L"Gr\u00f6\u00dfe"},
    {L"ListView_Search.Columns[2].Caption", L"Install Date", L"Installationsdatum"},
    {L"Label_DragInfo.Caption",
     L"You can browse or drag and drop a file here to delete a file or uninstall the file "
     L"related program. ",
     L"Sie k\u00f6nnen hier eine Datei ausw\u00e4hlen oder ablegen, um die Datei zu l\u00f6schen "
     L"oder das zugeh\u00f6rige Programm zu deinstallieren. "},
    {L"Label_NextInfo.Caption",
     L" After you press the \"Next\" button, Varnel Uninstaller will perform the forced "
     L"uninstall thoroughly.",
     L" Nach einem Klick auf \"Weiter\" f\u00fchrt Varnel Uninstaller die erzwungene "
     L"Deinstallation gr\u00fcndlich aus."},
    {L"Button_Uninstall.Caption", L"Next>", L"Weiter>"},
    {L"Button_Cancel.Caption", L"Cancel", L"Abbrechen"},
    {L"PM_FU_Uninstall.Caption", L"Uninstall", L"Deinstallieren"},
    {L"PM_FU_OpenFolder.Caption", L"Open Folder", L"Ordner \u00f6ffnen"},
    {L"PM_FU_ViewEntry.Caption", L"View Entry", L"Eintrag anzeigen"},
};

constexpr CatalogText kForceUninstallMessages[] = {
    {L"M_SelectAgain", L"Invalid path. Please select again!",
     L"Ung\u00fcltiger Pfad. Bitte erneut ausw\u00e4hlen!"},
    {L"M_Unknown", L"Unknown", L"Unbekannt"},
};

constexpr CatalogText kPowerScan[] = {
    {L"PowerScan_Form.Caption", L"Powerful Scan", L"Gr\u00fcndliche Suche"},
    {L"Label_UninstallScanTitle.Caption", L"Found leftover items. Please select to delete.",
     L"Reste gefunden. Bitte w\u00e4hlen Sie aus, was gel\u00f6scht werden soll."},
    {L"Button_Delete.Caption", L"Delete", L"L\u00f6schen"},
    {L"Button_Cancel.Caption", L"Cancel", L"Abbrechen"},
    {L"Button_SelectAll.Caption", L"Select All", L"Alle ausw\u00e4hlen"},
};

constexpr CatalogText kPowerScanMessages[] = {
    {L"M_SureDeleteItems", L"Are you sure you want to delete the selected items?",
     L"M\u00f6chten Sie die ausgew\u00e4hlten Eintr\u00e4ge wirklich l\u00f6schen?"},
    {L"M_Deleting", L"Deleting", L"L\u00f6sche"},
    {L"M_DeleteFinish", L"Delete finished.", L"L\u00f6schen abgeschlossen."},
    {L"M_SelectAll", L"Select All", L"Alle ausw\u00e4hlen"},
    {L"M_DeselectAll", L"Deselect All", L"Alle abw\u00e4hlen"},
    {L"M_Option", L"Operation", L"Vorgang"},
    {L"M_PowerfulScan", L"Powerful Scan", L"Gr\u00fcndliche Suche"},
    {L"M_DateTime", L"Date", L"Datum"},
};

constexpr CatalogText kLogManager[] = {
    {L"LogManager_Form.Caption", L"Uninstall Log Manager", L"Deinstallationsprotokolle"},
    {L"Label_Title.Caption", L"Varnel Uninstall Log File List",
     L"Liste der Varnel-Deinstallationsprotokolle"},
    {L"Label_Info.Caption", L"You can view all the uninstall log files below.",
     L"Unten sehen Sie alle Deinstallationsprotokolle."},
    {L"Button_Open.Caption", L"Open", L"\u00d6ffnen"},
    {L"Button_Delete.Caption", L"Delete", L"L\u00f6schen"},
    {L"Button_DeleteAll.Caption", L"Delete All", L"Alle l\u00f6schen"},
    {L"Button_Cancel.Caption", L"Cancel", L"Abbrechen"},
    {L"Label_Backups.Caption", L"Backups of deleted items",
     L"Sicherungen gel\u00f6schter Eintr\u00e4ge"},
    {L"ListView_Backup.Columns[0].Caption", L"Backup", L"Sicherung"},
    {L"ListView_Backup.Columns[1].Caption", L"Created", L"Erstellt"},
    {L"ListView_Backup.Columns[2].Caption", L"Items", L"Eintr\u00e4ge"},
    {L"ListView_Backup.Columns[3].Caption", L"Size", L"Gr\u00f6\u00dfe"},
    {L"Button_Restore.Caption", L"Restore", L"Wiederherstellen"},
    {L"Button_DeleteBackup.Caption", L"Delete", L"L\u00f6schen"},
};

// Delete All asks under the same key; its own English default lives in the window.
constexpr CatalogText kLogManagerMessages[] = {
    {L"M_SureDelSelect",
     L"Are you sure to delete the selected file? The deletion CANNOT be restored.",
     L"M\u00f6chten Sie die ausgew\u00e4hlte Datei wirklich l\u00f6schen? Das L\u00f6schen kann NICHT "
     L"r\u00fcckg\u00e4ngig gemacht werden."},
    {L"M_SureRestore",
     L"Are you sure to restore the selected backup? Its items return to where they were.",
     L"M\u00f6chten Sie die ausgew\u00e4hlte Sicherung wirklich wiederherstellen? Ihre Eintr\u00e4ge "
     L"kehren an ihren Ort zur\u00fcck."},
    {L"M_SureDelBackup",
     L"Are you sure to delete the selected backup? Its items can then no longer be restored.",
     L"M\u00f6chten Sie die ausgew\u00e4hlte Sicherung wirklich l\u00f6schen? Ihre Eintr\u00e4ge "
     L"lassen sich danach nicht mehr wiederherstellen."},
    {L"M_BackupRoom", L"All backups together take %s.", L"Alle Sicherungen belegen zusammen %s."},
    {L"M_NoBackups", L"There are no backups.", L"Es gibt keine Sicherungen."},
    {L"M_OneRestored", L"1 item was restored.", L"1 Eintrag wurde wiederhergestellt."},
    {L"M_Restored", L"%d items were restored.", L"%d Eintr\u00e4ge wurden wiederhergestellt."},
    {L"M_NotRestored", L"These items could not be restored:",
     L"Diese Eintr\u00e4ge konnten nicht wiederhergestellt werden:"},
    {L"M_BackupMissing", L"The backup no longer exists.", L"Die Sicherung existiert nicht mehr."},
};

constexpr CatalogSection kSections[] = {
    {L"UninstallForm_Main", kMain},
    {L"UninstallForm_Main_M", kMainMessages},
    {L"Uninstalling_Form", kUninstalling},
    {L"Uninstalling_Form_M", kUninstallingMessages},
    {L"ForceUninstall_Form", kForceUninstall},
    {L"ForceUninstall_Form_M", kForceUninstallMessages},
    {L"PowerScan_Form", kPowerScan},
    {L"PowerScan_Form_M", kPowerScanMessages},
    {L"LogManager_Form", kLogManager},
    {L"LogManager_Form_M", kLogManagerMessages},
};

}  // namespace

std::span<const CatalogSection> LanguageCatalog() { return kSections; }

std::wstring LanguageFileText(CatalogLanguage language) {
  const bool german = language == CatalogLanguage::German;
  std::wstring out = L"; Generated from the program's built-in texts by varnel_lang_gen.\r\n";
  out += L"[Main]\r\nDisplayName=";
  out += german ? L"Deutsch" : L"English";
  out += L"\r\n";
  for (const CatalogSection& section : kSections) {
    out += L"\r\n[";
    out += kPrefix;
    out += section.name;
    out += L"]\r\n";
    for (const CatalogText& entry : section.texts) {
      out += entry.key;
      out += L"=";
      out += german ? entry.german : entry.english;
      out += L"\r\n";
    }
  }
  return out;
}

std::wstring DefaultText(std::wstring_view section, std::wstring_view key) {
  if (!text::StartsWithText(section, kPrefix)) return {};
  section.remove_prefix(kPrefix.size());
  for (const CatalogSection& s : kSections) {
    if (!text::SameText(s.name, section)) continue;
    for (const CatalogText& entry : s.texts)
      if (text::SameText(entry.key, key)) return std::wstring(entry.english);
  }
  return {};
}

std::wstring CatalogMessage(const TLanguage& language, std::wstring_view form,
                            std::wstring_view key) {
  const std::wstring section = std::wstring(kPrefix) + std::wstring(form) + L"_M";
  return language.ReadString(section, key, DefaultText(section, key));
}

}  // namespace varnel
