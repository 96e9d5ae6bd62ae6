#!/usr/bin/env python3
"""Makes one table of Google Benchmark's JSON files: operation, size, ours, best peer, ratio.

A benchmark is named operation[/variant...]/size/implementation, as base64_encode/64K/openssl. The
implementation `zantrel` is ours, `facade` is ours through the public classes, `zantrel_<path>` is ours
on another code path (a row of its own); every other one is a peer. A size is a number with K or M;
it may be missing. A counter `peak_bytes` is shown as peak memory, `bytes_per_element` beside that of
the most frugal peer. Of repetitions the median counts.
"""

import json
import re
import sys
from collections import defaultdict

SIZE = re.compile(r"^(\d+)([KM]?)B?$")
SUFFIX = re.compile(r"^(real_time|process_time|manual_time|\w+:[\d.]+)$")
TO_NS = {"ns": 1, "us": 1e3, "ms": 1e6, "s": 1e9}
HEADINGS = ("operation", "size", "ours", "facade", "best peer", "", "ratio", "peak memory",
            "bytes an element")


def split_name(name):
    """(operation, size, implementation) of a benchmark's name."""
    parts = [part for part in name.split("/") if not SUFFIX.match(part)]
    # A benchmark without a peer may leave the implementation out.
    named = len(parts) > 1 and not SIZE.match(parts[-1])
    implementation = parts.pop() if named else "zantrel"
    size = ""
    for index in range(len(parts) - 1, 0, -1):
        if SIZE.match(parts[index]):
            size = parts.pop(index)
            break
    return "/".join(parts), size, implementation


def bytes_of(size):
    match = SIZE.match(size)
    return int(match[1]) * {"": 1, "K": 1 << 10, "M": 1 << 20}[match[2]] if match else 0


class Measure:
    """One implementation's median: a speed in MB/s, or the time of one call where no bytes count."""

    def __init__(self, run):
        self.speed = run.get("bytes_per_second", 0) / 1e6
        self.ns = run["cpu_time"] * TO_NS[run.get("time_unit", "ns")]
        self.peak = run.get("peak_bytes")
        self.element = run.get("bytes_per_element")

    def ratio_to(self, peer):
        if self.speed and peer.speed:
            return self.speed / peer.speed
        return peer.ns / self.ns if self.ns else 0

    def __str__(self):
        return f"{self.speed:.0f} MB/s" if self.speed else f"{self.ns:.0f} ns"


def read_runs(documents):
    """{(operation, size): {implementation: Measure}} in the order of the files."""
    rows = defaultdict(dict)
    for document in documents:
        runs = [run for run in document["benchmarks"] if not run.get("error_occurred")]
        repeated = {run["run_name"] for run in runs if run.get("run_type") == "aggregate"}
        for run in runs:
            name = run.get("run_name", run["name"])
            if run.get("run_type") == "aggregate":
                if run["aggregate_name"] != "median":
                    continue
            elif name in repeated:
                continue
            operation, size, implementation = split_name(name)
            rows[operation, size][implementation] = Measure(run)
    return rows


def element_bytes(measure, peers):
    """Ours, and the least of the peers."""
    if not measure or not measure.element:
        return ""
    least = min(((peer.element, name) for name, peer in peers.items() if peer.element), default=None)
    return f"{measure.element:.0f}" + (f" ({least[1]} {least[0]:.0f})" if least else "")


def table_rows(runs):
    for operation, size in sorted(runs, key=lambda key: (key[0], bytes_of(key[1]))):
        found = dict(runs[operation, size])
        facade = found.pop("facade", None)
        ours = {name: found.pop(name) for name in sorted(found) if name.startswith("zantrel")}
        peers = found
        for name, measure in ours.items() or [("", None)]:
            path = name.removeprefix("zantrel").strip("_")
            best = None
            if peers:
                best = max(peers, key=lambda peer: (peers[peer].speed, -peers[peer].ns))
            peak = measure.peak if measure else None
            yield (operation + (f" ({path})" if path else ""), size, str(measure or ""),
                   str(facade or "") if not path else "",
                   str(peers[best]) if best else "", best or "",
                   f"{measure.ratio_to(peers[best]):.2f}" if measure and best else "",
                   f"{peak / 1e6:.1f} MB" if peak else "",
                   element_bytes(measure, peers))


def format_table(rows):
    rows = [HEADINGS, *rows]
    keep = [column for column in range(len(HEADINGS)) if column == 5 or
            any(row[column] for row in rows[1:])]
    width = [max(len(row[column]) for row in rows) for column in range(len(HEADINGS))]
    for row in rows:
        cells = [row[c].ljust(width[c]) if c in (0, 5) else row[c].rjust(width[c]) for c in keep]
        yield "  ".join(cells).rstrip()


def main(paths):
    documents = []
    for path in paths:
        with open(path, encoding="utf-8") as file:
            documents.append(json.load(file))
    for line in format_table(list(table_rows(read_runs(documents)))):
        print(line)


if __name__ == "__main__":
    if len(sys.argv) < 2:
        sys.exit(__doc__)
    main(sys.argv[1:])
