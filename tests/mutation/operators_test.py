"""Shows on pieces of C++ what each operator makes of them."""

import unittest

import operators
from tokens import Source


def within(statements):
    return "void F()\n{\n" + statements + "\n}\n"


class Operators(unittest.TestCase):
    def made(self, kind, text):
        """What the changes of a kind make of a text, each as (what was there, what stands there now)."""
        return [(text[change.begin:change.end], change.text) for change in operators.changes(text)
                if change.kind == kind]

    def of(self, kind, statements):
        return self.made(kind, within(statements))


class Comparisons(Operators):
    def test_turn_into_the_one_beside_them(self):
        self.assertEqual([("<", "<="), ("<=", "<"), (">", ">="), (">=", ">"), ("==", "!="), ("!=", "==")],
                         self.of("comparison", "x = a < b | a <= b | a > b | a >= b | a == b | a != b;"))

    def test_brackets_of_templates_are_none(self):
        self.assertEqual([], self.made(
            "comparison", "template <class T>\nvoid F()\n{\n    a<b<c>>(d);\n    e << f >> g;\n}\n"))

    def test_names_of_operators_are_none(self):
        self.assertEqual([("==", "!=")], self.made(
            "comparison", "bool operator<(A a, A b);\nbool operator==(A a, A b)\n{\n    return a.x == b.x;\n}\n"))

    def test_what_the_compiler_decides_stays(self):
        self.assertEqual([], self.of("comparison", "static_assert(sizeof(a) == 4 && f(1 < 2));"))

    def test_comments_and_directives_stay(self):
        self.assertEqual([], self.made(
            "comparison", "#if A == 1 && \\\n    B < 2\n#endif\n// a < b\n/* c == d\n e > f */\n"))


class Constants(Operators):
    def test_shift_by_one_in_their_base(self):
        self.assertEqual([("7", "6"), ("7", "8"), ("0xFFu", "0x100u"), ("0xFFu", "0xFEu"), ("0666", "0665"),
                          ("0666", "0667"), ("10'000ULL", "10001ULL"), ("10'000ULL", "9999ULL")],
                         self.of("constant", "x = 7 + 0xFFu + 0666 + 10'000ULL;"))

    def test_nothing_is_below_zero(self):
        self.assertEqual([("0", "1")], self.of("constant", "x = 0;"))

    def test_fractions_stay(self):
        self.assertEqual([], self.of("constant", "x = 1.5 + .5 + 1e3;"))

    def test_truth_turns(self):
        self.assertEqual([("true", "false"), ("false", "true")], self.of("constant", "f(true, false);"))

    def test_characters_become_the_next(self):
        self.assertEqual([("'a'", "'b'"), (r"'\n'", r"'\x0B'"), (r"'\0'", r"'\x01'"), ("'['", r"'\x5C'"),
                          ("L'&'", r"L'\x27'"), (r"'\''", "'('"), ("'~'", r"'\x7F'")],
                         self.of("constant", r"f('a', '\n', '\0', '[', L'&', '\'', '~');"))

    def test_values_of_variables_shift_wherever_they_stand(self):
        self.assertEqual([("1", "0"), ("1", "2"), ("2", "1"), ("2", "3"), ("3", "2"), ("3", "4")],
                         self.made("constant", "constexpr int kOne = 1;\nconst int kMore[] = {2};\n"
                                               "class c\n{\n    int m_x = 3;\n};\n"))

    def test_lists_of_constructors_are_code(self):
        self.assertEqual([("4", "3"), ("4", "5"), ("0", "1")],
                         self.made("constant", "c::c(int a) : m_x(4), m_y{0}\n{\n}\n"))

    def test_mere_declarations_stay(self):
        self.assertEqual([], self.made(
            "constant", "void F(int a = 1, int b[2]);\ntemplate <int N = 3>\nclass c;\nenum class e\n{\n    k = 4\n};\n"
                        "class d\n{\n    virtual void G() = 0;\n    virtual void H() const = 0;\n    char m_x[8];\n};\n"
                        "using a = b<5>;\nextern const int kSix[6];\nalignas(16) char kRoom[7];\n"))

    def test_bodies_in_classes_are_code(self):
        self.assertEqual([("1", "0"), ("1", "2")],
                         self.made("constant", "struct s\n{\n    int F() const override { return 1; }\n};\n"))

    def test_bodies_that_are_tried_are_code(self):
        self.assertEqual([("0", "1"), ("0", "1")], self.made(
            "constant", "int F()\ntry\n{\n    return 0;\n}\ncatch (e& x)\n{\n    return 0;\n}\n"))


class Calls(Operators):
    def test_are_left_out(self):
        for call in ("f()", "a.b(c)", "a->b(c).d(e)", "::f(a, b)", "a::b<c>(d)", "a[1].f()", "this->g()",
                     "static_cast<void>(f(1, 2))"):
            self.assertEqual([(call, "")], self.of("call", f"    {call};"), call)

    def test_wherever_a_statement_stands(self):
        for statement in ("if (a)\n f();", "else\n f();", "for (;;)\n f();", "case 1: f();", "default: f();",
                          "{ f(); }", "g = [] { f(); };"):
            self.assertEqual([("f()", "")], self.of("call", "x = 1;\n" + statement), statement)

    def test_what_is_more_or_less_than_a_call_stays(self):
        for statement in ("a = f();", "return f();", "throw f(a);", "const lock_t lock(m_mutex);", "lock_t lock{m};",
                          "f() + g();", "++a;", "f(a)[0];", "delete f();", "asm(a);", "for (f(); g(); h()) {}",
                          "b = a ? c : f();", "static_assert(f());", "f().x;", "(f());"):
            self.assertEqual([], self.of("call", statement), statement)

    def test_declarations_stay(self):
        self.assertEqual([], self.made(
            "call", "class c\n{\n    c();\n    ~c();\n    explicit c(int);\n    void f();\n};\nvoid g();\n"))


class Branches(Operators):
    def test_are_forced_both_ways(self):
        self.assertEqual([("a && f(b)", "false"), ("a && f(b)", "true")], self.of("branch", "if (a && f(b))\n g();"))

    def test_loops_are_only_left_out(self):
        self.assertEqual([("a", "false"), ("b < 2", "false"), ("c", "false")], self.of(
            "branch", "while (a)\n f();\nfor (int b = 0; b < 2; ++b)\n f();\ndo\n f();\nwhile (c);"))

    def test_of_values(self):
        for before in ("x = ", "return ", "f(1, ", "x += ", "int y = "):
            statement = f"{before}a == b ? 1 : 2" + (");" if "(" in before else ";")
            self.assertEqual([("a == b", "false"), ("a == b", "true")], self.of("branch", statement), statement)

    def test_of_values_in_values(self):
        self.assertEqual([("a", "false"), ("a", "true"), ("f(b)[1]", "false"), ("f(b)[1]", "true")],
                         self.of("branch", "x = a ? 1 : f(b)[1] ? 2 : 3;"))

    def test_a_condition_behind_a_statement_of_its_own(self):
        self.assertEqual([("a > 1", "false"), ("a > 1", "true")], self.of("branch", "if (int a = f(); a > 1)\n g();"))

    def test_what_cannot_be_forced_stays(self):
        for statement in ("if constexpr (a)\n f();", "if (int* a = f())\n g();", "for (;;)\n f();",
                          "for (a b : c)\n f();", "while (true)\n f();"):
            self.assertEqual([], self.of("branch", statement), statement)


class Texts(Operators):
    def one(self, literal):
        """The literal with its change."""
        text = within(f"f({literal});")
        found = [change for change in operators.changes(text) if change.kind == "text"]
        self.assertEqual(1, len(found), literal)
        return found[0].of(text)[len(within("f(")) - 3:-len(");\n}\n")]

    def test_have_another_character(self):
        for literal in ('"Format"', 'L"wide"', 'u8"%1 of [%2]."', '"a\\nb"', 'R"x(raw "text" \\n)x"'):
            other = self.one(literal)
            self.assertEqual((len(literal), 1), (len(other), sum(a != b for a, b in zip(literal, other))), other)

    def test_a_letter_becomes_the_next(self):
        self.assertEqual(['"b"', '"a"', '"A"', '"0"', '"_"', '"x"', '"x"'],
                         [self.one(literal) for literal in ('"a"', '"z"', '"Z"', '"9"', '" "', '"."', '""')])

    def test_what_is_escaped_stays(self):
        self.assertEqual(r'"\x41h\101"', self.one(r'"\x41g\101"'))
        self.assertEqual([], self.of("text", r'f("\n\"\\");'))

    def test_the_name_of_a_language_stays(self):
        self.assertEqual([], self.made("text", 'extern "C" int f(int);\nextern "C"\n{\nint g();\n}\n#include "a.h"\n'))
        self.assertEqual([], self.of("text", '[[deprecated("a")]] int b;\nstatic_assert(c, "d");\nasm("" : "+r"(e));'))


class Reading(unittest.TestCase):
    def test_brackets_that_do_not_match_are_refused(self):
        for text in ("(", "{)", "}"):
            with self.assertRaises(ValueError):
                Source(text)

    def test_changes_come_by_their_places(self):
        places = [change.begin for change in operators.changes(within('if (a == 1)\n f("b");'))]
        self.assertEqual(sorted(places), places)
        self.assertEqual(7, len(places))


if __name__ == "__main__":
    unittest.main(argv=["operators_test"])
