"""What the tests of the zantrel command share: its program, perhaps behind an emulator, and how to run it."""
import os
import pathlib
import subprocess
import sys
import tempfile
import unittest

COMMAND = sys.argv[1:]


def run(arguments, stdin=b"", folder=None, environment=None):
    return subprocess.run(COMMAND + arguments, input=stdin, capture_output=True, cwd=folder,
                          env={**os.environ, **(environment or {})}, timeout=120, check=False)


class CommandCase(unittest.TestCase):
    """Each test works in a folder of its own."""

    def setUp(self):
        folder = tempfile.TemporaryDirectory()
        self.addCleanup(folder.cleanup)
        self.folder = pathlib.Path(folder.name)

    def zantrel(self, arguments, stdin=b"", environment=None):
        return run(arguments.split(), stdin, self.folder, environment)


def main(usage):
    if not COMMAND:
        sys.exit(usage)
    if "/" in COMMAND[0]:
        COMMAND[0] = str(pathlib.Path(COMMAND[0]).absolute())
    unittest.main(argv=sys.argv[:1])
