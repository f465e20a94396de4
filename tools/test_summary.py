#!/usr/bin/env python3
"""The test command's summary.

    test_summary.py ctest LABEL JUNIT RESULTS EXPECTED...   one row per test of a ctest run
    test_summary.py row RESULTS LABEL NAME PASSED FAILED NOTE  one row by hand
    test_summary.py final RESULTS TIMES                       the summary, exit 1 on a failure

RESULTS is a tab-separated file of rows: label, name, cases passed, cases failed, note. JUNIT
is `ctest --output-junit` of a run that kept every test's whole output; a test's count of
cases is the one its gtest-like summary line prints. Every name in EXPECTED must have run.
"""
import re
import sys
import xml.etree.ElementTree as ET

COUNT = r"\[  {} *\] (\d+) (?:tests?|checks?|of)\b"


def count(out, word):
    found = re.findall(COUNT.format(word), out)
    return int(found[-1]) if found else None


def excerpt(out):
    """Each failed gtest case from its RUN line on, or a case that never finished; else the
    lines a checker marked FAILED; else the last 40 lines."""
    shown, case = [], None
    for line in out.splitlines():
        if line.startswith("[ RUN      ]"):
            case = [line]
        elif case is not None:
            case.append(line)
            if line.startswith("[       OK ]"):
                case = None
            elif re.match(r"\[  FAILED  \] .*\(\d+ ms\)$", line):
                shown, case = shown + case, None
    shown += case or []
    return shown or [l for l in out.splitlines() if l.startswith("FAILED ")] \
        or out.splitlines()[-40:]


def ctest_rows(label, junit, expected):
    try:
        cases = ET.parse(junit).getroot().iter("testcase")
    except (OSError, ET.ParseError) as e:
        print(f"--- {label}: no readable results in {junit}: {e}")
        cases = []
    rows, ran = [], set()
    for case in cases:
        name, out = case.get("name"), case.findtext("system-out") or ""
        ran.add(name)
        passed, failed = count(out, "PASSED"), count(out, "FAILED")
        skipped = count(out, "SKIPPED")
        note = f"{skipped} skipped" if skipped else ""
        if case.get("status") == "run":
            rows.append((label, name, passed or 1, 0, note or
                         ("" if passed is not None else "no count printed")))
            continue
        why = case.find("failure") if case.find("failure") is not None else case.find("skipped")
        why = (why.get("message") if why is not None else "") or case.get("status")
        rows.append((label, name, passed or 0, failed or 1, " ".join(filter(None, (note, why)))))
        print(f"--- what failed in {label} {name} (all of its output is in {junit})")
        print("\n".join(excerpt(out)))
    rows += [(label, e, 0, 1, "suite did not run") for e in expected if e not in ran]
    return rows


def line(label, name, passed, failed, note):
    if int(failed):
        return f"{label:<8} {name:<14} FAILED  {passed:>5} passed, {failed} failed {note}".rstrip()
    return f"{label:<8} {name:<14} passed  {passed:>5} cases {note}".rstrip()


def main(args):
    if len(args) >= 4 and args[0] == "ctest":
        rows = ctest_rows(args[1], args[2], args[4:])
        with open(args[3], "a", encoding="utf-8") as f:
            f.writelines("\t".join(map(str, r)) + "\n" for r in rows)
        for r in rows:
            print(line(*r))
        return 0
    if len(args) == 7 and args[0] == "row":
        with open(args[1], "a", encoding="utf-8") as f:
            f.write("\t".join(args[2:]) + "\n")
        print(line(*args[2:]))
        return 0
    if len(args) == 3 and args[0] == "final":
        with open(args[1], encoding="utf-8") as f:
            rows = [r.rstrip("\n").split("\t") for r in f if r.strip()]
        for r in rows:
            print(line(*r))
        passed = sum(int(r[2]) for r in rows)
        failed = sum(int(r[3]) for r in rows)
        print(f"time: {args[2]}")
        print("overall: " + ("PASSED" if passed and not failed else "FAILED"))
        print(f"{passed} passed, {failed} failed")
        return 0 if passed and not failed else 1
    print(__doc__, file=sys.stderr)
    return 2


if __name__ == "__main__":
    sys.exit(main(sys.argv[1:]))
