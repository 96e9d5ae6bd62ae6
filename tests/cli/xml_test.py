#!/usr/bin/env python3
"""Runs the sub-commands of zantrel xml, and holds what they write against Python's own parser.

Usage: xml_test.py COMMAND [ARGUMENT ...]    the command, perhaps behind an emulator
"""
import xml.etree.ElementTree as ElementTree

from command import CommandCase, main, run

LIBRARY = """<?xml version="1.0" encoding="iso-8859-1"?>
<library name="Main"><book id="3" lang="en"><title>Sea</title></book>
<book id="1"><title>Größe &amp; Art</title></book><book id="20" lang="de"><title>see</title></book>
</library>""".encode("latin-1")

TITLE = "book[1]|title"

# Arguments, exit status, standard output.
QUERIES = [
    (["get", TITLE], 0, "Größe & Art\n"),
    (["get", "book|(id)"], 0, "3\n"),
    (["get", "(name)"], 0, "Main\n"),
    (["get", TITLE + "|$"], 0, "<title>Größe &amp; Art</title>\r\n"),
    (["get", "--tag", "title"], 0, "Sea\n"),
    (["get", "--tag", "title", "-"], 0, "Sea\n"),
    (["get", "book[3]"], 1, ""),
    (["get", "book|(name)"], 1, ""),
    (["get", "--tag", "none"], 1, ""),
    (["get"], 2, None),
    (["get", "--tag", "title", "book", "-", "-"], 2, None),
    (["find", "--tag", "title"], 0,
     "book|title\tSea\nbook[1]|title\tGröße & Art\nbook[2]|title\tsee\n"),
    (["find", "-a", "lang"], 0, "book\t\nbook[2]\t\n"),
    (["find", "-a", "lang=d*"], 0, "book[2]\t\n"),
    (["find", "-a", "name=Main"], 0, "$\t\n"),
    (["find", "-c", "se*"], 0, "book[2]|title\tsee\n"),
    (["find", "-i", "-c", "SE*"], 0, "book|title\tSea\nbook[2]|title\tsee\n"),
    (["find", "-t", "book", "-c", "x"], 1, ""),
    (["find", "--count"], 0, "7\n"),
    (["find", "--count", "-t", "x"], 1, "0\n"),
    (["validate"], 0, "-: well-formed\n"),
    (["validate", "-", "none"], 1, "-: well-formed\nnone: cannot be read\n"),
    (["set", "book"], 2, None),
    (["set", "book[9]", "x"], 1, ""),
    (["sort", "--by", "attr"], 2, None),
    (["sort", "--name", "id"], 2, None),
    (["sort", "--by", "content", "-n"], 2, None),
    (["sort", "--record", "title"], 2, None),
    (["format", "--encoding", "none-such"], 1, ""),
    ([], 2, None),
]


class XmlTest(CommandCase):
    def xml(self, arguments, stdin=LIBRARY):
        return run(["xml"] + arguments, stdin, self.folder)

    def document(self, arguments, stdin=LIBRARY):
        result = self.xml(arguments, stdin)
        self.assertEqual(result.returncode, 0, result.stderr.decode(errors="replace"))
        return ElementTree.fromstring(result.stdout)

    def test_answers_each_query_of_the_table(self):
        for arguments, status, stdout in QUERIES:
            with self.subTest(arguments=arguments):
                result = self.xml(arguments)
                self.assertEqual(result.returncode, status, result.stderr.decode(errors="replace"))
                if stdout is not None:
                    self.assertEqual(result.stdout.decode(), stdout)
                if status != 0 and stdout == "" and arguments[0] != "find":
                    self.assertNotEqual(result.stderr, b"")

    def test_writes_what_other_parsers_read_in_every_charset(self):
        expected = ["Sea", "Größe & Art", "see"]
        for encoding in ("iso-8859-1", "utf-8", "utf-16", "us-ascii", "windows-1252"):
            with self.subTest(encoding=encoding):
                result = self.xml(["format", "--encoding", encoding])
                root = ElementTree.fromstring(result.stdout)
                self.assertEqual([title.text for title in root.iter("title")], expected)
                again = self.xml(["format"], result.stdout)
                self.assertEqual(again.stdout, result.stdout)
                self.assertEqual(self.xml(["get", TITLE], result.stdout).stdout.decode(),
                                 "Größe & Art\n" if encoding != "us-ascii"
                                 else "Gr&#xF6;&#xDF;e & Art\n")

    def test_sets_content_and_attributes(self):
        root = self.document(["set", TITLE, "<é>"])
        self.assertEqual(root[1][0].text, "<é>")
        root = self.document(["set", TITLE + "|*", ""])
        self.assertIsNone(root[1][0].text)
        root = self.document(["set", "book[1]|(id)", "\"&'"])
        self.assertEqual(root[1].attrib, {"id": "\"&'"})
        root = self.document(["set", "(new)", "x"])
        self.assertEqual(root.attrib, {"name": "Main", "new": "x"})

    def test_sorts(self):
        for arguments, ids in ((["--by", "attr", "--name", "id"], "1 20 3"),
                               (["--by", "attr", "--name", "id", "-n"], "1 3 20"),
                               (["--by", "attr", "--name", "id", "-n", "-r"], "20 3 1"),
                               (["--by", "attr", "--name", "lang"], "1 20 3"),
                               (["--by", "content", "--record", "title"], "1 3 20"),
                               (["--by", "content", "--record", "title", "-r", "-i"], "20 3 1"),
                               ([], "3 1 20")):
            with self.subTest(arguments=arguments):
                root = self.document(["sort"] + arguments)
                self.assertEqual(" ".join(book.get("id") for book in root), ids)
        letters = self.document(["sort", "--path", "b", "-"], b"<a><c/><b><z/><Y/><x/></b></a>")
        self.assertEqual([child.tag for child in letters[1]], ["Y", "x", "z"])

    def test_edits_a_file_in_its_place(self):
        path = self.folder / "library.xml"
        path.write_bytes(LIBRARY)
        arguments = ["set", "book|title", "Ocean", "-o", "library.xml", "library.xml"]
        self.assertEqual(self.xml(arguments).returncode, 0)
        self.assertEqual(ElementTree.parse(path).find("book/title").text, "Ocean")
        before = path.read_bytes()
        arguments[1] = "book|none"
        self.assertEqual(self.xml(arguments).returncode, 1)
        self.assertEqual(path.read_bytes(), before)
        self.assertEqual([p.name for p in self.folder.iterdir()], ["library.xml"])

    def test_every_path_that_it_lists_leads_there(self):
        odd = (b"<r><a>1</a><b|c>2</b|c><a>3<x>4</x></a><(y)>5</(y)><..>6</..><[0]>7</[0]>"
               b"<*>8</*><$>9</$></r>")
        listed = self.xml(["find"], odd).stdout.decode().splitlines()
        self.assertEqual([line.split("\t")[1] for line in listed],
                         ["", "1", "2", "3", "4", "5", "6", "7", "8", "9"])
        for line in listed[1:]:
            path, content = line.split("\t")
            with self.subTest(path=path):
                self.assertEqual(self.xml(["get", path], odd).stdout.decode(), content + "\n")

    def test_refuses_what_is_not_well_formed_when_asked_to(self):
        broken = b"<a>\n<b></a>"
        self.assertEqual(self.xml(["format"], broken).returncode, 0)
        for arguments in (["format", "--strict"], ["validate"], ["get", "--strict", "b"]):
            result = self.xml(arguments, broken)
            self.assertEqual(result.returncode, 1)
            self.assertIn(b"line: 2", result.stderr)
        self.assertEqual(self.xml(["get", "--keep-space", "a"], b"<r><a> x </a></r>").stdout,
                         b" x \n")

    def test_a_deep_document_is_no_trouble(self):
        deep = b"<a>" * 200000
        self.assertEqual(self.xml(["find", "--count"], deep).stdout, b"200000\n")
        self.assertEqual(self.xml(["format"], deep).returncode, 0)


if __name__ == "__main__":
    main(__doc__)
