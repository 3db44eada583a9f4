"""Gives a header to Doxygen:  comments.py HEADER

The headers are documented in plain comments, and what a comment is about is told by where it stands. On standard
output this tells Doxygen so in its own marks:

- The first comment of a header is about the file, and about each class in it that has no words of its own.
- A comment above declarations is about all of them up to the next blank line, comment or access label; one behind
  a declaration is about that one, besides.
- A function without words has those of the one above it with the same name, unless it is a constructor.
- Indented lines are an example, which is shown as it stands, as the lines of a table are. "Kept: Suite.Case" names
  the test that pins an oddity.
- All else is text: neither commands nor HTML. That it is no Markdown either is for the Doxyfile to say.

Destructors, members that are deleted or defaulted, and the data, constants and types within a class need no words:
the declaration says it all, and gets a line by rule. Overrides have the words of the base, and what is private is
passed by, both of which Doxygen does itself. It warns of all else that has no words.

Left out are instances of templates, which Doxygen would take for one more function, and classes that are friends.
"""

import re
import sys

_COMMENT = re.compile(r"\s*// ?(.*)")
_STRING = re.compile(r'"(?:[^"\\]|\\.)*"|\'(?:[^\'\\]|\\.)*\'')
_LABEL = re.compile(r"\s*(?:public|protected|private):")
_SCOPE = re.compile(r"(?:template <.*> ?)?(namespace|class|struct|union|enum)\b(?: class)?(?: (\w+))?[^;()]*\{")
_UNTOLD = re.compile(r"(?:template <.*> ?)?(?:class|struct|enum)\b[\w: ]+;")
_LEFT_OUT = re.compile(r"extern template .*|friend class .*")
_LINTERS = re.compile(r"NOLINT(?:NEXTLINE|BEGIN|END)?\b.*")
_KEPT = re.compile(r"Kept: (\w+\.\w+)")
_SPECIAL = re.compile(r"[\\@&#<>%\"]|-{2,3}")
_NAME = re.compile(r"(?!using )[^=(]*?(operator\S+?|~?\w+)\(")
_AS_NAMED = "As its name says."
_BY_RULE = ((re.compile(r"(?:virtual )?~\w+\(.*"), "Ends the object."),
            (re.compile(r".*= delete;"), "There is none."),
            (re.compile(r".*= default;"), "As the language makes it."))


def words(lines):
    """The lines of a comment in Doxygen's language."""
    out = []
    example = False
    for line in lines:
        if line and line.startswith(("  ", "|")) != example:
            example = not example
            out.append("@code{.unparsed}" if example else "@endcode")
        kept = _KEPT.fullmatch(line)
        if kept:
            out += ["", f"Kept: <tt>{kept[1]}</tt>", ""]
        else:
            out.append(line if example else _SPECIAL.sub(r"\\\g<0>", line))
    return out + ["@endcode"] * example


def block(*lines):
    return ["/**", *lines, "*/"]


def split_trailing(line):
    """The code of a line and the comment behind it, which is None if there is none."""
    bare = _STRING.sub(lambda match: "_" * len(match[0]), line)
    at = bare.find("//")
    return (line, None) if at < 0 else (line[:at].rstrip(), line[at + 2:].strip())


def without_template_head(code):
    if not code.startswith("template"):
        return code
    depth = 0
    for at, character in enumerate(code):
        depth += {"<": 1, ">": -1}.get(character, 0)
        if character == ">" and depth == 0:
            return code[at + 1:].strip()
    return code


def function_name(code):
    """The name of the function that a declaration is of; None if it is of something else."""
    match = _NAME.match(without_template_head(code).split("{")[0])
    return match and match[1]


class Header:
    """The lines of a header, taken one by one."""

    def __init__(self, name):
        self.out = []
        self.name = name
        self.head = None     # the words about the file
        self.comment = []    # lines of the comment just above
        self.run = []        # words that are about the declarations up to the next blank line
        self.statement = []  # lines of a declaration that has begun
        self.scopes = []     # what the braces are that stand open around it
        self.told = [{}]     # for each of them, and outside, the words of its functions

    def take(self, line):
        if self.statement:
            self.go_on(line)
        elif _COMMENT.fullmatch(line):
            self.take_comment(_COMMENT.fullmatch(line)[1])
        elif not line.strip():
            self.end_run(line)
        elif line.startswith("#") or _LABEL.match(line):
            self.end_run(line)
        elif line.lstrip().startswith("}"):
            self.end_run(line)
            self.scopes.pop()
            self.told.pop()
        else:
            self.begin(line)

    def take_comment(self, text):
        if not _LINTERS.fullmatch(text):
            self.comment.append(text)

    def end_run(self, line):
        """A comment with nothing under it is the header's first, or about no declaration."""
        if self.comment and self.head is None:
            self.head = words(self.comment)
            self.out += block(f"@file {self.name}", "", *self.head)
        self.comment = []
        self.run = []
        self.out.append(line)

    def begin(self, line):
        if self.comment:
            self.run = words(self.comment)
            self.comment = []
        self.go_on(line)

    def go_on(self, line):
        """Takes one more line of a declaration, and puts it out with its words when it is whole."""
        self.statement.append(line)
        code = " ".join(split_trailing(line)[0].strip() for line in self.statement)
        bare = _STRING.sub('""', code)
        if _SCOPE.fullmatch(bare):
            self.open_scope(*_SCOPE.fullmatch(bare).groups())
        elif self.is_enum():
            self.put(code)
        elif bare.count("{") == bare.count("}") and bare.count("(") == bare.count(")") and bare[-1] in ";}":
            self.put(code)

    def is_enum(self):
        return self.scopes[-1:] == ["enum"]

    def open_scope(self, kind, name):
        told = self.run
        if not told and kind in ("class", "struct", "union") and set(self.scopes) <= {"namespace"}:
            told = self.head or []
        if kind == "namespace":
            self.out += self.statement
        else:
            self.put_with(told)
        self.scopes.append(kind)
        self.told.append({name: None})
        self.statement = []
        self.run = []

    def put(self, code):
        if _LEFT_OUT.fullmatch(code):
            self.statement = [""] * len(self.statement)
        if _LEFT_OUT.fullmatch(code) or _UNTOLD.fullmatch(code):
            self.put_with([])
            return
        name = function_name(code)
        told = self.own_words() or (name and self.told[-1].get(name)) or []
        if not told or code.endswith("= delete;"):
            told = self.words_by_rule(code, name)
        self.told[-1].setdefault(name, told)
        self.put_with(told)

    def own_words(self):
        behind = split_trailing(self.statement[0])[1]
        if behind and len(self.statement) == 1 and not _LINTERS.fullmatch(behind):
            return words([behind]) + [""] + self.run
        return self.run

    def words_by_rule(self, code, name):
        by_rule = [text for rule, text in _BY_RULE if rule.fullmatch(code)]
        if name is None and set(self.scopes) - {"namespace"}:
            by_rule.append(_AS_NAMED)
        return by_rule[:1]

    def put_with(self, told):
        self.out += (block(*told) if told else []) + self.statement
        self.statement = []


def convert(name, text):
    header = Header(name)
    for line in text.splitlines():
        header.take(line)
    return "\n".join(header.out) + "\n"


if __name__ == "__main__":
    with open(sys.argv[1], encoding="utf-8") as file:
        sys.stdout.write(convert(sys.argv[1], file.read()))
