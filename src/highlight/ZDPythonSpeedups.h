#pragma once

/// Makes the built-in module "_zdspeedups" importable by the embedded interpreter; call before
/// every start of an interpreter (a call while it is registered does nothing). Its `rule_list(tokens, utf16)` writes the
/// highlight rule list literal of the support module in C: `tokens` is an iterable of the
/// (index, token type, text) triples a Pygments lexer yields; positions and lengths count code
/// points, or UTF-16 units when `utf16` is true; empty tokens are left out. The support module
/// uses it when it can import it and keeps a pure Python version that writes the same text.
void zdRegisterPythonSpeedups();
