#!/usr/bin/env python3
"""Runs zantrel gzip, gunzip, compress, decompress and untargz beside Python's own modules.

Usage: gzip_test.py COMMAND [ARGUMENT ...]    the command, perhaps behind an emulator
"""
import bz2
import gzip
import io
import os
import subprocess
import tarfile
import zlib

from command import COMMAND, CommandCase, main

TEXT = b"".join(b"line %d\n" % i for i in range(5000))
FIRST_SEPTEMBER = 1000000000  # of 2001, in seconds since 1970


class GzipTest(CommandCase):
    def files(self):
        return sorted(p.relative_to(self.folder).as_posix() for p in self.folder.rglob("*")
                      if not p.is_dir())

    def test_replaces_a_file_and_back_keeping_its_time(self):
        (self.folder / "a.txt").write_bytes(TEXT)
        os.utime(self.folder / "a.txt", (FIRST_SEPTEMBER, FIRST_SEPTEMBER))
        self.assertEqual(self.zantrel("gzip -9 a.txt").returncode, 0)
        self.assertEqual(self.files(), ["a.txt.gz"])
        packed = (self.folder / "a.txt.gz").read_bytes()
        self.assertEqual(gzip.decompress(packed), TEXT)
        self.assertEqual(packed[3:8], b"\x08" + FIRST_SEPTEMBER.to_bytes(4, "little"))
        self.assertIn(b"a.txt\0", packed[:20])
        self.assertEqual(self.zantrel("gunzip a.txt.gz").returncode, 0)
        self.assertEqual(self.files(), ["a.txt"])
        self.assertEqual((self.folder / "a.txt").read_bytes(), TEXT)
        self.assertEqual(int((self.folder / "a.txt").stat().st_mtime), FIRST_SEPTEMBER)

    def test_has_the_options_of_gzip(self):
        (self.folder / "a.txt").write_bytes(TEXT)
        self.assertEqual(self.zantrel("gzip -k -n a.txt").returncode, 0)
        self.assertEqual((self.folder / "a.txt.gz").read_bytes()[3:8], b"\0" * 5)
        for arguments, status in (
                ("gzip a.txt", 2), ("gzip -kf a.txt", 0), ("gzip a.txt.gz", 2), ("gunzip a.txt", 2),
                ("gzip -t a.txt.gz", 0), ("gzip -t a.txt", 1), ("gunzip -kf a.txt.gz", 0),
                ("gzip none", 1), ("gzip .", 2), ("gzip -k -S .zz a.txt", 0),
                ("gzip -dkf -S .zz a.txt.zz", 0), ("gunzip --max-size 1K -kf a.txt.gz", 1),
                ("gzip --max-size x", 2), ("gzip -c -d a.txt.gz a.txt.gz", 0)):
            with self.subTest(arguments=arguments):
                result = self.zantrel(arguments)
                self.assertEqual(result.returncode, status, result.stderr.decode())
        self.assertEqual(self.files(), ["a.txt", "a.txt.gz", "a.txt.zz"])
        listed = self.zantrel("gzip -l a.txt.gz").stdout.decode().splitlines()
        self.assertEqual(listed[1].split()[1], str(len(TEXT)))
        self.assertEqual(listed[1].split()[3], "a.txt")
        sizes = [len(self.zantrel(f"gzip -{level} -c a.txt").stdout) for level in (0, 1, 9)]
        self.assertEqual(sizes, sorted(sizes, reverse=True))

    def test_restores_the_last_name_of_a_stored_path_alone(self):
        for name in ("evil/../../b.txt", "b.txt"):
            stream = io.BytesIO()
            with gzip.GzipFile("b.txt", "wb", fileobj=stream, mtime=FIRST_SEPTEMBER) as packer:
                packer.write(b"x")
            packed = stream.getvalue().replace(b"b.txt", name.encode(), 1)
            (self.folder / "c.gz").write_bytes(packed)
            self.assertEqual(self.zantrel("gunzip -N -f c.gz").returncode, 0)
            self.assertEqual(self.files(), ["b.txt"])
            self.assertEqual(int((self.folder / "b.txt").stat().st_mtime), FIRST_SEPTEMBER)

    def test_works_on_streams_and_folders(self):
        packed = self.zantrel("gzip", TEXT)
        self.assertEqual(gzip.decompress(packed.stdout), TEXT)
        self.assertEqual(self.zantrel("gunzip -c -", gzip.compress(TEXT)).stdout, TEXT)
        self.assertEqual(self.zantrel("gunzip", b"no gzip").returncode, 1)
        with open(self.folder / "out.gz", "wb") as out:
            out.write(b"before")
            out.flush()
            subprocess.run(COMMAND + ["gzip"], input=TEXT, stdout=out, check=True)
        written = (self.folder / "out.gz").read_bytes()
        self.assertEqual((written[:6], gzip.decompress(written[6:])), (b"before", TEXT))
        (self.folder / "tree/deep").mkdir(parents=True)
        (self.folder / "tree/deep/x").write_bytes(b"x")
        (self.folder / "tree/y").write_bytes(b"y")
        self.assertEqual(self.zantrel("gzip -r tree").returncode, 0)
        self.assertEqual(self.files(), ["out.gz", "tree/deep/x.gz", "tree/y.gz"])

    def test_compresses_in_every_format(self):
        (self.folder / "a").write_bytes(TEXT)
        for name in ("deflate", "bz2", "lzw", "ppmd", "none"):
            with self.subTest(format=name):
                self.assertEqual(self.zantrel(f"compress -a {name} -o packed a").returncode, 0)
                self.assertEqual(self.zantrel(f"decompress -a {name} packed").stdout, TEXT)
                self.assertEqual(
                    self.zantrel(f"decompress -a {name} --max-size 1K -o no packed").returncode, 1)
        self.assertEqual(self.files(), ["a", "packed"])
        self.assertEqual(bz2.decompress(self.zantrel("compress -a bz2", TEXT).stdout), TEXT)
        self.assertEqual(zlib.decompress(self.zantrel("compress", TEXT).stdout, -15), TEXT)
        self.assertEqual(self.zantrel("compress -a rar").returncode, 2)

    def test_unpacks_archives_of_every_format(self):
        name = "a/" * 20 + "n" * 90
        for form in (tarfile.USTAR_FORMAT, tarfile.GNU_FORMAT, tarfile.PAX_FORMAT):
            with self.subTest(form=form):
                with tarfile.open(self.folder / "t.tgz", "w:gz", format=form) as archive:
                    for entry in (tarfile.TarInfo(name), tarfile.TarInfo("top")):
                        entry.size = len(TEXT)
                        archive.addfile(entry, io.BytesIO(TEXT))
                folder = f"out{form}"
                self.assertEqual(self.zantrel(f"untargz -C {folder} t.tgz").returncode, 0)
                self.assertEqual((self.folder / folder / "top").read_bytes(), TEXT)
                self.assertEqual((self.folder / folder / name).read_bytes(), TEXT)
        with tarfile.open(self.folder / "t.tgz", "w:gz") as archive:
            archive.addfile(tarfile.TarInfo("../escaped"), io.BytesIO())
        self.assertEqual(self.zantrel("untargz -C out t.tgz").returncode, 1)
        self.assertFalse((self.folder / "escaped").exists())


if __name__ == "__main__":
    main(__doc__)
