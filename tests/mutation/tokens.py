"""Reads C++ as far as the operators need it: tokens with their places, brackets that match, and what is code.

Comments and preprocessor lines are no tokens. This relies on .clang-format: a comparison has blanks around it, the
brackets of template arguments have none in front.
"""

import dataclasses
import re

_TOKEN = re.compile(r"""
    (?P<blank>\s+|//[^\n]*|/\*.*?\*/)
  | (?P<directive>^[ \t]*\#(?:[^\\\n]|\\.|\\\n)*)
  | (?P<text>(?:u8|u|U|L)?R"(?P<mark>[^(\s]*)\(.*?\)(?P=mark)"|(?:u8|u|U|L)?"(?:[^"\\\n]|\\.)*")
  | (?P<number>\.?[0-9](?:[eE][+-]|'[0-9a-fA-F]|[\w.])*)
  | (?P<character>(?:u8|u|U|L)?'(?:[^'\\\n]|\\.)+')
  | (?P<word>operator\s*(?:\(\)|\[\]|[-+*/%^&|~!=<>]+)|[A-Za-z_]\w*)
  | (?P<mark_>\.\.\.|::|->|<<=|>>=|<<|<=|>=|==|!=|&&|\|\||\+\+|--|[-+*/%&|^]=|.)
""", re.X | re.S | re.M)
_KINDS = {"mark_": "mark", "text": "text", "number": "number", "character": "character", "word": "word"}
_PAIRS = {"(": ")", "[": "]", "{": "}"}


@dataclasses.dataclass
class Token:
    kind: str  # word, number, character, text or mark
    text: str
    begin: int
    end: int
    parent: int = -1  # the bracket that it stands in
    partner: int = -1  # of a bracket, the other one
    scope: str = ""  # of a brace: namespace, class, enum, code or values


def _split(text):
    tokens = []
    for match in _TOKEN.finditer(text):
        kind = next(name for name in (*_KINDS, "blank", "directive") if match[name] is not None)
        if kind in _KINDS:
            tokens.append(Token(_KINDS[kind], match[0], match.start(), match.end()))
    return tokens


def _match_brackets(tokens):
    opened = []
    for index, token in enumerate(tokens):
        if token.kind == "mark" and token.text in (")", "]", "}"):
            if not opened or _PAIRS[tokens[opened[-1]].text] != token.text:
                raise ValueError(f"brackets do not match at {token.begin}")
            begin = opened.pop()
            tokens[begin].partner, token.partner = index, begin
        token.parent = opened[-1] if opened else -1
        if token.kind == "mark" and token.text in _PAIRS:
            opened.append(index)
    if opened:
        raise ValueError(f"a bracket stays open at {tokens[opened[-1]].begin}")


class Source:
    """The tokens of a file and what they are part of."""

    def __init__(self, text):
        self.text = text
        self.tokens = _split(text)
        _match_brackets(self.tokens)
        self._passed_over = set()
        for index, token in enumerate(self.tokens):
            if token.text == "{" and token.kind == "mark":
                token.scope = self._scope_of(index)
        self._pass_over()

    def is_mark(self, index, *texts):
        return (0 <= index < len(self.tokens) and self.tokens[index].kind == "mark"
                and self.tokens[index].text in texts)

    def is_word(self, index, *texts):
        return (0 <= index < len(self.tokens) and self.tokens[index].kind == "word"
                and (not texts or self.tokens[index].text in texts))

    def has_blanks_around(self, index):
        token = self.tokens[index]
        return self.text[token.begin - 1:token.begin].isspace() and self.text[token.end:token.end + 1].isspace()

    def siblings_before(self, index):
        """The tokens in front of one in the same statement and brackets, the last first."""
        parent = self.tokens[index].parent
        at = index - 1
        while at > parent:
            if self.is_mark(at, ")", "]", "}"):
                if self.is_mark(at, "}") and self.tokens[self.tokens[at].partner].scope != "values":
                    return
                yield at
                at = self.tokens[at].partner - 1
                continue
            if self.is_mark(at, ";"):
                return
            yield at
            at -= 1

    def _scope_of(self, index):
        parent = self.tokens[index].parent
        if self._is_in_code(parent):
            if (self.is_mark(index - 1, ")", "]") or self._follows_result_type(index)
                    or self.is_word(index - 1, "else", "do", "try", "mutable", "noexcept")):
                return "code"
            return self.tokens[parent].scope if self.is_mark(index - 1, ";", "{", "}", ":") else "values"
        if parent >= 0 and (self.tokens[parent].text != "{" or self.tokens[parent].scope == "values"):
            return "values"
        head = [at for at in self.siblings_before(index) if not self._is_in_template_head(at)]
        words = {self.tokens[at].text for at in head}
        has_list = any(self.is_mark(at, ")") for at in head)
        if "namespace" in words or ("extern" in words and len(head) == 2):
            return "namespace"
        if "enum" in words:
            return "enum"
        if any(self.is_mark(at, "=") for at in head):
            return "values"
        if words & {"class", "struct", "union"} and not has_list:
            return "class"
        if has_list and (self.is_mark(index - 1, ")", "}") or self._follows_result_type(index)
                         or self.is_word(index - 1, "const", "noexcept", "override", "final", "try")):
            return "code"
        return "values"

    def _follows_result_type(self, index):
        """Whether a list of parameters, an arrow and a type stand before a brace."""
        before = list(self.siblings_before(index))
        arrow = next((at for at in before if self.is_mark(at, "->")), None)
        return arrow is not None and self.is_mark(arrow - 1, ")") and not any(
            self.is_mark(at, ")", "=", ",") for at in before if at > arrow)

    def _is_in_code(self, bracket):
        while bracket >= 0:
            if self.tokens[bracket].scope == "code":
                return True
            bracket = self.tokens[bracket].parent
        return False

    def _behind_angles(self, index):
        """Behind the > that ends what begins with the < here, or -1 if there is none in the same statement."""
        depth, parent = 0, self.tokens[index].parent
        for at in range(index, len(self.tokens)):
            if self.is_mark(at, ";", "{", "}"):
                break
            if self.tokens[at].parent == parent and not self.has_blanks_around(at):
                depth += self.is_mark(at, "<") - self.is_mark(at, ">") - 2 * self.is_mark(at, ">>")
            if depth <= 0:
                return at + 1
        return -1

    def _template_head(self, index):
        """Behind the last token of the head that begins here: template <...>."""
        return max(index + 1, self._behind_angles(index + 1) if self.is_mark(index + 1, "<") else -1)

    def _is_in_template_head(self, index):
        for at in range(index, max(-1, index - 60), -1):
            if self.is_word(at, "template"):
                return index < self._template_head(at)
            if self.is_mark(at, ";", "{", "}"):
                return False
        return False

    def _pass_over(self):
        """Marks what is never mutated: assertions of the compiler, heads of templates, assembler, attributes."""
        for index in range(len(self.tokens)):
            end = index
            if self.is_word(index, "template"):
                end = self._template_head(index)
            elif self.is_word(index, "static_assert", "asm", "alignas", "decltype") and self.is_mark(index + 1, "("):
                end = self.tokens[index + 1].partner + 1
            elif self.is_mark(index, "[") and self.is_mark(index + 1, "["):
                end = self.tokens[index].partner + 1
            elif self.is_word(index, "using", "typedef", "extern", "friend"):
                end = index + 1
                while end < len(self.tokens) and not self.is_mark(end, ";", "{"):
                    end += 1
            self._passed_over.update(range(index, end))

    def is_passed_over(self, index):
        return index in self._passed_over

    def is_code(self, index):
        """Whether a token is part of what is executed, or of a value: not of a mere declaration."""
        if index in self._passed_over:
            return False
        parent = self.tokens[index].parent
        if self._is_in_code(parent):
            return True
        bracket = parent
        while bracket >= 0:
            scope = self.tokens[bracket].scope
            if scope == "enum":
                return False
            if scope == "values":
                return True
            if scope in ("class", "namespace"):
                break
            index, bracket = bracket, self.tokens[bracket].parent
        return self._is_initialiser(index)

    def _is_initialiser(self, index):
        """Of a token between the brackets of a namespace or a class: behind the = of a variable, or in the list of
        a constructor."""
        before = list(self.siblings_before(index))
        if any(self.is_mark(at, ":") for at in before):
            colon = next(at for at in before if self.is_mark(at, ":"))
            return any(self.is_mark(at, ")") for at in before if at < colon)
        # Two that follow a list of parameters: = 0 and = default.
        return any(self.is_mark(at, "=") and not self._ends_function(at) for at in before)

    def _ends_function(self, index):
        return self.is_mark(index - 1, ")") or self.is_word(index - 1, "const", "noexcept", "override")

    def is_statement_start(self, index):
        """Whether a statement of code begins here."""
        parent = self.tokens[index].parent
        if parent < 0 or self.tokens[parent].scope != "code" or index in self._passed_over:
            return False
        before = index - 1
        if before == parent or self.is_mark(before, ";", "{") or self.is_word(before, "else", "do"):
            return True
        if self.is_mark(before, "}"):
            return self.tokens[self.tokens[before].partner].scope != "values"
        if self.is_mark(before, ")"):
            return self.is_word(self.tokens[before].partner - 1, "if", "for", "while", "switch", "constexpr")
        if self.is_mark(before, ":"):
            return any(self.is_word(at, "case", "default") for at in self.siblings_before(index)) and not any(
                self.is_mark(at, "?") for at in self.siblings_before(index))
        return False

    def arguments_end(self, index):
        """Behind the template arguments whose < stands here, or -1 if it begins none."""
        if self.text[self.tokens[index].begin - 1].isspace():
            return -1
        return self._behind_angles(index)
