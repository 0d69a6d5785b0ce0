"""The changes that `run mutate` makes: one operator, constant or condition of a C++ source at a time."""

import re
from typing import NamedTuple


class Mutation(NamedTuple):
    file: str  # relative to the root of the sources
    line: int  # from 1
    column: int  # from 1
    start: int  # offsets in the source
    end: int
    after: str
    before: str
    text: str  # the line without its indentation

    def change(self):
        return f"{' '.join(self.before.split())} -> {self.after.strip()}"

    def place(self):
        return f"{self.file}:{self.line}:{self.column}"


# An operator of a pair becomes the other one. clang-format puts blanks around binary operators, and none around the
# brackets of templates.
_BINARY = {
    "<": "<=", "<=": "<", ">": ">=", ">=": ">", "==": "!=", "!=": "==", "&&": "||", "||": "&&",
    "+": "-", "-": "+", "*": "/", "/": "*", "%": "*", "|": "&", "&": "|", "<<": ">>", ">>": "<<",
    "+=": "-=", "-=": "+=",
}
_BINARY_PATTERN = re.compile(r"(?<= )(<=|>=|==|!=|&&|\|\||<<|>>|\+=|-=|[-<>+*/%|&])(?= )")
_STEP_PATTERN = re.compile(r"\+\+|--")
_NOT_PATTERN = re.compile(r"!(?=[\w(:])")
_NUMBER_PATTERN = re.compile(r"(?<![\w.'\\])(0x[0-9A-Fa-f]+|\d+(?:\.\d+)?)(U|ULL)?(?![\w.'])")
_BOOL_PATTERN = re.compile(r"\b(true|false)\b")
_CHARACTER_PATTERN = re.compile(r"L?'(?:\\.|[^'\\])+'")
_CONDITION_PATTERN = re.compile(r"\b(if|while|for) \(")
_CHOICE_PATTERN = re.compile(r"(?<=[\w)\]]) \? ")

# Declarations that only the compiler reads.
_SKIPPED_LINE = re.compile(r"^\s*(#|static_assert|template|using |namespace|\[\[gnu)|operator[=<>!+-]|= default|= delete")

_TOKEN_PATTERN = re.compile(r'//[^\n]*|/\*.*?\*/|L?R"(\w*)\(.*?\)\1"|L?"(?:\\.|[^"\\\n])*"', re.DOTALL)


def _masked(source):
    """The source with blanks for comments, string literals and lines that are left out."""
    def blank(match):
        return re.sub(r"[^\n]", " ", match.group())
    masked = _TOKEN_PATTERN.sub(blank, source)
    lines = [re.sub(".", " ", line) if _SKIPPED_LINE.search(line) else line for line in masked.split("\n")]
    return "\n".join(lines)


def _closing(masked, start):
    """The offset of the bracket that closes the one at `start`."""
    depth = 0
    for offset in range(start, len(masked)):
        depth += {"(": 1, ")": -1}.get(masked[offset], 0)
        if depth == 0:
            return offset
    return len(masked)


def _conditions(masked):
    for match in _CONDITION_PATTERN.finditer(masked):
        start, end = match.end(), _closing(masked, match.end() - 1)
        inside = masked[start:end]
        if match.group(1) == "for":
            if inside.count(";") != 2:
                continue
            first, second = inside.index(";"), inside.rindex(";")
            start, end = start + first + 2, start + second
            yield start, end, "false"
            continue
        if ";" in inside:
            start += inside.index(";") + 2
        if masked[start:end].strip() in ("true", "false"):
            continue
        yield start, end, "false"
        if match.group(1) == "if":
            yield start, end, "true"


def _number_after(number):
    if number.startswith("0x"):
        return hex(int(number, 16) + 1)
    return f"{float(number) + 1:.1f}" if "." in number else str(int(number) + 1)


def _spans(masked):
    for match in _BINARY_PATTERN.finditer(masked):
        yield match.start(), match.end(), _BINARY[match.group()]
    for match in _STEP_PATTERN.finditer(masked):
        yield match.start(), match.end(), "--" if match.group() == "++" else "++"
    for match in _NOT_PATTERN.finditer(masked):
        yield match.start(), match.end(), ""
    for match in _NUMBER_PATTERN.finditer(masked):
        yield match.start(1), match.end(1), _number_after(match.group(1))
    for match in _BOOL_PATTERN.finditer(masked):
        yield match.start(), match.end(), "false" if match.group() == "true" else "true"
    for match in _CHARACTER_PATTERN.finditer(masked):
        yield match.start(), match.end(), r"L'\x1'" if match.group().startswith("L") else r"'\x1'"
    for match in _CHOICE_PATTERN.finditer(masked):
        yield match.start(), match.end(), " || true ? "
        yield match.start(), match.end(), " && false ? "
    yield from _conditions(masked)


def mutations_of(file, source):
    """All mutations of a source, in the order of their places."""
    lines = source.split("\n")
    found = []
    for start, end, after in _spans(_masked(source)):
        line = source.count("\n", 0, start) + 1
        column = start - (source.rfind("\n", 0, start) + 1) + 1
        found.append(Mutation(file, line, column, start, end, after, source[start:end], lines[line - 1].strip()))
    return sorted(set(found), key=lambda mutation: (mutation.start, mutation.end, mutation.after))


def mutated(source, mutation):
    return source[:mutation.start] + mutation.after + source[mutation.end:]
