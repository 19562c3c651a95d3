"""The security properties of a built program or library."""

from elf import (FUNCTION_SYMBOL, LOCAL_BINDING, UNDEFINED_SECTION, Dynamic, Machine,
                 SectionFlag, SegmentFlag, SegmentType)

SHARED_OBJECT = 3  # the type of a file that may be loaded anywhere
NOW = 0x8  # a flag of the dynamic section
NOW_1, PROGRAM_1 = 0x1, 0x08000000  # flags of its second set

# Where an indirect call may arrive: endbr64; bti c, or paciasp, which says the same.
LANDING_PADS = {
    Machine.X86_64: (b"\xf3\x0f\x1e\xfa",),
    Machine.AARCH64: (b"\x5f\x24\x03\xd5", b"\x3f\x23\x03\xd5"),
}
COPY_RELOCATION = {Machine.X86_64: 5, Machine.AARCH64: 1024}


def exported(elf):
    """The symbols that others may look up, without copies of a library's own variables: the
    library itself looks these up."""
    copies = {
        relocation.address for relocation in elf.relocations
        if relocation.type == COPY_RELOCATION[elf.machine]
    }
    return [
        symbol for symbol in elf.symbols(".dynsym")
        if symbol.binding != LOCAL_BINDING and symbol.section != UNDEFINED_SECTION
        and symbol.address not in copies
    ]


def is_bound_at_start(elf):
    return (elf.dynamic.get(Dynamic.FLAGS, 0) & NOW != 0
            or elf.dynamic.get(Dynamic.FLAGS_1, 0) & NOW_1 != 0)


def executable_constants(elf):
    """The sections without code in the segments with code."""
    code = [
        segment for segment in elf.segments
        if segment.type == SegmentType.LOAD and segment.flags & SegmentFlag.EXECUTE
    ]
    return [
        section.name for section in elf.sections
        if section.flags & SectionFlag.ALLOC and not section.flags & SectionFlag.EXECUTE
        and any(0 <= section.address - segment.address < segment.size for segment in code)
    ]


def is_writable_code(segment):
    return (segment.type == SegmentType.LOAD and segment.flags & SegmentFlag.EXECUTE
            and segment.flags & SegmentFlag.WRITE)


def without_landing_pad(elf):
    """The functions that others call by address, and main where its name is left, without one."""
    entries = {
        symbol.name: symbol.address for symbol in exported(elf) if symbol.type == FUNCTION_SYMBOL
    }
    entries.update(
        (symbol.name, symbol.address) for symbol in elf.symbols(".symtab") if symbol.name == "main"
    )
    return [
        name for name, address in entries.items()
        if not elf.code_at(address, 4).startswith(LANDING_PADS[elf.machine])
    ]


def weaknesses(elf):
    """Each property that the file lacks, as a line."""
    lacks = []
    if elf.type != SHARED_OBJECT or elf.segment(SegmentType.LOAD).address != 0:
        lacks.append("position independence")
    is_program = elf.segment(SegmentType.INTERPRETER) is not None
    if is_program and not elf.dynamic.get(Dynamic.FLAGS_1, 0) & PROGRAM_1:
        lacks.append("position independence of a program")
    if elf.segment(SegmentType.GNU_RELRO) is None:
        lacks.append("relocations that are read-only after the start (RELRO)")
    if not is_bound_at_start(elf):
        lacks.append("binding of all symbols at the start (BIND_NOW)")
    if Dynamic.TEXTREL in elf.dynamic:
        lacks.append("code without relocations")
    stack = elf.segment(SegmentType.GNU_STACK)
    if stack is None or stack.flags & SegmentFlag.EXECUTE:
        lacks.append("a stack that is not executable")
    if any(map(is_writable_code, elf.segments)):
        lacks.append("code that is not writable")
    if sections := executable_constants(elf):
        lacks.append(f"constants that are not executable: {', '.join(sections)}")
    if "__stack_chk_fail" not in {symbol.name for symbol in elf.symbols(".dynsym")}:
        lacks.append("the stack protector")
    if names := without_landing_pad(elf):
        lacks.append(f"control-flow protection: {', '.join(names)}")
    return lacks
