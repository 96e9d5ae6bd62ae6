"""The benchmark table reads names and medians as its docstring says."""

import pathlib
import sys
import unittest

sys.path.insert(0, str(pathlib.Path(__file__).resolve().parents[2] / "tools"))

import bench_table  # noqa: E402


def run(name, speed=0, ns=1.0, **more):
    return {"name": name, "run_name": name, "run_type": "iteration", "cpu_time": ns,
            "time_unit": "ns", "bytes_per_second": speed, **more}


def rows(*runs):
    return list(bench_table.table_rows(bench_table.read_runs([{"benchmarks": list(runs)}])))


class BenchTableTest(unittest.TestCase):
    def test_splits_names(self):
        for name, parts in (
                ("base64_encode/64K/openssl", ("base64_encode", "64K", "openssl")),
                ("utf8_to_utf16/mixed/1K/zantrel", ("utf8_to_utf16/mixed", "1K", "zantrel")),
                ("utf8_to_utf16/1K/mixed/icu/repeats:3", ("utf8_to_utf16/mixed", "1K", "icu")),
                ("log_entry/zantrel/real_time", ("log_entry", "", "zantrel")),
                ("log_rendering/100000", ("log_rendering", "100000", "zantrel")),
                ("empty_call", ("empty_call", "", "zantrel"))):
            with self.subTest(name=name):
                self.assertEqual(bench_table.split_name(name), parts)

    def test_compares_with_the_fastest_peer(self):
        row, = rows(run("x/1K/zantrel", 9e9), run("x/1K/icu", 2e9), run("x/1K/iconv", 3e9),
                    run("x/1K/facade", 8e9))
        self.assertEqual(row, ("x", "1K", "9000 MB/s", "8000 MB/s", "3000 MB/s", "iconv", "3.00", "",
                               ""))

    def test_compares_times_where_no_bytes_are_counted(self):
        row, = rows(run("x/zantrel", ns=50.0), run("x/glib", ns=100.0))
        self.assertEqual(row[2:7], ("50 ns", "", "100 ns", "glib", "2.00"))

    def test_compares_memory_with_the_most_frugal_peer(self):
        row, = rows(run("x/zantrel", 1, bytes_per_element=70), run("x/fast", 2, bytes_per_element=99),
                    run("x/small", 1, bytes_per_element=80), run("x/without", 9))
        self.assertEqual(row[-1], "70 (small 80)")

    def test_gives_other_code_paths_a_row(self):
        found = rows(run("x/1K/zantrel", 4e6), run("x/1K/zantrel_portable", 2e6), run("x/1K/p", 1e6))
        self.assertEqual([(row[0], row[6]) for row in found], [("x", "4.00"), ("x (portable)", "2.00")])

    def test_takes_the_median_of_repetitions(self):
        median = dict(run("x/1K/zantrel", 5e6), run_type="aggregate", aggregate_name="median")
        mean = dict(run("x/1K/zantrel", 7e6), run_type="aggregate", aggregate_name="mean")
        row, = rows(run("x/1K/zantrel", 9e6), mean, median)
        self.assertEqual(row[2], "5 MB/s")

    def test_sorts_by_size_and_leaves_empty_columns_out(self):
        lines = list(bench_table.format_table(rows(run("x/1M/zantrel", 1e6), run("x/64/zantrel", 1e6))))
        self.assertEqual([line.split() for line in lines],
                         [["operation", "size", "ours"], ["x", "64", "1", "MB/s"],
                          ["x", "1M", "1", "MB/s"]])


if __name__ == "__main__":
    unittest.main()
