#!/usr/bin/env python3
"""Tests of tools/gen_api.py on small descriptions of their own."""
import contextlib
import io
import pathlib
import sys
import tempfile
import unittest

SOURCE = pathlib.Path(__file__).resolve().parents[2]
sys.path.insert(0, str(SOURCE / "tools"))
import gen_api  # noqa: E402

GADGET = """\
component Gadget ClsGadget gadgets/cls_gadget.h set
    Holds widgets.

event AbortCheck

property int Size computed write
    Size.

method Widget Find(text name) progress
    Finds a widget.

method bool Put(Widget widget)
    Puts a widget in.

method Gadget Other()
    Another gadget.
"""
COMMON = """\
property text LastErrorText common
    The log.
"""
WIDGET = """\
# A comment.
component Widget ClsWidget gadgets/cls_widget.h
    Turns widgets.

use common

section Events

event AbortCheck

section Turning

property int Speed stored = 5
    Turns a minute.

property text Shape checked = ""
    Name of the shape.

property text Colour computed
    Name of the colour.

property int Size computed write = 3
    Size, made to fit.

property text Size overload
    The same in words.

method bool Save(text path) suffixed
    Saves the widget.

method bool Turn(text name, int times, out bytes trace) progress
    Turns the widget.

method text Describe(bytes picture)
    Describes a picture.
"""


class Workspace:
    def __init__(self, **files):
        self.folder = tempfile.TemporaryDirectory()
        self.root = pathlib.Path(self.folder.name)
        (self.root / "api").mkdir()
        for name, text in files.items():
            (self.root / "api" / f"{name}.api").write_text(text, encoding="utf-8")

    def __enter__(self):
        return self

    def __exit__(self, *_):
        self.folder.cleanup()

    def run(self, *arguments):
        """Exit status and what was written to the error output."""
        errors = io.StringIO()
        with contextlib.redirect_stderr(errors), contextlib.redirect_stdout(io.StringIO()):
            status = gen_api.main(["--root", str(self.root), *arguments])
        return status, errors.getvalue()

    def file(self, name):
        return (self.root / name).read_text(encoding="utf-8")


class Generation(unittest.TestCase):
    def setUp(self):
        self.space = Workspace(common=COMMON, Widget=WIDGET)
        self.addCleanup(self.space.folder.cleanup)
        self.assertEqual(self.space.run(), (0, ""))

    def test_header_declares_every_member_with_its_documentation(self):
        text = self.space.file("include/zantrel/widget.h")
        for line in ("class ZANTREL_API Widget final {", "  /// Turns a minute.",
                     "  int get_Speed() const;", "  void put_Speed(int value);",
                     "  bool put_Shape(Text value);", "  std::string get_Colour() const;",
                     "  void put_Size(int value);", "  void put_Size(Text value);",
                     "  bool Turn(Text name, int times, Bytes& trace);",
                     "  std::string Describe(ByteView picture);",
                     "  bool Describe(ByteView picture, std::string& out);",
                     "  std::string get_LastErrorText() const;",
                     "  std::function<void(AbortCheckEventArgs&)> OnAbortCheck;"):
            self.assertIn(line + "\n", text)
        self.assertNotIn("put_Colour", text)
        self.assertNotIn("OnPercentDone", text)

    def test_facade_has_one_call_for_each_member(self):
        text = self.space.file("src/facade/widget.cpp")
        for line in ('return facade::get<int>(impl_, "Speed", &WidgetSettings::speed);',
                     'facade::put(impl_, "Speed", &WidgetSettings::speed, value);',
                     'return facade::put(impl_, "Shape", &ClsWidget::put_Shape, value);',
                     'return facade::get<std::string>(impl_, "Colour", &ClsWidget::get_Colour);',
                     'facade::put(impl_, "Size", &ClsWidget::put_Size, value);',
                     'facade::put(impl_, "Size", &ClsWidget::put_SizeX, value);',
                     'return facade::call(impl_, "Save", &ClsWidget::SaveX, path);',
                     'return facade::call(impl_, "Turn", &ClsWidget::Turn, name, times, trace,',
                     "facade::Handlers{nullptr, &OnAbortCheck, nullptr});",
                     'return facade::call(impl_, "Describe", &ClsWidget::DescribeX, picture, out);',
                     "return facade::get_LastErrorText(impl_);"):
            self.assertIn(line, text)

    def test_settings_hold_stored_and_checked_properties_only(self):
        text = self.space.file("src/gadgets/widget_settings.h")
        self.assertIn("  std::int32_t speed = 5;\n  XString shape;\n};", text)

    def test_surface_test_covers_defaults_and_every_method(self):
        text = self.space.file("tests/facade/widget_surface_test.cpp")
        self.assertIn("EXPECT_EQ(object.get_Speed(), 5);", text)
        self.assertIn('{"Turn",', text)
        self.assertIn('{"Describe", [](Widget& object)', text)

    def test_reference_names_defaults_and_access(self):
        text = self.space.file("docs/reference/Widget.md")
        self.assertIn("Property, integer, read and write, default 5.", text)
        self.assertIn("Property, text, read only.", text)
        self.assertIn("Property, text, write only: the property in another form.", text)

    def test_no_line_is_longer_than_the_limit(self):
        for path in self.space.root.rglob("*"):
            if path.suffix in (".h", ".cpp"):
                for line in path.read_text(encoding="utf-8").splitlines():
                    self.assertLessEqual(len(line), 100, path)

    def test_a_second_run_changes_nothing(self):
        before = {p: p.stat().st_mtime_ns for p in self.space.root.rglob("*") if p.is_file()}
        self.assertEqual(self.space.run(), (0, ""))
        self.assertEqual(before, {p: p.stat().st_mtime_ns for p in before})

    def test_check_passes_when_current_and_names_what_is_not(self):
        self.assertEqual(self.space.run("--check"), (0, ""))
        (self.space.root / "src/facade/widget.cpp").write_text("edited by hand\n")
        status, errors = self.space.run("--check")
        self.assertEqual(status, 1)
        self.assertIn("src/facade/widget.cpp", errors)
        self.assertEqual(self.space.file("src/facade/widget.cpp"), "edited by hand\n")


class Objects(unittest.TestCase):
    """Objects of a component as arguments and results, of another one and of its own."""

    def setUp(self):
        self.space = Workspace(common=COMMON, Widget=WIDGET, Gadget=GADGET)
        self.addCleanup(self.space.folder.cleanup)
        self.assertEqual(self.space.run(), (0, ""))

    def expect(self, file, *lines):
        text = self.space.file(file)
        for line in lines:
            self.assertIn(line + "\n", text)

    def test_they_are_references_and_pointers(self):
        self.expect("include/zantrel/gadget.h", "class Widget;",
                    "  std::unique_ptr<Widget> Find(Text name);", "  bool Put(Widget& widget);",
                    "  std::unique_ptr<Gadget> Other();")
        self.assertNotIn("class Gadget;", self.space.file("include/zantrel/gadget.h"))

    def test_the_facade_makes_the_object_that_the_native_method_sets(self):
        self.expect("src/facade/gadget.cpp", '#include "facade/gadget_impl.h"',
                    '#include "facade/widget_impl.h"',
                    '  return facade::make(out, impl_, "Find", &ClsGadget::FindX, name, out,',
                    '  return facade::call(impl_, "Put", &ClsGadget::Put, widget);')

    def test_components_whose_objects_travel_open_their_inside_to_the_facade(self):
        self.expect("include/zantrel/widget.h", "  friend struct ::zantrel::facade::Access;")
        self.expect("src/facade/widget_impl.h",
                    "struct Widget::Impl final : zantrel::facade::Holder<zantrel::ClsWidget> {};")
        self.assertNotIn("struct Widget::Impl", self.space.file("src/facade/widget.cpp"))

    def test_the_surface_test_gives_an_object(self):
        self.expect("tests/facade/gadget_surface_test.cpp", "       Widget widget;",
                    "       return object.Put(widget);")

    def test_setters_have_the_prefix_of_the_native_class(self):
        self.expect("src/facade/gadget.cpp",
                    '  facade::put(impl_, "Size", &ClsGadget::set_Size, value);')


class Errors(unittest.TestCase):
    HEAD = "component Widget ClsWidget gadgets/cls_widget.h\n    Turns.\n"

    def rejected(self, text, line, words):
        with Workspace(common=COMMON, Widget=text) as space:
            status, errors = space.run()
            self.assertEqual(status, 1)
            self.assertTrue(errors.startswith(f"api/Widget.api:{line}: "), errors)
            self.assertIn(words, errors)
            self.assertFalse((space.root / "include").exists())

    def test_errors_name_file_line_and_reason(self):
        doc = "\n    Text.\n"
        for row, words in (
                ("propery int A stored", 'unknown row "propery"'),
                ("property integer A stored", 'unknown type "integer"'),
                ("property int A", "a property is:"),
                ("property int A checked write", "unknown kind"),
                ("property int A stored = x", "x is no default for int"),
                ("property bytes A stored = 1", "1 is no default for bytes"),
                ("property text A stored = plain", "plain is no default for text"),
                ("method bool A", "a method is:"),
                ("method bool A(int)", '"int" is no parameter'),
                ("method bool A(number n)", 'unknown type "number"'),
                ("method Gadget A()", 'unknown type "Gadget"'),
                ("method bool A(out Widget w)", 'unknown type "Widget"'),
                ("property Widget A stored", 'unknown type "Widget"'),
                ("method text A(out text t)", "a method with an output returns bool"),
                ("method bool A(int n) progress", "progress needs an event row"),
                ("event Explosion", 'unknown event "Explosion"'),
                ("use everything", 'cannot use "everything"'),
                ("section ", "section needs a title"),
                ("component Other ClsOther other.h", "a second component"),
                ("property int\tA stored", "tab character")):
            with self.subTest(row=row):
                self.rejected(self.HEAD + row + doc, 3, words)

    def test_a_name_declared_twice_is_rejected_also_against_the_common_members(self):
        self.rejected(self.HEAD + "property int A stored\n    A.\nmethod bool A()\n    A.\n", 5,
                      'first in line 3')
        self.rejected(self.HEAD + "property int LastErrorText stored\n    A.\nuse common\n", 5,
                      '"LastErrorText" is declared twice')

    def test_a_second_form_needs_a_first(self):
        with Workspace(Widget="component Widget ClsWidget w.h\n    Doc.\n"
                              "property text Size overload\n    Doc.\n") as space:
            status, errors = space.run()
            self.assertEqual(status, 1)
            self.assertIn('"Size" has no first form above', errors)

    def test_a_member_without_documentation_is_rejected(self):
        self.rejected(self.HEAD + "property int A stored\n\nproperty int B stored\n    B.\n", 3,
                      "has no documentation")
        self.rejected(self.HEAD + "property int A stored\n    no stop\n", 3, "full stop")
        self.rejected(self.HEAD + "\n    stray\n", 4, "without a row")

    def test_a_file_without_its_component_is_rejected(self):
        self.rejected("# nothing\n", 1, "no component row")
        self.rejected("component Gadget ClsGadget g.h\n    G.\n", 1, "describes Gadget")


class Committed(unittest.TestCase):
    def test_committed_files_are_current(self):
        errors = io.StringIO()
        with contextlib.redirect_stderr(errors):
            self.assertEqual(gen_api.main(["--check"]), 0, errors.getvalue())


if __name__ == "__main__":
    unittest.main()
