#include "ZDSnippetPart.h"

#include "ZDLanguageRegistry.h"
#include "ZDRecordDirectory.h"
#include "ZDSnippet.h"

#include <QRegularExpression>

namespace {
ZDLanguage plainText()
{
    if (ZDLanguageRegistry *registry = ZDLanguageRegistry::shared())
        return registry->plainTextLanguage();
    return ZDLanguage(QStringLiteral("TextLexer"), QStringLiteral("Plain Text"), {}, {}, {}, {QStringLiteral("txt")});
}
} // namespace

ZDSnippetPart::ZDSnippetPart(const QString &title, const QString &snippetUUID)
    : m_title(title)
    , m_UUID(zdNewUUIDString())
    , m_language(plainText())
    , m_dateCreated(ZDRecordDirectory::now())
    , m_dateModified(ZDRecordDirectory::now())
    , m_snippetUUID(snippetUUID)
{
}

ZDSnippetPart::ZDSnippetPart(const QString &title, const QString &UUID, const ZDLanguage &language,
                             const QString &note, const QString &content, const QDateTime &dateCreated,
                             const QDateTime &dateModified, const QString &snippetUUID)
    : ZDSnippetPart(title, UUID, language, ZDSnippetText(note), ZDSnippetText(content), dateCreated, dateModified,
                    snippetUUID)
{
}

ZDSnippetPart::ZDSnippetPart(const QString &title, const QString &UUID, const ZDLanguage &language,
                             ZDSnippetText note, ZDSnippetText content, const QDateTime &dateCreated,
                             const QDateTime &dateModified, const QString &snippetUUID)
    : m_title(title)
    , m_UUID(UUID)
    , m_language(language.isValid() ? language : plainText())
    , m_note(std::move(note))
    , m_content(std::move(content))
    , m_dateCreated(dateCreated)
    , m_dateModified(dateModified)
    , m_snippetUUID(snippetUUID)
{
}

void ZDSnippetPart::touch()
{
    m_dateModified = ZDRecordDirectory::now();
}

void ZDSnippetPart::setTitle(const QString &title)
{
    if (title == m_title)
        return;
    m_title = title;
    touch();
}

void ZDSnippetPart::setLanguage(const ZDLanguage &language)
{
    const ZDLanguage newLanguage = language.isValid() ? language : plainText();
    if (newLanguage == m_language)
        return;
    m_language = newLanguage;
    touch();
}

void ZDSnippetPart::setNote(const QString &note)
{
    if (m_note == note)
        return;
    m_note = ZDSnippetText(note);
    touch();
}

void ZDSnippetPart::setContent(const QString &content)
{
    if (m_content == content)
        return;
    m_content = ZDSnippetText(content);
    touch();
}

bool ZDSnippetPart::isIdentical(const ZDSnippetPart *other) const
{
    return isEqual(other) && m_title == other->m_title && m_content == other->m_content
        && m_note == other->m_note && m_language == other->m_language;
}

QString ZDSnippetPart::stringRepresentation() const
{
    return stringRepresentation(m_note, m_content);
}

QString ZDSnippetPart::stringRepresentation(const ZDSnippetText &note, const ZDSnippetText &content)
{
    QString text;
    text.reserve(note.size() + 1 + content.size());
    note.appendTo(text);
    text += QLatin1Char('\n');
    content.appendTo(text);
    return text;
}

QString ZDSnippetPart::fileBaseTitle(const ZDSnippet *snippet) const
{
    if (snippet && snippet->partsCount() == 1)
        return snippet->title();
    return m_title;
}

namespace {
bool hasFileExtension(const QString &name)
{
    static const QRegularExpression extension(QStringLiteral("\\.[a-z0-9]{1,10}$"),
                                              QRegularExpression::CaseInsensitiveOption);
    return extension.match(name).hasMatch();
}
} // namespace

QString ZDSnippetPart::filenameWithoutExtensionWithSnippet(const ZDSnippet *snippet) const
{
    const QString name = fileBaseTitle(snippet);
    if (!hasFileExtension(name))
        return name;
    return name.left(name.lastIndexOf(QLatin1Char('.')));
}

QString ZDSnippetPart::fileExtensionWithSnippet(const ZDSnippet *snippet) const
{
    const QString name = fileBaseTitle(snippet);
    if (hasFileExtension(name))
        return name.mid(name.lastIndexOf(QLatin1Char('.')) + 1);
    const QStringList extensions = m_language.fileExtensions();
    return extensions.isEmpty() ? QStringLiteral("txt") : extensions.first();
}

QString ZDSnippetPart::filenameWithSnippet(const ZDSnippet *snippet) const
{
    return filenameWithoutExtensionWithSnippet(snippet) + QLatin1Char('.') + fileExtensionWithSnippet(snippet);
}
