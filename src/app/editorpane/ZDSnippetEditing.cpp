#include "ZDSnippetEditing.h"

#include "ZDDataCenter.h"
#include "ZDSnippet.h"
#include "ZDSnippetPart.h"

#include <QSet>

ZDSnippetEditing::ZDSnippetEditing(ZDDataCenter *center, QObject *sender) : m_center(center), m_sender(sender)
{
}

QString ZDSnippetEditing::newPartTitle(const QStringList &titles)
{
    const QString base = QStringLiteral("Fragment");
    if (!titles.contains(base))
        return base;
    for (int n = 2;; ++n) {
        const QString title = QStringLiteral("%1 %2").arg(base).arg(n);
        if (!titles.contains(title))
            return title;
    }
}

ZDSnippetPtr ZDSnippetEditing::stored(const ZDSnippetPtr &snippet) const
{
    return snippet && m_center ? m_center->snippetWithUUID(snippet->UUID()) : nullptr;
}

bool ZDSnippetEditing::setTitle(const ZDSnippetPtr &snippet, const QString &title)
{
    const ZDSnippetPtr record = stored(snippet);
    return record && record->title() != title && m_center->setSnippetTitle(record->UUID(), title, m_sender);
}

bool ZDSnippetEditing::setTagNames(const ZDSnippetPtr &snippet, const QStringList &names)
{
    const ZDSnippetPtr record = stored(snippet);
    if (!record)
        return false;
    const QStringList before = record->tagUUIDs();
    return m_center->setSnippetTagNames(record->UUID(), names, m_sender) && record->tagUUIDs() != before;
}

ZDSnippetPartPtr ZDSnippetEditing::addPart(const ZDSnippetPtr &snippet, int index, const ZDLanguage &language)
{
    const ZDSnippetPtr record = stored(snippet);
    if (!record)
        return nullptr;
    QStringList titles;
    for (const ZDSnippetPartPtr &part : record->parts())
        titles.append(part->title());
    return m_center->addPart(record->UUID(), index, newPartTitle(titles), language, m_sender);
}

bool ZDSnippetEditing::removePart(const ZDSnippetPtr &snippet, const ZDSnippetPartPtr &part)
{
    const ZDSnippetPtr record = stored(snippet);
    return record && part && record->partsCount() > 1 &&
           m_center->removePart(record->UUID(), part->UUID(), m_sender);
}

bool ZDSnippetEditing::renamePart(const ZDSnippetPtr &snippet, const ZDSnippetPartPtr &part,
                                  const QString &title)
{
    const ZDSnippetPtr record = stored(snippet);
    const QString trimmed = title.trimmed();
    return record && part && !trimmed.isEmpty() && part->title() != trimmed &&
           m_center->setPartTitle(record->UUID(), part->UUID(), trimmed, m_sender);
}

bool ZDSnippetEditing::movePart(const ZDSnippetPtr &snippet, int from, int to)
{
    const ZDSnippetPtr record = stored(snippet);
    return record && from != to && m_center->movePart(record->UUID(), from, to, m_sender);
}

bool ZDSnippetEditing::setLanguage(const ZDSnippetPtr &snippet, const ZDSnippetPartPtr &part,
                                   const ZDLanguage &language)
{
    const ZDSnippetPtr record = stored(snippet);
    return record && part && language.isValid() && part->language() != language &&
           m_center->setPartLanguage(record->UUID(), part->UUID(), language, m_sender);
}

void ZDSnippetEditing::setContent(const ZDSnippetPartPtr &part, const QString &content)
{
    if (!part)
        return;
    part->setContent(content);
    m_typedParts.insert(part->UUID(), part);
}

void ZDSnippetEditing::setNote(const ZDSnippetPartPtr &part, const QString &note)
{
    if (!part)
        return;
    part->setNote(note);
    m_typedParts.insert(part->UUID(), part);
}

void ZDSnippetEditing::commitText(const ZDSnippetPtr &snippet)
{
    if (!snippet)
        return;
    // The typed objects carry the text: the editor may hold a copy of the library's snippet.
    QSet<QString> partUUIDs;
    for (const ZDSnippetPtr &holder : {snippet, stored(snippet)}) {
        for (const ZDSnippetPartPtr &part : holder ? holder->parts() : QList<ZDSnippetPartPtr>())
            partUUIDs.insert(part->UUID());
    }
    QList<ZDDataCenter::PartText> texts;
    for (auto it = m_typedParts.begin(); it != m_typedParts.end();) {
        const ZDSnippetPartPtr &part = it.value();
        if (!partUUIDs.contains(part->UUID())) {
            ++it;
            continue;
        }
        texts.append({part->UUID(), part->content(), part->note()});
        it = m_typedParts.erase(it);
    }
    // One save and one notice for all the parts typed into.
    if (m_center && !texts.isEmpty())
        m_center->setPartTexts(snippet->UUID(), texts, m_sender);
}
