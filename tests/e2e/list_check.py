#!/usr/bin/env python3
"""Compares what `varnel-cli list --json` printed with what the sample installers wrote.

    list_check.py RECORD_DIR DRIVE_C

RECORD_DIR is filled by list_e2e.sh: samples.tsv; reg/ID.VIEW.txt, the `reg query` of each
sample's Uninstall key in the 32- and 64-bit views (empty where the key is not visible);
international.txt (the user's locale settings); installer-products.txt; and for each run NAME
of the tool NAME.out, NAME.err and NAME.rc. DRIVE_C is the prefix's C: drive.

The expected list is rebuilt from the registry with the inventory's rules: the default (32-bit)
view is read before the 64-bit one, HKLM before HKCU in each; the first record of a name stays
visible and takes the empty fields of its later namesakes, which are hidden; a visible record
without a size gets the size of its install folder from the analysis pass. Prints one line per
check and a gtest-like summary; exits 1 when a check fails.
"""
import datetime
import json
import os
import sys
from decimal import ROUND_HALF_UP, Decimal

from e2e_common import Checks, load_samples, read_text

UNINSTALL_PATH = "\\SOFTWARE\\Microsoft\\Windows\\CurrentVersion\\Uninstall"
ROOT_NAMES = {"HKLM": "HKEY_LOCAL_MACHINE", "HKCU": "HKEY_CURRENT_USER"}
FIELDS = {
    "index": int, "name": str, "publisher": str, "version": str, "installDate": str,
    "size": int, "sizeText": str, "rootKey": str, "keyPath": str, "uninstallString": str,
    "installLocation": str, "displayIcon": str, "is64BitView": bool, "isWindowsUpdate": bool,
    "isToolbar": bool, "isSystemComponent": bool, "hidden": bool,
}
MONTHS = ["January", "February", "March", "April", "May", "June", "July", "August",
          "September", "October", "November", "December"]
DAYS = ["Monday", "Tuesday", "Wednesday", "Thursday", "Friday", "Saturday", "Sunday"]


def parse_reg_query(text):
    """Values of the first key in a `reg query` listing: name -> (type, data)."""
    values = {}
    seen_key = False
    for line in text.splitlines():
        if line.startswith("HKEY_"):
            if seen_key:
                break
            seen_key = True
        elif line.startswith("    ") and seen_key:
            parts = line[4:].split("    ", 2)
            if len(parts) >= 2:
                values[parts[0]] = (parts[1], parts[2] if len(parts) > 2 else "")
    return values


def reg_string(values, name):
    return values.get(name, ("", ""))[1]


def reg_int(values, name):
    kind, data = values.get(name, ("", ""))
    if kind in ("REG_DWORD", "REG_QWORD"):
        return int(data, 16)
    try:
        return int(data)
    except ValueError:
        return 0


def format_date(picture, year, month, day):
    """The user's short date picture applied to one date, as GetDateFormat would."""
    weekday = datetime.date(year, month, day).weekday()
    out, i = "", 0
    while i < len(picture):
        c = picture[i]
        if c == "'":
            end = picture.find("'", i + 1)
            end = len(picture) if end < 0 else end
            out += picture[i + 1:end]
            i = end + 1
            continue
        run = 1
        while i + run < len(picture) and picture[i + run] == c:
            run += 1
        if c == "d":
            forms = [str(day), f"{day:02}", DAYS[weekday][:3], DAYS[weekday]]
            out += forms[min(run, 4) - 1]
        elif c == "M":
            forms = [str(month), f"{month:02}", MONTHS[month - 1][:3], MONTHS[month - 1]]
            out += forms[min(run, 4) - 1]
        elif c == "y":
            out += f"{year % 100:02}" if run <= 2 else str(year)
        else:
            out += c * run
        i += run
    return out


def install_date_text(raw, picture):
    """"" for a missing or unusable InstallDate, like the inventory."""
    if len(raw) != 8 or not raw.isdigit():
        return ""
    year, month, day = int(raw[:4]), int(raw[4:6]), int(raw[6:])
    try:
        return format_date(picture, year, month, day)
    except ValueError:
        return ""


def format_size(size, decimal):
    if size < 1024:
        return f"{size} Byte"
    for unit, divisor in (("KB", 1024), ("MB", 1024 ** 2), ("GB", 1024 ** 3)):
        if unit == "GB" or size < divisor * 1024:
            value = (Decimal(size) / Decimal(divisor)).quantize(Decimal("0.01"), ROUND_HALF_UP)
            return f"{value}".replace(".", decimal) + " " + unit


def windows_to_unix(drive_c, path):
    path = path.strip().strip('"').rstrip("\\")
    if len(path) < 2 or path[1] != ":" or path[0].upper() != "C":
        return None
    return os.path.join(drive_c, *[p for p in path[2:].split("\\") if p])


def folder_size(drive_c, path):
    root = windows_to_unix(drive_c, path)
    if not root or not os.path.isdir(root):
        return 0
    total = 0
    for folder, _, files in os.walk(root):
        for name in files:
            total += os.path.getsize(os.path.join(folder, name))
    return total


def expected_records(record, samples, picture):
    """Every record the samples should give, in enumeration order, hidden ones included."""
    records = []
    for view in (32, 64):
        for root in ("HKLM", "HKCU"):
            for s in samples:
                if s["root"] != root:
                    continue
                dump = os.path.join(record, "reg", f"{s['id']}.{view}.txt")
                values = parse_reg_query(read_text(dump))
                if not values:
                    continue
                raw_date = reg_string(values, "InstallDate")
                records.append({
                    "id": s["id"], "view": view, "values": values,
                    "name": reg_string(values, "DisplayName").strip(),
                    "publisher": reg_string(values, "Publisher").strip() or "-",
                    "version": reg_string(values, "DisplayVersion").strip() or "-",
                    "rootKey": ROOT_NAMES[root],
                    "keyPath": f"{UNINSTALL_PATH}\\{s['key']}",
                    "uninstallString": reg_string(values, "UninstallString"),
                    "installLocation": reg_string(values, "InstallLocation"),
                    "displayIcon": reg_string(values, "DisplayIcon"),
                    "size": reg_int(values, "EstimatedSize") * 1024,
                    "installDate": install_date_text(raw_date, picture),
                    "systemComponent": reg_int(values, "SystemComponent") == 1,
                    "is64BitView": view == 64, "hidden": False, "mergedFrom": {},
                })
    # The same-name filter.
    for i, a in enumerate(records):
        if a["hidden"]:
            continue
        if a["systemComponent"] and "MSIEXEC.EXE /" in a["uninstallString"].upper():
            a["hidden"] = True
            continue
        for b in records[i + 1:]:
            if b["hidden"] or a["name"].lower() != b["name"].lower():
                continue
            if a["systemComponent"]:
                a["hidden"] = True
                merge(b, a)
                break
            b["hidden"] = True
            merge(a, b)
    return records


def merge(target, source):
    for field in ("installDate", "displayIcon", "installLocation"):
        if not target[field] and source[field]:
            target[field] = source[field]
            target["mergedFrom"][field] = source["keyPath"]
    if target["size"] == 0 and source["size"] != 0:
        target["size"] = source["size"]
        target["mergedFrom"]["size"] = source["keyPath"]


def load_run(checks, record, name, label):
    rc_text = read_text(os.path.join(record, f"{name}.rc")).strip()
    rc = int(rc_text) if rc_text.lstrip("-").isdigit() else None
    out = read_text(os.path.join(record, f"{name}.out"))
    err = read_text(os.path.join(record, f"{name}.err")).strip()
    checks.check(f"{label} exits 0", rc == 0, f"exit code {rc}, stderr: {err[:300]}")
    try:
        data = json.loads(out)
    except ValueError as e:
        checks.check(f"{label} prints a JSON array of records with the documented keys", False,
                     f"not JSON ({e}); output begins {out[:200]!r}")
        return []
    problems = []
    if not isinstance(data, list):
        problems.append(f"a {type(data).__name__}, not an array")
        data = []
    for entry in data:
        if not isinstance(entry, dict):
            problems.append(f"an element is a {type(entry).__name__}")
            continue
        for key, kind in FIELDS.items():
            value = entry.get(key)
            # bool is an int in Python; keep the two apart.
            wrong = not isinstance(value, kind) or (kind is int and isinstance(value, bool))
            if value is None or wrong:
                problems.append(f"{entry.get('name', '?')!r}: {key} is {value!r}")
    checks.check(f"{label} prints a JSON array of records with the documented keys",
                 not problems and len(data) > 0, "; ".join(problems[:5]) or "empty array")
    return [e for e in data if isinstance(e, dict)]


def find(entries, exp):
    return [e for e in entries if e.get("rootKey") == exp["rootKey"]
            and e.get("keyPath") == exp["keyPath"] and e.get("is64BitView") == exp["is64BitView"]]


def differences(entry, exp, fields):
    return [f"{f} {entry.get(f)!r}, expected {exp[f]!r}" for f in fields if entry.get(f) != exp[f]]


def product_icon(record, product_code):
    """ProductIcon of the Installer key named by a braced product code's packed form."""
    g = product_code.strip("{}").split("-")
    if len(g) != 5:
        return ""
    tail = g[3] + g[4]
    packed = g[0][::-1] + g[1][::-1] + g[2][::-1] + "".join(
        tail[i + 1] + tail[i] for i in range(0, len(tail), 2))
    text = read_text(os.path.join(record, "installer-products.txt"))
    marker = f"\\Products\\{packed}".upper()
    lines = text.splitlines()
    for i, line in enumerate(lines):
        if line.upper().endswith(marker):
            return reg_string(parse_reg_query("\n".join(lines[i:])), "ProductIcon")
    return ""


def leaf(key_path):
    return key_path.rsplit("\\", 1)[1]


def is_msi(exp):
    return "WindowsInstaller" in exp["values"]


def check_visible(checks, entries, exp, record, drive_c, decimal):
    sid, key = exp["id"], leaf(exp["keyPath"])
    same_name = [e for e in entries if str(e.get("name", "")).lower() == exp["name"].lower()]
    matches = find(entries, exp)
    seen = "; ".join(f"{e.get('rootKey')}{e.get('keyPath')} is64BitView={e.get('is64BitView')}"
                     for e in same_name)
    checks.check(f"{sid}: '{exp['name']}' listed exactly once, from {key} "
                 f"({exp['rootKey']}, {exp['view']}-bit view)",
                 len(same_name) == 1 and len(matches) == 1,
                 f"{len(same_name)} entries of that name: {seen or 'none'}")
    entry = matches[0] if matches else (same_name[0] if same_name else {})

    uninstall = exp["uninstallString"]
    got = f"got {entry.get('uninstallString')!r}"
    if is_msi(exp):
        # What msiexec itself wrote: the removal command of the product code that names the key.
        form = uninstall.lower() == f"msiexec.exe /x{key}".lower()
        checks.check(f"{sid}: uninstall string is the MSI removal command {uninstall!r}",
                     form and entry.get("uninstallString") == uninstall,
                     got if form else f"the registry holds {uninstall!r}, not MsiExec.exe /X{key}")
    else:
        checks.check(f"{sid}: uninstall string {uninstall!r}",
                     entry.get("uninstallString") == uninstall, got)

    size = exp["size"]
    source = exp["mergedFrom"].get("size")
    if size:
        how = f"EstimatedSize of {leaf(source)} x 1024" if source else "EstimatedSize x 1024"
    else:
        # The analysis pass measures the install folder of a record without a size.
        size = folder_size(drive_c, exp["installLocation"])
        how = "EstimatedSize 0" if "EstimatedSize" in exp["values"] else "no EstimatedSize"
        how += ": bytes in the install folder"
    size_text = format_size(size, decimal)
    checks.check(f"{sid}: size {size} ({how}), shown as {size_text!r}",
                 entry.get("size") == size and entry.get("sizeText") == size_text,
                 f"got {entry.get('size')!r} / {entry.get('sizeText')!r}")

    date = exp["installDate"]
    source = exp["mergedFrom"].get("installDate")
    how = f" (InstallDate of {leaf(source)})" if source else ""
    if date:
        checks.check(f"{sid}: install date {date!r} in the user's short date format{how}",
                     entry.get("installDate") == date, f"got {entry.get('installDate')!r}")
    else:
        checks.check(f"{sid}: install date", False, "the sample sets no InstallDate; this "
                     "checker does not model the date the analysis takes from the uninstaller")

    problems = differences(entry, exp, ("publisher", "version", "installLocation"))
    if exp["displayIcon"]:
        problems += differences(entry, exp, ("displayIcon",))
    else:
        # The analysis pass picks an icon: the installer's product icon or a file of the program.
        icon = str(entry.get("displayIcon", ""))
        allowed = product_icon(record, key)
        folder = exp["installLocation"].rstrip("\\").lower() + "\\"
        if not icon or not (icon == allowed or icon.lower().startswith(folder)):
            problems.append(f"displayIcon {icon!r}, expected {allowed!r} or a file in {folder!r}")
    for flag in ("isWindowsUpdate", "isToolbar", "isSystemComponent", "hidden"):
        if entry.get(flag) is not False:
            problems.append(f"{flag} {entry.get(flag)!r}")
    checks.check(f"{sid}: publisher, version, install location, icon and flags", not problems,
                 "; ".join(problems))
    return entry


def check_hidden(checks, entries_all, exp, owner, decimal):
    """A namesake the list hides: its own values, unmeasured (the analysis skips it)."""
    matches = find(entries_all, exp)
    expected = dict(exp, sizeText=format_size(exp["size"], decimal), hidden=True)
    fields = ("name", "uninstallString", "size", "sizeText", "installDate", "hidden")
    problems = differences(matches[0], expected, fields) if matches else []
    checks.check(f"--all: {exp['id']} shows once as a hidden twin of "
                 f"{leaf(owner['keyPath']) if owner else '?'} ({exp['rootKey']}, "
                 f"{exp['view']}-bit view)", len(matches) == 1 and not problems,
                 f"{len(matches)} entries at {exp['rootKey']}{exp['keyPath']} with is64BitView "
                 f"{exp['is64BitView']}; " + "; ".join(problems))


def check_all_repeats_list(checks, listed, every):
    problems = []
    for entry in listed:
        twins = [e for e in every if e.get("index") == entry.get("index")]
        if twins != [entry]:
            problems.append(f"{entry.get('name')}: {twins[:1]!r} in --all, {entry!r} in list")
    extra = [str(e.get("name")) for e in every if e.get("hidden") is False and e not in listed]
    if extra:
        problems.append(f"visible in --all only: {', '.join(extra)}")
    checks.check("--all repeats every visible record with the same index and fields",
                 bool(listed) and not problems, "; ".join(problems[:3]) or "nothing listed")
    indexes = [e.get("index") for e in every]
    checks.check("--all gives every record its own index", len(indexes) == len(set(indexes)),
                 f"{len(indexes) - len(set(indexes))} repeated")


def check_same_sizes(checks, first, second):
    def sizes(entries):
        return {(e.get("rootKey"), e.get("keyPath"), e.get("is64BitView")):
                (e.get("size"), e.get("sizeText")) for e in entries}
    a, b = sizes(first), sizes(second)
    changed = [f"{k[1]}: {a.get(k)} then {b.get(k)}" for k in sorted(set(a) | set(b), key=str)
               if a.get(k) != b.get(k)]
    checks.check("a second run reports the same records with the same sizes",
                 bool(second) and not changed, "; ".join(changed[:3]) or "no output")


def main():
    if len(sys.argv) != 3:
        print("usage: list_check.py RECORD_DIR DRIVE_C", file=sys.stderr)
        return 2
    record, drive_c = sys.argv[1], sys.argv[2]
    checks = Checks()

    international = parse_reg_query(read_text(os.path.join(record, "international.txt")))
    picture = reg_string(international, "sShortDate") or "M/d/yyyy"
    decimal = reg_string(international, "sDecimal") or "."
    samples = load_samples(record)
    records = expected_records(record, samples, picture)
    missing = sorted({s["id"] for s in samples} - {r["id"] for r in records})
    if not checks.check("every sample's Uninstall key was found in the registry", not missing,
                        f"no key for {', '.join(missing)}"):
        return checks.summary()

    listed = load_run(checks, record, "list", "list --json")
    shown_hidden = [str(e.get("name")) for e in listed if e.get("hidden") is not False]
    checks.check("list --json shows no hidden record", not shown_hidden, ", ".join(shown_hidden))

    visible = [r for r in records if not r["hidden"]]
    hidden = [r for r in records if r["hidden"]]
    for exp in visible:
        check_visible(checks, listed, exp, record, drive_c, decimal)
    for s in samples:
        if s["id"] not in {r["id"] for r in visible}:
            owners = [r for r in visible if r["name"].lower() == s["name"].lower()]
            own = [e for e in listed if str(e.get("keyPath", "")).endswith("\\" + s["key"])
                   and e.get("rootKey") == ROOT_NAMES[s["root"]]]
            checks.check(f"{s['id']}: not listed on its own; its name shows once, as "
                         f"{owners[0]['id'] if owners else '?'}", not own and len(owners) == 1,
                         f"{len(own)} entries of its own")

    every = load_run(checks, record, "all", "list --json --all")
    check_all_repeats_list(checks, listed, every)
    for exp in hidden:
        owner = next((r for r in visible if r["name"].lower() == exp["name"].lower()), None)
        check_hidden(checks, every, exp, owner, decimal)

    check_same_sizes(checks, listed, load_run(checks, record, "list2", "second list --json"))

    rc = read_text(os.path.join(record, "badopt.rc")).strip()
    err = read_text(os.path.join(record, "badopt.err"))
    out = read_text(os.path.join(record, "badopt.out"))
    checks.check("an unknown option exits 2 with the usage on stderr and nothing on stdout",
                 rc == "2" and "usage" in err.lower() and not out.strip(),
                 f"exit code {rc}, stderr {err.strip()[:120]!r}, stdout {out.strip()[:120]!r}")
    return checks.summary()


if __name__ == "__main__":
    sys.exit(main())
