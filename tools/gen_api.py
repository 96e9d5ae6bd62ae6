#!/usr/bin/env python3
"""Makes the public layer from api/*.api: headers, facade sources, settings, reference pages, tests.

Usage: gen_api.py [--check] [--root FOLDER]

--check writes nothing and fails when a committed file differs from what would be written. The form
of the rows is described in api/README.md.
"""
import argparse
import dataclasses
import pathlib
import re
import sys
import textwrap

WIDTH = 100


class ApiError(Exception):
    def __init__(self, file, line, message):
        super().__init__(f"{file}:{line}: {message}")


# ---------------------------------------------------------------------------------- vocabulary

@dataclasses.dataclass(frozen=True)
class Type:
    into: str       # as an argument
    out: str        # as an output argument
    result: str     # as a result
    field: str      # as a field of the settings
    sample: str     # a value for tests, unlike every default in use
    words: str      # in the reference


TYPES = {
    "bool": Type("bool", "bool&", "bool", "bool", "true", "true or false"),
    "int": Type("int", "int&", "int", "std::int32_t", "-77", "integer"),
    "unsigned": Type("unsigned", "unsigned&", "unsigned", "std::uint32_t", "77u", "unsigned integer"),
    "int64": Type("std::int64_t", "std::int64_t&", "std::int64_t", "std::int64_t",
                  "std::int64_t{1} << 40", "64-bit integer"),
    "double": Type("double", "double&", "double", "double", "0.5", "number"),
    "text": Type("Text", "std::string&", "std::string", "XString", '"sample \\xC3\\xA4"', "text"),
    "bytes": Type("ByteView", "Bytes&", "Bytes", "DataBuffer", "(Bytes{1, 0, 255})", "bytes"),
    "datetime": Type("const DateTime&", "DateTime&", "DateTime", "", "DateTime{2026, 11, 22}",
                     "date and time"),
}


def type_of(name):
    """The type of that name. What is not in the table is a component: an object of it is given by
    reference and comes as a pointer, null after a failure."""
    return TYPES.get(name) or Type(f"{name}&", "", f"std::unique_ptr<{name}>", "", "", "")


EVENTS = {
    "PercentDone": "The completed share of a running method rose.",
    "AbortCheck": "A running method asks whether to stop: at most once per HeartbeatMs, and only "
                  "while its percentage stands still.",
    "ProgressInfo": "A running method reports a named fact, such as a byte count.",
}
KINDS = {  # kind -> (has a field, has a setter, the setter can refuse)
    "stored": (True, True, False),
    "checked": (True, True, True),
    "computed": (False, False, False),
    "computed checked": (False, True, True),
    "computed write": (False, True, False),
    "overload": (False, True, False),
    "common": (False, False, False),
    "common write": (False, True, False),
}


@dataclasses.dataclass
class Param:
    type: str
    name: str
    out: bool

    @property
    def is_object(self):
        return self.type not in TYPES

    def declare(self):
        form = type_of(self.type).out if self.out else type_of(self.type).into
        return f"{form} {self.name}"


@dataclasses.dataclass
class Member:
    what: str            # "property" or "method"
    type: str
    name: str
    line: int
    doc: list = dataclasses.field(default_factory=list)
    kind: str = ""       # of a property; "common" for a common method
    default: str = ""    # C++ text of a property's default
    params: list = dataclasses.field(default_factory=list)
    progress: bool = False
    const: bool = False
    suffixed: bool = False  # the native name ends with X, whatever the result is

    @property
    def field(self):
        return self.name[0].lower() + self.name[1:]

    @property
    def common(self):
        return self.kind.startswith("common")

    @property
    def has_field(self):
        return KINDS[self.kind][0]

    @property
    def writable(self):
        return KINDS[self.kind][1]

    @property
    def put_result(self):
        return "bool" if KINDS[self.kind][2] else "void"

    @property
    def readable(self):
        return self.kind != "overload"

    @property
    def native(self):
        """What the native member is called, without get_ and put_."""
        made = self.produces or self.makes_object
        return self.name + ("X" if made or self.suffixed or not self.readable else "")

    @property
    def makes_object(self):
        """Whether the native method sets a new object, and the result is that."""
        return self.type not in TYPES

    @property
    def produces(self):
        """Whether the result is made in an output argument of the native method."""
        return self.what == "method" and self.type in ("text", "bytes", "datetime")


@dataclasses.dataclass
class Section:
    title: str
    doc: list = dataclasses.field(default_factory=list)
    members: list = dataclasses.field(default_factory=list)


@dataclasses.dataclass
class Component:
    file: str
    name: str = ""
    native: str = ""
    header: str = ""
    value: bool = False  # a plain value without log and common members
    setter: str = "put"  # what the names of native setters begin with
    is_object: bool = False  # objects of it are given to methods, or come from them
    doc: list = dataclasses.field(default_factory=list)
    sections: list = dataclasses.field(default_factory=list)
    events: list = dataclasses.field(default_factory=list)

    @property
    def stem(self):
        return snake(self.name)

    @property
    def settings(self):
        return f"{self.name}Settings"

    @property
    def members(self):
        return [m for s in self.sections for m in s.members]

    def of(self, what):
        return [m for m in self.members if m.what == what]

    @property
    def objects(self):
        """The components whose objects its methods take or give, by name."""
        names = {m.type for m in self.members} | {p.type for m in self.members for p in m.params}
        return sorted(names - TYPES.keys())


def snake(name):
    return re.sub(r"(?<=[a-z0-9])(?=[A-Z])", "_", name).lower()


# -------------------------------------------------------------------------------------- reading

PROPERTY = re.compile(r"(\w+) (\w+) ((?:stored|checked|computed|common|overload)(?: (?:checked|write))?)"
                      r"(?: = (.+))?")
METHOD = re.compile(r"(\w+) (\w+)\((.*)\)((?: (?:progress|common|const|suffixed))*)")
PARAM = re.compile(r"(out )?(\w+) (\w+)")


class Reader:
    """Reads one description; every error names file and line."""

    def __init__(self, path, root, common, objects=()):
        self.file = path.relative_to(root).as_posix()
        self.text = path.read_text(encoding="utf-8")
        self.common = common
        self.objects = objects
        self.component = Component(self.file)
        self.names = {}
        self.line = 0

    def fail(self, message, line=None):
        raise ApiError(self.file, line or self.line, message)

    def read(self):
        doc = None
        rows = []
        for self.line, text in enumerate(self.text.splitlines(), 1):
            if "\t" in text:
                self.fail("tab character")
            if text.startswith("#"):
                continue
            if not text.strip():
                doc = None
            elif text[0] == " ":
                if doc is None:
                    self.fail("documentation without a row above it")
                doc.append(text.strip())
            else:
                doc = self.row(text.rstrip())
                rows.append((self.line, text, doc))
        for line, text, doc in rows:
            if text.split()[0] in ("component", "value", "property", "method"):
                if not doc:
                    self.fail(f'"{text}" has no documentation', line)
                if not doc[-1].endswith("."):
                    self.fail("documentation does not end with a full stop", line)
        return self.component

    def row(self, text):
        word, _, rest = text.partition(" ")
        handler = {"component": self.head, "value": self.head, "use": self.use, "event": self.event,
                   "section": self.section, "property": self.property,
                   "method": self.method}.get(word)
        if handler is None:
            self.fail(f'unknown row "{word}"')
        return handler(rest, word)

    def head(self, rest, word):
        fields = rest.split()
        if len(fields) == 4 and fields[3] == "set":
            self.component.setter = fields.pop()
        if len(fields) != 3:
            self.fail(f"{word} needs a name, a native class and its header")
        if self.component.name:
            self.fail("a second component in one file")
        self.component.name, self.component.native, self.component.header = fields
        self.component.value = word == "value"
        return self.component.doc

    def use(self, rest, _word):
        if rest != "common" or self.common is None:
            self.fail(f'cannot use "{rest}"')
        section = Section("Members of every component")
        for member in self.common.members:
            self.declare(member)
            section.members.append(member)
        self.component.sections.append(section)
        return section.doc

    def event(self, rest, _word):
        if rest not in EVENTS:
            self.fail(f'unknown event "{rest}"')
        self.unique("On" + rest)
        self.component.events.append(rest)
        return []

    def section(self, rest, _word):
        if not rest:
            self.fail("section needs a title")
        self.component.sections.append(Section(rest))
        return self.component.sections[-1].doc

    def type(self, name, objects=()):
        if name not in TYPES and name not in objects:
            self.fail(f'unknown type "{name}"')
        return name

    def unique(self, name):
        if name in self.names:
            self.fail(f'"{name}" is declared twice, first in line {self.names[name]}')
        self.names[name] = self.line

    def declare(self, member):
        if member.readable:
            self.unique(member.name)
        elif member.name not in self.names:
            self.fail(f'"{member.name}" has no first form above')

    def add(self, member):
        self.declare(member)
        if not self.component.sections:
            self.component.sections.append(Section(""))
        self.component.sections[-1].members.append(member)
        return member.doc

    def property(self, rest, _word):
        match = PROPERTY.fullmatch(rest)
        if not match:
            self.fail("a property is: property TYPE Name KIND [= default]")
        type_name, name, kind, default = match.groups()
        if kind not in KINDS:
            self.fail(f'unknown kind of property "{kind}"')
        member = Member("property", self.type(type_name), name, self.line, kind=kind)
        member.default = self.default(member.type, default)
        return self.add(member)

    def default(self, type_name, text):
        if text is None:
            return ""
        forms = {"bool": r"true|false", "int": r"-?\d+", "int64": r"-?\d+", "unsigned": r"\d+",
                 "double": r"-?\d+(\.\d+)?", "text": r'"[^"\\]*"'}
        if not re.fullmatch(forms.get(type_name, r"$^"), text):
            self.fail(f"{text} is no default for {type_name}")
        return text

    def method(self, rest, _word):
        match = METHOD.fullmatch(rest)
        if not match:
            self.fail("a method is: method TYPE Name(TYPE name, out TYPE name, ...) [progress]")
        type_name, name, params, flags = match.groups()
        member = Member("method", self.type(type_name, self.objects), name, self.line)
        member.progress, member.const = "progress" in flags.split(), "const" in flags.split()
        member.kind = "common" if "common" in flags.split() else ""
        member.suffixed = "suffixed" in flags.split()
        if member.progress and not self.component.events:
            self.fail("progress needs an event row above")
        for text in filter(None, (p.strip() for p in params.split(","))):
            param = PARAM.fullmatch(text)
            if not param:
                self.fail(f'"{text}" is no parameter: TYPE name or out TYPE name')
            objects = () if param[1] else self.objects
            member.params.append(Param(self.type(param[2], objects), param[3], bool(param[1])))
        if any(p.out for p in member.params) and member.type != "bool":
            self.fail("a method with an output returns bool")
        return self.add(member)


def read_all(root):
    folder = root / "api"
    common_path = folder / "common.api"
    common = Reader(common_path, root, None).read() if common_path.exists() else None
    components = []
    paths = [path for path in sorted(folder.glob("*.api")) if path != common_path]
    objects = {path.stem for path in paths}
    for path in paths:
        component = Reader(path, root, common, objects).read()
        if not component.name:
            raise ApiError(component.file, 1, "no component row")
        if component.name != path.stem:
            raise ApiError(component.file, 1, f"describes {component.name}")
        components.append(component)
    used = {name for component in components for name in component.objects}
    for component in components:
        component.is_object = component.name in used
    return components


# -------------------------------------------------------------------------------------- writing

def comment(doc, indent=""):
    lines = textwrap.wrap(" ".join(doc), WIDTH - len(indent) - 4, break_on_hyphens=False)
    return [f"{indent}/// {line}" for line in lines]


def breakable(head, items, tail, indent=""):
    """head(items)tail in one line, or broken as clang-format does it: aligned behind the parenthesis."""
    line = f"{indent}{head}({', '.join(items)}){tail}"
    if len(line) <= WIDTH:
        return [line]
    align = len(indent) + len(head) + 1
    if align + max(map(len, items)) + len(tail) + 1 > WIDTH:  # no room behind the parenthesis
        lines, align = [f"{indent}{head}("], len(indent) + 4
        current = " " * align
    else:
        lines, current = [], f"{indent}{head}("
    fresh = True
    for number, item in enumerate(items):
        item += "," if number + 1 < len(items) else f"){tail}"
        if not fresh and len(current) + 1 + len(item) > WIDTH:
            lines.append(current)
            current, fresh = " " * align, True
        current += item if fresh else " " + item
        fresh = False
    return lines + [current]


def generated(component, mark="//"):
    return f"{mark} Generated by tools/gen_api.py from {component.file}; do not edit."


def text_overload(member):
    """Parameters of the form of a text method that writes into the caller's string."""
    return member.params + [Param(member.type, "out", True)]


def header(component):
    out = [generated(component), "#pragma once", "", "#include <zantrel/types.h>", "",
           "namespace Zantrel {", ""]
    name = component.name
    out += [f"class {other};" for other in component.objects if other != name] + [""]
    out += comment(component.doc)
    out += [f"class ZANTREL_API {name} final {{", " public:", f"  {name}() noexcept;"]
    if component.value:
        out.append(f"  explicit {name}(Text text) noexcept;")
    out += [f"  ~{name}();", f"  {name}({name}&& other) noexcept;",
            f"  {name}& operator=({name}&& other) noexcept;", f"  {name}(const {name}&) = delete;",
            f"  {name}& operator=(const {name}&) = delete;"]
    for section in component.sections:
        out.append("")
        if section.title:
            out.append(f"  // {section.title}")
        for event in component.events if section.title == "Events" else []:
            out += [""] + comment([EVENTS[event]], "  ")
            out.append(f"  std::function<void({event}EventArgs&)> On{event};")
        for member in section.members:
            out += [""] + comment(member.doc, "  ")
            out += property_header(member) if member.what == "property" else method_header(member)
    out += ["", " private:"]
    if component.value:
        out += ["  friend class Text;"]
    if component.is_object:
        out += ["  friend struct ::zantrel::facade::Access;"]
    out += ["  struct Impl;", "  mutable std::unique_ptr<Impl> impl_;", "};", "",
            "}  // namespace Zantrel", ""]
    return squeeze(out)


def property_header(member):
    out = [f"  {type_of(member.type).result} get_{member.name}() const;"] if member.readable else []
    if member.writable:
        out.append(f"  {member.put_result} put_{member.name}({type_of(member.type).into} value);")
    return out


def method_header(member):
    tail = " const;" if member.const else ";"
    out = breakable(f"{type_of(member.type).result} {member.name}",
                    [p.declare() for p in member.params], tail, "  ")
    if member.produces:
        out.append("  /// The same into the caller's variable, whose capacity is reused; false on failure.")
        out += breakable(f"bool {member.name}", [p.declare() for p in text_overload(member)], tail, "  ")
    return out


def squeeze(lines):
    """Joins lines, with never two blank ones in a row."""
    out = []
    for line in lines:
        if line or (out and out[-1]):
            out.append(line)
    return "\n".join(out) + "\n" if out[-1] else "\n".join(out)


def facade(component):
    name = component.name
    runtime = "facade/value.h" if component.value else "facade/common_members.h"
    headers = {component.header, runtime} | {f"facade/{snake(o)}_impl.h" for o in component.objects}
    if component.is_object:
        headers.add(f"facade/{component.stem}_impl.h")
    out = [generated(component), f"#include <zantrel/{component.stem}.h>", ""]
    out += [f'#include "{path}"' for path in sorted(headers)]
    out += ["", "namespace Zantrel {", "", "namespace facade = zantrel::facade;"]
    if any(m.what == "property" and m.has_field for m in component.members):
        out.append(f"using zantrel::{component.settings};")
    out.append(f"using zantrel::{component.native};")
    base = "Value" if component.value else "Holder"
    if not component.is_object:
        out += ["", f"struct {name}::Impl final : facade::{base}<{component.native}> {{}};"]
    out += ["", f"{name}::{name}() noexcept : impl_(facade::create<Impl>()) {{}}"]
    if component.value:
        out += [f"{name}::{name}(Text text) noexcept : {name}() {{", "  setFromUtf8(text);", "}"]
    out += [f"{name}::~{name}() = default;", f"{name}::{name}({name}&&) noexcept = default;",
            f"{name}& {name}::operator=({name}&&) noexcept = default;"]
    for section in component.sections:
        for member in section.members:
            out.append("")
            if member.what == "property":
                out += property_facade(component, member)
            else:
                out += method_facade(component, member)
    if component.value:
        out += ["", f"Text::Text(const {name}& text) noexcept : Text(facade::textOf(text.impl_)) {{}}"]
    out += ["", "}  // namespace Zantrel", ""]
    return squeeze(out)


def property_facade(component, member):
    result, into = type_of(member.type).result, type_of(member.type).into
    impl = ["impl_"] if member.common else ["impl_", f'"{member.name}"']
    get, put = f"get_{member.name}", f"put_{member.name}"
    getter, setter = [], []
    if not member.common:
        field = f"&{component.settings}::{member.field}"
        native = f"&{component.native}::"
        getter = [field if member.has_field else f"{native}{get}"]
        setter = [field if member.kind == "stored" else f"{native}{component.setter}_{member.native}"]
        get, put = f"get<{result}>", "put"
    out = []
    if member.readable:
        out = [f"{result} {component.name}::get_{member.name}() const {{"]
        out += breakable(f"  return facade::{get}", impl + getter, ";") + ["}"]
    if member.writable:
        returns = "return " if member.put_result == "bool" else ""
        out += ["", f"{member.put_result} {component.name}::put_{member.name}({into} value) {{"]
        out += breakable(f"  {returns}facade::{put}", impl + setter + ["value"], ";") + ["}"]
    return out


def method_facade(component, member):
    params = text_overload(member) if member.produces else member.params
    result = "bool" if member.produces else type_of(member.type).result
    tail = " const {" if member.const else " {"
    names = [p.name for p in params]
    out = []
    if member.produces:
        own = type_of(member.type).result
        out = breakable(f"{own} {component.name}::{member.name}",
                        [p.declare() for p in member.params], tail)
        out += [f"  {own} out;", f"  {member.name}({', '.join(names)});", "  return out;", "}", ""]
    out += breakable(f"{result} {component.name}::{member.name}", [p.declare() for p in params], tail)
    if member.common:
        out += breakable(f"  return facade::{member.name}", ["impl_"] + names, ";")
    else:
        native = f"&{component.native}::{member.native}"
        handlers = "facade::Handlers{" + ", ".join(
            f"&On{e}" if e in component.events else "nullptr" for e in EVENTS) + "}"
        extra = [handlers] if member.progress else []
        given = ["impl_", f'"{member.name}"', native] + names
        if member.makes_object:
            out.append(f"  {member.type} out;")
            out += breakable("  return facade::make", ["out"] + given + ["out"] + extra, ";")
        else:
            out += breakable("  return facade::call", given + extra, ";")
    return out + ["}"]


def object_header(component):
    """What other public classes need to know of one whose objects their methods take or give."""
    native = component.native
    return squeeze([generated(component), "#pragma once", "",
                    f"#include <zantrel/{component.stem}.h>", "",
                    *(f'#include "{h}"' for h in sorted(["facade/holder.h", component.header])), "",
                    "namespace Zantrel {", "",
                    f"struct {component.name}::Impl final : zantrel::facade::Holder<zantrel::{native}> {{}};",
                    "", "}  // namespace Zantrel", ""])


def settings(component):
    fields = [m for m in component.of("property") if m.has_field]
    if not fields:
        return None
    out = [generated(component), "#pragma once", "", "#include <cstdint>", "",
           '#include "core/data_buffer.h"', '#include "core/xstring.h"', "", "namespace zantrel {", "",
           f"/// Values of the stored properties of {component.name}.",
           f"struct {component.settings} {{"]
    for member in fields:
        default = member.default
        if member.type == "text":
            default = "" if default in ("", '""') else f"{{{default}}}"
        elif default:
            default = f" = {default}"
        out.append(f"  {type_of(member.type).field} {member.field}{default};")
    return squeeze(out + ["};", "", "}  // namespace zantrel", ""])


def reference(component):
    def paragraph(doc):
        return textwrap.fill(" ".join(doc), WIDTH, break_on_hyphens=False)

    out = [f"<!-- Generated by tools/gen_api.py from {component.file}; do not edit. -->",
           f"# {component.name}", "", f"`#include <zantrel/{component.stem}.h>`", "",
           paragraph(component.doc), ""]
    for section in component.sections:
        if section.title:
            out += [f"## {section.title}", ""]
        for event in component.events if section.title == "Events" else []:
            text = f"- `On{event}`, with a `{event}EventArgs&`: {EVENTS[event]}"
            out += textwrap.wrap(text, WIDTH, subsequent_indent="  ")
        for member in section.members:
            if member.what == "property":
                default = f", default {member.default}" if member.default else ""
                access = "read and write" if member.writable else "read only"
                if not member.readable:
                    access = "write only: the property in another form"
                out += ["", f"### {member.name}", "",
                        f"Property, {type_of(member.type).words}, {access}{default}.", ""]
            else:
                params = ", ".join(p.declare() for p in member.params)
                out += ["", f"### {member.name}", "",
                        f"`{type_of(member.type).result} {member.name}({params})`", ""]
            out += [paragraph(member.doc), ""]
            if member.what == "method" and member.progress:
                out += ["Raises events while it runs, and can be aborted by them.", ""]
    return squeeze(out).rstrip("\n") + "\n"


def index(components):
    out = ["<!-- Generated by tools/gen_api.py from api/; do not edit. -->", "# Reference", ""]
    out += [f"- [{c.name}]({c.name}.md): {' '.join(c.doc).partition('. ')[0].rstrip('.')}."
            for c in components]
    return "\n".join(out) + "\n"


def umbrella(components):
    out = ["// Generated by tools/gen_api.py from api/; do not edit.", "#pragma once",
           "/// All of Zantrel's public classes.", ""]
    out += [f"#include <zantrel/{stem}.h>" for stem in sorted([c.stem for c in components] + ["types"])]
    return "\n".join(out) + "\n"


# ------------------------------------------------------------------------------- surface tests

def surface_test(component):
    name = component.name
    out = [generated(component), f"#include <zantrel/{component.stem}.h>", "",
           "#include <gtest/gtest.h>", "", '#include "facade/surface.h"', "",
           "namespace Zantrel {", "namespace {", ""]
    defaults = [m for m in component.of("property") if m.default]
    if defaults:
        out += [f"TEST({name}SurfaceTest, PropertiesHaveTheirDefaults) {{", f"  const {name} object;"]
        for m in defaults:
            out.append({"true": f"  EXPECT_TRUE(object.get_{m.name}());",
                        "false": f"  EXPECT_FALSE(object.get_{m.name}());"}.get(
                m.default, f"  EXPECT_EQ(object.get_{m.name}(), {literal(m)});"))
        out += ["}", ""]
    stored = [m for m in component.of("property") if m.kind in ("stored", "common write")]
    if stored:
        out += [f"TEST({name}SurfaceTest, StoredPropertiesGiveBackWhatWasPut) {{",
                f"  {name} object;"]
        for m in stored:
            sample = "false" if m.default == "true" else type_of(m.type).sample
            out.append(f"  object.put_{m.name}({sample});")
            out.append({"true": f"  EXPECT_TRUE(object.get_{m.name}());",
                        "false": f"  EXPECT_FALSE(object.get_{m.name}());"}.get(
                sample, f"  EXPECT_EQ(object.get_{m.name}(), {sample});"))
        out += ["}", ""]
    methods = [m for m in component.of("method") if not m.common]
    table = [f"const std::vector<test::MethodCall<{name}>> kMethods = {{"]
    for m in methods:
        table += test_row(name, m)
    out += ["// Every method, called with empty or zero arguments."] + table + ["};", ""]
    if component.value:
        out += [f"TEST({name}SurfaceTest, EveryMethodTakesEmptyArguments) {{",
                "  test::expectCallable(kMethods);", "}", ""]
    else:
        out += [f"TEST({name}SurfaceTest, EveryMethodLogsUnderItsOwnName) {{",
                "  test::expectLogsUnderItsName(kMethods);", "}", "",
                f"TEST({name}SurfaceTest, EveryMethodOfAMovedFromObjectFailsWithALogEntry) {{",
                "  test::expectFailsWhenMovedFrom(kMethods);", "}", ""]
    out += ["}  // namespace", "}  // namespace Zantrel", ""]
    return squeeze(out)


def literal(member):
    return member.default + "u" if member.type == "unsigned" else member.default


def test_row(name, member):
    """One row: the method's name and a call that tells whether it gave a success value."""
    outs = [p for p in member.params if p.out or p.is_object]
    lines = [f"       {p.type} {p.name};" if p.is_object else
             f"       {type_of(p.type).result} {p.name}{{}};" for p in outs]
    given = ", ".join(p.name if p in outs else argument(p) for p in member.params)
    call = f"object.{member.name}({given})"
    test = f"{call} != nullptr" if member.makes_object else {"text": f"!{call}.empty()", "bytes": f"!{call}.empty()", "bool": call,
            "datetime": f"{call} != DateTime{{}}"}.get(member.type, f"{call} != 0")
    head = f'    {{"{member.name}",'
    short = f"[]({name}& object) {{ return {test}; }}}},"
    if not outs and len(head) + 1 + len(short) <= WIDTH:
        return [f"{head} {short}"]
    if not outs and 5 + len(short) <= WIDTH:
        return [head, f"     {short}"]
    return [head, f"     []({name}& object) {{"] + lines + [f"       return {test};", "     }},"]


def argument(param):
    return {"bool": "false", "text": '""', "bytes": "ByteView{}", "datetime": "DateTime{}"}.get(
        param.type, "0")


# ----------------------------------------------------------------------------------------- main

def outputs(components):
    files = {"include/zantrel/zantrel.h": umbrella(components),
             "docs/reference/README.md": index(components)}
    for c in components:
        files[f"include/zantrel/{c.stem}.h"] = header(c)
        files[f"src/facade/{c.stem}.cpp"] = facade(c)
        if c.is_object:
            files[f"src/facade/{c.stem}_impl.h"] = object_header(c)
        files[f"docs/reference/{c.name}.md"] = reference(c)
        files[f"tests/facade/{c.stem}_surface_test.cpp"] = surface_test(c)
        fields = settings(c)
        if fields is not None:
            files[f"src/{pathlib.PurePosixPath(c.header).parent}/{c.stem}_settings.h"] = fields
    return files


def main(arguments):
    parser = argparse.ArgumentParser(description=__doc__.partition("\n")[0])
    parser.add_argument("--check", action="store_true", help="compare, write nothing")
    parser.add_argument("--root", type=pathlib.Path,
                        default=pathlib.Path(__file__).resolve().parent.parent)
    options = parser.parse_args(arguments)
    try:
        files = outputs(read_all(options.root))
    except ApiError as error:
        print(error, file=sys.stderr)
        return 1
    stale = [name for name, text in files.items()
             if not (options.root / name).exists()
             or (options.root / name).read_bytes() != text.encode("utf-8")]
    if options.check:
        for name in stale:
            print(f"{name}: not what tools/gen_api.py makes; run it", file=sys.stderr)
        return 1 if stale else 0
    for name in stale:
        path = options.root / name
        path.parent.mkdir(parents=True, exist_ok=True)
        path.write_bytes(files[name].encode("utf-8"))
        print("wrote", name)
    return 0


if __name__ == "__main__":
    sys.exit(main(sys.argv[1:]))
