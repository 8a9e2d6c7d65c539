#pragma once

#include "ZDRecordTypes.h"

#include <QList>
#include <QString>
#include <QUrl>

class QMimeData;

/// Snippets on the clipboard and in drag and drop. The format "com.varnok.Zandrio.UTI.Snippet"
/// holds the keyed archive of the snippet (of an array of snippets when there are several);
/// reading keeps every field, the UUID included, so the library decides whether a drop is a
/// move or a copy. Dragging out also offers every part as a file (`text/uri-list`).
namespace ZDSnippetPasteboard {
inline constexpr char kSnippetType[] = "com.varnok.Zandrio.UTI.Snippet";

/// Puts `snippets` on `mimeData` in the snippet format; with a non-empty `fileFolder` also
/// writes their parts there (see writePartFiles) and offers them as URLs.
void writeSnippets(QMimeData *mimeData, const ZDSnippetList &snippets, const QString &fileFolder = {});
/// Writes each part's content (UTF-8) into `folder` under the part's file name, replacing what
/// is there; returns the files written. A name that would leave the folder is not written.
QList<QUrl> writePartFiles(const ZDSnippetList &snippets, const QString &folder);
/// A new folder for dragged-out files under the system's temporary directory; it is removed,
/// with every other drag folder of the process, when the process exits.
QString makeDragFolder();

bool canReadSnippets(const QMimeData *mimeData);
/// The snippets in `mimeData`, empty when there are none or the data is not readable.
ZDSnippetList readSnippets(const QMimeData *mimeData);
} // namespace ZDSnippetPasteboard
