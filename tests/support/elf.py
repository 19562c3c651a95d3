"""Reads what an ELF file of a 64-bit little-endian machine says of itself."""

import collections
import enum
import pathlib
import struct

Segment = collections.namedtuple("Segment", "type flags offset address size")
Section = collections.namedtuple("Section", "name type flags address offset size link")
Symbol = collections.namedtuple("Symbol", "name binding type section address")
Relocation = collections.namedtuple("Relocation", "address type")


class Machine(enum.IntEnum):
    X86_64 = 62
    AARCH64 = 183


class SegmentType(enum.IntEnum):
    LOAD = 1
    INTERPRETER = 3
    GNU_STACK = 0x6474E551
    GNU_RELRO = 0x6474E552


class SegmentFlag(enum.IntFlag):
    EXECUTE = 1
    WRITE = 2


class SectionType(enum.IntEnum):
    RELA = 4


class SectionFlag(enum.IntFlag):
    ALLOC = 2
    EXECUTE = 4


class Dynamic(enum.IntEnum):
    NEEDED = 1
    RPATH = 15
    TEXTREL = 22
    FLAGS = 30
    RUNPATH = 29
    FLAGS_1 = 0x6FFFFFFB


LOCAL_BINDING = 0
FUNCTION_SYMBOL = 2
UNDEFINED_SECTION = 0


class Elf:
    def __init__(self, path):
        self._bytes = pathlib.Path(path).read_bytes()
        magic = b"\x7fELF\x02\x01"  # 64 bits, little-endian
        if not self._bytes.startswith(magic):
            raise ValueError(f"{path} is no such ELF file")
        (self.type, self.machine, _, _, segments_at, sections_at, _, _, segment_size, segment_count,
         section_size, section_count, names) = struct.unpack_from("<HHIQQQIHHHHHH", self._bytes, 16)
        self.segments = []
        for kind, flags, offset, address, _, _, size, _ in self._records(
                "<IIQQQQQQ", segments_at, segment_size, segment_count):
            self.segments.append(Segment(kind, flags, offset, address, size))
        sections = [
            Section(*fields) for *fields, _, _, _ in self._records(
                "<IIQQQQIIQQ", sections_at, section_size, section_count)
        ]
        self.sections = [
            section._replace(name=self._text(sections[names], section.name)) for section in sections
        ]
        self.dynamic = dict(self._table(".dynamic", "<QQ"))
        self.relocations = [
            Relocation(address, info & 0xFFFFFFFF)
            for section in self.sections if section.type == SectionType.RELA
            for address, info, _ in self._content(section, "<QQq")
        ]

    def _records(self, form, offset, size, count):
        return [struct.unpack_from(form, self._bytes, offset + size * i) for i in range(count)]

    def _content(self, section, form):
        size = struct.calcsize(form)
        return self._records(form, section.offset, size, section.size // size)

    def _section(self, name):
        return next((section for section in self.sections if section.name == name), None)

    def _table(self, name, form):
        section = self._section(name)
        return [] if section is None else self._content(section, form)

    def _text(self, section, offset):
        start = section.offset + offset
        return self._bytes[start:self._bytes.index(b"\0", start)].decode()

    def needed(self):
        """The names of the libraries that the loader loads for this file."""
        names = self._section(".dynstr")
        return [self._text(names, value) for tag, value in self._table(".dynamic", "<QQ")
                if tag == Dynamic.NEEDED]

    def segment(self, kind):
        return next((segment for segment in self.segments if segment.type == kind), None)

    def symbols(self, table):
        """The symbols of the table with this name, ".dynsym" or ".symtab"."""
        section = self._section(table)
        if section is None:
            return []
        names = self.sections[section.link]
        return [
            Symbol(self._text(names, name), info >> 4, info & 0xF, index, address)
            for name, info, _, index, address, _ in self._table(table, "<IBBHQQ")
        ]

    def code_at(self, address, size):
        """The first bytes of a function."""
        for segment in self.segments:
            at = address - segment.address
            if segment.type == SegmentType.LOAD and 0 <= at < segment.size:
                return self._bytes[segment.offset + at:segment.offset + at + size]
        raise ValueError(f"nothing is loaded at {address:#x}")
