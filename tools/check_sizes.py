#!/usr/bin/env python3
"""Prints how large the code and the library are; fails on hand-written files that grew too long."""

import argparse
import collections
import os
import sys

import source_tree as tree

SECOND_LOOK = 600
TOO_LONG = 1000


def layer_of(path):
    return "/".join(path.parts[:2]) if path.parts[0] == "src" else path.parts[0]


def check():
    arguments = argparse.ArgumentParser(description=__doc__)
    arguments.add_argument("--library", dest="built", help="the built library, to print its size")
    library = arguments.parse_args().built

    lines, generated, problems = collections.Counter(), collections.Counter(), []
    for path in tree.files(".h", ".cpp", ".py"):
        count = tree.text(path).count("\n")
        if tree.is_generated(path):
            generated[layer_of(path)] += count
            continue
        lines[layer_of(path)] += count
        if count > TOO_LONG:
            problems.append(f"{path}: {count} lines: split it by ideas")
        elif count > SECOND_LOOK:
            print(f"{path}: {count} lines deserve a second look")
    for layer in sorted(lines | generated):
        print(f"{layer:16} {lines[layer]:7} lines written {generated[layer]:7} generated")
    print(f"{'all':16} {lines.total():7} lines written {generated.total():7} generated")
    tests = lines["tests"] + lines["fuzz"] + lines["bench"]
    print(f"tests, fuzz targets and benchmarks: {100 * tests // max(1, lines.total())} % of what is written")
    if library:
        print(f"{os.path.basename(library)}: {os.path.getsize(library)} bytes")
    return tree.report(problems, "sizes of files")


if __name__ == "__main__":
    sys.exit(check())
