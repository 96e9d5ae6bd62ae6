#!/usr/bin/env python3
"""Checks that docs/errors.md explains every sentence that the sources can log, and no other."""

import re
import sys

import source_tree as tree

INDEX = "docs/errors.md"
LITERAL = r'"((?:[^"\\\n]|\\.)*)"'
# A sentence is a literal of at least two words that begins with a capital and ends with a full stop;
# what is handed to these calls counts whatever its form.
SENTENCE = re.compile(r"[A-Z][^ ]* .*\.")
LOGGED = re.compile(r"log(?:Error|Info)(?:At)?\(\s*" + LITERAL)


def without_comments(source):
    return re.sub(r'("(?:[^"\\\n]|\\.)*")|//[^\n]*', lambda m: m[1] or "", source)


def sentences(source):
    """The loggable texts of a source file, each with its line."""
    code = without_comments(source)
    for match in re.finditer(LITERAL + r'(?:\s*' + LITERAL + r')*', code):
        text = "".join(re.findall(LITERAL, match[0]))
        if SENTENCE.fullmatch(text) or LOGGED.search(code[max(0, match.start() - 40):match.end()]):
            yield text, code.count("\n", 0, match.start()) + 1


def headings(index):
    return {line[4:]: number for number, line in enumerate(index.splitlines(), 1)
            if line.startswith("### ")}


def main():
    explained = headings(tree.text(INDEX))
    problems, seen = [], set()
    for path in tree.files(".cpp", ".h"):
        if path.parts[0] != "src" or tree.is_generated(path):
            continue
        for text, line in sentences(tree.text(path)):
            seen.add(text)
            if text not in explained:
                problems.append(f'{path}:{line}: "{text}" is not explained in {INDEX}')
    problems += [f'{INDEX}:{line}: "{text}" is logged nowhere'
                 for text, line in explained.items() if text not in seen]
    return tree.report(problems, f"error index, {len(explained)} entries")


if __name__ == "__main__":
    sys.exit(main())
