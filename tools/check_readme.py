#!/usr/bin/env python3
"""Checks README.md: its program is examples/readme.cpp to the last character, prints what the README
says, its links lead somewhere, and it is short enough to be read."""

import argparse
import re
import subprocess
import sys

import source_tree as tree

LONGEST = 150


def blocks(text, language):
    return re.findall(rf"^```{language}\n(.*?)^```$", text, re.MULTILINE | re.DOTALL)


def check():
    arguments = argparse.ArgumentParser(description=__doc__)
    arguments.add_argument("--program", help="examples/readme.cpp, built")
    program = arguments.parse_args().program
    text, problems = tree.text("README.md"), []

    if text.count("\n") > LONGEST:
        problems.append(f"README.md: longer than {LONGEST} lines")
    if blocks(text, "cpp")[0] != tree.text("examples/readme.cpp"):
        problems.append("README.md: its program differs from examples/readme.cpp")
    for link in re.findall(r"\]\(([^)#:]+)\)", text):
        if not (tree.ROOT / link).exists():
            problems.append(f"README.md: there is no {link}")
    if program:
        run = subprocess.run([program], capture_output=True, check=False)
        printed = run.stdout.decode("utf-8").replace("\r\n", "\n")
        if run.returncode or printed != blocks(text, "text")[0]:
            problems.append(f"README.md: its program prints\n{printed}")
    return tree.report(problems, "README.md")


if __name__ == "__main__":
    sys.exit(check())
