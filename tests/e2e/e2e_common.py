"""Shared by the end-to-end checkers: the check counter with the summary tools/test.sh reads,
file reading, and the sample table."""
import json
import os

SAMPLE_COLUMNS = ("id", "installer", "source", "root", "view", "key", "program", "name",
                  "publisher", "version", "colour")


class Checks:
    def __init__(self):
        self.total = 0
        self.failed = 0

    def check(self, name, ok, detail=""):
        self.total += 1
        if ok:
            print(f"ok {name}")
        else:
            self.failed += 1
            print(f"FAILED {name}" + (f": {detail}" if detail else ""))
        return ok

    def summary(self):
        passed = self.total - self.failed
        print(f"[  PASSED  ] {passed} checks.")
        if self.failed:
            print(f"[  FAILED  ] {self.failed} of {self.total} checks.")
        return 1 if self.failed else 0


def read_text(path):
    try:
        with open(path, encoding="utf-8", errors="replace") as f:
            return f.read()
    except OSError:
        return ""


def cli_run(record, name, unparsed=None):
    """One run of the tool as the scripts record it: stdout, stderr, the exit code (None when
    unknown) and stdout read as JSON (UNPARSED when it is not)."""
    out = read_text(os.path.join(record, name + ".out"))
    err = read_text(os.path.join(record, name + ".err"))
    rc = read_text(os.path.join(record, name + ".rc")).strip()
    try:
        parsed = json.loads(out)
    except ValueError:
        parsed = unparsed
    return out, err, int(rc) if rc.lstrip("-").isdigit() else None, parsed


def load_samples(record):
    """The rows of RECORD/samples.tsv as dicts keyed by SAMPLE_COLUMNS."""
    samples = []
    for line in read_text(os.path.join(record, "samples.tsv")).splitlines():
        if not line or line.startswith("#"):
            continue
        cols = line.split("\t")
        samples.append(dict(zip(SAMPLE_COLUMNS, cols)))
    return samples
