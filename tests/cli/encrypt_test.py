#!/usr/bin/env python3
"""Runs zantrel encrypt, decrypt, random and derive-key as a user would, beside openssl.

Usage: encrypt_test.py COMMAND [ARGUMENT ...]    the command, perhaps behind an emulator
"""
import hashlib
import os
import shutil
import subprocess
import unittest

from command import COMMAND, CommandCase, main

KEY = "000102030405060708090a0b0c0d0e0f"
IV = "f0f1f2f3f4f5f6f7f8f9fafbfcfdfeff"
GIVEN = f"--insecure-key {KEY} --key-encoding hex"
PBKDF2 = hashlib.pbkdf2_hmac("sha256", b"geheim", b"salt", 1000, 32).hex()

# Arguments, exit status, standard output (None: whatever it says); standard input is "abc".
INVOCATIONS = [
    (f"encrypt {GIVEN}", 2, ""),
    (f"encrypt {GIVEN} --iv {IV} --no-iv", 2, ""),
    (f"encrypt {GIVEN} --iv 0g", 2, ""),
    (f"encrypt {GIVEN} --iv 000", 2, ""),
    (f"encrypt {GIVEN} --iv 0000", 1, ""),
    (f"encrypt {GIVEN} --iv {IV} -a des", 1, ""),
    (f"encrypt {GIVEN} --iv {IV} -a serpent", 2, ""),
    (f"encrypt {GIVEN} --iv {IV} -m ctr", 2, ""),
    (f"encrypt {GIVEN} --iv {IV} -p none", 1, ""),
    (f"encrypt {GIVEN} --iv {IV} --key-env KEY", 2, ""),
    (f"encrypt {GIVEN} --iv {IV} no-such-file", 1, ""),
    (f"decrypt {GIVEN} --iv {IV}", 1, ""),
    (f"encrypt --insecure-key short --iv {IV}", 1, ""),
    (f"encrypt --insecure-key short --iv {IV} --key-bits 128", 0, None),
    (f"encrypt --key-env NO_SUCH_VARIABLE --iv {IV}", 1, ""),
    ("derive-key --password-env PASSWORD --salt 73616c74 -n 1000", 0, PBKDF2 + "\n"),
    ("derive-key --password-file password --salt 73616c74 -n 1000", 0, PBKDF2 + "\n"),
    ("derive-key --insecure-password geheim --salt 73616C74 -n 1000 -b 16", 0, PBKDF2[:4] + "\n"),
    ("derive-key --insecure-password password --salt 73616c74 -n 1 --hash sha1 -b 160 --pbkdf1", 0,
     hashlib.sha1(b"passwordsalt").hexdigest() + "\n"),
    ("derive-key --insecure-password x --salt 73616c74 -n 1 --hash md5 -b 256 --pbkdf1", 1, ""),
    ("derive-key --insecure-password x --salt 73616c74 -n 1 -b 12", 1, ""),
    ("derive-key --insecure-password x -n 1", 2, ""),
    ("derive-key --insecure-password x --salt 00 -n 0", 2, ""),
    ("derive-key --password-env NO_SUCH_VARIABLE --salt 00", 1, ""),
    ("random 0", 2, ""),
    ("random -1", 2, ""),
]

# Arguments of ours, cipher of openssl, bytes of the key.
CIPHERS = [
    ("-a aes", "aes-128-cbc", 16), ("-a aes", "aes-256-cbc", 32), ("-a aes -m ecb", "aes-192-ecb", 24),
    ("-a 3des", "des-ede3-cbc", 24), ("-a 3des", "des-ede-cbc", 16), ("-a des", "des-cbc", 8),
    ("-a blowfish", "bf-cbc", 16), ("-a rc2", "rc2-cbc", 16), ("-a rc4", "rc4", 16),
]


class EncryptTest(CommandCase):
    def setUp(self):
        super().setUp()
        (self.folder / "password").write_bytes(b"geheim\n")
        (self.folder / "key").write_bytes(bytes.fromhex(KEY))

    def test_answers_each_invocation_of_the_table(self):
        for arguments, status, stdout in INVOCATIONS:
            with self.subTest(arguments=arguments):
                result = self.zantrel(arguments, b"abc", {"PASSWORD": "geheim", "KEY": "x"})
                self.assertEqual(result.returncode, status, result.stderr.decode())
                if stdout is not None:
                    self.assertEqual(result.stdout.decode(), stdout)
                if status:
                    self.assertNotEqual(result.stderr, b"")
                self.assertNotIn(b"geheim", result.stdout + result.stderr)

    def test_streams_files_and_encodings_go_there_and_back(self):
        text = bytes(range(256)) * 9
        (self.folder / "in").write_bytes(text)
        settings = f"--key-file key --iv {IV}"
        encrypted = self.zantrel(f"encrypt {settings} in").stdout
        self.assertEqual(len(encrypted), len(text) + 16)
        self.assertEqual(self.zantrel(f"decrypt {settings}", encrypted).stdout, text)
        self.assertEqual(self.zantrel(f"encrypt {settings} in -o out").returncode, 0)
        self.assertEqual((self.folder / "out").read_bytes(), encrypted)
        self.assertEqual(self.zantrel(f"decrypt {settings} out -o out").returncode, 0)
        self.assertEqual((self.folder / "out").read_bytes(), text)
        for encoding in ("base64", "base32", "hex", "url", "uu"):
            with self.subTest(encoding=encoding):
                encoded = self.zantrel(f"encrypt {settings} -e {encoding} in").stdout
                self.assertTrue(encoded.isascii() and encoded.endswith(b"\n"))
                decoded = self.zantrel(f"decrypt {settings} -e {encoding}", encoded)
                self.assertEqual(decoded.stdout, text, decoded.stderr)

    def test_a_failure_leaves_the_old_output_and_nothing_beside_it(self):
        (self.folder / "out").write_bytes(b"old")
        before = sorted(self.folder.iterdir())
        for arguments in ("decrypt password", "encrypt missing", "encrypt -p none password",
                          "decrypt -e hex password", "encrypt -a des password"):
            with self.subTest(arguments=arguments):
                result = self.zantrel(f"{arguments} --key-file key --iv {IV} -o out")
                self.assertEqual(result.returncode, 1)
                self.assertEqual((self.folder / "out").read_bytes(), b"old")
                self.assertEqual(sorted(self.folder.iterdir()), before)

    @unittest.skipUnless(hasattr(os, "fork") and len(COMMAND) == 1, "needs limits for a process")
    def test_a_disk_that_fills_up_leaves_the_old_output(self):
        import resource
        import signal

        def fill_up():
            signal.signal(signal.SIGXFSZ, signal.SIG_IGN)
            resource.setrlimit(resource.RLIMIT_FSIZE, (1000000, 1000000))

        (self.folder / "in").write_bytes(bytes(2000000))
        (self.folder / "out").write_bytes(b"old")
        arguments = f"encrypt --key-file key --iv {IV} -o out in".split()
        result = subprocess.run(COMMAND + arguments, cwd=self.folder, capture_output=True,
                                preexec_fn=fill_up, check=False)
        self.assertEqual(result.returncode, 1)
        self.assertIn(b"Failed to write file.", result.stderr)
        self.assertEqual((self.folder / "out").read_bytes(), b"old")
        self.assertEqual(len(list(self.folder.iterdir())), 4)

    def test_keys_are_not_shown_in_the_log(self):
        result = self.zantrel(f"--log --verbose encrypt {GIVEN} --iv {IV}", b"abc")
        self.assertIn("algorithm: aes", result.stderr.decode())
        self.assertNotIn(KEY, result.stderr.decode())
        weak = self.zantrel(f"--log encrypt {GIVEN} -m ecb", b"abc")
        self.assertIn("The mode is ECB", weak.stderr.decode())

    def test_random_bytes_come_in_the_number_and_form_asked_for(self):
        self.assertRegex(self.zantrel("random").stdout.decode(), r"\A[0-9a-f]{32}\n\Z")
        self.assertRegex(self.zantrel("random 3 -e base64").stdout.decode(), r"\A[\w+/]{4}\n\Z")
        self.assertEqual(len(self.zantrel("random 1000 --raw").stdout), 1000)
        self.assertEqual(self.zantrel("random 40 --raw -o made").returncode, 0)
        self.assertEqual(len((self.folder / "made").read_bytes()), 40)
        self.assertNotEqual(self.zantrel("random").stdout, self.zantrel("random").stdout)

    @unittest.skipUnless(shutil.which("openssl"), "needs openssl")
    def test_openssl_reads_and_writes_the_same(self):
        text = bytes(range(251)) * 7
        for options, cipher, key_bytes in CIPHERS:
            with self.subTest(cipher=cipher):
                key = hashlib.sha512(cipher.encode()).hexdigest()[:2 * key_bytes]
                ecb = "ecb" in cipher or cipher == "rc4"
                iv = "" if ecb else IV[:32 if "aes" in cipher else 16]
                ours = f"{options} --insecure-key {key} --key-encoding hex" + (f" --iv {iv}" if iv else "")
                theirs = ["openssl", "enc", "-provider", "default", "-provider", "legacy",
                          "-" + cipher, "-K", key] + (["-iv", iv] if iv else [])
                encrypted = self.zantrel(f"encrypt {ours}", text)
                self.assertEqual(encrypted.returncode, 0, encrypted.stderr.decode())
                self.assertEqual(subprocess.run(theirs, input=text, capture_output=True,
                                                check=True).stdout, encrypted.stdout)
                self.assertEqual(self.zantrel(f"decrypt {ours}", encrypted.stdout).stdout, text)


if __name__ == "__main__":
    main(__doc__)
