#!/usr/bin/env python3
"""Runs zantrel hash and hmac as a user would, beside the tools whose habits they have.

Usage: hash_test.py COMMAND [ARGUMENT ...]    the command, perhaps behind an emulator
"""
import base64
import hashlib
import hmac
import os
import shutil
import subprocess
import unittest

from command import COMMAND, CommandCase, main, run

SHA256 = hashlib.sha256(b"abc").hexdigest()
SHA1 = hashlib.sha1(b"abc").hexdigest()
MD5 = hashlib.md5(b"abc").hexdigest()
HMAC = hmac.new(b"Jefe", b"abc", "sha256").hexdigest()

# Arguments, exit status, standard output (None: whatever it says); standard input is "abc".
INVOCATIONS = [
    ("hash", 0, f"{SHA256}  -\n"),
    ("hash -a SHA-1 -", 0, f"{SHA1}  -\n"),
    ("hash -a sha2-256 --tag", 0, f"SHA256 (-) = {SHA256}\n"),
    ("hash -a md5 -e base64", 0, base64.b64encode(bytes.fromhex(MD5)).decode() + "  -\n"),
    ("hash -a md5 -e base32", 0, base64.b32encode(bytes.fromhex(MD5)).decode() + "  -\n"),
    ("hash -a md5 -z", 0, f"{MD5}  -\0"),
    ("hash -a rmd160", 0, "8eb208f7e05d987a9b044a8e98c6b087f15a0bfc  -\n"),
    ("hash -a haval --haval-bits 128 --tag", 0,
     "HAVAL128,3 (-) = 9e40ed883fb63e985d299b40cda2b8f2\n"),
    ("hash -a sha224", 2, ""),
    ("hash --haval-bits 100", 2, ""),
    ("hash --quiet", 2, ""),
    ("hash -c -e qp", 2, ""),
    ("hash -a md5 -e qp", 0, "=90=01P=98<=D2O=B0=D6=96?}(=E1=7Fr\n"),
    ("hash no-such-file", 1, ""),
    ("hmac --insecure-key Jefe", 0, f"{HMAC}  -\n"),
    ("hmac --key-env KEY", 0, f"{HMAC}  -\n"),
    ("hmac --key-env KEY --tag", 0, f"HMAC-SHA256 (-) = {HMAC}\n"),
    ("hmac --insecure-key 4A656665 --key-encoding hex", 0, f"{HMAC}  -\n"),
    ("hmac --key-env NO_SUCH_VARIABLE", 1, ""),
    ("hmac --key-file no-such-file", 1, ""),
    ("hmac --key-file -", 1, ""),
    ("hmac --key-env KEY --insecure-key Jefe", 2, ""),
    ("hmac -a md4 --insecure-key x", 2, ""),
]

ODD_NAMES = ["a b", "-dash", "(paren) = x", "back\\slash", "new\nline", "cr\rx", " blank", "日本語"]


def have(program):
    return shutil.which(program) is not None


class HashTest(CommandCase):
    def setUp(self):
        super().setUp()
        self.environment = {"KEY": "Jefe"}
        (self.folder / "abc").write_bytes(b"abc")
        (self.folder / "other").write_bytes(b"other")

    def check(self, lines, options="", status=0):
        (self.folder / "list").write_text(lines, newline="")
        result = run(f"hash -c {options} list".split(), folder=self.folder)
        self.assertEqual(result.returncode, status, result)
        return result.stdout.decode().replace("\r\n", "\n"), result.stderr.decode()

    def test_answers_each_invocation_of_the_table(self):
        for arguments, status, stdout in INVOCATIONS:
            with self.subTest(arguments=arguments):
                result = self.zantrel(arguments, b"abc", self.environment)
                self.assertEqual(result.returncode, status, result.stderr.decode())
                self.assertEqual(result.stdout.decode(), stdout)
                if status:
                    self.assertNotEqual(result.stderr, b"")

    def test_hashes_many_files_and_goes_on_behind_one_that_cannot_be_read(self):
        result = self.zantrel("hash -a md5 abc missing other", b"")
        self.assertEqual(result.returncode, 1)
        self.assertEqual(result.stdout.decode(),
                         f"{MD5}  abc\n{hashlib.md5(b'other').hexdigest()}  other\n")
        self.assertIn("filename: missing", result.stderr.decode())

    def test_a_key_comes_from_a_file_byte_for_byte_or_encoded(self):
        (self.folder / "key").write_bytes(b"Jefe\n")
        (self.folder / "hexkey").write_bytes(b"4a656665\r\n")
        (self.folder / "empty").write_bytes(b"")
        with_line_end = hmac.new(b"Jefe\n", b"abc", "sha256").hexdigest()
        self.assertEqual(self.zantrel("hmac --key-file key abc").stdout.decode(),
                         f"{with_line_end}  abc\n")
        self.assertEqual(self.zantrel("hmac --key-file hexkey --key-encoding hex abc").stdout.decode(),
                         f"{HMAC}  abc\n")
        empty = self.zantrel("hmac --key-file empty abc")
        self.assertEqual(empty.returncode, 1)
        self.assertIn(b"the key is empty", empty.stderr)

    @unittest.skipUnless(hasattr(os, "setsid") and len(COMMAND) == 1, "needs a session of its own")
    def test_without_key_and_terminal_it_fails(self):
        result = subprocess.run(COMMAND + ["hmac", "abc"], cwd=self.folder, capture_output=True,
                                stdin=subprocess.DEVNULL, start_new_session=True, check=False)
        self.assertEqual(result.returncode, 1)
        self.assertIn(b"there is no terminal", result.stderr)

    @unittest.skipUnless(hasattr(os, "setsid") and len(COMMAND) == 1, "needs a terminal")
    def test_asks_for_the_key_without_showing_it(self):
        import pty
        pid, terminal = pty.fork()
        if pid == 0:
            os.chdir(self.folder)
            os.execv(COMMAND[0], COMMAND + ["hmac", "--key-prompt", "abc"])
        shown = b""
        while b"Enter key: " not in shown:
            shown += os.read(terminal, 1000)
        os.write(terminal, b"Jefx\x7fe\n")
        while True:
            try:
                piece = os.read(terminal, 1000)
            except OSError:
                break
            if not piece:
                break
            shown += piece
        os.close(terminal)
        self.assertEqual(os.waitpid(pid, 0)[1], 0)
        self.assertEqual(shown.decode(), f"Enter key: \r\n{HMAC}  abc\r\n")

    def test_check_tells_of_each_file_and_counts_what_failed(self):
        other = hashlib.sha256(b"other").hexdigest()
        cases = [  # list, options, status, standard output, parts of standard error
            (f"{SHA256}  abc\n{other} *other\n", "", 0, "abc: OK\nother: OK\n", []),
            (f"{SHA256.upper()} abc\r\n", "", 0, "abc: OK\n", []),
            (f"{SHA256}  abc\n{SHA256}  other\n", "", 1, "abc: OK\nother: FAILED\n",
             ["WARNING: 1 computed checksum did NOT match"]),
            (f"{SHA256}  abc\n{SHA256}  other\n", "--quiet", 1, "other: FAILED\n", []),
            (f"{SHA256}  other\n", "--status", 1, "", []),
            (f"{SHA256}  gone\n", "", 1, "gone: FAILED open or read\n",
             ["WARNING: 1 listed file could not be read"]),
            (f"{SHA256}  gone\n{SHA256}  abc\n", "--ignore-missing", 0, "abc: OK\n", []),
            (f"{SHA256}  gone\n", "--ignore-missing", 1, "", ["list: no file was verified"]),
            (f"# comment\n\nnonsense\n{SHA256}  abc\n", "", 0, "abc: OK\n",
             ["WARNING: 1 line is improperly formatted"]),
            (f"x\nnonsense\n{SHA256}  abc\n", "--strict", 1, "abc: OK\n",
             ["WARNING: 2 lines are improperly formatted"]),
            (f"{SHA256}  abc\nnonsense\n", "--warn", 0, "abc: OK\n",
             ["list: 2: improperly formatted checksum line"]),
            ("nonsense\n", "", 1, "", ["list: no properly formatted checksum lines found"]),
            ("", "", 1, "", ["no properly formatted checksum lines found"]),
            (f"{MD5}  abc\n", "", 1, "", ["no properly formatted"]),
            (f"{MD5}  abc\n", "-a md5", 0, "abc: OK\n", []),
            (f"MD5 (abc) = {MD5}\nSHA1(abc)= {SHA1}\nSHA2-256(abc)= {SHA256}\n", "", 0,
             "abc: OK\n" * 3, []),
            (f"MD5 (abc) = {MD5}\n", "-a sha256", 1, "", ["no properly formatted"]),
            (f"HMAC-SHA256 (abc) = {HMAC}\n", "", 1, "", ["no properly formatted"]),
            ("HAVAL128,3 (abc) = 9e40ed883fb63e985d299b40cda2b8f2\n", "--haval-bits 128", 0,
             "abc: OK\n", []),
            ("HAVAL128,4 (abc) = 9e40ed883fb63e985d299b40cda2b8f2\n", "--haval-bits 128", 1, "",
             ["no properly formatted"]),
        ]
        for lines, options, status, stdout, stderr in cases:
            with self.subTest(lines=lines, options=options):
                out, error = self.check(lines, options, status)
                self.assertEqual(out, stdout)
                for part in stderr:
                    self.assertIn(part, error)
                if "--status" in options:
                    self.assertEqual(error, "")

    def test_check_takes_other_encodings_and_codes(self):
        (self.folder / "codes").write_bytes(
            self.zantrel("hmac --key-env KEY --tag abc other", b"", self.environment).stdout)
        right = self.zantrel("hmac --key-env KEY -c codes", b"", self.environment)
        self.assertEqual((right.returncode, right.stdout), (0, b"abc: OK\nother: OK\n"))
        wrong = self.zantrel("hmac --insecure-key x -c codes")
        self.assertEqual((wrong.returncode, wrong.stdout), (1, b"abc: FAILED\nother: FAILED\n"))
        for encoding in ("base64", "base32", "url"):
            listed = self.zantrel(f"hash -e {encoding} abc other").stdout
            result = self.zantrel(f"hash -e {encoding} -c", listed)
            self.assertEqual((result.returncode, result.stdout), (0, b"abc: OK\nother: OK\n"))

    def odd_files(self):
        for name in ODD_NAMES:
            (self.folder / name).write_bytes(name.encode())
        return ODD_NAMES

    @unittest.skipUnless(have("sha256sum") and os.sep == "/" and len(COMMAND) == 1,
                         "needs sha256sum")
    def test_sha256sum_writes_and_reads_the_same_lists(self):
        names = self.odd_files()
        for style in ([], ["--tag"]):
            theirs = subprocess.run(["sha256sum", *style, "--", *names], cwd=self.folder,
                                    capture_output=True, check=True).stdout
            ours = run(["hash", *style, "--", *names], folder=self.folder)
            self.assertEqual((ours.returncode, ours.stdout), (0, theirs))
            subprocess.run(["sha256sum", "--check"], cwd=self.folder, input=ours.stdout,
                           capture_output=True, check=True)
            result = run(["hash", "--check"], theirs, self.folder)
            self.assertEqual((result.returncode, result.stdout.count(b": OK\n")), (0, len(names)))
            self.assertIn(b"\n\\new\\nline: OK\n", result.stdout)

    @unittest.skipUnless(have("sha256sum") and len(COMMAND) == 1, "needs sha256sum")
    def test_sha256sum_judges_the_same_bad_lists_alike(self):
        good = f"{SHA256}  abc\n"
        lists = [good + "\n\n", good + "zz\n", "zz\n", "", f"{SHA256}  gone\n" + good,
                 f"{SHA256[:-1]}  abc\n", f"{SHA256}\n", f"  {SHA256}  abc\n",
                 f"\\{SHA256}  abc\\q\n" + good, f"SHA256 (abc) {SHA256}\n",
                 f"{SHA256}  other\n", f"{SHA256} abc\n", f"SHA1 (abc) = {SHA1}\n"]
        for lines in lists:
            for options in ([], ["--strict"], ["--quiet"], ["--status"], ["--ignore-missing"]):
                with self.subTest(lines=lines, options=options):
                    theirs = subprocess.run(["sha256sum", "--check", *options], cwd=self.folder,
                                            input=lines.encode(), capture_output=True, check=False)
                    ours = run(["hash", "-a", "sha256", "--check", *options], lines.encode(),
                               self.folder)
                    self.assertEqual((ours.returncode, ours.stdout),
                                     (theirs.returncode, theirs.stdout))

    @unittest.skipUnless(have("openssl") and len(COMMAND) == 1, "needs openssl")
    def test_the_lists_of_openssl_are_checked(self):
        for name in ("md5", "sha1", "sha256", "sha384", "sha512", "ripemd160"):
            listed = subprocess.run(["openssl", "dgst", "-" + name, "abc", "other"], cwd=self.folder,
                                    capture_output=True, check=False)
            if listed.returncode:
                continue  # a build without it
            result = run(["hash", "-c"], listed.stdout, self.folder)
            self.assertEqual((result.returncode, result.stdout), (0, b"abc: OK\nother: OK\n"))
        listed = subprocess.run(["openssl", "dgst", "-sha512", "-hmac", "Jefe", "abc"],
                                cwd=self.folder, capture_output=True, check=True).stdout
        result = run(["hmac", "-c", "--key-env", "KEY"], listed, self.folder, self.environment)
        self.assertEqual((result.returncode, result.stdout), (0, b"abc: OK\n"))


if __name__ == "__main__":
    main(__doc__)
