#pragma once

#include "ZDRecordTypes.h"

#include <QAbstractListModel>
#include <QHash>

/// The snippet list: the snippets of the selected sidebar node (or a search's results), each
/// row a snippet with its title, date, folder and languages. Rows are sorted by the sort
/// preferences, except search results arranged by relevance, which keep their order.
class ZDSnippetListModel : public QAbstractListModel
{
    Q_OBJECT
public:
    enum Role { SnippetRole = Qt::UserRole + 1, UUIDRole, DateRole, FolderRole, LanguagesRole };

    explicit ZDSnippetListModel(QObject *parent = nullptr);

    /// Replaces the rows; sorts them unless `keepOrder`.
    void setSnippets(const ZDSnippetList &snippets, bool keepOrder = false);
    void setSortDescriptor(int sortMethod, int sortOrder);
    ZDSnippetList snippets() const { return m_snippets; }
    ZDSnippetPtr snippetAt(int row) const;
    /// -1 when the snippet is not listed.
    int rowOfSnippet(const QString &UUID) const;

    /// A listed snippet changed: its row is redrawn and, when sorted, moved to its place.
    void snippetChanged(const QString &UUID);
    /// Inserts a new snippet at its sorted place (first when the order is kept).
    void insertSnippet(const ZDSnippetPtr &snippet);
    void removeSnippets(const QStringList &UUIDs);

    int rowCount(const QModelIndex &parent = {}) const override;
    QVariant data(const QModelIndex &index, int role = Qt::DisplayRole) const override;
    Qt::ItemFlags flags(const QModelIndex &index) const override;
    QStringList mimeTypes() const override;
    /// The snippets in the clipboard format, their UUIDs for the sidebar, and their parts as
    /// files for the file manager.
    QMimeData *mimeData(const QModelIndexList &indexes) const override;
    Qt::DropActions supportedDragActions() const override;

private:
    void reindex();
    /// Records the rows from `from` up to `to`.
    void reindex(int from, int to);

    ZDSnippetList m_snippets;
    QHash<QString, int> m_rows;
    int m_sortMethod;
    int m_sortOrder;
    bool m_keepOrder = false;
};
