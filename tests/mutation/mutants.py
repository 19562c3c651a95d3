"""Makes mutants of C++ sources: copies that differ in one small place.

A suite that passes with a mutant does not look at that place. The sources are read token by token;
comments, includes, preprocessor lines and static assertions stay as they are.
"""

import dataclasses
import re

TOKEN = re.compile(
    r"""(?P<comment>//[^\n]*|/\*.*?\*/)
      | (?P<directive>^[ \t]*\#(?:[^\n\\]|\\.)*)
      | (?P<text>(?:u8|L)?"(?:[^"\\\n]|\\.)*")
      | (?P<character>'(?:[^'\\\n]|\\.)+')
      | (?P<number>\b(?:0[xX][0-9a-fA-F']+|[0-9][0-9']*)[uUlLzZ]*\b(?!\.))
      | (?P<word>[A-Za-z_]\w*)
      | (?P<operator><=>|<<=|>>=|->|::|<<|>>|<=|>=|==|!=|&&|\|\||\+\+|--|\+=|-=|\|=|&=|[-+*/%&|^!~<>=?:;,.(){}\[\]])
    """,
    re.VERBOSE | re.MULTILINE | re.DOTALL,
)

COMPARISONS = {
    "==": ["!="], "!=": ["=="], "<=": ["<", ">"], ">=": [">", "<"],
}
# "<" and ">" also enclose template arguments. As comparisons they stand between blanks.
SPACED_COMPARISONS = {"<": ["<=", ">="], ">": [">=", "<="]}
CONDITIONS = {"&&": ["||"], "||": ["&&"]}
MASKS = {"&": ["|"], "|": ["&"], "^": ["&"], "&=": ["|="], "|=": ["&="]}
SHIFTS = {"<<": [">>"], ">>": ["<<"], "<<=": [">>="], ">>=": ["<<="]}
SUMS = {"+": ["-"], "-": ["+"], "*": ["/"], "/": ["*"], "%": ["/"], "+=": ["-="], "-=": ["+="],
        "++": ["--"], "--": ["++"]}
SPACED = {**SPACED_COMPARISONS, **MASKS, **SHIFTS, "+": ["-"], "-": ["+"], "*": ["/"], "/": ["*"],
          "%": ["/"]}
STATEMENT = re.compile(r"^[ \t]+(?!return\b|using\b|throw\b|static_assert\b|case\b|const\b|constexpr\b"
                       r"|auto\b|else\b|if\b|for\b|while\b|switch\b|break\b|continue\b|goto\b)"
                       r"(?:\+\+|--|\(void\))?[A-Za-z_][\w:.>\[\]*-]*(?:\(.*\)|\s*(?:[-+|&]|<<|>>)?=\s.*"
                       r"|\+\+|--)?;[ \t]*(?://.*)?$", re.MULTILINE)
DECLARATION = re.compile(r"^[ \t]+(?:[\w:<>, ]+[&*]?\s+)[A-Za-z_]\w*;")
ROW = re.compile(r"^[ \t]+\{.*\},[ \t]*(?://.*)?$|^[ \t]+(?:line|row|label)<.*>,[ \t]*$", re.MULTILINE)
ARGUMENTS = re.compile(r"\w\((?P<first>[A-Za-z_][\w.]*), (?P<second>[A-Za-z_][\w.]*)(?=[,)])")
CONDITION = re.compile(r"\b(?:if|while) \(")


@dataclasses.dataclass(frozen=True)
class Mutant:
    """One change of one file. "line" and "nth" identify the place, also after other changes of the
    file: the n-th mutant of this kind and change among the equal lines."""

    file: str
    kind: str
    start: int
    end: int
    replacement: str
    before: str
    line: str
    nth: int = 0

    def identity(self):
        """Names the mutant in one line."""
        change = f"{self.before} -> {self.replacement}"
        return " ".join(f"{self.file} | {self.line} | {self.kind}: {change} | {self.nth}".split())

    def applied_to(self, source):
        return source[: self.start] + self.replacement + source[self.end:]


def line_at(source, place):
    start = source.rfind("\n", 0, place) + 1
    end = source.find("\n", place)
    return source[start: end if end >= 0 else len(source)].strip()


def other_numbers(text):
    digits = text.rstrip("uUlLzZ")
    suffix = text[len(digits):]
    value = int(digits.replace("'", ""), 16 if digits[:2] in ("0x", "0X") else 10)
    changed = (value + 1, value - 1) if value > 0 else (1,)
    return [(hex(number) if digits[:2] in ("0x", "0X") else str(number)) + suffix for number in changed]


def other_text(text):
    """The text with another first letter, or with a letter more if it has none."""
    for found in re.finditer(r"%[-0-9]*l*[a-zA-Z]|\\.|[A-Za-z0-9]", text[1:-1]):
        if len(found.group()) == 1:
            place = found.start() + 1
            letter = "X" if text[place] != "X" else "Y"
            return text[:place] + letter + text[place + 1:]
    return text[:-1] + 'X"'


def is_spaced(source, token):
    return source[token.start() - 1: token.start()] == " " and source[token.end(): token.end() + 1] in (" ", "\n")


def closing(source, opening):
    depth = 0
    for token in TOKEN.finditer(source, opening):
        if token.lastgroup == "operator" and token.group() in "()":
            depth += 1 if token.group() == "(" else -1
            if depth == 0:
                return token.start()
    return None


def changes_of_token(source, token, previous):
    text = token.group()
    kind = token.lastgroup
    if kind == "number":
        return [("constant", other) for other in other_numbers(text)]
    if kind == "text" and previous not in ("include", "static_assert"):
        return [("text", other_text(text))]
    if kind == "word" and text in ("true", "false"):
        return [("constant", "false" if text == "true" else "true")]
    if kind != "operator":
        return []
    for name, table in (("comparison", {**COMPARISONS, **SPACED_COMPARISONS}), ("condition", CONDITIONS),
                        ("mask", MASKS), ("shift", SHIFTS), ("sum", SUMS)):
        if text in table and (text not in SPACED or is_spaced(source, token)):
            return [(name, other) for other in table[text]]
    return []


def found_changes(source):
    """Yields kind, start, end and replacement of each change."""
    protected = [] # parts that no change may touch
    previous = ""
    for token in TOKEN.finditer(source):
        if token.lastgroup in ("comment", "directive"):
            protected.append(token.span())
            continue
        if token.lastgroup == "word" and token.group() == "static_assert":
            opening = source.find("(", token.end())
            protected.append((token.start(), closing(source, opening) or len(source)))
        if not any(start <= token.start() < end for start, end in protected):
            for kind, other in changes_of_token(source, token, previous):
                yield kind, token.start(), token.end(), other
        previous = token.group()

    def is_free(found):
        return not any(start <= found.start() < end for start, end in protected)

    for found in filter(is_free, CONDITION.finditer(source)):
        end = closing(source, found.end() - 1)
        inner = source[found.end(): end]
        if end is not None and ";" not in inner and not re.match(r"const auto|auto", inner):
            yield "condition", found.end(), end, f"!({inner})"
    for found in filter(is_free, STATEMENT.finditer(source)):
        if not DECLARATION.match(found.group()):
            start = found.start() + len(found.group()) - len(found.group().lstrip())
            yield "statement", start, found.end(), ";"
    for found in filter(is_free, ROW.finditer(source)):
        start = found.start() + len(found.group()) - len(found.group().lstrip())
        yield "row", start, found.end(), ""
    for found in filter(is_free, ARGUMENTS.finditer(source)):
        first, second = found.group("first"), found.group("second")
        if first != second:
            yield "arguments", found.start("first"), found.end("second"), f"{second}, {first}"


def mutants_of(file, source):
    """Returns all mutants of a source, in the order of their places."""
    counts = {}
    mutants = []
    for kind, start, end, replacement in sorted(set(found_changes(source)), key=lambda change: change[1:]):
        mutant = Mutant(file, kind, start, end, replacement, source[start:end], line_at(source, start))
        nth = counts.get(mutant.identity(), 0)
        counts[mutant.identity()] = nth + 1
        mutants.append(dataclasses.replace(mutant, nth=nth))
    return mutants
