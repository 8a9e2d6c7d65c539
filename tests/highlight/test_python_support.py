"""The support module under Debian's own interpreter: the contract the program relies on."""

import ast
import sys
import unittest

sys.path.insert(0, sys.argv.pop(1))

import ZDPythonSupport as support  # noqa: E402


class HighlightTest(unittest.TestCase):
    def rules(self, code, lexer):
        text = support.ZDHighlight(code, lexer)
        self.assertIsInstance(text, str)
        return ast.literal_eval(text)

    def test_positions_count_utf16_units_and_tile_the_text(self):
        code = 's = "\U0001F600é"\nx = 1\n'
        rules = self.rules(code.encode("utf-8"), b"PythonLexer")
        units = len(code.encode("utf-16-le")) // 2
        position = 0
        for rule in rules:
            self.assertEqual(set(rule), {"begin", "length", "class"})
            self.assertEqual(rule["begin"], position)
            self.assertTrue(rule["class"].startswith("Token"))
            position += rule["length"]
        self.assertEqual(position, units)
        number = [r for r in rules if r["class"] == "Token.Literal.Number.Integer"]
        self.assertEqual(len(number), 1)
        self.assertEqual(code.encode("utf-16-le")[2 * number[0]["begin"]:2 * number[0]["begin"] + 2], b"1\x00")

    def test_same_rules_as_a_plain_walk_over_get_tokens(self):
        # The module lexes without get_tokens' wrapper; it must prepare the text the same way.
        import pygments.lexers
        cases = [("\n\n\r\nx = '\U0001F600'\r\n\ty\n\n", "PythonLexer"), ("\ufeff<?php echo 1;", "PhpLexer"),
                 ("# T\n**b** _e_", "MarkdownLexer"), ("", "PythonLexer"), ("a {\n}\n", "CssLexer")]
        for code, name in cases:
            expected, position = [], 0
            for kind, value in getattr(pygments.lexers, name)().get_tokens(code):
                if value:
                    length = len(value.encode("utf-16-le")) // 2
                    expected.append({"begin": position, "length": length, "class": str(kind)})
                    position += length
            self.assertEqual(self.rules(code, name), expected, (code, name))

    def test_output_uses_single_quotes_only(self):
        text = support.ZDHighlight("int main() { return 0; }", "CLexer")
        self.assertNotIn('"', text)
        self.assertTrue(text.startswith("[{'begin': 0"))

    def test_unknown_lexer_raises(self):
        with self.assertRaises(Exception):
            support.ZDHighlight("x", "NoSuchLexer")
        with self.assertRaises(Exception):
            support.ZDHighlight("x", "__class__")


class MarkdownTest(unittest.TestCase):
    def test_extensions(self):
        html = support.ZDMarkdownParse(
            "| a | b |\n|---|---|\n| 1 | 2 |\n\n~~gone~~ note[^n]\n\n- [x] done\n- [ ] open\n\n"
            "```swift\nlet x = 1\n```\n\n[^n]: The note.\n")
        self.assertIn("<table>", html)
        self.assertIn("<s>gone</s>", html)
        self.assertIn('class="footnotes"', html)
        self.assertIn('type="checkbox"', html)
        self.assertIn('<code class="language-swift">', html)

    def test_child_count_counts_top_level_elements(self):
        self.assertEqual(support.ZDChildCountOfMarkdownSource(""), 0)
        self.assertEqual(support.ZDChildCountOfMarkdownSource(b"# Title\n\ntext\n\n---\n\n- a\n- b\n"), 4)
        self.assertEqual(support.ZDChildCountOfMarkdownSource("<div>a<br>b</div>\n\npara\n"), 2)


if __name__ == "__main__":
    unittest.main()
