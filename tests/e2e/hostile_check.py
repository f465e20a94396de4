#!/usr/bin/env python3
"""Checks what the console tool did with hostile uninstall entries.

    hostile_check.py RECORD_DIR SAMPLE_FOLDER

RECORD_DIR is filled by hostile_e2e.sh: hostile.tsv (name, value type, install location,
uninstall command, one entry a line); for the N-th entry scan-N and uninstall-N (.out, .err,
.rc); snap/ holds the registry and disk snapshots before and after. SAMPLE_FOLDER is the
installed sample's folder. Prints one line per check and a gtest-like summary; exits 1 when a
check fails.
"""
import json
import os
import sys

from e2e_common import Checks, cli_run, read_text
from footprint import ROOTS, is_noise, load_snapshot

UNINSTALL = "hkcu\\software\\microsoft\\windows\\currentversion\\uninstall\\"


def own_key(name):
    return UNINSTALL + name.replace(" ", "").lower()


def is_own(item, keys):
    """Whether a snapshot item is one of KEYS or lies in it."""
    return any(item[1].lower() == k or item[1].lower().startswith(k + "\\") for k in keys)


def check_entry(checks, record, n, name, label):
    """The scan offers nothing but the entry's own key; the uninstall ran the leftover scan,
    which offers no file, and deleted nothing but that key."""
    _, err, rc, result = cli_run(record, f"scan-{n}")
    result = result if isinstance(result, dict) else {}
    offered = [str(f.get("path")) for f in result.get("files", [])] + [
        k for k in ((ROOTS.get(r.get("root"), "?") + "\\" + str(r.get("key", "")).strip("\\"))
                    .lower() for r in result.get("registry", [])) if not k.startswith(own_key(name))]
    checks.check(f"{label}: scan exits 0 and offers no file, no folder and no key but the "
                 "entry's own", rc == 0 and "files" in result and not offered,
                 f"exit code {rc}, stderr {err[:200]!r}; " + "; ".join(offered[:6]))
    _, err, rc, result = cli_run(record, f"uninstall-{n}")
    result = result if isinstance(result, dict) else {}
    # The leftover scan must have run, or deleting nothing would prove nothing.
    leftovers = result.get("leftovers") or []
    checks.check(f"{label}: uninstall ran the leftover scan, which offers no file",
                 len(leftovers) == 1 and leftovers[0].get("program") == name and
                 not leftovers[0].get("files"), f"stderr {err[:200]!r} " + json.dumps(leftovers)[:300])
    deleted = result.get("deleted") or {}
    tail = own_key(name).split("\\", 1)[1]
    gone = deleted.get("files", []) + deleted.get("atRestart", []) + [
        k for k in deleted.get("registry", []) if tail not in str(k).lower()]
    checks.check(f"{label}: uninstall deletes no file and no key but the entry's own",
                 not gone, "; ".join(map(str, gone[:6])))


def main():
    if len(sys.argv) != 3:
        print("usage: hostile_check.py RECORD_DIR SAMPLE_FOLDER", file=sys.stderr)
        return 2
    record, sample = sys.argv[1], sys.argv[2].lower().rstrip("\\")
    checks = Checks()
    rows = [line.split("\t") for line in
            read_text(os.path.join(record, "hostile.tsv")).splitlines() if line.strip()]
    for n, (name, _, location, command) in enumerate(rows, 1):
        check_entry(checks, record, n, name, f"{name} ({location}, {command})")

    before, after = load_snapshot(record, "before"), load_snapshot(record, "after")
    if not checks.check("both snapshots were taken", before and after):
        return checks.summary()
    keys = [own_key(name) for name, *_ in rows]
    checks.check("the entries were written", all(k in before.keys for k in keys), "; ".join(keys))
    old, new = before.items(), after.items()
    lost = sorted(str(i) for i in old if i not in new and not is_noise(i) and not is_own(i, keys))
    checks.check("nothing was deleted but the entries' own keys", not lost, "\n".join(lost[:40]))
    changed = sorted(str(i) for i, data in old.items()
                     if i in new and new[i] != data and not is_noise(i) and not is_own(i, keys))
    checks.check("no value outside the entries' own keys changed", not changed,
                 "\n".join(changed[:40]))
    files = [p for p in before.below(sample)] + [sample]
    checks.check(f"the sample's folder kept all its {len(files)} files and folders",
                 len(files) > 5 and all(after.has(("F", p)) for p in files),
                 "; ".join(p for p in files if not after.has(("F", p))))
    return checks.summary()


if __name__ == "__main__":
    sys.exit(main())
