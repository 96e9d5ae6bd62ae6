#!/usr/bin/env python3
"""Checks that includes run downwards only (tools/layers.txt), that no headers include each other in a
circle, and that nothing above src/platform includes a header of the operating system."""

import re
import sys

import source_tree as tree

INCLUDE = re.compile(r'^\s*#\s*include\s*([<"])([^>"]+)[>"]')
INTRINSICS = {"immintrin.h"}
FOREIGN = {"cli": re.compile(r"^CLI/")}  # the command-line library of the command alone
SEAM = re.compile(r"^cli/console_(posix|win32)\.cpp$")  # the command's own border to the system


def read_rules(lines):
    rules = {}
    for line in lines:
        line = line.split("#")[0].strip()
        if line:
            folder, allowed = line.split(":")
            rules[folder.strip()] = set(allowed.split())
    return rules


def folder_of(path):
    """The layer that a file belongs to, or None for files outside them (tests, benchmarks)."""
    if path.parts[0] == "src" and len(path.parts) > 2:
        return path.parts[1]
    return path.parts[0] if path.parts[0] in ("include", "cli", "examples") else None


def target_of(name):
    return "include" if name.startswith("zantrel/") else name.split("/")[0]


def includes(text):
    for number, line in enumerate(text.splitlines(), 1):
        match = INCLUDE.match(line)
        if match:
            yield number, match[1] == "<", match[2]


def check_file(path, text, rules):
    folder = folder_of(path)
    if folder is None:
        return
    if folder not in rules:
        yield f"{path}:1: folder {folder} is not in tools/layers.txt"
        return
    for number, system, name in includes(text):
        if system and not name.startswith("zantrel/"):
            standard = "/" not in name and "." not in name
            intrinsics = name in INTRINSICS and path.stem.endswith("_x86")
            foreign = folder in FOREIGN and FOREIGN[folder].match(name)
            seam = SEAM.match(str(path))
            if folder != "platform" and not (standard or intrinsics or foreign or seam):
                yield f"{path}:{number}: <{name}> is a system header: it belongs in src/platform"
        elif "/" not in name and folder in ("cli", "examples"):
            continue  # its own helpers, beside it
        else:
            target = target_of(name)
            if target != folder and target not in rules[folder]:
                yield f"{path}:{number}: {folder} must not include {name}"


def circles(graph):
    """Circles in the include graph, each once, as lists of headers."""
    state, found = {}, []
    for start in graph:
        stack = [(start, iter(graph.get(start, ())))] if start not in state else []
        if stack:
            state[start] = "open"
        while stack:
            node, rest = stack[-1]
            following = next(rest, None)
            if following is None:
                state[node] = "done"
                stack.pop()
            elif following not in state:
                state[following] = "open"
                stack.append((following, iter(graph.get(following, ()))))
            elif state[following] == "open":
                names = [name for name, _ in stack]
                found.append(names[names.index(following):] + [following])
    return found


def check():
    rules = read_rules(tree.text("tools/layers.txt").splitlines())
    problems, graph = [], {}
    sources = tree.files(".h", ".cpp", ".inc")
    for path in sources:
        text = tree.text(path)
        problems += check_file(path, text, rules)
        if path.suffix == ".h" and path.parts[0] in ("src", "include"):
            own = "/".join(path.parts[1:])
            graph[own] = [name for _, _, name in includes(text)]
    problems += ["circle of headers: " + " -> ".join(circle) for circle in circles(graph)]
    return tree.report(problems, f"layers of {len(sources)} files")


if __name__ == "__main__":
    sys.exit(check())
