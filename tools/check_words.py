#!/usr/bin/env python3
"""Checks the text of the tree for what must not stand in it: machine paths, notes to oneself, calls
that only one folder may make, untidy line ends. Each rule is a row of RULES."""

import re
import sys
from typing import NamedTuple

import source_tree as tree

CODE = (".h", ".cpp")
# Material of others stays as it was published.
FOREIGN = ("tests/data/", "fuzz/seeds/", "tests/golden/")


class Rule(NamedTuple):
    pattern: str     # of the offending text
    why: str
    suffixes: tuple  # of the files it holds for; () is all
    inside: str      # regular expression of the paths it holds for
    outside: str     # regular expression of the paths it does not hold for


RULES = [Rule(*row) for row in (
    (r"/(work|home|root|Users)/\w", "a path of somebody's machine", (), "", ""),
    (r"\b(TODO|FIXME|XXX|HACK)\b(?!-)", "a note to oneself: do it, or file it", (), "",
     r"^tools/check_words\.py$"),
    (r"[ \t]+$", "blanks at the end of a line", (), "", r"\.(md|patch)$"),
    (r"\t", "a tab: use blanks", (*CODE, ".py", ".cmake"), "", ""),
    (r"\bclearLog\(", "only the call frame clears a log", CODE, r"^(src|cli)/",
     r"^src/(frame/|core/log_)"),
    (r"\b__DATE__\b|\b__TIME__\b", "builds must be reproducible: use ZANTREL_BUILD_DATE", CODE,
     "", ""),
    (r"#\s*include\s*<(format|ranges|print)>", "not in the oldest supported compilers", CODE, "", ""),
    (r"\busing namespace (?!std::\w*_literals|std::\w*literals)", "a header must not open a namespace",
     (".h",), "", ""),
    (r"\b(rand|srand|strcpy|strcat|sprintf|gets|strtok|localtime|gmtime)\s*\(",
     "an unsafe C function", CODE, r"^(src|cli|include)/", ""),
    (r"\b(catch)\s*\(", "only the facade and code around the standard library's own exceptions",
     CODE, r"^src/", r"^src/(facade/|frame/|core/storage|platform/)"),
)]


def offences(path, text):
    name = str(path)
    for rule in RULES:
        if rule.suffixes and path.suffix not in rule.suffixes:
            continue
        if not re.search(rule.inside, name) or (rule.outside and re.search(rule.outside, name)):
            continue
        for match in re.finditer(rule.pattern, text, re.MULTILINE):
            line = text.count("\n", 0, match.start()) + 1
            yield f"{path}:{line}: {match[0].strip()!r}: {rule.why}"
    if "\r" in text:
        yield f"{path}: CR in line ends"
    if text and not text.endswith("\n"):
        yield f"{path}: the last line does not end"
    if path.suffix == ".h" and "#pragma once" not in text:
        yield f"{path}: no #pragma once"


def check():
    problems, count = [], 0
    for path in tree.files():
        if str(path).startswith(FOREIGN):
            continue
        try:
            text = tree.text(path)
        except UnicodeDecodeError:
            problems.append(f"{path}: not UTF-8")
            continue
        count += 1
        problems += offences(path, text)
    return tree.report(problems, f"words of {count} files")


if __name__ == "__main__":
    sys.exit(check())
