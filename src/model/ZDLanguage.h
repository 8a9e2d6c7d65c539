#pragma once

#include <QMetaType>
#include <QSharedData>
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

    bool isValid() const { return d && !d->identifier.isEmpty(); }
    QString identifier() const { return d ? d->identifier : QString(); }
    QString displayName() const { return d ? d->displayName : QString(); }
    QStringList aliases() const { return d ? d->aliases : QStringList(); }
    QStringList mimeTypes() const { return d ? d->mimeTypes : QStringList(); }
    QStringList UTIStrings() const { return d ? d->UTIStrings : QStringList(); }
    QStringList fileExtensions() const { return d ? d->fileExtensions : QStringList(); }
    bool isMarkdown() const { return d && d->identifier == QLatin1String("MarkdownLexer"); }

    bool operator==(const ZDLanguage &other) const { return d == other.d || identifier() == other.identifier(); }
    bool operator!=(const ZDLanguage &other) const { return !(*this == other); }

private:
    // Every part of a library holds its language, so copies share one descriptor.
    struct Data : QSharedData
    {
        QString identifier;
        QString displayName;
        QStringList aliases;
        QStringList mimeTypes;
        QStringList UTIStrings;
        QStringList fileExtensions;
    };
    QExplicitlySharedDataPointer<const Data> d;
};

Q_DECLARE_METATYPE(ZDLanguage)
