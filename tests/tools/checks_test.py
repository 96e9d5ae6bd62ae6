"""The checks of the source tree find what they look for."""

import pathlib
import sys
import unittest

sys.path.insert(0, str(pathlib.Path(__file__).resolve().parents[2] / "tools"))

import check_layers  # noqa: E402
import check_words  # noqa: E402

RULES = check_layers.read_rules(["# comment", "platform:", "core: platform", "cli: include"])


def layer_problems(path, text):
    return list(check_layers.check_file(pathlib.PurePosixPath(path), text, RULES))


def word_problems(path, text):
    return list(check_words.offences(pathlib.PurePosixPath(path), text))


class LayersTest(unittest.TestCase):
    def test_allows_downward_own_and_standard_includes(self):
        text = '#include "core/a.h"\n#include "platform/b.h"\n#include <vector>\n'
        self.assertEqual(layer_problems("src/core/x.cpp", text), [])

    def test_refuses_an_upward_include_and_names_the_line(self):
        problems = layer_problems("src/platform/x.cpp", '\n#include "core/a.h"\n')
        self.assertEqual(problems, ["src/platform/x.cpp:2: platform must not include core/a.h"])

    def test_refuses_system_headers_above_the_platform_seam(self):
        self.assertTrue(layer_problems("src/core/x.cpp", "#include <unistd.h>\n"))
        self.assertTrue(layer_problems("src/core/x.cpp", "#include <sys/stat.h>\n"))
        self.assertEqual(layer_problems("src/platform/x.cpp", "#include <unistd.h>\n"), [])

    def test_allows_intrinsics_only_in_their_own_files(self):
        self.assertEqual(layer_problems("src/core/x_x86.cpp", "#include <immintrin.h>\n"), [])
        self.assertTrue(layer_problems("src/core/x.cpp", "#include <immintrin.h>\n"))

    def test_keeps_the_command_to_public_headers(self):
        self.assertEqual(layer_problems("cli/x.cpp", '#include <zantrel/zantrel.h>\n'), [])
        self.assertTrue(layer_problems("cli/x.cpp", '#include "core/a.h"\n'))

    def test_refuses_a_folder_without_a_rule(self):
        self.assertTrue(layer_problems("src/extra/x.cpp", ""))

    def test_finds_circles_of_headers_once(self):
        graph = {"a": ["b"], "b": ["c"], "c": ["a"], "d": ["a"]}
        self.assertEqual(check_layers.circles(graph), [["a", "b", "c", "a"]])
        self.assertEqual(check_layers.circles({"a": ["b", "c"], "b": ["c"], "c": []}), [])


class WordsTest(unittest.TestCase):
    def test_accepts_tidy_code(self):
        self.assertEqual(word_problems("src/core/x.h", "#pragma once\nint a();\n"), [])

    def test_refuses_what_must_not_stand_in_code(self):
        for path, line in (
                ("src/core/x.cpp", "log.clearLog();"),
                ("src/core/x.cpp", "const char* d = __DATE__;"),
                ("src/core/x.cpp", "int a;  "),
                ("src/core/x.cpp", "\tint a;"),
                ("src/core/x.cpp", "#include <format>"),
                ("src/core/x.cpp", "// TO" + "DO later"),
                ("docs/x.md", "see /ho" + "me/me/notes")):
            with self.subTest(line=line):
                self.assertEqual(len(word_problems(path, line + "\n")), 1)

    def test_the_call_frame_may_clear_a_log(self):
        self.assertEqual(word_problems("src/frame/x.cpp", "log.clearLog();\n"), [])

    def test_refuses_a_header_without_its_guard_and_a_last_line_without_end(self):
        self.assertEqual(len(word_problems("src/core/x.h", "int a;")), 2)


if __name__ == "__main__":
    unittest.main()
