"""The changes that are made to a source: changes(text) yields a Change for each place and kind."""

import dataclasses
import re
import zlib

from tokens import Source

KINDS = ("comparison", "constant", "call", "branch", "text")

_COMPARISONS = {"<": "<=", "<=": "<", ">": ">=", ">=": ">", "==": "!=", "!=": "=="}
_NUMBER = re.compile(r"(0[xX][0-9a-fA-F']+|0[bB][01']+|[0-9][0-9']*)([uUlLzZ]*)")
_PLAIN_CHARACTER = re.compile(r"((?:u8|u|U|L)?)'([^\\'])'")
_ESCAPED_CHARACTER = re.compile(r"((?:u8|u|U|L)?)'\\([0abtnvfr\\'\"])'")
_ESCAPES = dict(zip("0abtnvfr", (0, 7, 8, 9, 10, 11, 12, 13))) | {"\\": 92, "'": 39, '"': 34}
_STRING = re.compile(r'((?:u8|u|U|L)?(?:R"[^(\s]*\(|"))(.*?)(\)[^)"]*"|")', re.S)
_ESCAPE = re.compile(r"\\(?:x[0-9a-fA-F]+|[0-7]{1,3}|.)|(?P<plain>.)", re.S)

# What may begin a statement that ends like a call and is none, or cannot be left out.
_NO_CALLS = {"asm", "break", "case", "catch", "const", "constexpr", "continue", "co_await", "co_return", "delete",
             "do", "else", "for", "goto", "if", "new", "operator", "return", "static", "static_assert", "switch",
             "throw", "try", "typedef", "using", "while"}
_BEFORE_CONDITION = {"return", "throw", "else", "do", "case"}


@dataclasses.dataclass(frozen=True)
class Change:
    """What stands between two places becomes another text."""

    kind: str
    begin: int
    end: int
    text: str

    def of(self, source):
        return source[:self.begin] + self.text + source[self.end:]


def _comparisons(source):
    for index, token in enumerate(source.tokens):
        if token.kind == "mark" and token.text in _COMPARISONS and source.has_blanks_around(index) \
                and source.is_code(index):
            yield Change("comparison", token.begin, token.end, _COMPARISONS[token.text])


def _shifted_numbers(text):
    """The numbers beside a whole one, as it is written: in its base and with its ending."""
    match = _NUMBER.fullmatch(text)
    if not match:
        return
    digits, ending = match[1].replace("'", ""), match[2]
    if digits[:2] in ("0x", "0X"):
        value, form = int(digits, 16), "0x{:X}"
    elif digits[:2] in ("0b", "0B"):
        value, form = int(digits, 2), "0b{:b}"
    elif digits[0] == "0" and len(digits) > 1:
        value, form = int(digits, 8), "0{:o}"
    else:
        value, form = int(digits), "{}"
    yield form.format(value + 1) + ending
    if value > 0:
        yield form.format(value - 1) + ending


def _shifted_character(text):
    if match := _PLAIN_CHARACTER.fullmatch(text):
        value = ord(match[2]) + 1
    elif match := _ESCAPED_CHARACTER.fullmatch(text):
        value = _ESCAPES[match[2]] + 1
    else:
        return
    if value < 32 or value > 126 or chr(value) in "\\'":
        yield f"{match[1]}'\\x{value:02X}'"
    else:
        yield f"{match[1]}'{chr(value)}'"


def _constants(source):
    for index, token in enumerate(source.tokens):
        if not source.is_code(index):
            continue
        others = ()
        if token.kind == "number":
            others = _shifted_numbers(token.text)
        elif token.kind == "character":
            others = _shifted_character(token.text)
        elif source.is_word(index, "true", "false"):
            others = ("false" if token.text == "true" else "true",)
        for other in others:
            yield Change("constant", token.begin, token.end, other)


def _call_end(source, index):
    """Behind the expression that begins here if it is one call, as in a::b(c)->d[e].f<g>(h); else -1."""
    at, needs_name, end = index, True, -1
    if source.is_mark(at, "::"):
        at += 1
    while at < len(source.tokens):
        if needs_name:
            if not source.is_word(at):
                return -1
            at, needs_name = at + 1, False
        elif source.is_mark(at, "::", ".", "->"):
            at, needs_name = at + 1, True
        elif source.is_mark(at, "<"):
            at = source.arguments_end(at)
            if at < 0:
                return -1
        elif source.is_mark(at, "(", "["):
            at = source.tokens[at].partner + 1
            end = at if source.is_mark(at - 1, ")") else -1
        else:
            return end if end == at else -1
        if not source.is_mark(at - 1, ")"):
            end = -1
    return -1


def _calls(source):
    for index, token in enumerate(source.tokens):
        if token.text in _NO_CALLS or not source.is_statement_start(index):
            continue
        end = _call_end(source, index)
        if end >= 0 and source.is_mark(end, ";"):
            yield Change("call", token.begin, source.tokens[end].begin, "")


def _condition_in(source, opening, word):
    """The first and the last token of the condition of if, while or for. None where there is none to be forced."""
    closing = source.tokens[opening].partner
    inside = [at for at in range(opening + 1, closing) if source.tokens[at].parent == opening]
    ends = [at for at in inside if source.is_mark(at, ";")]
    if word == "for":
        if len(ends) != 2:
            return None
        first, last = ends[0] + 1, ends[1] - 1
    else:
        first, last = (ends[-1] if ends else opening) + 1, closing - 1
    if first > last or any(source.is_mark(at, "=") for at in inside if first <= at <= last):
        return None
    if first == last and source.is_word(first, "true", "false"):
        return None
    return first, last


def _condition_before(source, index):
    """The first and the last token of the condition in front of a question mark."""
    first = index
    for at in source.siblings_before(index):
        if (source.is_mark(at, ",", "=", "+=", "-=", "|=", "&=", "?", ":") or source.is_word(at, *_BEFORE_CONDITION)):
            break
        first = source.tokens[at].partner if source.is_mark(at, ")", "]", "}") else at
    return (first, index - 1) if first < index else None


def _branches(source):
    for index, token in enumerate(source.tokens):
        found, values = None, ("true", "false")
        if source.is_word(index, "if", "while", "for") and source.is_mark(index + 1, "("):
            found = _condition_in(source, index + 1, token.text)
            if token.text != "if":
                values = ("false",)  # a loop without an end would be caught by waiting for it
        elif source.is_mark(index, "?"):
            found = _condition_before(source, index)
        if found is None or not source.is_code(index):
            continue
        begin, end = source.tokens[found[0]].begin, source.tokens[found[1]].end
        for value in values:
            yield Change("branch", begin, end, value)


def _other_letter(letter):
    for first, last in ("az", "AZ", "09"):
        if first <= letter <= last:
            return first if letter == last else chr(ord(letter) + 1)
    return "_" if letter == " " else "x"


def _texts(source):
    for index, token in enumerate(source.tokens):
        if token.kind != "text" or not source.is_code(index):
            continue
        match = _STRING.fullmatch(token.text)
        if match[2] == "":
            yield Change("text", token.begin, token.end, match[1] + "x" + match[3])
            continue
        is_raw = match[1].endswith("(")
        places = [each.start() for each in _ESCAPE.finditer(match[2])
                  if (each["plain"] or is_raw) and each[0] != "\n"]
        if places:
            place = places[zlib.crc32(token.text.encode()) % len(places)]
            begin = token.begin + match.start(2) + place
            yield Change("text", begin, begin + 1, _other_letter(source.text[begin]))


def changes(text):
    """All changes of a source, by their places."""
    source = Source(text)
    found = [change for operator in (_comparisons, _constants, _calls, _branches, _texts)
             for change in operator(source)]
    return sorted(found, key=lambda change: (change.begin, change.end, KINDS.index(change.kind), change.text))
