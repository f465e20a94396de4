#!/usr/bin/env python3
"""Checks what `varnel-cli` listed and removed of the browser add-ons that
tests/fixtures/browsers/make_profiles.sh made.

    addons_check.py RECORD_DIR

RECORD_DIR is filled by addons_e2e.sh: for each run NAME of the tool NAME.out, NAME.err and
NAME.rc; before.files and, after each uninstall run, NAME.files: "checksum  path" of every file
in the browsers' data folders; backup.files, the same for the backup folders. Prints one line
per check and a gtest-like summary; exits 1 when a check fails.
"""
import json
import os
import sys

from e2e_common import Checks, cli_run, read_text

CHROME_ID = "fihdebefihdebefihdebefihdebefihd"
TOOLBARS = {
    "Fixture Registered Toolbar": "C:\\Program Files\\Fixture Toolbar\\",
    "Fixture Rdf Toolbar (Firefox)": "\\extensions\\rdf@fixture.invalid\\",
    "Fixture Xpi Toolbar (Firefox)": "",
    "Fixture Chrome Toolbar (Chrome)": "\\Extensions\\" + CHROME_ID + "\\1.0_0\\",
}


def run(record, name):
    out, _, rc, parsed = cli_run(record, name)
    return parsed, rc, out


def files(record, name):
    """path -> checksum"""
    listing = {}
    for line in read_text(os.path.join(record, name + ".files")).splitlines():
        checksum, _, path = line.partition("  ")
        listing[path] = checksum
    return listing


def main():
    record = sys.argv[1]
    checks = Checks()

    extensions, rc, out = run(record, "extensions")
    found = {(e["browser"], e["id"]): e for e in extensions or []}
    rdf = found.get(("Firefox", "rdf@fixture.invalid"), {})
    xpi = found.get(("Firefox", "xpi@fixture.invalid"), {})
    chrome = found.get(("Chrome", CHROME_ID), {})
    checks.check("extensions lists the legacy add-on by its install.rdf",
                 rc == 0 and rdf.get("name") == "Fixture Rdf Toolbar"
                 and rdf.get("path", "").endswith("\\rdf@fixture.invalid\\install.rdf"), out)
    checks.check("extensions lists the packed add-on of extensions.json",
                 xpi.get("name") == "Fixture Xpi Toolbar" and xpi.get("version") == "1.0"
                 and xpi.get("path", "").endswith("\\extensions\\xpi@fixture.invalid.xpi"), out)
    checks.check("extensions lists the Chrome extension under its localised name",
                 chrome.get("name") == "Fixture Chrome Toolbar", out)

    records, rc, out = run(record, "list")
    shown = {r["name"]: r for r in records or [] if r.get("isToolbar") and not r.get("hidden")}
    for name, location in TOOLBARS.items():
        r = shown.get(name)
        ok = r is not None and r["uninstallString"] == "" and (
            r["installLocation"] == location if not location.startswith("\\")
            else r["installLocation"].endswith(location))
        checks.check(f"list shows the toolbar {name}", ok, json.dumps(r))
    checks.check("list shows no other toolbar", len(shown) == len(TOOLBARS), ", ".join(shown))

    before = files(record, "before")
    checks.check("the profiles were listed", len(before) >= 6, str(len(before)))
    previous = before
    for name, gone_suffix in (("rdf", "/rdf@fixture.invalid/install.rdf"),
                              ("xpi", "/extensions/xpi@fixture.invalid.xpi")):
        result, rc, out = run(record, name)
        programs = (result or {}).get("programs") or [{}]
        checks.check(f"uninstall {name}: removed, nothing run",
                     rc == 0 and programs[0].get("addonRemoved") is True
                     and programs[0].get("started") is False, out)
        after = files(record, name)
        gone = sorted(set(previous) - set(after))
        changed = sorted(p for p in after if previous.get(p) != after[p])
        checks.check(f"uninstall {name}: only the add-on's file went",
                     len(gone) == 1 and gone[0].endswith(gone_suffix) and not changed,
                     f"gone {gone}, changed or new {changed}")
        checks.check(f"uninstall {name}: the file is in a backup",
                     previous.get(gone[0] if gone else "") in files(record, "backup").values())
        previous = after

    result, rc, out = run(record, "chrome")
    programs = (result or {}).get("programs") or [{}]
    checks.check("uninstall chrome: left for the browser with its message",
                 rc == 1 and programs[0].get("removeInBrowser") == "Chrome"
                 and not programs[0].get("addonRemoved"), out)
    checks.check("uninstall chrome: every file stays", files(record, "chrome") == previous)
    return checks.summary()


if __name__ == "__main__":
    sys.exit(main())
