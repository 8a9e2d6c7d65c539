#!/usr/bin/python3
"""Writes resources/Languages.json from the lexer metadata of the installed Pygments.

One row per lexer class: identifier (the class name), displayName, aliases, mimeTypes,
UTIStrings and fileExtensions (preferred first, without the dot). Run it with Debian's
interpreter after a Pygments upgrade and commit the result:

    /usr/bin/python3 scripts/generate-languages.py
"""

import itertools
import json
import os
import re
import sys

from pygments.lexers._mapping import LEXERS

# Uniform type identifiers for languages that have a well-known one.
UTIS = {
    "AppleScriptLexer": ["com.apple.applescript.text"],
    "BashLexer": ["public.shell-script", "public.bash-script"],
    "CLexer": ["public.c-source", "public.c-header"],
    "CppLexer": ["public.c-plus-plus-source", "public.c-plus-plus-header"],
    "CssLexer": ["public.css"],
    "GasLexer": ["public.assembly-source"],
    "HtmlLexer": ["public.html"],
    "JavaLexer": ["com.sun.java-source"],
    "JavascriptLexer": ["com.netscape.javascript-source"],
    "JsonLexer": ["public.json"],
    "MakefileLexer": ["public.make-source"],
    "MarkdownLexer": ["net.daringfireball.markdown"],
    "ObjectiveCLexer": ["public.objective-c-source"],
    "ObjectiveCppLexer": ["public.objective-c-plus-plus-source"],
    "PerlLexer": ["public.perl-script"],
    "PhpLexer": ["public.php-script"],
    "PythonLexer": ["public.python-script"],
    "RubyLexer": ["public.ruby-script"],
    "SwiftLexer": ["public.swift-source"],
    "TextLexer": ["public.plain-text"],
    "XmlLexer": ["public.xml"],
    "YamlLexer": ["public.yaml"],
}

DISPLAY_NAMES = {"TextLexer": "Plain Text"}

# Rows whose Pygments data we replace. The RPM build-recipe lexer's file extension is shared with
# PyInstaller's build files, which are Python, so no extension makes a guess of RPM; the lexer goes
# by the name of RPM's own query tool, and Pygments' unregistered MIME type is left out.
REPLACED = {
    "RPMSpecLexer": {"aliases": ["rpmspec"], "mimeTypes": [], "fileExtensions": []},
}


def expand(pattern):
    """Expands the character classes of a file-name glob: "*.[ch]pp" gives "*.cpp", "*.hpp"."""
    parts = re.split(r"(\[[^\]]+\])", pattern)
    choices = [list(p[1:-1]) if p.startswith("[") and p.endswith("]") else [p] for p in parts]
    return ["".join(c) for c in itertools.product(*choices)]


def extensions(patterns):
    found = []
    for pattern in patterns:
        for name in expand(pattern):
            if not name.startswith("*."):
                continue  # a whole file name such as "Makefile", not an extension
            ext = name[2:]
            if not ext or any(c in ext for c in "*?[]/"):
                continue
            if ext not in found:
                found.append(ext)
    return found


def main():
    rows = []
    for class_name, (_module, name, aliases, filenames, mimetypes) in LEXERS.items():
        rows.append({
            "identifier": class_name,
            "displayName": DISPLAY_NAMES.get(class_name, name),
            "aliases": list(aliases),
            "mimeTypes": list(mimetypes),
            "UTIStrings": UTIS.get(class_name, []),
            "fileExtensions": extensions(filenames),
        })
        rows[-1].update(REPLACED.get(class_name, {}))
    rows.sort(key=lambda row: row["displayName"].lower())
    here = os.path.dirname(os.path.abspath(__file__))
    out = os.path.join(here, "..", "resources", "Languages.json")
    with open(out, "w", encoding="utf-8") as f:
        json.dump(rows, f, ensure_ascii=False, indent=1)
        f.write("\n")
    print(f"{len(rows)} languages written to {os.path.normpath(out)}", file=sys.stderr)


if __name__ == "__main__":
    main()
