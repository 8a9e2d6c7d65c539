#include "ZDSnippetPasteboard.h"

#include "ZDKeyedArchive.h"
#include "ZDLogger.h"
#include "ZDRecordArchive.h"
#include "ZDSnippet.h"

#include <QDir>
#include <QMimeData>
#include <QSaveFile>
#include <QTemporaryDir>

namespace ZDSnippetPasteboard {

void writeSnippets(QMimeData *mimeData, const ZDSnippetList &snippets, const QString &fileFolder)
{
    if (!mimeData || snippets.isEmpty())
        return;
    QVariant root;
    if (snippets.size() == 1) {
        root = ZDRecordArchive::snippetObject(*snippets.first());
    } else {
        QVariantList objects;
        for (const ZDSnippetPtr &snippet : snippets)
            objects.append(ZDRecordArchive::snippetObject(*snippet));
        root = objects;
    }
    mimeData->setData(QLatin1String(kSnippetType), ZDKeyedArchive::archivedData(root));
    if (!fileFolder.isEmpty())
        mimeData->setUrls(writePartFiles(snippets, fileFolder));
}

QList<QUrl> writePartFiles(const ZDSnippetList &snippets, const QString &folder)
{
    QList<QUrl> urls;
    const QDir directory(folder);
    for (const ZDSnippetPtr &snippet : snippets) {
        for (const ZDSnippetPartPtr &part : snippet->parts()) {
            const QString name = part->filenameWithSnippet(snippet.get());
            if (name.contains(QLatin1Char('/')) || name == QLatin1String(".") || name == QLatin1String(".."))
                continue;
            const QString path = directory.filePath(name);
            QSaveFile file(path);
            if (!file.open(QIODevice::WriteOnly) || file.write(part->content().toUtf8()) < 0 || !file.commit()) {
                zdLog(ZDLogLevel::Warning, ZDLogDomain::General,
                      QStringLiteral("Cannot write dragged part to %1: %2").arg(path, file.errorString()));
                continue;
            }
            const QUrl url = QUrl::fromLocalFile(path);
            if (!urls.contains(url))
                urls.append(url);
        }
    }
    return urls;
}

QString makeDragFolder()
{
    // Every drag gets its own folder, all under one folder of this process that goes away when
    // the process ends: the receiver has read the files by then, and the temporary directory
    // does not fill up with a copy of every part ever dragged.
    static QTemporaryDir processFolder(QDir::temp().filePath(QStringLiteral("zandrio-drag-XXXXXX")));
    if (!processFolder.isValid())
        return {};
    QTemporaryDir folder(processFolder.filePath(QStringLiteral("XXXXXX")));
    folder.setAutoRemove(false);
    return folder.isValid() ? folder.path() : QString();
}

bool canReadSnippets(const QMimeData *mimeData)
{
    return mimeData && mimeData->hasFormat(QLatin1String(kSnippetType));
}

ZDSnippetList readSnippets(const QMimeData *mimeData)
{
    ZDSnippetList snippets;
    if (!canReadSnippets(mimeData))
        return snippets;
    QVariant root;
    ZDError error;
    if (!ZDKeyedArchive::unarchive(mimeData->data(QLatin1String(kSnippetType)), &root, &error)) {
        zdLog(ZDLogLevel::Warning, ZDLogDomain::General, QStringLiteral("Unreadable pasted snippet: ") + error.toString());
        return snippets;
    }
    const QVariantList objects = root.typeId() == QMetaType::QVariantList ? root.toList() : QVariantList{root};
    for (const QVariant &object : objects) {
        if (ZDSnippetPtr snippet = ZDRecordArchive::snippetFromObject(object))
            snippets.append(snippet);
    }
    return snippets;
}

} // namespace ZDSnippetPasteboard
