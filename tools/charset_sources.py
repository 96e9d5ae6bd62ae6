"""Readers of published charset mappings, for gen_charset_tables.py.

Each reader returns a dictionary from bytes to text (one or, rarely, two code points). Sources:
  codepage  the npm package "codepage": unicode.org's tables and dumps of Windows 7 (.NET and NLS)
  charmap   glibc's character maps (Debian package locales, /usr/share/i18n/charmaps)
  icu       the converters of libicuuc
"""

import ctypes
import ctypes.util
import gzip
import json
import re
from pathlib import Path


class SourceError(Exception):
    """A source is missing or does not read as expected; the text says which file and line."""


# ---- npm package "codepage" ------------------------------------------------------------------

_ROW = re.compile(r'^(?:.*?\bvar )?(?:D\[(\d+)\]|d) = ("(?:[^"\\]|\\.)*")')


def codepage(folder, page):
    """bits/<page>.js: one string of 256 characters, or one string of 256 a lead byte."""
    path = Path(folder) / 'bits' / f'{page}.js'
    if not path.exists():
        raise SourceError(f'{path}: missing; "npm install codepage" there first')
    mapping = {}
    for number, line in enumerate(path.read_text(encoding='utf-8').split('\n'), 1):
        match = _ROW.match(line)
        if not match:
            continue
        try:
            row = json.loads(match.group(2))
        except ValueError as error:
            raise SourceError(f'{path}:{number}: {error}') from error
        row = _characters(row)
        if len(row) != 256:
            raise SourceError(f'{path}:{number}: a row of {len(row)} characters')
        lead = match.group(1)
        prefix = bytes([int(lead)]) if lead and int(lead) else b''
        for byte, char in enumerate(row):
            if char != '\ufffd':
                mapping[prefix + bytes([byte])] = char
    if not mapping:
        raise SourceError(f'{path}: no rows found')
    return mapping


def _characters(row):
    """Python strings hold code points; JSON may spell one as a surrogate pair."""
    return row.encode('utf-16-le', 'surrogatepass').decode('utf-16-le', 'surrogatepass')


# ---- glibc charmaps ----------------------------------------------------------------------------

_CHARMAP_LINE = re.compile(r'^(%IRREVERSIBLE%)?<U([0-9A-F]{4,8})>(?:\.\.<U([0-9A-F]{4,8})>)?'
                           r'\s+((?:/x[0-9a-fA-F]{2})+)')


def charmap(name, folder='/usr/share/i18n/charmaps'):
    """The mapping both ways; lines marked irreversible are left out."""
    path = Path(folder) / f'{name}.gz'
    if not path.exists():
        raise SourceError(f'{path}: missing; install the package "locales"')
    mapping = {}
    with gzip.open(path, 'rt', encoding='utf-8', errors='replace') as file:
        for line in file:
            match = _CHARMAP_LINE.match(line)
            if not match or match.group(1):
                continue
            first = int(match.group(2), 16)
            last = int(match.group(3) or match.group(2), 16)
            code = bytes.fromhex(match.group(4).replace('/x', ''))
            for offset in range(last - first + 1):
                value = int.from_bytes(code, 'big') + offset
                mapping.setdefault(value.to_bytes(len(code), 'big'), chr(first + offset))
    if not mapping:
        raise SourceError(f'{path}: no mapping found')
    return mapping


# ---- ICU ---------------------------------------------------------------------------------------


class Icu:
    """A converter of libicuuc, stopping at whatever it cannot convert."""

    _library = None
    _suffix = ''

    @classmethod
    def _load(cls):
        if cls._library is None:
            name = ctypes.util.find_library('icuuc')
            if not name:
                raise SourceError('libicuuc: missing; install libicu-dev')
            cls._library = ctypes.CDLL(name)
            cls._suffix = '_' + name.rsplit('.', 1)[1]
            cls._function('ucnv_open').restype = ctypes.c_void_p
        return cls._library

    @classmethod
    def _function(cls, name):
        return getattr(cls._library, name + cls._suffix)

    def __init__(self, name):
        self._load()
        self._error = ctypes.c_int(0)
        opened = self._function('ucnv_open')(name.encode(), ctypes.byref(self._error))
        if self._error.value > 0 or not opened:
            raise SourceError(f'ICU has no converter {name}')
        self._converter = ctypes.c_void_p(opened)
        ignored = ctypes.byref(ctypes.c_int(0))
        self._function('ucnv_setToUCallBack')(
            self._converter, self._function('UCNV_TO_U_CALLBACK_STOP'), None, None, None, ignored)
        self._function('ucnv_setFromUCallBack')(
            self._converter, self._function('UCNV_FROM_U_CALLBACK_STOP'), None, None, None, ignored)
        self._function('ucnv_setFallback')(self._converter, 0)

    def decode(self, code):
        """Text of a byte sequence, None when it is invalid."""
        out = ctypes.create_string_buffer(64)
        error = ctypes.c_int(0)
        units = self._function('ucnv_toUChars')(self._converter, out, 32, code, len(code),
                                                ctypes.byref(error))
        if error.value > 0:
            return None
        return out.raw[:2 * units].decode('utf-16-le', 'surrogatepass')

    def encode(self, text):
        """Bytes of a text, None when it cannot be written."""
        units = text.encode('utf-16-le')
        out = ctypes.create_string_buffer(64)
        error = ctypes.c_int(0)
        count = self._function('ucnv_fromUChars')(self._converter, out, 64, units,
                                                  len(units) // 2, ctypes.byref(error))
        return None if error.value > 0 else out.raw[:count]


def icu(name):
    """Every one- and two-byte sequence that the converter decodes."""
    converter = Icu(name)
    mapping = {}
    singles = [bytes([byte]) for byte in range(256)]
    for code in singles:
        text = converter.decode(code)
        if text:
            mapping[code] = text
    for lead in singles:
        if lead in mapping:
            continue
        for trail in singles:
            text = converter.decode(lead + trail)
            if text:
                mapping[lead + trail] = text
    return mapping
