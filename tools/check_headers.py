#!/usr/bin/env python3
"""Checks that each header compiles alone: public ones with the public include folder only."""

import argparse
import concurrent.futures
import os
import subprocess
import sys

import source_tree as tree

FLAGS = ["-std=c++20", "-fsyntax-only", "-Wall", "-Wextra", "-Wpedantic", "-Werror", "-x", "c++", "-"]


def problem_of(compiler, path):
    folder = path.parts[0]
    name = "/".join(path.parts[1:])
    folders = ["-Iinclude"] if folder == "include" else ["-Iinclude", "-Isrc"]
    # Twice: a header must also bear being included again.
    source = f'#include "{name}"\n#include "{name}"\n'
    run = subprocess.run([*compiler.split(), *folders, *FLAGS], input=source, text=True,
                         cwd=tree.ROOT, capture_output=True, check=False)
    return f"{path}: does not compile alone\n{run.stderr}" if run.returncode else None


def check():
    arguments = argparse.ArgumentParser(description=__doc__)
    arguments.add_argument("--compiler", default=os.environ.get("CXX", "c++"))
    compiler = arguments.parse_args().compiler
    other_platform = "src/platform/" + ("posix/" if "mingw" in compiler else "win32/")
    headers = [path for path in tree.files(".h") if path.parts[0] in ("include", "src")
               and not str(path).startswith(other_platform)]
    with concurrent.futures.ThreadPoolExecutor(os.cpu_count()) as pool:
        results = pool.map(lambda path: problem_of(compiler, path), headers)
        problems = [result for result in results if result]
    return tree.report(problems, f"{len(headers)} headers, each alone")


if __name__ == "__main__":
    sys.exit(check())
