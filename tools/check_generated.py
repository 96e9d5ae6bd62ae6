#!/usr/bin/env python3
"""Checks that every committed generated file is what its generator writes now: runs each
tools/gen_*.py with --check. A generator whose published source is not installed answers with exit
status 77 and is skipped."""

import subprocess
import sys

import source_tree as tree

SOURCE_MISSING = 77


def check():
    problems = []
    generators = sorted((tree.ROOT / "tools").glob("gen_*.py"))
    for generator in generators:
        if '"--check"' not in generator.read_text(encoding="utf-8"):
            print(f"{generator.name}: skipped, it needs a source that nobody but its user has")
            continue
        run = subprocess.run([sys.executable, "-B", str(generator), "--check"], cwd=tree.ROOT,
                             capture_output=True, text=True, check=False)
        if run.returncode == SOURCE_MISSING:
            print(f"{generator.name}: skipped, {run.stdout.strip() or run.stderr.strip()}")
        elif run.returncode:
            problems.append(f"{generator.name}: {run.stdout}{run.stderr}")
    return tree.report(problems, f"output of {len(generators)} generators")


if __name__ == "__main__":
    sys.exit(check())
