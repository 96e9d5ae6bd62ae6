#!/usr/bin/env python3
"""Runs the zantrel command as a user would: what it prints, writes and answers.

Usage: cli_test.py COMMAND [ARGUMENT ...]    the command, perhaps behind an emulator
"""
import base64
import shutil
import subprocess
import unittest

from command import CommandCase, main, run

JAPANESE = "吾輩は猫である。"
RUSSIAN = "Все счастливые семьи\n"

# Arguments, standard input, exit status, standard output (None: whatever it says).
INVOCATIONS = [
    ("charset convert -f windows-1251 -t utf-8", RUSSIAN.encode("cp1251"), 0, RUSSIAN.encode()),
    ("charset convert --from utf-8 --to Shift_JIS -", JAPANESE.encode(), 0,
     JAPANESE.encode("shift_jis")),
    ("charset convert -f utf-16 -t utf-8", b"\xFE\xFF" + "é".encode("utf-16-be"), 0, "é".encode()),
    ("charset convert -f utf-16 -t utf-8", "é\r\n\0".encode("utf-16-le"), 0, "é\r\n\0".encode()),
    ("charset convert -f koi8-r -t utf-8", b"\xFF\xFEx", 0, b"\xFF\xFEx".decode("koi8-r").encode()),
    ("charset convert -f utf-8 -t iso-8859-1", "10 €".encode(), 1, b""),
    ("charset convert -f utf-8 -t iso-8859-1 --on-error drop", "10 €".encode(), 0, b"10 "),
    ("charset convert -f utf-8 -t iso-8859-1 --on-error replace", "10 €".encode(), 0, b"10 ?"),
    ("charset convert -f utf-8 -t utf-16le --bom", b"a", 0, b"\xFF\xFEa\0"),
    ("charset convert -f us-ascii -t utf-16be --bom", b"a", 0, b"\xFE\xFF\0a"),
    ("charset convert -f us-ascii -t utf-16le --on-error replace", b"\x80", 0, b"\xFD\xFF"),
    ("charset convert -f us-ascii -t utf-16be --on-error replace", b"\x80", 0, b"\xFF\xFD"),
    ("charset convert -f utf-8 -t ascii --on-error replace --replacement EUR", "10 €".encode(), 0,
     b"10 EUR"),
    ("charset convert -f utf-8 -t ascii --on-error hex", "10 €".encode(), 0, b"10 &#x20AC;"),
    ("charset convert -f utf-8 -t ascii --on-error dec", "10 €".encode(), 0, b"10 &#8364;"),
    ("charset convert -f utf-8 -t iso-8859-1 --on-error alt --alt windows-1252", "10 €".encode(), 0,
     b"10 \x80"),
    ("charset convert -f utf-8 -t iso-8859-1 --on-error alt --alt martian", b"x", 1, b""),
    ("charset convert -f martian -t utf-8", b"x", 1, b""),
    ("charset convert -f utf-8 -t utf-16 no-such-file", b"", 1, b""),
    ("charset convert -f utf-8", b"x", 2, None),
    ("charset convert -f utf-8 -t utf-16 --on-error shrug", b"x", 2, None),

    ("charset verify -c utf-8", "é".encode(), 0, b"-: valid\n"),
    ("charset verify -c utf-8 -", b"a\xFF", 1, b"-: not valid\n"),
    ("charset verify", b"", 2, None),

    ("charset list shift_jis", b"", 0, None),
    ("charset list no-such-name", b"", 1, b""),

    ("charset html", b"<meta charset=Big5>", 0, b"Big5\n"),
    ("charset html", b"<p>", 1, b""),
    ("charset html -t utf-8", b"<meta charset='sjis'>" + JAPANESE.encode("shift_jis"), 0,
     b"<meta charset='utf-8'>" + JAPANESE.encode()),
    ("charset html -t us-ascii -f utf-8", "<p>é".encode(), 0,
     b'<meta charset="us-ascii"><p>&#xE9;'),

    ("encode", b"Ma", 0, b"TWE=\n"),
    ("encode -e base64 -", b"", 0, b"\n"),
    ("encode -e hex", b"\n\xFF", 0, b"0AFF\n"),
    ("encode -e base32", b"foob", 0, b"MZXW6YQ=\n"),
    ("encode -e url", b"a b&c", 0, b"a+b%26c\n"),
    ("encode -e qp", b"=\r\n\xE9", 0, b"=3D\r\n=E9"),
    ("encode -e rot13", b"x", 2, None),
    ("decode", b"TW\r\nE=\n", 0, b"Ma"),
    ("decode -e hex", b"0AFF\r\n", 0, b"\n\xFF"),
    ("decode -e url", b"a+b%26c\n", 0, b"a b&c"),
    ("decode -e qp", b"=3D=\r\n=E9", 0, b"=\xE9"),
    ("decode -e uu", b"begin 644 x\n#86)C\n`\nend\n", 0, b"abc"),

    ("--version", b"", 0, None),
    ("--help", b"", 0, None),
    ("charset --help", b"", 0, None),
    ("", b"", 2, None),
    ("charset", b"", 2, None),
    ("frobnicate", b"", 2, None),
]


class CommandTest(CommandCase):
    def test_answers_each_invocation_of_the_table(self):
        for arguments, stdin, status, stdout in INVOCATIONS:
            with self.subTest(arguments=arguments):
                result = self.zantrel(arguments, stdin)
                self.assertEqual(result.returncode, status, result.stderr.decode(errors="replace"))
                if stdout is not None:
                    self.assertEqual(result.stdout, stdout)
                if status == 1 and "list" not in arguments:
                    self.assertNotEqual(result.stderr, b"")

    def test_shows_the_log_after_a_failure_and_on_request(self):
        failed = self.zantrel("charset convert -f utf-8 -t iso-8859-1", "10 €".encode())
        log = failed.stderr.decode().replace("\r", "")
        self.assertTrue(log.startswith("ZantrelLog:\n  ConvertData:\n"), log)
        for words in ("Character encoding conversion failed.", "FirstErrorAt: 3", "Failed."):
            self.assertIn(words, log)
        done = self.zantrel("--log charset convert -f utf-8 -t iso-8859-1", "é".encode())
        self.assertIn("Success.", done.stderr.decode())
        self.assertEqual(self.zantrel("charset list --log utf-8").returncode, 0)

    def test_converts_files_and_leaves_the_old_one_when_that_fails(self):
        target = self.folder / "out.txt"
        (self.folder / "in.txt").write_bytes("10 €".encode())
        self.assertEqual(
            self.zantrel("charset convert -f utf-8 -t windows-1252 -o out.txt in.txt").returncode, 0)
        self.assertEqual(target.read_bytes(), b"10 \x80")
        failed = self.zantrel("charset convert -f utf-8 -t iso-8859-1 -o out.txt in.txt")
        self.assertEqual(failed.returncode, 1)
        self.assertEqual(target.read_bytes(), b"10 \x80")
        self.assertEqual(sorted(p.name for p in self.folder.iterdir()), ["in.txt", "out.txt"])

    def test_leaves_no_file_when_there_was_none(self):
        (self.folder / "in.txt").write_bytes(b"a\xFF")
        self.zantrel("charset convert -f utf-8 -t utf-16 -o out.txt in.txt")
        self.assertEqual([p.name for p in self.folder.iterdir()], ["in.txt"])

    def test_takes_file_names_beyond_the_ansi_code_page(self):
        for name in ("é.txt", "日本語.txt", "😀.txt"):
            (self.folder / name).write_bytes("é".encode())
            result = run(["charset", "convert", "-f", "utf-8", "-t", "utf-16le", "-o", "Ω" + name,
                          name], folder=self.folder)
            self.assertEqual(result.returncode, 0, result.stderr.decode())
            self.assertEqual((self.folder / ("Ω" + name)).read_bytes(), "é".encode("utf-16-le"))

    def test_converts_html_files(self):
        (self.folder / "in.html").write_bytes(b"<meta charset=sjis>" + JAPANESE.encode("shift_jis"))
        self.assertEqual(self.zantrel("charset html in.html").stdout, b"sjis\n")
        self.assertEqual(self.zantrel("charset html -t utf-8 -o out.html in.html").returncode, 0)
        self.assertEqual((self.folder / "out.html").read_bytes(),
                         b"<meta charset=utf-8>" + JAPANESE.encode())

    def test_verifies_several_files(self):
        (self.folder / "good").write_bytes("é".encode())
        (self.folder / "bad").write_bytes(b"a\xFF")
        result = self.zantrel("charset verify -c utf-8 good bad")
        self.assertEqual(result.returncode, 1)
        self.assertEqual(result.stdout, b"good: valid\nbad: not valid\n")
        self.assertIn("FirstErrorAt: 1", result.stderr.decode())

    def test_converts_streams_of_any_length_like_files(self):
        text = "Все счастливые семьи похожи друг на друга\n" * 300_000  # longer than is held in memory
        (self.folder / "in.txt").write_bytes(text.encode())
        (self.folder / "tmp").mkdir()
        here = {"TMPDIR": str(self.folder / "tmp"), "TMP": "tmp", "TEMP": "tmp"}
        expected = text.encode("cp1251")
        for arguments, stdin in (("-", text.encode()), ("in.txt", b""),
                                 ("-o out.txt -", text.encode())):
            with self.subTest(arguments=arguments):
                result = self.zantrel("charset convert -f utf-8 -t windows-1251 " + arguments, stdin, here)
                self.assertEqual(result.returncode, 0, result.stderr.decode())
                written = self.folder / "out.txt"
                self.assertTrue((written.read_bytes() if "-o" in arguments else result.stdout)
                                == expected)
        failed = self.zantrel("charset convert -f utf-8 -t windows-1251", text.encode() + b"\xFF", here)
        self.assertEqual((failed.returncode, failed.stdout), (1, b""))
        left = [p.name for p in (self.folder / "tmp").iterdir() if not p.name.startswith("wine-")]
        self.assertEqual(left, [])

    def test_encodes_streams_longer_than_a_block(self):
        content = bytes(range(256)) * 4001 + b"!"
        for encoding, expected in (("base64", base64.b64encode), ("base32", base64.b32encode),
                                   ("hex", lambda data: data.hex().upper().encode())):
            with self.subTest(encoding=encoding):
                result = self.zantrel(f"encode -e {encoding}", content)
                self.assertTrue(result.stdout == expected(content) + b"\n")

    @unittest.skipUnless(shutil.which("bash"), "there is no bash")
    def test_bash_completes_commands_options_and_their_values(self):
        script = self.zantrel("completion bash").stdout.decode()
        cases = {"zantrel cha": ["charset"],
                 "zantrel charset con": ["convert"],
                 "zantrel charset convert --on": ["--on-error"],
                 "zantrel charset convert --on-error d": ["drop", "dec"],
                 "zantrel --log encode -e base": ["base64", "base32"],
                 "zantrel encode --encoding = u": ["url", "uu"],  # as bash takes --encoding=u apart
                 "zantrel encode --no": ["--no-progress"],
                 "zantrel encode charset": []}
        for line, expected in cases.items():
            with self.subTest(line=line):
                words = line.split()
                asked = (f"{script}\nCOMP_WORDS=({line})\nCOMP_CWORD={len(words) - 1}\n_zantrel\n"
                         'printf "%s\\n" "${COMPREPLY[@]}"')
                answer = subprocess.run(["bash", "-c", asked], capture_output=True, check=True)
                self.assertEqual(answer.stdout.decode().split(), expected)
                self.assertEqual(answer.stderr, b"")

    def test_lists_names_with_code_page_and_canonical_name(self):
        lines = self.zantrel("charset list").stdout.decode().splitlines()
        self.assertEqual(len(lines), len(set(lines)))
        self.assertIn("sjis\t932\tshift_jis", lines)

    def test_every_byte_survives_encoding_and_decoding(self):
        content = bytes(range(256)) * 300 + b"\r\n\n\r .\r\nFrom "
        (self.folder / "in").write_bytes(content)
        for encoding in ("base64", "base32", "hex", "url", "uu"):
            with self.subTest(encoding=encoding):
                self.assertEqual(self.zantrel(f"encode -e {encoding} -o text in").returncode, 0)
                self.assertEqual(self.zantrel(f"decode -e {encoding} text").stdout, content)


if __name__ == "__main__":
    main(__doc__)
