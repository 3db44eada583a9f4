"""Looks at what comments.py and links.py of docs/reference/ make of headers and documents:  reference_test.py ROOT"""

import os
import sys
import unittest

sys.path.append(os.path.join(sys.argv[1], "docs", "reference"))
import comments
import links

HEAD = "#pragma once\n\n// What the file is about.\n\n"
ABOUT = "What the file is about."


def blocks(text):
    """[(words, the line under them)] of a header."""
    lines = comments.convert("a.h", text).splitlines()
    starts = [i for i, line in enumerate(lines) if line == "/**"]
    ends = [lines.index("*/", start) for start in starts]
    return [("\n".join(lines[start + 1:end]), (lines + [""])[end + 1].strip()) for start, end in zip(starts, ends)]


class Reference(unittest.TestCase):
    def told(self, text):
        """{declaration: words} of a header that has this text behind its first comment."""
        first, *others = blocks(HEAD + text)
        self.assertEqual(("@file a.h\n\n" + ABOUT, ""), first)
        self.assertEqual(len(others), len({declaration for _, declaration in others}))
        return {declaration: words for words, declaration in others}

    def told_in_class(self, text):
        told = self.told("// A class.\nclass a_t\n{\npublic:\n" + text + "};\n")
        self.assertEqual("A class.", told.pop("class a_t"))
        return told

    def test_all_lines_of_the_header_stay(self):
        lines = ["#include <a>", "void f();", "class a_t", "{", "public:", "    int m_a;", "};"]
        made = comments.convert("a.h", HEAD + "// Words.\n".join(line + "\n" for line in lines)).splitlines()
        self.assertEqual(lines, [line for line in made if line in lines])

    def test_a_comment_is_about_all_up_to_the_blank_line(self):
        self.assertEqual({"void f();": "Of both.\nTwo lines.", "void g();": "Of both.\nTwo lines."},
                         self.told("// Of both.\n// Two lines.\nvoid f();\nvoid g();\n\nvoid h();\n"))

    def test_a_comment_is_about_all_up_to_the_next_comment_or_label(self):
        self.assertEqual({"void f();": "One.", "void g();": "Two."},
                         self.told_in_class("    // One.\n    void f();\n    // Two.\n    void g();\nprivate:\n"
                                            "    void h();\n"))

    def test_what_has_no_words_gets_none(self):
        self.assertEqual({}, self.told("void f();\n\n// Of nothing.\n\nint g(int a)\n{\n    // How.\n"
                                       "    return a;\n}\nconstexpr int h = 1;\nusing i = int;\n"))

    def test_a_comment_behind_a_declaration_stands_before_those_above(self):
        self.assertEqual({"void f(); // One.": "One.\n\nOf both.", "void g();": "Of both."},
                         self.told("// Of both.\nvoid f(); // One.\nvoid g();\n"))

    def test_slashes_in_a_string_are_no_comment(self):
        self.assertEqual({'char a[] = "//b";': "Words."}, self.told('// Words.\nchar a[] = "//b";\n'))

    def test_a_declaration_of_several_lines_is_one(self):
        text = ("// Of f.\ntemplate <class A>\nA f(const A& a,\n    int b = g({1}))\n{\n    if (b)\n    {\n    }\n\n"
                "    return a; // a;\n}\n\nvoid h();\n")
        self.assertEqual({"template <class A>": "Of f."}, self.told(text))

    def test_a_class_without_words_has_those_of_the_file(self):
        self.assertEqual({"class a_t : public c_t": ABOUT, "struct b_t": "Its own."},
                         self.told("namespace n\n{\n\nclass a_t : public c_t\n{\n};\n\n// Its own.\n"
                                   "struct b_t\n{\n};\n\n}\n"))

    def test_a_class_within_a_class_has_its_own_words_or_none(self):
        self.assertEqual({}, self.told_in_class("    struct b_t\n    {\n    };\n"))

    def test_a_comment_on_a_class_is_not_about_its_members(self):
        self.assertEqual({}, self.told_in_class("    void f();\n"))

    def test_a_comment_on_a_declaration_of_a_class_alone_is_dropped(self):
        self.assertEqual({}, self.told("// Elsewhere.\nclass a_t;\ntemplate <class A>\nclass b_t;\n"))

    def test_a_function_without_words_has_those_of_the_one_with_its_name(self):
        self.assertEqual({"void f();": "Of f.", "void f(const std::vector<int>& a);": "Of f."},
                         self.told("// Of f.\nvoid f();\n\nvoid f(const std::vector<int>& a);\n\nvoid g();\n"))

    def test_a_constructor_needs_words_of_its_own(self):
        self.assertEqual({"a_t();": "Empty."}, self.told_in_class("    // Empty.\n    a_t();\n\n    a_t(int a);\n"))

    def test_a_name_in_another_class_is_another(self):
        self.assertEqual({"void f();": "Of f.", "class b_t": ABOUT},
                         self.told("// Of f.\nvoid f();\n\nclass b_t\n{\n    void f(int a);\n};\n"))

    def test_what_the_declaration_says_gets_a_line_by_rule(self):
        self.assertEqual({"a_t(a_t&&) = default;": "As the language makes it.",
                          "a_t(const a_t&) = delete;": "There is none.",
                          "virtual ~a_t();": "Ends the object.", "using b_t = int;": "As its name says.",
                          "int c = f();": "As its name says."},
                         self.told_in_class("    a_t(a_t&&) = default;\n    a_t(const a_t&) = delete;\n"
                                            "    virtual ~a_t();\n    using b_t = int;\n    int c = f();\n"
                                            "    operator bool() const;\n"
                                            "    a_t& operator=(int a);\n"))

    def test_words_win_over_the_rule_but_for_what_is_deleted(self):
        self.assertEqual({"a_t() = default;": "Empty.", "a_t(const a_t&) = delete;": "There is none."},
                         self.told_in_class("    // Empty.\n    a_t() = default;\n    a_t(const a_t&) = delete;\n"))

    def test_enumerators_are_told_one_by_one(self):
        self.assertEqual({"enum class a_t : int": "Kinds.", "kOne = 1, // the first": "the first\n",
                          "kTwo": "As its name says."},
                         self.told("// Kinds.\nenum class a_t : int\n{\n    kOne = 1, // the first\n    kTwo\n};\n"))

    def test_marks_of_linters_are_no_words(self):
        self.assertEqual({"class a_t // NOLINT(b): c": ABOUT},
                         self.told("// NOLINTBEGIN(b)\nclass a_t // NOLINT(b): c\n{\n};\n// NOLINTEND(b)\n"))

    def test_instances_and_friends_are_left_out(self):
        text = "// Of f.\nvoid f();\nextern template void f(int);\nclass a_t\n{\n    friend class b_t;\n};\n"
        made = comments.convert("a.h", HEAD + text)
        self.assertNotIn("extern", made)
        self.assertNotIn("friend", made)

    def test_a_text_is_neither_command_nor_html(self):
        self.assertEqual({"void f();": r"\"\%1\" is \<a\> \@b \\c \&d; \#e \--f \---g h-i *j* `k` [l] _m"},
                         self.told('// "%1" is <a> @b \\c &d; #e --f ---g h-i *j* `k` [l] _m\nvoid f();\n'))

    def test_a_table_is_shown_as_it_stands(self):
        self.assertEqual({"void f();": "So:\n@code{.unparsed}\n| <a> | b |\n@endcode\nEnd."},
                         self.told("// So:\n// | <a> | b |\n// End.\nvoid f();\n"))

    def test_indented_lines_are_an_example(self):
        self.assertEqual({"void f();": "So:\n\n@code{.unparsed}\n  f(\"%1\");\n\n  f();\n@endcode\nEnd."},
                         self.told('// So:\n//\n//   f("%1");\n//\n//   f();\n// End.\nvoid f();\n'))

    def test_an_example_may_be_the_end(self):
        self.assertEqual({"void f();": "@code{.unparsed}\n  f();\n@endcode"}, self.told("//   f();\nvoid f();\n"))

    def test_the_test_of_an_oddity_stands_apart(self):
        self.assertEqual({"void f();": "Odd.\n\nKept: <tt>A.B</tt>\n\nMore."},
                         self.told("// Odd.\n// Kept: A.B\n// More.\nvoid f();\n"))


class Links(unittest.TestCase):
    def test_what_is_no_page_is_looked_for_in_the_tree(self):
        self.assertEqual("[a](../../packaging/a.8), [`b`](../../docs/b)",
                         links.convert("docs/c.md", "[a](../packaging/a.8), [`b`](b)"))
        self.assertEqual("[a](../../examples/a.cpp)", links.convert("README.md", "[a](examples/a.cpp)"))

    def test_pages_pictures_and_other_places_stay(self):
        for text in ("[a](b/a.md)", "![a](b/a.svg)", "[a](#b)", "[a](https://b.invalid/a)", "a](b) (c)"):
            self.assertEqual(text, links.convert("docs/c.md", text))


if __name__ == "__main__":
    unittest.main(argv=sys.argv[:1])
