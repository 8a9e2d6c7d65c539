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
"""

from html.parser import HTMLParser

import pygments.lexers
from markdown_it import MarkdownIt
from mdit_py_plugins.footnote import footnote_plugin
from mdit_py_plugins.tasklists import tasklists_plugin

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


def _utf16_length(text):
    if text.isascii():
        return len(text)
    return len(text.encode("utf-16-le")) // 2


def ZDHighlight(code, lexer_name):
    code = _text(code)
    lexer = _lexer_named(_text(lexer_name))
    parts = []
    append = parts.append
    position = 0
    names = {}
    for token_type, value in lexer.get_tokens(code):
        if not value:
            continue
        length = _utf16_length(value)
        name = names.get(token_type)
        if name is None:
            name = names[token_type] = str(token_type)
        append("{'begin': %d, 'length': %d, 'class': '%s'}" % (position, length, name))
        position += length
    return "[" + ", ".join(parts) + "]"


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
