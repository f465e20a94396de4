#!/usr/bin/env python3
"""What a prefix holds at one moment, what changed between two moments, and the samples'
footprint table (data/scan_footprint.json) laid over a snapshot.

    footprint.py disk DRIVE_C OUT     writes the file and folder tree of DRIVE_C to OUT

A snapshot is the registry as `e2e_helper registry` wrote it (HKLM in the 64-bit view, HKCU)
plus the disk (with the size of each file) as `footprint.py disk` wrote it. Items are named ("K", key), ("V", key, name) or
("F", path), lower case, keys as hklm\\... or hkcu\\..., with no trailing backslash. What a scan
reports is named ("K", root, key), ("V", root, key, name) or ("F", path), root as HKLM, HKCU
or HKCR and the key as opened in the record's view; `physical` maps one onto the other.
"""
import bisect
import json
import os
import re
import string
import sys

REG_SZ, REG_EXPAND_SZ, REG_BINARY, REG_DWORD, REG_QWORD = 1, 2, 3, 4, 11
HERE = os.path.dirname(os.path.abspath(__file__))
ROOTS = {"HKEY_LOCAL_MACHINE": "HKLM", "HKEY_CURRENT_USER": "HKCU", "HKEY_CLASSES_ROOT": "HKCR",
         "HKEY_USERS": "HKU"}

# What Wine itself changes while programs run: never anyone's footprint.
WINE_NOISE = re.compile("|".join((
    r"^hklm\\system\\currentcontrolset\\(control|hardware profiles)(\\|$)", r"^hklm\\hardware(\\|$)",
    r"^hklm\\software\\(wow6432node\\)?microsoft\\windows nt\\currentversion\\networkcards(\\|$)",
    r"^hkcu\\console(\\|$)", r"^hkcu\\software\\wine(\\|$)", r"^c:\\users\\[^\\]+\\temp(\\|$)",
    r"^c:\\windows\\temp(\\|$)", r"^c:\\varnel-")), re.I)


def is_noise(item):
    return bool(WINE_NOISE.search(item[1]))


def unescape(field):
    return re.sub(r"%([0-9A-Fa-f]{2})", lambda m: chr(int(m.group(1), 16)), field)


def link_target(target):
    """\\Registry\\Machine\\X -> HKLM\\X; \\Registry\\User\\SID\\X -> HKCU\\X."""
    parts = target.strip("\\").split("\\")
    if len(parts) >= 2 and parts[0].lower() == "registry":
        if parts[1].lower() == "machine":
            return "\\".join(["HKLM"] + parts[2:])
        if parts[1].lower() == "user" and len(parts) >= 3:
            return "\\".join(["HKCU"] + parts[3:])
    return target


def value_text(kind, data):
    """A value's data as the scanner reads it: strings as they are, numbers in decimal, binary
    data up to its first zero byte as 8-bit text; None where that reading is not pinned down."""
    if kind in (REG_SZ, REG_EXPAND_SZ, REG_DWORD, REG_QWORD):
        return data
    if kind == REG_BINARY:
        return bytes.fromhex(data).split(b"\0", 1)[0].decode("latin-1")
    return None


def below_in(sorted_names, prefix):
    """The names in SORTED_NAMES that start with PREFIX."""
    i = bisect.bisect_left(sorted_names, prefix)
    j = bisect.bisect_left(sorted_names, prefix + "\uffff")
    return sorted_names[i:j]


class Snapshot:
    def __init__(self, reg_path, disk_path):
        self.keys = {}      # lower key -> key as spelled
        self.values = {}    # (lower key, lower name) -> (key, name, type, data)
        self.links = {}     # lower key -> target key (HKLM\... or HKCU\...)
        self.files = {}     # lower path -> (path, "folder" | "file")
        self.sizes = {}     # lower path -> bytes of a file
        self._values_of = {}
        with open(reg_path, encoding="utf-8", errors="replace") as f:
            for cols in (line.rstrip("\n").split("\t") for line in f):
                cols = [unescape(c) for c in cols]
                if cols[0] == "K" and len(cols) >= 2:
                    self.keys[cols[1].lower()] = cols[1]
                elif cols[0] == "V" and len(cols) >= 5:
                    low = (cols[1].lower(), cols[2].lower())
                    self.values[low] = (cols[1], cols[2], int(cols[3]), cols[4])
                    self._values_of.setdefault(low[0], []).append(low[1])
                elif cols[0] == "L" and len(cols) >= 3:
                    self.links[cols[1].lower()] = link_target(cols[2])
        with open(disk_path, encoding="utf-8", errors="replace") as f:
            for cols in (line.rstrip("\n").split("\t") for line in f):
                if len(cols) >= 2:
                    self.files[cols[1].lower()] = (cols[1], "folder" if cols[0] == "D" else "file")
                    self.sizes[cols[1].lower()] = int(cols[2]) if len(cols) > 2 else 0
        self._sorted_keys, self._sorted_files = sorted(self.keys), sorted(self.files)

    def items(self):
        """Every item with its data: {item: data}, data None for keys and files."""
        out = {("K", k): None for k in self.keys}
        out.update({("V", k, n): v[3] for (k, n), v in self.values.items()})
        out.update({("F", p): None for p in self.files})
        return out

    def has(self, item):
        return (item[1] in self.keys if item[0] == "K" else
                (item[1], item[2]) in self.values if item[0] == "V" else item[1] in self.files)

    def resolve(self, key):
        """KEY with any symbolic link among its leading parts replaced by its target."""
        for _ in range(8):
            parts = key.split("\\")
            hit = next((i for i in range(1, len(parts) + 1)
                        if "\\".join(parts[:i]).lower() in self.links), None)
            if hit is None:
                break
            key = "\\".join([self.links["\\".join(parts[:hit]).lower()]] + parts[hit:])
        return key

    def subkeys(self, key):
        """KEY's subkeys at every depth, lower case, in sorted order."""
        return below_in(self._sorted_keys, key.lower() + "\\")

    def value_names(self, key):
        return self._values_of.get(key.lower(), [])

    def below(self, path):
        """Files and folders below PATH at every depth, lower case."""
        return below_in(self._sorted_files, path.lower().rstrip("\\") + "\\")


def load_snapshot(record, name):
    base = os.path.join(record, "snap", name)
    ok = os.path.exists(base + ".reg") and os.path.exists(base + ".disk")
    return Snapshot(base + ".reg", base + ".disk") if ok else None


def changes(before, after):
    """Items of AFTER that BEFORE lacks, and values whose data changed."""
    a, b = after.items(), before.items()
    return {item for item, data in a.items() if item not in b or b[item] != data}


def list_disk(drive_c, out_path):
    with open(out_path, "w", encoding="utf-8") as out:
        for folder, dirs, files in os.walk(drive_c):
            rel = os.path.relpath(folder, drive_c)
            base = "C:" if rel == "." else "C:\\" + rel.replace("/", "\\")
            dirs[:] = sorted(d for d in dirs if not os.path.islink(os.path.join(folder, d)))
            out.writelines([f"D\t{base}\\{d}\n" for d in dirs] + [
                f"F\t{base}\\{n}\t{os.lstat(os.path.join(folder, n)).st_size}\n"
                for n in sorted(files)])


# ---- the footprint table ------------------------------------------------------------------------

FORMS = ("tree", "key", "value", "folder_tree", "contents", "folder", "file")
CONTAINER = "a container key the installer created on the way; other programs register below it"
PACKAGE_KEY = (r"HKLM\SOFTWARE\Microsoft\Windows\CurrentVersion\Installer\UserData\S-1-5-18"
               r"\Products\34876AB654D02E84A993CF87C6EBC334\InstallProperties")


class Entry:
    """One row of the table: `group` find, may or not, with `why` (the scanner, or the reason);
    `form` and `path`, `value` naming a value; `needs`: tags of rows through which a scanner
    reaches this one (any one suffices); `mirror`: the HKEY_CLASSES_ROOT copy is expected
    (find) or allowed (may) too; `shared`: another sample's, expected all the same."""

    def __init__(self, row, folders):
        self.group = next(g for g in ("find", "may", "not") if g in row)
        self.form = next(f for f in FORMS if f in row)
        fill = lambda text: text and string.Template(text).substitute(folders)
        self.why, self.path, self.value = row[self.group], fill(row[self.form]), fill(row.get("name"))
        self.tag, self.needs = row.get("tag"), tuple(row.get("needs", ()))
        self.mirror, self.shared = row.get("mirror"), row.get("shared")

    def label(self):
        return self.path + (f" [{self.value}]" if self.value is not None else "")


def user_folders(snap):
    users = [p for p in snap.files if re.fullmatch(r"c:\\users\\[^\\]+", p)
             and p != "c:\\users\\public" and snap.files[p][1] == "folder"]
    home = snap.files[users[0]][0] if len(users) == 1 else "C:\\users\\root"
    roaming, menu = home + "\\AppData\\Roaming", "\\Microsoft\\Windows\\Start Menu\\Programs"
    return {"pf": "C:\\Program Files", "pf86": "C:\\Program Files (x86)",
            "common": "C:\\Program Files\\Common Files", "appdata": roaming,
            "local": home + "\\AppData\\Local", "desktop": home + "\\Desktop",
            "public_desktop": "C:\\users\\Public\\Desktop", "user_menu": roaming + menu,
            "common_menu": "C:\\ProgramData" + menu}


def load_table(snap):
    """{sample id: [Entry]} with the user's folders of SNAP filled in."""
    with open(os.path.join(HERE, "data", "scan_footprint.json"), encoding="utf-8") as f:
        data = json.load(f)
    folders, tables = user_folders(snap), {}
    for sid, part in data.items():
        rows = part["entries"] + [{"not": CONTAINER, "key": p} for p in part["containers"]]
        tables[sid] = [Entry(r, folders) for r in rows]
        for e in tables[sid]:
            if e.path == "msi-cache":  # the Installer chose this file's name
                package = snap.values.get((physical_key(snap, *split_root(PACKAGE_KEY), True),
                                           "localpackage"))
                e.path = package[3] if package else "C:\\windows\\Installer\\(none)"
    return tables


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
    return (rid[0], physical_key(snap, rid[1], rid[2], is64)) + rid[3:]


def show(item):
    """A report id or a snapshot item as text."""
    if item[0] == "F":
        return item[1]
    key = "\\".join(item[1:-1] if item[0] == "V" else item[1:])
    return key + (f" [{item[-1] or '(default)'}]" if item[0] == "V" else "")


def expand(entry, snap, is64, root_override=None):
    """The report ids of ENTRY's items that SNAP holds."""
    if entry.form in ("folder_tree", "contents", "folder", "file"):
        path = entry.path.rstrip("\\").lower()
        out = [("F", path)] if entry.form != "contents" and path in snap.files else []
        return out + ([("F", p) for p in snap.below(path)]
                      if entry.form in ("folder_tree", "contents") else [])
    root, key = split_root(entry.path)
    if root_override:
        root, key = root_override, key[len("SOFTWARE\\Classes\\"):]
    phys, low = physical_key(snap, root, key, is64), key.strip("\\").lower()
    if entry.form == "value":
        name = entry.value.lower()
        return [("V", root, low, name)] if (phys, name) in snap.values else []
    if phys not in snap.keys:
        return []
    if entry.form == "key":
        return [("K", root, low)]
    out = []
    for pk in [phys] + snap.subkeys(phys):
        rk = low + pk[len(phys):]
        out.append(("K", root, rk))
        # an unset default value is never reported
        out += [("V", root, rk, n) for n in snap.value_names(pk) if n or snap.values[(pk, n)][3]]
    return out


def entry_ids(entry, snap, is64):
    """[(report id, group, entry)] for ENTRY and, where asked, its classes-root copy."""
    out = [(rid, entry.group, entry) for rid in expand(entry, snap, is64)]
    if entry.mirror:
        group = "find" if entry.group == entry.mirror == "find" else "may"
        out += [(rid, group, entry) for rid in expand(entry, snap, is64, root_override="HKCR")]
    return out


def reached(entry, by_tag, snap, is64):
    """False when ENTRY is found only through entries of which SNAP holds none."""
    return not entry.needs or any(expand(by_tag[t], snap, is64)
                                  for t in entry.needs if t in by_tag)


def sample_sets(entries, snap, is64, leftovers=None):
    """({rid: entry} a scan must report, {rid: entry} it may, {physical item: entry} it must
    not). With LEFTOVERS (what the uninstaller left): only what is left and still reachable."""
    expected, allowed, named_not = {}, {}, {}
    by_tag = {e.tag: e for e in entries if e.tag}
    for e in entries:
        if leftovers is not None and e.group != "not" and not reached(e, by_tag, snap, is64):
            continue
        for rid, group, entry in entry_ids(e, snap, is64):
            if group == "not":
                named_not[physical(snap, rid, is64)] = entry
            elif leftovers is None or entry.shared or physical(snap, rid, is64) in leftovers:
                (expected if group == "find" else allowed).setdefault(rid, entry)
    return expected, allowed, named_not


if __name__ == "__main__":
    if len(sys.argv) == 4 and sys.argv[1] == "disk":
        list_disk(sys.argv[2], sys.argv[3])
        sys.exit(0)
    print("usage: footprint.py disk DRIVE_C OUT", file=sys.stderr)
    sys.exit(2)
