#include "ZDSnippetEditing.h"

#include "ZDDataCenter.h"
#include "ZDMulticastDelegateHandler.h"
#include "ZDSnippet.h"
#include "ZDSnippetPart.h"
#include "ZDTag.h"

ZDSnippetEditing::ZDSnippetEditing(ZDDataCenter *center, QObject *sender,
                                   ZDMulticastDelegateHandler *notifier)
    : m_center(center), m_sender(sender),
      m_notifier(notifier ? notifier : &ZDMulticastDelegateHandler::globalHandler())
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

bool ZDSnippetEditing::save(const ZDSnippetPtr &snippet)
{
    return !m_center || m_center->setSnippetsUpdated({snippet});
}

bool ZDSnippetEditing::setTitle(const ZDSnippetPtr &snippet, const QString &title)
{
    if (!snippet || snippet->title() == title)
        return false;
    snippet->setTitle(title);
    save(snippet);
    m_notifier->noteSnippetTitleChanged(snippet, m_sender);
    return true;
}

bool ZDSnippetEditing::setTagNames(const ZDSnippetPtr &snippet, const QStringList &names)
{
    if (!snippet)
        return false;
    ZDTagList library = m_center ? m_center->tags() : snippet->tags();
    bool created = false;
    QStringList uuids;
    for (const QString &rawName : names) {
        const QString name = rawName.simplified();
        if (name.isEmpty())
            continue;
        ZDTagPtr tag;
        for (const ZDTagPtr &existing : std::as_const(library)) {
            if (ZDTag::isTagNameEquivalentToName(existing->title(), name)) {
                tag = existing;
                break;
            }
        }
        if (!tag) {
            tag = ZDTag::create(name);
            library.append(tag);
            created = true;
        }
        if (!uuids.contains(tag->UUID()))
            uuids.append(tag->UUID());
    }
    if (uuids == snippet->tagUUIDs())
        return false;
    if (created && m_center && !m_center->setTags(library))
        return false;
    snippet->setTagUUIDs(uuids);
    save(snippet);
    m_notifier->noteSnippetsTagsChanged({snippet}, m_sender);
    return true;
}

ZDSnippetPartPtr ZDSnippetEditing::addPart(const ZDSnippetPtr &snippet, int index, const ZDLanguage &language)
{
    if (!snippet)
        return nullptr;
    QList<ZDSnippetPartPtr> parts = snippet->parts();
    QStringList titles;
    for (const ZDSnippetPartPtr &part : std::as_const(parts))
        titles.append(part->title());
    auto part = ZDSnippetPart::create(newPartTitle(titles), snippet->UUID());
    if (language.isValid())
        part->setLanguage(language);
    parts.insert(std::clamp<qsizetype>(index, 0, parts.size()), part);
    snippet->setParts(parts);
    save(snippet);
    m_notifier->noteSnippetContentChanged(snippet, m_sender);
    return part;
}

bool ZDSnippetEditing::removePart(const ZDSnippetPtr &snippet, const ZDSnippetPartPtr &part)
{
    if (!snippet || !part || snippet->partsCount() < 2)
        return false;
    QList<ZDSnippetPartPtr> parts = snippet->parts();
    if (!parts.removeIf([&](const ZDSnippetPartPtr &p) { return p->isEqual(part.get()); }))
        return false;
    snippet->setParts(parts);
    save(snippet);
    m_notifier->noteSnippetContentChanged(snippet, m_sender);
    return true;
}

bool ZDSnippetEditing::renamePart(const ZDSnippetPtr &snippet, const ZDSnippetPartPtr &part,
                                  const QString &title)
{
    const QString trimmed = title.trimmed();
    if (!snippet || !part || trimmed.isEmpty() || part->title() == trimmed)
        return false;
    part->setTitle(trimmed);
    save(snippet);
    m_notifier->noteSnippetContentChanged(snippet, m_sender);
    return true;
}

bool ZDSnippetEditing::movePart(const ZDSnippetPtr &snippet, int from, int to)
{
    if (!snippet)
        return false;
    QList<ZDSnippetPartPtr> parts = snippet->parts();
    if (from == to || from < 0 || to < 0 || from >= parts.size() || to >= parts.size())
        return false;
    parts.move(from, to);
    snippet->setParts(parts);
    save(snippet);
    m_notifier->noteSnippetContentChanged(snippet, m_sender);
    return true;
}

bool ZDSnippetEditing::setLanguage(const ZDSnippetPtr &snippet, const ZDSnippetPartPtr &part,
                                   const ZDLanguage &language)
{
    if (!snippet || !part || !language.isValid() || part->language() == language)
        return false;
    part->setLanguage(language);
    save(snippet);
    m_notifier->noteSnippetsLanguageChanged({snippet}, m_sender);
    return true;
}

void ZDSnippetEditing::setContent(const ZDSnippetPartPtr &part, const QString &content)
{
    if (part)
        part->setContent(content);
}

void ZDSnippetEditing::setNote(const ZDSnippetPartPtr &part, const QString &note)
{
    if (part)
        part->setNote(note);
}

void ZDSnippetEditing::commitText(const ZDSnippetPtr &snippet)
{
    if (!snippet)
        return;
    save(snippet);
    m_notifier->noteSnippetContentChanged(snippet, m_sender);
}
