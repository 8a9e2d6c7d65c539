#pragma once

#include <QList>
#include <QPair>
#include <QString>
#include <QVariantMap>

/// Tokens of a text as Debian's own interpreter lexes it with Pygments, outside the program:
/// (token text, full token type) pairs, in order. Used to check where the program's colours land.
QList<QPair<QString, QString>> zdPygmentsReferenceTokens(const QString &code, const QString &lexer,
                                                         const QVariantMap &lexerOptions = {});
