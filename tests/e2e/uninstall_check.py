#!/usr/bin/env python3
"""Checks what `varnel-cli uninstall` and `varnel-cli logs` did to real installed programs.

    uninstall_check.py RECORD_DIR DRIVE_C

RECORD_DIR is filled by uninstall_e2e.sh: samples.tsv; folders.tsv (sample id, install folder
relative to C:\\); for each run NAME of the tool NAME.out, NAME.err and NAME.rc; for the two
uninstall runs of samples RUN.files (what was left in their folders the moment the tool
returned) and RUN.processes (the processes running then), and before.processes. Prints one line
per check and a gtest-like summary; exits 1 when a check fails.
"""
import json
import os
import re
import sys

from e2e_common import Checks, load_samples, read_text

# What may run after an uninstall besides what ran before it: the desktop the tool asks for,
# consoles, and the helper that lists the processes.
ALLOWED_NEW = {"explorer.exe", "conhost.exe", "varnel-e2e-helper.exe"}
MSI_CODE = "{6BA67843-0D45-48E2-9A39-FC786CBE3C43}"


def run(record, name):
    out = read_text(os.path.join(record, name + ".out"))
    err = read_text(os.path.join(record, name + ".err"))
    rc = read_text(os.path.join(record, name + ".rc")).strip()
    try:
        parsed = json.loads(out)
    except ValueError:
        parsed = None
    return out, err, int(rc) if rc.lstrip("-").isdigit() else None, parsed


def process_names(record, name):
    names = []
    for line in read_text(os.path.join(record, name + ".processes")).splitlines():
        cols = line.split("\t")
        if len(cols) == 3:
            names.append(cols[2].lower())
    return names


def host_path(drive_c, windows_path):
    if not windows_path or not windows_path.lower().startswith("c:\\"):
        return ""
    return os.path.join(drive_c, windows_path[3:].replace("\\", "/"))


def check_program(checks, run_name, item, name, command, exit_code, still_listed):
    checks.check(f"{run_name}: {name} reported", item.get("name") == name, str(item))
    checks.check(f"{run_name}: {name} command", command(item.get("command", "")),
                 item.get("command"))
    checks.check(f"{run_name}: {name} started", item.get("started") is True and
                 item.get("skipped") is None, str(item))
    checks.check(f"{run_name}: {name} exit code", item.get("exitCode") == exit_code,
                 str(item.get("exitCode")))
    checks.check(f"{run_name}: {name} still listed is {still_listed}",
                 item.get("stillListed") is still_listed, str(item))


def check_aftermath(checks, record, run_name, ids, before):
    left = [line.split("\t") for line in
            read_text(os.path.join(record, run_name + ".files")).splitlines() if line]
    for sample in ids:
        programs = [f for i, f in left if i == sample and re.search(r"\.(exe|dll)$", f, re.I)]
        checks.check(f"{run_name}: {sample}'s programs were gone when the tool returned",
                     not programs, ", ".join(programs))
    new = [n for n in process_names(record, run_name) if n not in before and n not in ALLOWED_NEW]
    checks.check(f"{run_name}: nothing the uninstallers started still ran", not new, ", ".join(new))


def main():
    record, drive_c = sys.argv[1], sys.argv[2]
    checks = Checks()
    samples = {s["id"]: s for s in load_samples(record)}
    names = {i: samples[i]["name"] for i in ("notes", "sync", "ledger")}
    before = set(process_names(record, "before"))
    checks.check("the processes before were listed", bool(before))
    folders = [line.split("\t")[0] for line in
               read_text(os.path.join(record, "folders.tsv")).splitlines() if line]
    checks.check("every sample's install folder is known", sorted(folders) == sorted(names),
                 str(folders))

    out, err, rc, notes = run(record, "notes")
    checks.check("notes: exit code 0", rc == 0, f"{rc} {err}")
    programs = (notes or {}).get("programs", [])
    checks.check("notes: one program", len(programs) == 1, out)
    if programs:
        check_program(checks, "notes", programs[0], names["notes"],
                      lambda c: c.lower().endswith("uninst.exe\" /s"), 0, False)
    check_aftermath(checks, record, "notes", ["notes"], before)
    log_file = (notes or {}).get("logFile") or ""
    checks.check("notes: the day's log is named", re.search(r"\\Log\\\d{4}-\d\d-\d\d\.log$",
                                                           log_file) is not None, log_file)

    out, err, rc, pair = run(record, "pair")
    checks.check("pair: exit code 0", rc == 0, f"{rc} {err}")
    programs = (pair or {}).get("programs", [])
    checks.check("pair: two programs in the order given", [p.get("name") for p in programs] ==
                 [names["sync"], names["ledger"]], out)
    if len(programs) == 2:
        # Sync's entry names no quiet form: /S comes from its uninstaller's own bytes.
        check_program(checks, "pair", programs[0], names["sync"],
                      lambda c: c.lower().endswith("uninst.exe\" /s"), 0, False)
        check_program(checks, "pair", programs[1], names["ledger"],
                      lambda c: c == f"MsiExec.exe /X{MSI_CODE} /qn /norestart", 0, False)
    checks.check("pair: the same day's log", (pair or {}).get("logFile") == log_file)
    check_aftermath(checks, record, "pair", ["sync", "ledger"], before)

    out, err, rc, stubborn = run(record, "stubborn")
    checks.check("stubborn: exit code 3", rc == 3, f"{rc} {err}")
    programs = (stubborn or {}).get("programs", [])
    if checks.check("stubborn: one program", len(programs) == 1, out):
        check_program(checks, "stubborn", programs[0], "Stubborn Tool",
                      lambda c: c == "C:\\windows\\system32\\cmd.exe /c exit 5", 5, True)

    out, err, rc, plain = run(record, "plain")
    checks.check("plain: exit code 1", rc == 1, f"{rc} {err}")
    programs = (plain or {}).get("programs", [])
    if checks.check("plain: one program", len(programs) == 1, out):
        item = programs[0]
        checks.check("plain: skipped for want of a quiet form",
                     "no quiet form known" in (item.get("skipped") or ""), str(item))
        checks.check("plain: not started", item.get("started") is False and
                     item.get("exitCode") is None and item.get("stillListed") is True, str(item))
    checks.check("plain: nothing ran, nothing logged", (plain or {}).get("logFile", 0) is None)

    out, err, rc, _ = run(record, "unknown")
    checks.check("unknown: exit code 1, nothing printed", rc == 1 and not out, f"{rc} {out}")
    checks.check("unknown: the name is told", 'no program "No Such Program"' in err, err)

    out, err, rc, _ = run(record, "badopt")
    checks.check("badopt: exit code 2 with the usage", rc == 2 and not out and
                 "usage: varnel-cli" in err and "--no-such-option" in err, f"{rc} {err}")

    out, err, rc, _ = run(record, "text")
    checks.check("text: exit code 3", rc == 3, f"{rc} {err}")
    checks.check("text: the result line",
                 "Stubborn Tool: still listed after its uninstaller ended (exit code 5)\n" in out
                 and f"log: {log_file}\n" in out, out)
    checks.check("text: progress on stderr", "Standard Uninstall Stubborn Tool\n" in err, err)

    out, err, rc, logs = run(record, "logs")
    checks.check("logs: exit code 0", rc == 0, f"{rc} {err}")
    entry = logs[0] if isinstance(logs, list) and len(logs) == 1 else {}
    checks.check("logs: the day's log listed", entry.get("path") == log_file and
                 entry.get("name") == log_file.split("\\")[-1], out)
    raw = b""
    try:
        with open(host_path(drive_c, log_file), "rb") as f:
            raw = f.read()
    except OSError:
        pass
    checks.check("logs: its size", entry.get("size") == len(raw), f"{entry.get('size')} {len(raw)}")
    checks.check("logs: its time", re.fullmatch(r"\d{4}-\d\d-\d\d \d\d:\d\d:\d\d",
                                                entry.get("time", "")) is not None, out)

    checks.check("log: UTF-8 with a byte-order mark", raw.startswith(b"\xef\xbb\xbf"))
    checks.check("log: CR LF line ends", raw.count(b"\n") > 0 and
                 raw.count(b"\n") == raw.count(b"\r\n"))
    text = raw.decode("utf-8", errors="replace").lstrip("\ufeff")
    lines = text.split("\r\n")
    blocks = [(lines[i][1:-1], lines[i + 1], lines[i + 2], lines[i + 3])
              for i in range(len(lines) - 3) if re.fullmatch(r"\[.*\]", lines[i])]
    checks.check("log: one block per program that ran, in order",
                 [b[0] for b in blocks] == [names["notes"], names["sync"], names["ledger"],
                                            "Stubborn Tool", "Stubborn Tool"],
                 str([b[0] for b in blocks]))
    checks.check("log: every block has its operation, date and empty line",
                 all(b[1] == "Operation:Standard Uninstall" and b[2].startswith("Date:") and
                     b[3] == "" for b in blocks))
    checks.check("log: its header", lines[:2] == ["=" * 36, "Varnel Uninstaller Log"], str(lines[:2]))

    out, err, rc, _ = run(record, "show")
    checks.check("show: exit code 0", rc == 0, f"{rc} {err}")
    checks.check("show: the log as text", out == text.replace("\r\n", "\n"), out[:200])

    out, err, rc, after = run(record, "after")
    listed = {r.get("name") for r in after or []}
    for sample, name in names.items():
        checks.check(f"after: {sample} no longer listed", name not in listed)
    checks.check("after: the stubborn and plain entries still listed",
                 {"Stubborn Tool", "Plain Tool"} <= listed, str(sorted(listed)))
    return checks.summary()


if __name__ == "__main__":
    sys.exit(main())
