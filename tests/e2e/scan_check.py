#!/usr/bin/env python3
"""Compares what `varnel-cli scan --json` found with what the sample installers left.

    scan_check.py RECORD_DIR DRIVE_C

Checks the list first (list_check.py). RECORD_DIR is filled by scan_e2e.sh: samples.tsv;
snap/NAME.reg and snap/NAME.disk for the moments base, installed-ID (after each install, in samples.tsv order), prescan and
uninstalled-ID (after each sample's own uninstaller); all.out (`list --json --all`); and for
each run of the tool NAME.out, NAME.err and NAME.rc: scan-ID and rescan-ID (from the saved
record, after the uninstall). DRIVE_C is the prefix's C: drive.

A sample's footprint is what changed between the snapshots around its install.
data/scan_footprint.json says, for each sample, which footprint items a scanner is meant to
find ("find", with the scanner), which it may report or not ("may": the implementer's choice)
and which it must not report ("not", with the reason; "containers" are keys the installer made
on the way). Every footprint item must be named there. A scan must report every find item and
nothing but find and may items. After the uninstall, the scan must report exactly the find and
may items that the uninstaller left and that can still be reached (some are found only through
a key that the uninstaller removed). Prints one line per check and a gtest-like summary; exits 1
when a check fails.
"""
import os
import sys

from e2e_common import Checks, cli_run, load_samples, read_text
from footprint import (ROOTS, changes, entry_ids, is_noise, load_snapshot, load_table,
                       physical, physical_key, report_id, sample_sets, show, split_root,
                       value_text)
from list_check import check_list


def reported(data):
    """[(report id, data text, view flag)] of a scan's JSON, or None when it is not the
    documented form."""
    try:
        out = []
        for r in data["registry"]:
            if r["root"] not in ROOTS or not all(isinstance(r[f], str)
                                                  for f in ("key", "value", "data")):
                return None
            kind = "K" if r["value"] == r["data"] == "" else "V"
            out.append((report_id(kind, ROOTS[r["root"]], r["key"], r["value"]),
                        r["data"] if kind == "V" else None, r.get("is64BitView")))
        for f in data["files"]:
            if not isinstance(f["path"], str) or f["kind"] not in ("folder", "file"):
                return None
            out.append((("F", f["path"].rstrip("\\").lower()), f["kind"], None))
        return out
    except (KeyError, TypeError):
        return None


def check_run(checks, record, run, label, name):
    """The run exited 0 and printed one object of the documented form; its report ids."""
    out, err, rc, data = cli_run(record, run)
    items = reported(data)
    problem = (f"exit code {rc}, stderr: {err[:300]}" if rc != 0 else
               f"not the documented form: {out[:200]!r}" if items is None else
               f"program {data.get('program')!r}, not {name!r}" if data.get("program") != name
               else "")
    checks.check(f"{label}: exits 0 and prints the documented object", not problem, problem)
    return items or []


def compare(checks, label, items, sets, snap, is64, owner, sid):
    expected, allowed, named_not = sets
    seen, dupes = set(), set()
    for rid, _, _ in items:
        (dupes if rid in seen else seen).add(rid)
    checks.check(f"{label}: reports every item once", not dupes,
                 "; ".join(show(r) for r in sorted(dupes)[:5]))

    by_entry = {}
    for rid, entry in expected.items():
        by_entry.setdefault(id(entry), (entry, []))[1].append(rid)
    for entry, rids in by_entry.values():
        missing = [show(r) for r in rids if r not in seen]
        checks.check(f"{label}: {entry.why} finds {entry.label()} ({entry.form}, {len(rids)} "
                     f"items)", not missing, f"{len(missing)} missing: " + "; ".join(missing[:6]))

    extra = []
    for rid in sorted(seen - set(expected) - set(allowed)):
        p = physical(snap, rid, is64)
        who = owner.get(p, "wine")
        why = (f"named as not to be found: {named_not[p].why}" if p in named_not else
               "not in the registry or on disk" if not snap.has(p) else
               "of this sample but not in its table" if who == sid else
               "Wine's own" if who == "wine" else f"belongs to {who}")
        extra.append(f"{show(rid)} ({why})")
    checks.check(f"{label}: reports nothing else", not extra,
                 f"{len(extra)} more: " + "; ".join(extra[:8]))

    wrong = sorted({str(flag) for rid, _, flag in items if rid[0] != "F" and flag != is64})
    for rid, text, _ in items:
        value = snap.values.get(physical(snap, rid, is64)[1:]) if rid[0] == "V" else None
        want = value_text(value[2], value[3]) if value else None
        if want is not None and text != want:
            wrong.append(f"{show(rid)}: {text!r}, the registry holds {want!r}")
    checks.check(f"{label}: every registry item has the record's view flag ({is64}) and the "
                 "value data the registry holds", not wrong, "; ".join(wrong[:4]))


def load_owners(record, samples):
    """The prescan snapshot and who made each item, or the name of a missing snapshot."""
    owner, prev = {}, None
    for name in ["base"] + [f"installed-{s['id']}" for s in samples] + ["prescan"]:
        snap = load_snapshot(record, name)
        if snap is None:
            return name, None
        who = {"base": "wine", "prescan": "the test harness"}.get(name, name[len("installed-"):])
        for item in (snap.items() if prev is None else changes(prev, snap)):
            owner[item] = "wine" if is_noise(item) else who
        prev = snap
    return prev, owner


def check_table(checks, sid, entries, snap, owner, is64):
    """Every footprint item of the sample is named in its table."""
    named = set()
    for e in entries:
        named.update(physical(snap, rid, is64) for rid, _, _ in entry_ids(e, snap, is64))
        if e.form == "tree":  # unset default values are part of the subtree all the same
            phys = physical_key(snap, *split_root(e.path), is64)
            for k in [phys] + snap.subkeys(phys):
                named.add(("K", k))
                named.update(("V", k, n) for n in snap.value_names(k))
    own = {p for p, who in owner.items() if who == sid and snap.has(p)}
    unnamed = sorted(own - named)
    checks.check(f"{sid}: every item of its footprint ({len(own)}) is named in the table",
                 not unnamed, f"{len(unnamed)} unnamed: " + "; ".join(map(show, unnamed[:10])))


def check_samples(checks, record, samples):
    prescan, owner = load_owners(record, samples)
    if not checks.check("every snapshot was taken", owner is not None, f"{prescan} is missing"):
        return
    tables = load_table(prescan)
    _, _, _, every = cli_run(record, "all")
    for s in samples:
        sid, entries = s["id"], tables.get(s["id"])
        rec = next((r for r in every or [] if isinstance(r, dict) and str(r.get("keyPath", ""))
                    .lower().endswith("\\" + s["key"].lower())), None)
        if not checks.check(f"{sid}: the table names it and list --json holds its record",
                            entries and rec, "no table or no record"):
            continue
        is64 = bool(rec.get("is64BitView"))
        check_table(checks, sid, entries, prescan, owner, is64)
        items = check_run(checks, record, f"scan-{sid}", f"{sid}: scan", rec.get("name"))
        compare(checks, f"{sid}: scan", items, sample_sets(entries, prescan, is64), prescan,
                is64, owner, sid)

        after = load_snapshot(record, f"uninstalled-{sid}")
        urc = read_text(os.path.join(record, f"uninstall-{sid}.rc")).strip()
        if not checks.check(f"{sid}: its own uninstaller ran silently and ended with 0",
                            urc == "0" and after is not None, f"exit code {urc or '?'}"):
            continue
        leftovers = {p for p, who in owner.items() if who == sid and after.has(p)}
        label = f"{sid}: scan after its uninstaller"
        items = check_run(checks, record, f"rescan-{sid}", label, rec.get("name"))
        compare(checks, label, items, sample_sets(entries, after, is64, leftovers), after, is64,
                owner, sid)


def main():
    if len(sys.argv) != 3:
        print("usage: scan_check.py RECORD_DIR DRIVE_C", file=sys.stderr)
        return 2
    record, checks = sys.argv[1], Checks()
    check_list(checks, record, sys.argv[2])
    check_samples(checks, record, load_samples(record))
    return checks.summary()


if __name__ == "__main__":
    sys.exit(main())
