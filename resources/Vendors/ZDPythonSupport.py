"""Zandrio's support module for the embedded interpreter.

The program calls three functions, one call at a time, from the thread that owns the
interpreter:

ZDHighlight(code, lexer_name)
    Highlight `code` with the Pygments lexer whose class name is `lexer_name` (for example
    "PythonLexer"), using the lexer's default options. Returns a Python list literal of
    dictionaries with the keys 'begin', 'length' and 'class', written with single quotes.
    Positions and lengths count UTF-16 code units of the text the lexer received, which is what
    the editor counts in.

ZDMarkdownParse(source)
    Render Markdown to an HTML fragment: CommonMark with tables, strikethrough, footnotes, task
    lists, and fenced code blocks that carry their language as a class.

ZDChildCountOfMarkdownSource(source)
    The number of top-level elements of the HTML that ZDMarkdownParse renders for `source`.

Arguments may be str or UTF-8 bytes.

Inside the program, the built-in module _zdspeedups writes the rule list in C; elsewhere (and
when it is missing) the pure Python _rule_list below writes the same text.
"""

import itertools
import re
from html.parser import HTMLParser

import pygments.lexers
from markdown_it import MarkdownIt
from mdit_py_plugins.footnote import footnote_plugin
from mdit_py_plugins.tasklists import tasklists_plugin

try:
    from _zdspeedups import rule_list as _native_rule_list
except ImportError:
    _native_rule_list = None

_lexers = {}
_markdown = None


def _text(value):
    if isinstance(value, (bytes, bytearray)):
        return bytes(value).decode("utf-8", "replace")
    return value


def _lexer_named(name):
    lexer = _lexers.get(name)
    if lexer is None:
        if not name.endswith("Lexer") or name.startswith("_"):
            raise ValueError("not a lexer class name: %r" % name)
        lexer_class = getattr(pygments.lexers, name)
        lexer = lexer_class()
        _lexers[name] = lexer
    return lexer


_ASTRAL = re.compile("[\U00010000-\U0010FFFF]")


def _utf16_length(text):
    return len(text) + len(_ASTRAL.findall(text))


def _prepared(lexer, text):
    """The text as Lexer.get_tokens prepares it before lexing (default options keep it close)."""
    if text.startswith("\ufeff"):
        text = text[1:]
    text = text.replace("\r\n", "\n").replace("\r", "\n")
    if lexer.stripall:
        text = text.strip()
    elif lexer.stripnl:
        text = text.strip("\n")
    if lexer.tabsize > 0:
        text = text.expandtabs(lexer.tabsize)
    if lexer.ensurenl and not text.endswith("\n"):
        text += "\n"
    return text


def _rule_list(tokens, utf16):
    """The rule list literal of a lexer's (index, token type, text) triples; empty tokens are left
    out. Lengths count code points, or UTF-16 units when `utf16` is true."""
    columns = list(zip(*tokens))
    if not columns:
        return "[]"
    _, kinds, values = columns
    # The loops below run in C; a long text has tens of thousands of tokens.
    lengths = list(map(_utf16_length if utf16 else len, values))
    if 0 in lengths:
        kept = [(kind, length) for kind, length in zip(kinds, lengths) if length]
        if not kept:
            return "[]"
        kinds, lengths = zip(*kept)
    begins = itertools.accumulate(lengths, initial=0)
    templates = {kind: "{'begin': %d, 'length': %d, 'class': '" + str(kind).replace("%", "%%") + "'}"
                 for kind in set(kinds)}
    return "[" + ", ".join(map(str.__mod__, map(templates.__getitem__, kinds), zip(begins, lengths))) + "]"


def ZDHighlight(code, lexer_name):
    code = _text(code)
    lexer = _lexer_named(_text(lexer_name))
    if lexer.filters:
        stream = ((0, kind, value) for kind, value in lexer.get_tokens(code))
    else:
        # The same tokens as get_tokens, without its extra generator layer.
        stream = lexer.get_tokens_unprocessed(_prepared(lexer, code))
    utf16 = not code.isascii() and _ASTRAL.search(code) is not None
    return (_native_rule_list or _rule_list)(stream, utf16)


def _markdown_renderer():
    global _markdown
    if _markdown is None:
        md = MarkdownIt("commonmark", {"html": True})
        md.enable(["table", "strikethrough"])
        md.use(footnote_plugin)
        md.use(tasklists_plugin)
        _markdown = md
    return _markdown


def ZDMarkdownParse(source):
    return _markdown_renderer().render(_text(source))


_VOID_ELEMENTS = frozenset(
    "area base br col embed hr img input link meta param source track wbr".split())


class _TopLevelCounter(HTMLParser):
    def __init__(self):
        super().__init__(convert_charrefs=True)
        self.depth = 0
        self.count = 0

    def handle_starttag(self, tag, attrs):
        if self.depth == 0:
            self.count += 1
        if tag not in _VOID_ELEMENTS:
            self.depth += 1

    def handle_startendtag(self, tag, attrs):
        if self.depth == 0:
            self.count += 1

    def handle_endtag(self, tag):
        if tag not in _VOID_ELEMENTS and self.depth > 0:
            self.depth -= 1


def ZDChildCountOfMarkdownSource(source):
    counter = _TopLevelCounter()
    counter.feed(ZDMarkdownParse(source))
    counter.close()
    return counter.count
