#!/usr/bin/env python3
"""Checks what `varnel-cli uninstall` did to real installed programs: what only the real thing
shows. The unit tests prove the log's format, the output forms and the quiet-form rules.

    uninstall_check.py RECORD_DIR DRIVE_C

RECORD_DIR is filled by uninstall_e2e.sh: samples.tsv; for each run NAME of the tool NAME.out,
NAME.err and NAME.rc (list: `list --json`, the install folders); for the two uninstall runs of
samples RUN.files (the files left in the Program Files folders the moment the tool returned)
and RUN.processes (the processes running then), and before.processes; snap/ holds the registry
and disk snapshots (footprint.py) others, installed, cleaned and restored. Prints one line per
check and a gtest-like summary; exits 1 when a check fails.
"""
import os
import re
import sys

from e2e_common import Checks, cli_run, load_samples, read_text
from footprint import ROOTS, changes, is_noise, load_snapshot, load_table, physical, sample_sets

# What may run after an uninstall besides what ran before it: the desktop the tool asks for,
# consoles, and the helper that lists the processes.
ALLOWED_NEW = {"explorer.exe", "conhost.exe", "varnel-e2e-helper.exe"}


def process_names(record, name):
    names = []
    for line in read_text(os.path.join(record, name + ".processes")).splitlines():
        cols = line.split("\t")
        if len(cols) == 3:
            names.append(cols[2].lower())
    return names


# The samples of one quiet run were uninstalled, in the order given, and the tool had waited:
# their programs were gone and nothing they started still ran when it returned.
def check_quiet_run(checks, record, run_name, ids, names, folders, before):
    out, err, rc, result = cli_run(record, run_name, {})
    checks.check(f"{run_name}: exit code 0", rc == 0, f"{rc} {err}")
    outcomes = [(p.get("name"), p.get("started"), p.get("exitCode"), p.get("stillListed"))
                for p in result.get("programs", []) if not p.get("byScan")]
    checks.check(f"{run_name}: each started, ended with 0 and is no longer listed",
                 outcomes == [(names[i], True, 0, False) for i in ids], out)
    left = read_text(os.path.join(record, run_name + ".files")).lower().splitlines()
    for sample in ids:
        folder = folders.get(sample, "?").lower().replace("\\", "/")
        programs = [f for f in left if f.startswith(folder + "/") and re.search(r"\.(exe|dll)$", f)]
        checks.check(f"{run_name}: {sample}'s programs were gone when the tool returned",
                     not programs, ", ".join(programs))
    new = [n for n in process_names(record, run_name) if n not in before and n not in ALLOWED_NEW]
    checks.check(f"{run_name}: nothing the uninstallers started still ran", not new, ", ".join(new))
    return result.get("logFile") or ""


def deleted_item(text):
    """A deleted item as the tool names it, as a snapshot names it: a file or folder, or
    HKEY_...\\key [| value - data]; None for a root the snapshots do not hold."""
    if not text.upper().startswith("HKEY_"):
        return ("F", text.lower())
    location, _, value = text.partition(" | ")
    root, _, key = location.partition("\\")
    root = ROOTS.get(root.upper())
    if root not in ("HKLM", "HKCU"):
        return None
    key = root + "\\" + key.strip("\\")
    if value:
        return ("V", key.lower(), value.rsplit(" - ", 1)[0].lower())
    return ("K", key.lower())


def present(snap, item):
    """ITEM in SNAP, in the 64-bit view or the 32-bit one."""
    if snap.has(item):
        return True
    if item[0] in ("K", "V"):
        moved = re.sub(r"^hklm\\software\\", r"hklm\\software\\wow6432node\\", item[1])
        return snap.has((item[0], moved) + item[2:])
    return False


# Notes' leftovers deleted by `uninstall --advanced --delete`: what its installer added is
# gone, nothing that was there before it (Windows, the profile, the other samples) went,
# and `restore latest` put back every item the tool deleted.
def check_cleanup(checks, record, name):
    out, err, rc, result = cli_run(record, "notes", {})
    leftovers = result.get("leftovers") or [{}]
    deleted = result.get("deleted") or {}
    checks.check("notes: leftovers found and deleted, backed up under an id",
                 leftovers[0].get("program") == name and leftovers[0].get("count", 0) > 0 and
                 bool(deleted.get("files")) and isinstance(result.get("backup"), str), out)
    others, installed, cleaned, restored = (load_snapshot(record, name) for name in
                                            ("others", "installed", "cleaned", "restored"))
    # What the scan is documented to leave (shared vendor keys and folders, containers other
    # programs register below, the local application data) and may leave, scan_check's table says.
    _, allowed, kept = sample_sets(load_table(installed)["notes"], installed, True)
    kept = set(kept) | {physical(installed, rid, True) for rid in allowed}
    own = {i for i in changes(others, installed) if not is_noise(i)}
    left = sorted(str(i) for i in own if cleaned.has(i) and i not in kept)
    checks.check("notes: nothing its installer wrote is left, but what the scan leaves "
                 "by design", not left, "\n".join(left))
    lost = sorted(str(i) for i in others.items() if not is_noise(i) and not cleaned.has(i))
    checks.check("notes: Windows, the profile and the other samples kept everything",
                 not lost, "\n".join(lost[:40]))

    out, err, rc, restore = cli_run(record, "restore", {})
    checks.check("restore latest: exit code 0, the notes backup, nothing failed",
                 rc == 0 and restore.get("id") == result.get("backup") and
                 not restore.get("failed"), f"{rc} {out} {err}")
    items = [deleted_item(t) for t in deleted.get("registry", []) + deleted.get("files", [])]
    missing = sorted(str(i) for i in items if i and not present(restored, i))
    checks.check("restore latest: every deleted item is back", bool(items) and not missing,
                 "\n".join(missing))


def main():
    record, drive_c = sys.argv[1], sys.argv[2]
    checks = Checks()
    samples = {s["id"]: s for s in load_samples(record)}
    names = {i: samples[i]["name"] for i in ("notes", "sync", "ledger")}
    before = set(process_names(record, "before"))
    checks.check("the processes before were listed", bool(before))
    _, _, _, listed = cli_run(record, "list")
    folders = {i: r["installLocation"][3:].rstrip("\\") for i in names for r in listed or []
               if r.get("name") == names[i] and r.get("installLocation")}
    checks.check("every sample's install folder is listed", sorted(folders) == sorted(names),
                 str(folders))

    # NSIS 64-bit alone; then NSIS 32-bit, whose /S comes from its uninstaller's own bytes,
    # and the MSI sample together.
    log_file = check_quiet_run(checks, record, "notes", ["notes"], names, folders, before)
    check_cleanup(checks, record, names["notes"])
    check_quiet_run(checks, record, "pair", ["sync", "ledger"], names, folders, before)

    out, err, rc, _ = cli_run(record, "stubborn", {})
    checks.check("stubborn: exit code 3, the uninstaller's own code, progress on stderr",
                 rc == 3 and "Stubborn Tool: still listed after its uninstaller ended "
                 "(exit code 5)\n" in out and "Standard Uninstall Stubborn Tool\n" in err,
                 f"{rc} {out} {err}")
    out, err, rc, _ = cli_run(record, "plain", {})
    checks.check("plain: exit code 1, skipped for want of a quiet form",
                 rc == 1 and "Plain Tool: skipped" in out, f"{rc} {out} {err}")

    # Every run that ran an uninstaller appended its blocks to the day's log; after notes' own
    # block, the deletion's, one per program cleaned (its toolbar too, though nothing ran for it).
    log = b""
    if log_file.lower().startswith("c:\\"):
        try:
            with open(os.path.join(drive_c, log_file[3:].replace("\\", "/")), "rb") as f:
                log = f.read()
        except OSError:
            pass
    ran = re.findall(r"^\[(.*)\]\r$", log.decode("utf-8", errors="replace"), re.M)
    checks.check("the day's log has a block per program run, in order",
                 ran == [names["notes"], names["notes"], names["notes"] + " Web Clipper",
                         names["sync"], names["ledger"], "Stubborn Tool"],
                 f"{log_file}: {ran}")
    return checks.summary()


if __name__ == "__main__":
    sys.exit(main())
