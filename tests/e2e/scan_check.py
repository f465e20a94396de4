#!/usr/bin/env python3
"""Compares what `varnel-cli scan --json` found with what the sample installers left.

    scan_check.py RECORD_DIR

RECORD_DIR is filled by scan_e2e.sh: samples.tsv; hostile.tsv; snap/NAME.reg and snap/NAME.disk
for the moments base, installed-ID (after each install, in samples.tsv order), prescan and
uninstalled-ID (after each sample's own uninstaller); list.out and all.out (`list --json`,
with --all); and for each run of the tool NAME.out, NAME.err and NAME.rc: scan-ID, rescan-ID
(from the saved record, after the uninstall), hostile-N, scan-unknown, scan-usage, scan-badopt.

A sample's footprint is what changed between the snapshots around its install. The table
below says, for each sample, which footprint items a scanner is meant to find (FIND, with the
scanner), which it may report or not (MAY: the implementer's choice), and which it must not
report (NOT, with the reason). Every footprint item must be named there. A scan must report
every FIND item and nothing but FIND and MAY items. After the uninstall, the scan must report
exactly the FIND and MAY items that the uninstaller left and that can still be reached (some
are found only through a key that the uninstaller removed). Prints one line per check and a
gtest-like summary; exits 1 when a check fails.
"""
import json
import ntpath
import os
import re
import sys

from e2e_common import Checks, load_samples, read_text
from footprint import Snapshot, changes, value_text

ROOTS = {"HKEY_LOCAL_MACHINE": "HKLM", "HKEY_CURRENT_USER": "HKCU", "HKEY_CLASSES_ROOT": "HKCR",
         "HKEY_USERS": "HKU"}

CLSID_SHELL = "{3F2B8C4D-7A61-4E0B-9C5A-2D8E6F1A4B70}"
CLSID_CLIPPER = "{8D4E2A17-5B3C-4F69-A0E1-7C9B3D2F5E84}"
APPID = "{C61E9A35-2F8D-4B07-8E4A-95D1B7C3F026}"
LIBID = "{5A7D3E91-C4B2-4D68-9F1E-3B8A6C0D2E47}"
IID_SHELL = "{E2C94B68-1D7A-4A35-B6F0-8A3E5C9D7B12}"
LEDGER = "34876AB654D02E84A993CF87C6EBC334"          # packed product code
LEDGER_UPGRADE = "C362941A5CF163B4995F3CEAC4155A9A"  # packed upgrade code
LEDGER_CODE = "{6BA67843-0D45-48E2-9A39-FC786CBE3C43}"

CLASSES = r"HKLM\SOFTWARE\Classes"
CURVER_M = r"HKLM\SOFTWARE\Microsoft\Windows\CurrentVersion"
CURVER_U = r"HKCU\Software\Microsoft\Windows\CurrentVersion"
CCS = r"HKLM\SYSTEM\CurrentControlSet"
USERDATA = CURVER_M + r"\Installer\UserData\S-1-5-18"
FIREWALL = CCS + r"\services\SharedAccess\Parameters\FirewallPolicy"

TREE, KEY, VALUE, FOLDER_TREE, CONTENTS, FOLDER, FILE = (
    "key and all below", "key", "value", "folder and all below", "all below the folder",
    "folder", "file")
FIND, MAY, NOT = "find", "may", "not"


class Entry:
    """A footprint item or subtree of a sample. `needs`: tags of entries through which a scanner
    reaches this one (any one of them suffices); `mirror`: the HKEY_CLASSES_ROOT copy of a key
    under HKLM\\SOFTWARE\\Classes is expected (FIND) or allowed (MAY) as well; `shared`: it
    belongs to another sample and is expected all the same, for the reason given."""

    def __init__(self, group, why, form, path, value=None, tag=None, needs=(), mirror=None,
                 shared=None):
        self.group, self.why, self.form, self.path, self.value = group, why, form, path, value
        self.tag, self.needs, self.mirror, self.shared = tag, tuple(needs), mirror, shared

    def label(self):
        return self.path + (f" [{self.value}]" if self.value is not None else "")


def find(scanner, form, path, value=None, **kw):
    return Entry(FIND, scanner, form, path, value, **kw)


def may(reason, form, path, value=None, **kw):
    return Entry(MAY, reason, form, path, value, **kw)


def never(reason, form, path, value=None, **kw):
    return Entry(NOT, reason, form, path, value, **kw)


def containers(reason, *paths):
    return [never(reason, KEY, p) for p in paths]


CONTAINER = "a container key the installer created on the way; other programs register below it"
OWN_UNINSTALL = ("the program's own Uninstall key, under the protected vendor name Microsoft; "
                 "the uninstall sequence deals with it")
PARENT_FOLDER = "the install folder's parent; no scanner reports above the install folder"
LOCAL_DATA = "the local application-data folder is not among the folders the file scan searches"
NAME_SEARCH = ("the name search reports what is below the program's folder; reporting the "
               "folder itself is the implementer's choice")
WHOLE_KEY = ("a value of the program's own settings key that does not name the install "
             "folder; reporting the whole key is the implementer's choice")


def table(v):
    """Per sample: the footprint named item by item. `v` holds the user's folders."""
    notes = r"{pf}\Quillfeather Labs\Quillfeather Notes".format(**v)
    sync = r"{pf86}\Quillfeather Labs\Quillfeather Sync Agent".format(**v)
    ledger = r"{pf}\Brindlewood Software\Brindlewood Ledger".format(**v)
    sketchpad = r"{local}\Programs\Oakhollow Sketchpad".format(**v)
    synctray = r"{local}\Programs\Quillfeather Sync Agent".format(**v)
    companion = r"{pf}\Quillfeather Labs\Quillfeather Notes Companion".format(**v)
    common_menu = r"{common_menu}\Quillfeather Labs".format(**v)
    shared_key = ("the vendor key is shared by Quillfeather Notes and Quillfeather Notes "
                  "Companion")
    shared_menu = ("the Start-menu folder is the publisher's, shared by the Quillfeather "
                   "programs; the name search finds no folder named like the program there")
    classes_mirror = "the HKEY_CLASSES_ROOT copy of a file class; the implementer's choice"
    return {
        "notes": [
            find("COM classes (server path in short form)", TREE,
                 CLASSES + rf"\CLSID\{CLSID_SHELL}", tag="shell", mirror=FIND),
            find("COM classes", TREE, CLASSES + rf"\CLSID\{CLSID_CLIPPER}", tag="clipper",
                 mirror=FIND),
            find("COM classes: AppID", TREE, CLASSES + rf"\AppID\{APPID}",
                 needs=("shell", "clipper"), mirror=FIND),
            find("AppID names", TREE, CLASSES + r"\AppID\QuillNotes.exe",
                 needs=("shell", "clipper"), mirror=FIND),
            find("COM classes: TypeLib", TREE, CLASSES + rf"\TypeLib\{LIBID}",
                 needs=("shell", "clipper"), tag="typelib", mirror=FIND),
            find("COM classes: ProgID", TREE, CLASSES + r"\Quillfeather.NoteShell.1",
                 needs=("shell",), mirror=FIND),
            find("COM classes: ProgID", TREE, CLASSES + r"\Quillfeather.WebClipper.1",
                 needs=("clipper",), mirror=FIND),
            find("COM classes: toolbar", VALUE,
                 r"HKLM\SOFTWARE\Microsoft\Internet Explorer\Toolbar", CLSID_CLIPPER,
                 needs=("clipper",)),
            find("COM classes: extension", TREE,
                 rf"HKLM\SOFTWARE\Microsoft\Internet Explorer\Extensions\{CLSID_CLIPPER}",
                 needs=("clipper",)),
            find("COM classes: pre-approved", TREE,
                 CURVER_M + rf"\Ext\PreApproved\{CLSID_CLIPPER}", needs=("clipper",)),
            find("COM classes: settings in the classes key", TREE,
                 CLASSES + r"\SOFTWARE\Microsoft\Windows\CurrentVersion\Ext\Settings"
                 + "\\" + CLSID_CLIPPER, needs=("clipper",)),
            find("COM classes: user settings", TREE, CURVER_U + rf"\Ext\Settings\{CLSID_CLIPPER}",
                 needs=("clipper",)),
            find("COM classes: user stats", TREE, CURVER_U + rf"\Ext\Stats\{CLSID_CLIPPER}",
                 needs=("clipper",)),
            find("COM classes: web browser toolbar", VALUE,
                 r"HKCU\Software\Microsoft\Internet Explorer\Toolbar\WebBrowser", CLSID_CLIPPER,
                 needs=("clipper",)),
            find("COM classes: browser helper object", TREE,
                 CURVER_M + rf"\Explorer\Browser Helper Objects\{CLSID_CLIPPER}",
                 needs=("clipper",)),
            find("Interface", TREE, CLASSES + rf"\Interface\{IID_SHELL}", needs=("typelib",),
                 mirror=FIND),
            find("Shell Extensions approved", VALUE, CURVER_M + r"\Shell Extensions\Approved",
                 CLSID_SHELL, needs=("shell",)),
            find("file classes", TREE, CLASSES + r"\Quillfeather.Note", mirror=MAY),
            find("file classes", TREE, CLASSES + r"\Quillfeather.Notebook.2", mirror=MAY),
            find("extensions", TREE, CLASSES + r"\.qfnote", mirror=MAY),
            find("extensions", TREE, CLASSES + r"\.qfnb", mirror=MAY),
            find("extensions: CurVer", TREE, CLASSES + r"\Quillfeather.Notebook", mirror=MAY),
            find("Run", VALUE, CURVER_M + r"\Run", "Quillfeather Notes Reminder"),
            find("App Paths", TREE, CURVER_M + r"\App Paths\QuillNotes.exe"),
            find("all-files verbs", TREE, CLASSES + r"\*\shell\Add to Quillfeather Notes",
                 mirror=FIND),
            find("all-files shell extensions", TREE,
                 CLASSES + r"\*\shellex\ContextMenuHandlers\QuillNotesShell", mirror=FIND),
            find("Control Panel", VALUE, CURVER_M + r"\Control Panel\Cpls", "QuillNotes"),
            find("Clients", TREE, r"HKLM\SOFTWARE\Clients\Media\Quillfeather Notes"),
            find("vendor keys", VALUE, r"HKLM\SOFTWARE\Quillfeather Labs\Quillfeather Notes",
                 "InstallDir"),
            may(WHOLE_KEY, TREE, r"HKLM\SOFTWARE\Quillfeather Labs\Quillfeather Notes"),
            find("vendor keys", VALUE, r"HKCU\Software\Quillfeather Labs\Quillfeather Notes",
                 "ProgramFolder"),
            may(WHOLE_KEY, TREE, r"HKCU\Software\Quillfeather Labs\Quillfeather Notes"),
            find("install folder", FOLDER_TREE, notes),
            find("application data", CONTENTS, r"{appdata}\Quillfeather Labs\Quillfeather Notes"
                 .format(**v)),
            may(NAME_SEARCH, FOLDER, r"{appdata}\Quillfeather Labs\Quillfeather Notes"
                .format(**v)),
            find("desktop shortcuts", FILE, r"{public_desktop}\Quillfeather Notes.lnk"
                 .format(**v)),
            never(shared_key, KEY, r"HKLM\SOFTWARE\Quillfeather Labs"),
            never("names the shared spelling engine, not the install folder", VALUE,
                  r"HKLM\SOFTWARE\Quillfeather Labs", "SpellingEngine"),
            never("the per-user vendor key is shared by every Quillfeather program", KEY,
                  r"HKCU\Software\Quillfeather Labs"),
            never("the spelling engine in Common Files is shared with the Companion; no "
                  "scanner looks in Common Files", FOLDER_TREE,
                  r"{common}\Quillfeather Labs".format(**v)),
            never(PARENT_FOLDER + "; it is shared with the Companion", FOLDER,
                  r"{pf}\Quillfeather Labs".format(**v)),
            never(shared_menu, FOLDER_TREE, common_menu),
            never("the publisher's application-data folder is shared by the Quillfeather "
                  "programs", FOLDER, r"{appdata}\Quillfeather Labs".format(**v)),
            never("the publisher's local application-data folder is shared", FOLDER,
                  r"{local}\Quillfeather Labs".format(**v)),
            never(LOCAL_DATA, FOLDER_TREE, r"{local}\Quillfeather Labs\Quillfeather Notes"
                  .format(**v)),
            never(OWN_UNINSTALL, TREE, CURVER_M + r"\Uninstall\QuillfeatherNotes"),
            never("App Paths in the other registry view (Wine reflects the key); the scan "
                  "reads the record's view", TREE,
                  r"HKLM\SOFTWARE\Wow6432Node\Microsoft\Windows\CurrentVersion\App Paths"
                  r"\QuillNotes.exe"),
        ] + containers(
            CONTAINER, CLASSES + r"\*\shell", CLASSES + r"\SOFTWARE",
            CLASSES + r"\SOFTWARE\Microsoft", CLASSES + r"\SOFTWARE\Microsoft\Windows",
            CLASSES + r"\SOFTWARE\Microsoft\Windows\CurrentVersion",
            CLASSES + r"\SOFTWARE\Microsoft\Windows\CurrentVersion\Ext",
            CLASSES + r"\SOFTWARE\Microsoft\Windows\CurrentVersion\Ext\Settings",
            r"HKLM\SOFTWARE\Clients\Media", r"HKLM\SOFTWARE\Microsoft\Internet Explorer\Extensions",
            r"HKLM\SOFTWARE\Microsoft\Internet Explorer\Toolbar", CURVER_M + r"\Ext",
            CURVER_M + r"\Ext\PreApproved", CURVER_M + r"\Explorer\Browser Helper Objects",
            CURVER_M + r"\Control Panel\Cpls",
            r"HKCU\Software\Microsoft\Internet Explorer\Toolbar",
            r"HKCU\Software\Microsoft\Internet Explorer\Toolbar\WebBrowser",
            CURVER_U + r"\Ext", CURVER_U + r"\Ext\Settings", CURVER_U + r"\Ext\Stats"),
        "sync": [
            find("services", TREE, CCS + r"\services\QuillSyncSvc", tag="service"),
            find("services: Enum", TREE, CCS + r"\Enum\Root\LEGACY_QUILLSYNCSVC\0000",
                 needs=("service",)),
            never("the device instance's parent key; the service's Enum list names the "
                  "instance only", KEY, CCS + r"\Enum\Root\LEGACY_QUILLSYNCSVC"),
            find("firewall rules", VALUE, FIREWALL + r"\FirewallRules", "QuillSync-In-TCP"),
            find("firewall authorised applications", VALUE,
                 FIREWALL + r"\StandardProfile\AuthorizedApplications\List",
                 sync + r"\QuillSync.exe"),
            find("event log sources", TREE,
                 CCS + r"\services\eventlog\Application\Quillfeather Sync"),
            find("vendor keys (32-bit view)", VALUE,
                 r"HKLM\SOFTWARE\Quillfeather Labs\Quillfeather Sync Agent", "InstallPath"),
            may(WHOLE_KEY, TREE, r"HKLM\SOFTWARE\Quillfeather Labs\Quillfeather Sync Agent"),
            may("the publisher's key in the 32-bit view holds this program alone", KEY,
                r"HKLM\SOFTWARE\Quillfeather Labs"),
            find("install folder", FOLDER_TREE, sync),
            find("application data", CONTENTS,
                 r"{appdata}\Quillfeather Labs\Quillfeather Sync Agent".format(**v)),
            may(NAME_SEARCH, FOLDER, r"{appdata}\Quillfeather Labs\Quillfeather Sync Agent"
                .format(**v)),
            never("the per-user settings key of the name both parts of the Sync Agent share; "
                  "after the user part's first run no value of it names this install folder",
                  TREE, r"HKCU\Software\Quillfeather Labs\Quillfeather Sync Agent"),
            never(shared_menu, FILE, common_menu + r"\Quillfeather Sync Agent.lnk"),
            never(LOCAL_DATA, FOLDER_TREE,
                  r"{local}\Quillfeather Labs\Quillfeather Sync Agent".format(**v)),
            never(PARENT_FOLDER, FOLDER, r"{pf86}\Quillfeather Labs".format(**v)),
            never(OWN_UNINSTALL, TREE, r"HKLM\SOFTWARE\Microsoft\Windows\CurrentVersion"
                  r"\Uninstall\QuillfeatherSyncAgent"),
        ] + containers(
            CONTAINER, r"HKLM\SOFTWARE\Microsoft\Windows\CurrentVersion\Uninstall",
            CCS + r"\services\SharedAccess", CCS + r"\services\SharedAccess\Parameters",
            FIREWALL, FIREWALL + r"\FirewallRules", FIREWALL + r"\StandardProfile",
            FIREWALL + r"\StandardProfile\AuthorizedApplications",
            FIREWALL + r"\StandardProfile\AuthorizedApplications\List"),
        "ledger": [
            find("Windows Installer products", TREE, CLASSES + rf"\Installer\Products\{LEDGER}"),
            find("Windows Installer features", TREE, CLASSES + rf"\Installer\Features\{LEDGER}"),
            find("Windows Installer upgrade codes", VALUE,
                 CLASSES + rf"\Installer\UpgradeCodes\{LEDGER_UPGRADE}", LEDGER),
            may("the upgrade code's key holds this product alone", KEY,
                CLASSES + rf"\Installer\UpgradeCodes\{LEDGER_UPGRADE}"),
            find("Windows Installer upgrade codes", VALUE,
                 CURVER_M + rf"\Installer\UpgradeCodes\{LEDGER_UPGRADE}", LEDGER),
            may("the upgrade code's key holds this product alone", KEY,
                CURVER_M + rf"\Installer\UpgradeCodes\{LEDGER_UPGRADE}"),
            find("Windows Installer user data", TREE, USERDATA + rf"\Products\{LEDGER}"),
            find("Windows Installer components", VALUE,
                 USERDATA + r"\Components\CFAD54B258BA32743B4E20399AB44630", LEDGER),
            find("Windows Installer components", VALUE,
                 USERDATA + r"\Components\DFEF28AB06039514B95C3AF43C63FBEE", LEDGER),
            may("a component key that holds this product alone", KEY,
                USERDATA + r"\Components\CFAD54B258BA32743B4E20399AB44630"),
            may("a component key that holds this product alone", KEY,
                USERDATA + r"\Components\DFEF28AB06039514B95C3AF43C63FBEE"),
            may("a component key whose one value, named by the product code, names a "
                "registry value rather than a file in the install folder: the install-folder "
                "test does not hold, the product code does", TREE,
                USERDATA + r"\Components\D993F7010EBFFD248BBD12E39DD7B51A"),
            find("vendor keys", VALUE, r"HKLM\SOFTWARE\Brindlewood Software\Brindlewood Ledger",
                 "InstallDir"),
            may(WHOLE_KEY, TREE, r"HKLM\SOFTWARE\Brindlewood Software\Brindlewood Ledger"),
            may("the publisher's key holds this program alone", KEY,
                r"HKLM\SOFTWARE\Brindlewood Software"),
            find("vendor keys", VALUE, r"HKCU\Software\Brindlewood Software\Brindlewood Ledger",
                 "ProgramFolder"),
            may(WHOLE_KEY, TREE, r"HKCU\Software\Brindlewood Software\Brindlewood Ledger"),
            may("the publisher's key holds this program alone", KEY,
                r"HKCU\Software\Brindlewood Software"),
            find("install folder", FOLDER_TREE, ledger),
            find("application data", CONTENTS,
                 r"{appdata}\Brindlewood Software\Brindlewood Ledger".format(**v)),
            may(NAME_SEARCH, FOLDER, r"{appdata}\Brindlewood Software\Brindlewood Ledger"
                .format(**v)),
            find("Start menu", CONTENTS, r"{user_menu}\Brindlewood Ledger".format(**v)),
            may(NAME_SEARCH, FOLDER, r"{user_menu}\Brindlewood Ledger".format(**v)),
            may("the product icon folder that the Installer records name (Wine keeps it in "
                "C:\\windows\\Installer)", FOLDER_TREE, rf"C:\windows\Installer\{LEDGER_CODE}"),
            never("the cached package; no Installer record the scan reads names its folder "
                  "as the program's", FILE, "msi-cache"),
            never("the Installer's own folder, made for the first package installed",
                  FOLDER, r"C:\windows\Installer"),
            never(PARENT_FOLDER, FOLDER, r"{pf}\Brindlewood Software".format(**v)),
            never("the publisher's application-data folder", FOLDER,
                  r"{appdata}\Brindlewood Software".format(**v)),
            never("the publisher's local application-data folder", FOLDER,
                  r"{local}\Brindlewood Software".format(**v)),
            never(LOCAL_DATA, FOLDER_TREE,
                  r"{local}\Brindlewood Software\Brindlewood Ledger".format(**v)),
            never(OWN_UNINSTALL, TREE, CURVER_M + rf"\Uninstall\{LEDGER_CODE}"),
        ] + containers(
            CONTAINER, CLASSES + r"\Installer", CLASSES + r"\Installer\Features",
            CLASSES + r"\Installer\Products", CLASSES + r"\Installer\UpgradeCodes",
            CURVER_M + r"\Installer\UpgradeCodes", CURVER_M + r"\Installer\UserData",
            USERDATA, USERDATA + r"\Components", USERDATA + r"\Products"),
        "sketchpad": [
            find("extensions (per user)", TREE, r"HKCU\Software\Classes\.oaksketch"),
            find("extensions (per user)", TREE, r"HKCU\Software\Classes\Oakhollow.Sketch"),
            find("vendor keys", VALUE, r"HKCU\Software\Oakhollow Studio\Oakhollow Sketchpad",
                 "InstallDir"),
            find("vendor keys", VALUE, r"HKCU\Software\Oakhollow Studio\Oakhollow Sketchpad",
                 "ProgramFolder"),
            may(WHOLE_KEY, TREE, r"HKCU\Software\Oakhollow Studio\Oakhollow Sketchpad"),
            may("the publisher's key holds this program alone", KEY,
                r"HKCU\Software\Oakhollow Studio"),
            find("install folder", FOLDER_TREE, sketchpad),
            find("application data", CONTENTS,
                 r"{appdata}\Oakhollow Studio\Oakhollow Sketchpad".format(**v)),
            may(NAME_SEARCH, FOLDER, r"{appdata}\Oakhollow Studio\Oakhollow Sketchpad"
                .format(**v)),
            find("desktop shortcuts", FILE, r"{desktop}\Oakhollow Sketchpad.lnk".format(**v)),
            never("a shortcut straight in the Start menu's Programs folder; the name search "
                  "looks for folders", FILE, r"{user_menu}\Oakhollow Sketchpad.lnk".format(**v)),
            never("the publisher's application-data folder", FOLDER,
                  r"{appdata}\Oakhollow Studio".format(**v)),
            never("the publisher's local application-data folder", FOLDER,
                  r"{local}\Oakhollow Studio".format(**v)),
            never(LOCAL_DATA, FOLDER_TREE, r"{local}\Oakhollow Studio\Oakhollow Sketchpad"
                  .format(**v)),
            never(PARENT_FOLDER + "; the user part of the Sync Agent installs there too",
                  FOLDER, r"{local}\Programs".format(**v)),
            never(OWN_UNINSTALL, TREE, CURVER_U + r"\Uninstall\OakhollowSketchpad"),
        ] + containers(CONTAINER, r"HKCU\Software\Classes", CURVER_U + r"\Uninstall"),
        "synctray": [
            find("Run", VALUE, CURVER_U + r"\Run", "Quillfeather Sync Tray"),
            find("vendor keys", VALUE, r"HKCU\Software\Quillfeather Labs\Quillfeather Sync Agent",
                 "ProgramFolder"),
            may("the per-user settings key of the name both parts of the Sync Agent share "
                "(the first run of each writes it)", TREE,
                r"HKCU\Software\Quillfeather Labs\Quillfeather Sync Agent", shared="sync"),
            find("install folder", FOLDER_TREE, synctray),
            find("application data", CONTENTS,
                 r"{appdata}\Quillfeather Labs\Quillfeather Sync Agent".format(**v),
                 shared="the folder of the name both parts of the Sync Agent share"),
            may(NAME_SEARCH, FOLDER, r"{appdata}\Quillfeather Labs\Quillfeather Sync Agent"
                .format(**v), shared="sync"),
            never(OWN_UNINSTALL, TREE, CURVER_U + r"\Uninstall\QuillfeatherSyncAgentUser"),
        ],
        "companion": [
            find("vendor keys", VALUE,
                 r"HKLM\SOFTWARE\Quillfeather Labs\Quillfeather Notes Companion", "InstallDir"),
            may(WHOLE_KEY, TREE, r"HKLM\SOFTWARE\Quillfeather Labs\Quillfeather Notes Companion"),
            find("vendor keys", VALUE,
                 r"HKCU\Software\Quillfeather Labs\Quillfeather Notes Companion", "ProgramFolder"),
            may(WHOLE_KEY, TREE, r"HKCU\Software\Quillfeather Labs\Quillfeather Notes Companion"),
            find("install folder", FOLDER_TREE, companion),
            find("application data", CONTENTS,
                 r"{appdata}\Quillfeather Labs\Quillfeather Notes Companion".format(**v)),
            may(NAME_SEARCH, FOLDER, r"{appdata}\Quillfeather Labs\Quillfeather Notes Companion"
                .format(**v)),
            never(shared_menu, FILE, common_menu + r"\Quillfeather Notes Companion.lnk"),
            never(LOCAL_DATA, FOLDER_TREE,
                  r"{local}\Quillfeather Labs\Quillfeather Notes Companion".format(**v)),
            never(OWN_UNINSTALL, TREE, CURVER_M + r"\Uninstall\QuillfeatherNotesCompanion"),
        ],
    }


# What Wine itself changes while programs run: never anyone's footprint.
WINE_NOISE = [re.compile(p, re.I) for p in (
    r"^hklm\\system\\currentcontrolset\\(control|hardware profiles)(\\|$)",
    r"^hklm\\hardware(\\|$)",
    r"^hklm\\software\\(wow6432node\\)?microsoft\\windows nt\\currentversion\\networkcards(\\|$)",
    r"^hkcu\\console(\\|$)",
    r"^hkcu\\software\\wine(\\|$)",
    r"^c:\\users\\[^\\]+\\temp(\\|$)",
    r"^c:\\windows\\temp(\\|$)",
    r"^c:\\varnel-",
)]

STEP_OWNERS = ("base", "installed", "prescan", "uninstalled")


def item_path(item):
    return item[1]


def is_noise(item):
    return any(p.search(item_path(item)) for p in WINE_NOISE)


# ---- naming: what a scan reports, and where that lies in a snapshot ---------------------------

def physical_key(snap, root, key, is64):
    """Where ROOT\\KEY, opened in the record's view, lies in the snapshot (lower case)."""
    key = key.strip("\\")
    if root == "HKCR":
        root, key = "HKLM", "SOFTWARE\\Classes" + ("\\" + key if key else "")
    parts = key.split("\\") if key else []
    if root == "HKLM" and not is64 and parts and parts[0].lower() == "software" and (
            len(parts) == 1 or parts[1].lower() != "wow6432node"):
        parts = [parts[0], "Wow6432Node"] + parts[1:]
    return snap.resolve("\\".join([root] + parts)).lower()


def split_root(path):
    root, _, key = path.partition("\\")
    return root.upper(), key


def report_id(kind, root, key, name=None):
    key = key.strip("\\").lower()
    return ("K", root, key) if kind == "K" else ("V", root, key, name.lower())


def physical(snap, rid, is64):
    if rid[0] == "F":
        return rid
    key = physical_key(snap, rid[1], rid[2], is64)
    return ("K", key) if rid[0] == "K" else ("V", key, rid[3])


def file_id(path):
    return ("F", path.rstrip("\\").lower())


def show(rid):
    if rid[0] == "F":
        return rid[1]
    text = f"{rid[1]}\\{rid[2]}"
    return text + (f" [{rid[3] or '(default)'}]" if rid[0] == "V" else "")


def show_physical(item):
    return item[1] + (f" [{item[2] or '(default)'}]" if item[0] == "V" else "")


def expand(entry, snap, is64, root_override=None):
    """The report identities of ENTRY's items that SNAP holds."""
    out = []
    if entry.form in (TREE, KEY, VALUE):
        root, key = split_root(entry.path)
        if root_override:
            root, key = root_override, key[len("SOFTWARE\\Classes\\"):]
        phys = physical_key(snap, root, key, is64)
        low = key.strip("\\").lower()
        if entry.form == VALUE:
            name = entry.value.lower()
            if (phys, name) in snap.values:
                out.append(("V", root, low, name))
            return out
        if phys not in snap.keys:
            return out
        keys = [(phys, low)]
        if entry.form == TREE:
            keys += [(k, low + k[len(phys):]) for k in snap.subkeys(phys)]
        for pk, rk in keys:
            out.append(("K", root, rk))
            if entry.form == KEY:
                continue
            for name in snap.value_names(pk):
                _, _, _, data = snap.values[(pk, name)]
                if name or data:  # an unset default value is never reported
                    out.append(("V", root, rk, name))
        return out
    path = entry.path.rstrip("\\").lower()
    if entry.form in (FOLDER_TREE, FOLDER, FILE) and path in snap.files:
        out.append(("F", path))
    if entry.form in (FOLDER_TREE, CONTENTS):
        out += [("F", p) for p in snap.below(path)]
    return out


def entry_ids(entry, snap, is64):
    """[(report id, entry group, entry)] for ENTRY and, where asked, its classes-root copy."""
    out = [(rid, entry.group, entry) for rid in expand(entry, snap, is64)]
    if entry.mirror:
        group = FIND if entry.group == FIND and entry.mirror == FIND else MAY
        out += [(rid, group, entry) for rid in expand(entry, snap, is64, root_override="HKCR")]
    return out


def reached(entry, by_tag, snap, is64):
    """False when ENTRY is found only through entries of which SNAP holds none."""
    if not entry.needs:
        return True
    return any(expand(by_tag[t], snap, is64) for t in entry.needs if t in by_tag)


# ---- the record's runs -------------------------------------------------------------------------

def load_run(record, name):
    rc_text = read_text(os.path.join(record, f"{name}.rc")).strip()
    rc = int(rc_text) if rc_text.lstrip("-").isdigit() else None
    out = read_text(os.path.join(record, f"{name}.out"))
    err = read_text(os.path.join(record, f"{name}.err")).strip()
    try:
        data = json.loads(out)
    except ValueError:
        data = None
    return rc, data, err, out


def reported(data):
    """[(report id, data text or None, is64 flag)] of a scan's JSON, or None when malformed."""
    if not isinstance(data, dict) or not isinstance(data.get("registry"), list) \
            or not isinstance(data.get("files"), list):
        return None
    out = []
    for r in data["registry"]:
        if not isinstance(r, dict) or r.get("root") not in ROOTS:
            return None
        if not all(isinstance(r.get(f), str) for f in ("key", "value", "data", "text")):
            return None
        root = ROOTS[r["root"]]
        if r["value"] == "" and r["data"] == "":
            out.append((report_id("K", root, r["key"]), None, r.get("is64BitView")))
        else:
            out.append((report_id("V", root, r["key"], r["value"]), r["data"],
                        r.get("is64BitView")))
    for f in data["files"]:
        if not isinstance(f, dict) or not isinstance(f.get("path"), str) \
                or f.get("kind") not in ("folder", "file"):
            return None
        out.append((file_id(f["path"]), f["kind"], None))
    return out


def caption(item):
    """The registry caption: root name, "\\", key; then " | " value name (or "Default")
    " - " data when either is set."""
    text = item["root"] + "\\" + item["key"]
    if item["value"] or item["data"]:
        text += " | " + (item["value"] or "Default") + " - " + item["data"]
    return text


def check_output(checks, label, rc, data, err, name):
    checks.check(f"{label}: exits 0", rc == 0, f"exit code {rc}, stderr: {err[:300]}")
    items = reported(data)
    ok = items is not None and data.get("program") == name and data.get("count") == (
        len(data["registry"]) + len(data["files"]))
    checks.check(f"{label}: prints one object with program, count, registry and files", ok,
                 "not the documented form" if items is None else
                 f"program {data.get('program')!r}, count {data.get('count')!r} for "
                 f"{len(data['registry'])} + {len(data['files'])} items")
    if items:
        wrong = [r["text"] for r in data["registry"] if r["text"] != caption(r)]
        checks.check(f"{label}: each registry item's text is its caption", not wrong,
                     f"{len(wrong)}, e.g. {wrong[:1]}")
    return items or []


# ---- the checks --------------------------------------------------------------------------------

class Bed:
    """The snapshots and who owns each item."""

    def __init__(self, record, samples):
        self.record = record
        self.snaps = {}
        self.owner = {}
        order = ["base"] + [f"installed-{s['id']}" for s in samples] + ["prescan"]
        prev = None
        for name in order:
            snap = self.load(name)
            if snap is None:
                raise FileNotFoundError(name)
            changed = snap.items().keys() if prev is None else changes(prev, snap)
            who = "wine" if name == "base" else "the test harness" if name == "prescan" \
                else name.split("-", 1)[1]
            for item in changed:
                self.owner[item] = "wine" if is_noise(item) else who
            prev = snap
        self.prescan = prev

    def load(self, name):
        if name not in self.snaps:
            reg = os.path.join(self.record, "snap", f"{name}.reg")
            disk = os.path.join(self.record, "snap", f"{name}.disk")
            if not (os.path.exists(reg) and os.path.exists(disk)):
                return None
            self.snaps[name] = Snapshot(reg, disk)
        return self.snaps[name]

    def footprint(self, sid):
        return {item for item, who in self.owner.items() if who == sid}


def user_folders(snap):
    users = [p for p in snap.files if re.fullmatch(r"c:\\users\\[^\\]+", p)
             and p != "c:\\users\\public" and snap.files[p][1] == "folder"]
    home = snap.files[users[0]][0] if len(users) == 1 else "C:\\users\\root"
    return {
        "pf": "C:\\Program Files", "pf86": "C:\\Program Files (x86)",
        "common": "C:\\Program Files\\Common Files",
        "appdata": home + "\\AppData\\Roaming", "local": home + "\\AppData\\Local",
        "desktop": home + "\\Desktop", "public_desktop": "C:\\users\\Public\\Desktop",
        "user_menu": home + "\\AppData\\Roaming\\Microsoft\\Windows\\Start Menu\\Programs",
        "common_menu": "C:\\ProgramData\\Microsoft\\Windows\\Start Menu\\Programs",
    }


def resolve_special(entries, snap):
    """Entries naming a file the Installer chose the name of."""
    for e in entries:
        if e.path == "msi-cache":
            package = snap.values.get((physical_key(snap, "HKLM", USERDATA.split("\\", 1)[1]
                                                    + rf"\Products\{LEDGER}\InstallProperties",
                                                    True), "localpackage"))
            e.path = package[3] if package else "C:\\windows\\Installer\\(none)"
    return entries


def compare(checks, label, items, expected, allowed, named_not, snap, is64, bed, sid):
    """items: what the scan reported; expected: {rid: entry} it must report; allowed: {rid:
    entry} it may report; named_not: {physical id: entry} it must not."""
    seen, dupes = set(), set()
    for rid, _, _ in items:
        if rid in seen:
            dupes.add(rid)
        seen.add(rid)
    checks.check(f"{label}: reports every item once", not dupes,
                 "; ".join(show(r) for r in sorted(dupes)[:5]))

    by_entry = {}
    for rid, entry in expected.items():
        by_entry.setdefault(id(entry), (entry, []))[1].append(rid)
    for entry, rids in by_entry.values():
        missing = [r for r in rids if r not in seen]
        checks.check(f"{label}: {entry.why} finds {entry.label()} ({entry.form}, {len(rids)} "
                     f"item{'s' if len(rids) != 1 else ''})", not missing,
                     f"{len(missing)} missing: " + "; ".join(show(r) for r in missing[:6]))

    extra = []
    for rid in sorted(seen - set(expected) - set(allowed)):
        p = physical(snap, rid, is64)
        if p in named_not:
            why = f"named as not to be found: {named_not[p].why}"
        elif not snap.has(p):
            why = "not in the registry or on disk"
        else:
            who = bed.owner.get(p, "wine")
            why = ("of this sample but not in its table" if who == sid else
                   "Wine's own" if who == "wine" else f"belongs to {who}")
        extra.append(f"{show(rid)} ({why})")
    checks.check(f"{label}: reports nothing else", not extra,
                 f"{len(extra)} more: " + "; ".join(extra[:8]))

    flags = {flag for rid, _, flag in items if rid[0] != "F"}
    checks.check(f"{label}: every registry item carries the record's view flag "
                 f"({is64})", flags <= {is64}, f"flags seen: {sorted(map(str, flags))}")

    wrong = []
    for rid, text, _ in items:
        if rid[0] != "V":
            continue
        p = physical(snap, rid, is64)
        value = snap.values.get((p[1], p[2]))
        want = value_text(value[2], value[3]) if value else None
        if want is not None and text != want:
            wrong.append(f"{show(rid)}: {text!r}, the registry holds {want!r}")
    checks.check(f"{label}: value data as the registry holds it", not wrong,
                 "; ".join(wrong[:4]))


def sample_sets(entries, snap, is64, after=None, by_tag=None, leftovers=None):
    expected, allowed, named_not = {}, {}, {}
    for e in entries:
        if after is not None and e.group != NOT and not reached(e, by_tag, snap, is64):
            continue
        for rid, group, entry in entry_ids(e, snap, is64):
            if group == NOT:
                named_not[physical(snap, rid, is64)] = entry
                continue
            if leftovers is not None and not entry.shared \
                    and physical(snap, rid, is64) not in leftovers:
                continue
            (expected if group == FIND else allowed).setdefault(rid, entry)
    return expected, allowed, named_not


def check_table(checks, sid, entries, bed, is64):
    """Every footprint item of the sample is named in its table."""
    snap = bed.prescan
    named = set()
    for e in entries:
        for rid, _, _ in entry_ids(e, snap, is64):
            named.add(physical(snap, rid, is64))
        if e.form == TREE:  # unset default values are part of the subtree all the same
            root, key = split_root(e.path)
            phys = physical_key(snap, root, key, is64)
            for k in [phys] + snap.subkeys(phys):
                named.add(("K", k))
                named.update(("V", k, n) for n in snap.value_names(k))
    own = {p for p in bed.footprint(sid) if snap.has(p)}
    unnamed = sorted(own - named)
    checks.check(f"{sid}: every item of its footprint ({len(own)}) is named in the table",
                 not unnamed, f"{len(unnamed)} unnamed: " + "; ".join(
                     show_physical(p) for p in unnamed[:10]))


def check_samples(checks, record, bed, samples, records, v):
    tables = table(v)
    for s in samples:
        sid = s["id"]
        rec = records.get(sid)
        entries = resolve_special(tables.get(sid, []), bed.prescan)
        if not checks.check(f"{sid}: the table names it and list --json holds its record",
                            bool(entries) and rec is not None, "no table or no record"):
            continue
        is64 = bool(rec.get("is64BitView"))
        by_tag = {e.tag: e for e in entries if e.tag}
        check_table(checks, sid, entries, bed, is64)

        rc, data, err, _ = load_run(record, f"scan-{sid}")
        items = check_output(checks, f"{sid}: scan", rc, data, err, rec.get("name"))
        expected, allowed, named_not = sample_sets(entries, bed.prescan, is64)
        compare(checks, f"{sid}: scan", items, expected, allowed, named_not, bed.prescan,
                is64, bed, sid)

        after = bed.load(f"uninstalled-{sid}")
        urc = read_text(os.path.join(record, f"uninstall-{sid}.rc")).strip()
        if not checks.check(f"{sid}: its own uninstaller ran silently and ended with 0",
                            urc == "0" and after is not None, f"exit code {urc or '?'}"):
            continue
        leftovers = {p for p in bed.footprint(sid) if after.has(p)}
        rc, data, err, _ = load_run(record, f"rescan-{sid}")
        items = check_output(checks, f"{sid}: scan after its uninstaller", rc, data, err,
                             rec.get("name"))
        expected, allowed, named_not = sample_sets(entries, after, is64, after=True,
                                                   by_tag=by_tag, leftovers=leftovers)
        compare(checks, f"{sid}: scan after its uninstaller", items, expected, allowed,
                named_not, after, is64, bed, sid)
        found = {physical(after, rid, is64) for rid, _, _ in items}
        reasons = {}
        for p in sorted(leftovers - found):
            why = why_left(p, entries, after, is64, by_tag)
            if why != "expected":  # those failed above
                reasons.setdefault(why, []).append(show_physical(p))
        for why, paths in reasons.items():
            print(f"note {sid}: left behind and not reported, {len(paths)} item(s), {why}: " +
                  "; ".join(paths[:3]) + ("; ..." if len(paths) > 3 else ""))


def why_left(item, entries, snap, is64, by_tag):
    if item[0] == "V" and not item[2] and not snap.values[(item[1], item[2])][3]:
        return "an unset default value, which no scanner reports"
    for e in entries:
        if item in {physical(snap, rid, is64) for rid, _, _ in entry_ids(e, snap, is64)}:
            if e.group == NOT:
                return e.why
            if e.group == MAY:
                return "may be reported"
            if not reached(e, by_tag, snap, is64):
                return "reached only through " + " or ".join(
                    by_tag[t].label() for t in e.needs) + ", which the uninstaller removed"
            return "expected"
    return "not in the table"


def check_hostile(checks, record):
    """Entries whose install location is a drive root, the Users root, the Windows or system
    folder, a macro or a path through '..' report nothing."""
    rows = [line.split("\t") for line in read_text(os.path.join(record, "hostile.tsv"))
            .splitlines() if line.strip()]
    for n, (name, _, location) in enumerate(rows, 1):
        label = f"hostile \"{location}\""
        rc, data, err, _ = load_run(record, f"hostile-{n}")
        items = check_output(checks, label, rc, data, err, name)
        bad = []
        for rid, _, _ in items:
            if rid[0] == "F":
                path = ntpath.normpath(rid[1]).lower().rstrip("\\")
                if path in ("c:", "") or path == "c:\\windows" or path.startswith("c:\\windows\\"):
                    bad.append(rid[1])
        checks.check(f"{label}: no file item is the drive root or lies in the Windows folder",
                     not bad, f"{len(bad)}: " + "; ".join(bad[:5]))
        checks.check(f"{label}: refused as an install folder, nothing reported",
                     not items, f"{len(items)} items: " +
                     "; ".join(show(r) for r, _, _ in items[:6]))


def check_usage(checks, record):
    rc, _, err, out = load_run(record, "scan-unknown")
    checks.check("scan of a program that is not installed exits 1 with a message and no output",
                 rc == 1 and err and not out.strip(), f"exit code {rc}, stderr {err[:120]!r}")
    for run, what in (("scan-usage", "scan without a program"),
                      ("scan-badopt", "scan with an unknown option")):
        rc, _, err, out = load_run(record, run)
        checks.check(f"{what} exits 2 with the usage on stderr and nothing on stdout",
                     rc == 2 and "usage" in err.lower() and not out.strip(),
                     f"exit code {rc}, stderr {err[:120]!r}, stdout {out.strip()[:80]!r}")


def main():
    if len(sys.argv) != 2:
        print("usage: scan_check.py RECORD_DIR", file=sys.stderr)
        return 2
    record = sys.argv[1]
    checks = Checks()
    samples = load_samples(record)
    try:
        bed = Bed(record, samples)
    except FileNotFoundError as e:
        checks.check("every snapshot was taken", False, f"snapshot {e} is missing")
        return checks.summary()
    every = json.loads(read_text(os.path.join(record, "all.out")) or "[]")
    records = {}
    for s in samples:
        hits = [r for r in every if isinstance(r, dict) and str(r.get("keyPath", "")).lower()
                .endswith("\\" + s["key"].lower())]
        if hits:
            records[s["id"]] = hits[0]
    v = user_folders(bed.prescan)
    check_samples(checks, record, bed, samples, records, v)
    check_hostile(checks, record)
    check_usage(checks, record)
    return checks.summary()


if __name__ == "__main__":
    sys.exit(main())
