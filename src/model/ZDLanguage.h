#pragma once

#include <QMetaType>
#include <QString>
#include <QStringList>

/// An immutable language descriptor: the name of the Pygments lexer that highlights it
/// ("TextLexer" is plain text, "MarkdownLexer" is Markdown), its display name, aliases, MIME
/// types, uniform type identifiers and file extensions (without the dot, preferred first).
/// Two languages are equal when their identifiers are.
class ZDLanguage
{
public:
    ZDLanguage() = default;
    ZDLanguage(QString identifier, QString displayName, QStringList aliases, QStringList mimeTypes,
               QStringList UTIStrings, QStringList fileExtensions);

    bool isValid() const { return !m_identifier.isEmpty(); }
    QString identifier() const { return m_identifier; }
    QString displayName() const { return m_displayName; }
    QStringList aliases() const { return m_aliases; }
    QStringList mimeTypes() const { return m_mimeTypes; }
    QStringList UTIStrings() const { return m_UTIStrings; }
    QStringList fileExtensions() const { return m_fileExtensions; }
    bool isMarkdown() const { return m_identifier == QLatin1String("MarkdownLexer"); }

    bool operator==(const ZDLanguage &other) const { return m_identifier == other.m_identifier; }
    bool operator!=(const ZDLanguage &other) const { return !(*this == other); }

private:
    QString m_identifier;
    QString m_displayName;
    QStringList m_aliases;
    QStringList m_mimeTypes;
    QStringList m_UTIStrings;
    QStringList m_fileExtensions;
};

Q_DECLARE_METATYPE(ZDLanguage)
