"""Compares what `varnel-cli list --json` printed with what the sample installers wrote; part
of scan_check.py.

RECORD_DIR is filled by scan_e2e.sh: dates.txt (the day before and after the installs, in the
user's short date format dd.MM.yyyy, whose decimal separator is a comma); for each run NAME of
the tool NAME.out, NAME.err and NAME.rc. DRIVE_C is the prefix's C: drive.

data/list_expected.json holds every record the samples give, hidden ones included: the
default (32-bit) view's records shown, the later namesakes hidden, the first taking their empty
fields. $home is the user's profile folder, $date the install day; a size "folder" is the bytes
in the install folder at the prescan snapshot (the analysis pass measures a record without one), a displayIcon null is
iconOrFileIn or a file of the install folder (the analysis pass picks one). Prints one line per
check.
"""
import json
import os
import string
from decimal import ROUND_HALF_UP, Decimal

from e2e_common import cli_run, read_text
from footprint import load_snapshot

UNINSTALL_PATH = "\\SOFTWARE\\Microsoft\\Windows\\CurrentVersion\\Uninstall\\"
FLAGS = ("isWindowsUpdate", "isToolbar", "isSystemComponent")


def format_size(size):
    if size < 1024:
        return f"{size} Byte"
    for unit, divisor in (("KB", 1024), ("MB", 1024 ** 2), ("GB", 1024 ** 3)):
        if unit == "GB" or size < divisor * 1024:
            value = (Decimal(size) / Decimal(divisor)).quantize(Decimal("0.01"), ROUND_HALF_UP)
            return f"{value}".replace(".", ",") + " " + unit


def folder_size(snap, path):
    return sum(snap.sizes.get(p, 0) for p in snap.below(path)) if snap else -1


def expected_records(drive_c, snap):
    users = [u for u in os.listdir(os.path.join(drive_c, "users")) if u.lower() != "public"]
    home = "C:\\users\\" + (users[0] if len(users) == 1 else "root")
    fill = {"home": json.dumps(home)[1:-1], "date": "$date"}
    with open(os.path.join(os.path.dirname(os.path.abspath(__file__)), "data",
                           "list_expected.json"), encoding="utf-8") as f:
        records = json.loads(string.Template(f.read()).substitute(fill))
    for r in records:
        r["keyPath"] = UNINSTALL_PATH + r.pop("key")
        if r["size"] == "folder":
            r["size"] = folder_size(snap, r["installLocation"])
        r["sizeText"] = format_size(r["size"])
    return records


def load_run(checks, record, name, label):
    out, err, rc, data = cli_run(record, name)
    ok = rc == 0 and isinstance(data, list) and data and all(isinstance(e, dict) for e in data)
    checks.check(f"{label} exits 0 and prints an array of records", ok,
                 f"exit code {rc}, stderr {err[:200]!r}, stdout {out[:200]!r}")
    return data if ok else []


def where(entry):
    return (entry.get("rootKey"), entry.get("keyPath"), entry.get("is64BitView"))


def differences(entry, exp, fields, dates):
    wrong = [f"{f} {entry.get(f)!r}, expected {exp[f]!r}" for f in fields
             if f != "installDate" and entry.get(f) != exp[f]]
    if "installDate" in fields and entry.get("installDate") not in dates:
        wrong.append(f"installDate {entry.get('installDate')!r}, expected one of {dates}")
    return wrong


def check_visible(checks, listed, exp, dates):
    same_name = [e for e in listed if str(e.get("name", "")).lower() == exp["name"].lower()]
    at = [e for e in same_name if where(e) == where(exp)]
    problems = [] if len(same_name) == len(at) == 1 else [
        f"{len(same_name)} entries of that name: " + "; ".join(map(str, map(where, same_name)))]
    entry = (at or same_name or [{}])[0]
    problems += differences(entry, exp, ("uninstallString", "size", "sizeText", "installDate",
                                         "publisher", "version", "installLocation"), dates)
    icon = str(entry.get("displayIcon", ""))
    if exp["displayIcon"] is not None:
        problems += differences(entry, exp, ("displayIcon",), dates)
    elif not icon or not (icon == exp["iconOrFileIn"] or icon.lower().startswith(
            exp["installLocation"].rstrip("\\").lower() + "\\")):
        problems.append(f"displayIcon {icon!r}, expected {exp['iconOrFileIn']!r} or a file of "
                        "the install folder")
    problems += [f"{flag} {entry.get(flag)!r}" for flag in FLAGS + ("hidden",)
                 if entry.get(flag) is not False]
    checks.check(f"{exp['id']}: '{exp['name']}' listed once from {exp['keyPath']} "
                 f"({exp['rootKey']}, 64-bit view {exp['is64BitView']}) with the installer's "
                 "fields", not problems, "; ".join(problems))


def check_list(checks, record, drive_c):
    dates = read_text(os.path.join(record, "dates.txt")).split()
    records = expected_records(drive_c, load_snapshot(record, "prescan"))
    visible = [r for r in records if not r["hidden"]]

    listed = load_run(checks, record, "list", "list --json")
    shown_hidden = [str(e.get("name")) for e in listed if e.get("hidden") is not False]
    checks.check("list --json shows no hidden record", not shown_hidden, ", ".join(shown_hidden))
    for exp in visible:
        check_visible(checks, listed, exp, dates)
    # A sample whose every record is hidden (a namesake) is not listed on its own.
    keys = {r["keyPath"] for r in records}
    own = sorted(str(where(e)) for e in listed if e.get("keyPath") in keys
                 and where(e) not in {where(r) for r in visible})
    checks.check("no record of the samples is listed but the expected ones", not own,
                 "; ".join(own))

    every = load_run(checks, record, "all", "list --json --all")
    problems = [f"{e.get('name')} differs in --all" for e in listed
                if [a for a in every if a.get("index") == e.get("index")] != [e]]
    problems += [f"{e.get('name')} visible in --all only" for e in every
                 if e.get("hidden") is False and e not in listed]
    indexes = [e.get("index") for e in every]
    problems += ["repeated indexes"] if len(indexes) != len(set(indexes)) else []
    checks.check("--all repeats every visible record with the same index and fields, and gives "
                 "every record its own index", listed and not problems, "; ".join(problems[:4]))
    for exp in records:
        if exp["hidden"]:
            at = [e for e in every if where(e) == where(exp)]
            wrong = differences(at[0], exp, ("name", "uninstallString", "size", "sizeText",
                                             "installDate", "hidden"), dates) if at else []
            checks.check(f"--all: {exp['id']} shows once as a hidden namesake ({exp['rootKey']}, "
                         f"64-bit view {exp['is64BitView']})", len(at) == 1 and not wrong,
                         f"{len(at)} entries; " + "; ".join(wrong))

    second = load_run(checks, record, "list2", "second list --json")
    sizes = [{where(e): (e.get("size"), e.get("sizeText")) for e in run} for run in (listed, second)]
    changed = [f"{k}: {sizes[0].get(k)} then {sizes[1].get(k)}"
               for k in set(sizes[0]) | set(sizes[1]) if sizes[0].get(k) != sizes[1].get(k)]
    checks.check("a second run reports the same records with the same sizes",
                 second and not changed, "; ".join(changed[:3]))
