#!/usr/bin/env python3
"""What a prefix holds at one moment, and what changed between two moments.

    footprint.py disk DRIVE_C OUT     writes the file and folder tree of DRIVE_C to OUT

A snapshot is the registry as `e2e_helper registry` wrote it (HKLM in the 64-bit view, HKCU)
plus the disk as `footprint.py disk` wrote it. Items are named the same way in both:
    ("K", key)            a key, e.g. hklm\\software\\classes\\clsid\\{...}
    ("V", key, name)      a value of a key
    ("F", path)           a file or folder, e.g. c:\\program files\\x
all lower case, keys as HKLM\\... or HKCU\\..., with no trailing backslash.
"""
import bisect
import os
import sys

REG_SZ, REG_EXPAND_SZ, REG_BINARY, REG_DWORD, REG_MULTI_SZ, REG_QWORD = 1, 2, 3, 4, 7, 11


def unescape(field):
    if "%" not in field:
        return field
    out, i = [], 0
    while i < len(field):
        if field[i] == "%" and i + 3 <= len(field):
            code = field[i + 1:i + 3]
            try:
                out.append(chr(int(code, 16)))
                i += 3
                continue
            except ValueError:
                pass
        out.append(field[i])
        i += 1
    return "".join(out)


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
        raw = bytes.fromhex(data)
        return raw.split(b"\0", 1)[0].decode("latin-1")
    return None


class Snapshot:
    def __init__(self, reg_path, disk_path):
        self.keys = {}      # lower key -> key as spelled
        self.values = {}    # (lower key, lower name) -> (key, name, type, data)
        self.links = {}     # lower key -> target key (HKLM\... or HKCU\...)
        self.files = {}     # lower path -> (path, "folder" | "file")
        with open(reg_path, encoding="utf-8", errors="replace") as f:
            for line in f:
                cols = line.rstrip("\n").split("\t")
                if cols[0] == "K" and len(cols) >= 2:
                    key = unescape(cols[1])
                    self.keys[key.lower()] = key
                elif cols[0] == "V" and len(cols) >= 5:
                    key, name = unescape(cols[1]), unescape(cols[2])
                    self.values[(key.lower(), name.lower())] = (key, name, int(cols[3]),
                                                                unescape(cols[4]))
                elif cols[0] == "L" and len(cols) >= 3:
                    self.links[unescape(cols[1]).lower()] = link_target(unescape(cols[2]))
        with open(disk_path, encoding="utf-8", errors="replace") as f:
            for line in f:
                cols = line.rstrip("\n").split("\t")
                if len(cols) >= 2:
                    self.files[cols[1].lower()] = (cols[1], "folder" if cols[0] == "D" else "file")
        self._sorted_keys = sorted(self.keys)
        self._sorted_files = sorted(self.files)
        self._values_of = {}
        for (key, name) in self.values:
            self._values_of.setdefault(key, []).append(name)

    def items(self):
        """Every item with its data: {item: data}, data None for keys and files."""
        out = {("K", k): None for k in self.keys}
        out.update({("V", k, n): v[3] for (k, n), v in self.values.items()})
        out.update({("F", p): None for p in self.files})
        return out

    def has(self, item):
        if item[0] == "K":
            return item[1] in self.keys
        if item[0] == "V":
            return (item[1], item[2]) in self.values
        return item[1] in self.files

    def resolve(self, key):
        """KEY with any symbolic link among its leading parts replaced by its target."""
        for _ in range(8):
            parts = key.split("\\")
            for i in range(1, len(parts) + 1):
                target = self.links.get("\\".join(parts[:i]).lower())
                if target:
                    key = "\\".join([target] + parts[i:])
                    break
            else:
                return key
        return key

    def subkeys(self, key):
        """KEY's subkeys at every depth, lower case, in sorted order."""
        low = key.lower() + "\\"
        i = bisect.bisect_left(self._sorted_keys, low)
        out = []
        while i < len(self._sorted_keys) and self._sorted_keys[i].startswith(low):
            out.append(self._sorted_keys[i])
            i += 1
        return out

    def value_names(self, key):
        return self._values_of.get(key.lower(), [])

    def below(self, path):
        """Files and folders below PATH at every depth, lower case."""
        low = path.lower().rstrip("\\") + "\\"
        i = bisect.bisect_left(self._sorted_files, low)
        out = []
        while i < len(self._sorted_files) and self._sorted_files[i].startswith(low):
            out.append(self._sorted_files[i])
            i += 1
        return out


def changes(before, after):
    """Items of AFTER that BEFORE lacks, and values whose data changed."""
    a, b = after.items(), before.items()
    return {item for item, data in a.items() if item not in b or b[item] != data}


def list_disk(drive_c, out_path):
    with open(out_path, "w", encoding="utf-8") as out:
        for folder, dirs, files in os.walk(drive_c):
            rel = os.path.relpath(folder, drive_c)
            base = "C:" if rel == "." else "C:\\" + rel.replace("/", "\\")
            for name in sorted(dirs):
                if os.path.islink(os.path.join(folder, name)):
                    continue
                out.write(f"D\t{base}\\{name}\n")
            for name in sorted(files):
                out.write(f"F\t{base}\\{name}\n")
            dirs[:] = [d for d in dirs if not os.path.islink(os.path.join(folder, d))]


if __name__ == "__main__":
    if len(sys.argv) == 4 and sys.argv[1] == "disk":
        list_disk(sys.argv[2], sys.argv[3])
        sys.exit(0)
    print("usage: footprint.py disk DRIVE_C OUT", file=sys.stderr)
    sys.exit(2)
