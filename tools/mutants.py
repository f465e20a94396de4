#!/usr/bin/env python3
"""Plants each fault of tools/mutants.txt alone in a worktree, rebuilds, runs
the unit and platform suites and records whether they caught it.

  tools/mutants.py WORKTREE HOST_BUILD [WIN_BUILD] [--only NAME,...] > table.tsv

Host faults run the ASan build's tests; "win" faults the windows build's tests
under Wine in one prefix made for the run (skipped without WIN_BUILD). A fault
that does not compile is reported as such, never as caught. Every file is
restored after its fault, also on Ctrl-C."""
import os, re, subprocess, sys, tempfile

TOOLS = os.path.dirname(os.path.abspath(__file__))
TESTS = ["varnel_platform_tests", "varnel_unit_tests"]  # the quick one first


def faults(path):
    text = open(path, encoding="utf-8").read()
    pattern = r"^### (\S+) (\S+) (\S+)\n@ (\S+)\n<<<\n(.*?)^===\n(.*?)^>>>$"
    return re.findall(pattern, text, re.S | re.M)


def run(cmd, env=None, timeout=900):
    try:
        return subprocess.run(cmd, stdout=subprocess.DEVNULL, stderr=subprocess.DEVNULL,
                              env=env, timeout=timeout).returncode
    except subprocess.TimeoutExpired:
        return 124


def verdict(suite, build, env):
    if run(["ninja", "-C", build, "-j2"] + TESTS) != 0:
        return "no-build"
    for test in TESTS:
        exe = os.path.join(build, "tests", test)
        cmd = ["bash", os.path.join(TOOLS, "wine-run.sh"), exe + ".exe"] if suite == "win" else [exe]
        if run(cmd + ["--gtest_brief=1", "--gtest_fail_fast"], env) != 0:
            return "caught"
    return "missed"


def main():
    args = [a for a in sys.argv[1:] if not a.startswith("--only")]
    only = [a.split("=", 1)[1].split(",") for a in sys.argv[1:] if a.startswith("--only=")]
    tree, host, win = args[0], os.path.abspath(args[1]), (os.path.abspath(args[2]) if len(args) > 2 else None)
    env = dict(os.environ, VARNEL_WINE_TIMEOUT="300")
    prefix = None
    if win:
        prefix = tempfile.mkdtemp(prefix="mutants-wine.")
        subprocess.run(["bash", os.path.join(TOOLS, "wine-prefix.sh"), "create", prefix], check=True,
                       stdout=subprocess.DEVNULL)
        env["VARNEL_WINE_DIR"] = prefix
    print("fault\tlayer\tresult", flush=True)
    try:
        for name, layer, suite, file, old, new in faults(os.path.join(TOOLS, "mutants.txt")):
            if only and name not in only[0]:
                continue
            path = os.path.join(tree, file)
            original = open(path, encoding="utf-8").read()
            if original.count(old) != 1:
                print(f"{name}\t{layer}\tsnippet-not-unique", flush=True)
                continue
            if suite == "win" and not win:
                print(f"{name}\t{layer}\tskipped", flush=True)
                continue
            try:
                open(path, "w", encoding="utf-8").write(original.replace(old, new))
                result = verdict(suite, win if suite == "win" else host, env)
            finally:
                open(path, "w", encoding="utf-8").write(original)
            print(f"{name}\t{layer}\t{result}", flush=True)
    finally:
        if prefix:
            subprocess.run(["bash", os.path.join(TOOLS, "wine-prefix.sh"), "destroy", prefix])


if __name__ == "__main__":
    main()
