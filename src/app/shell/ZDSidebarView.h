#pragma once

#include "ZDRecordTypes.h"

#include <QTreeView>

#include <memory>

class ZDEditorTheme;
class ZDSidebarModel;

/// The sidebar: group headers in small capitals, nodes with their icon and snippet count, drag
/// and drop by the model's rules, in the editor theme's sidebar colours. Keeps groups and
/// folders expanded across reloads.
class ZDSidebarView : public QTreeView
{
    Q_OBJECT
public:
    explicit ZDSidebarView(QWidget *parent = nullptr);

    void setSidebarModel(ZDSidebarModel *model);
    ZDSidebarModel *sidebarModel() const { return m_model; }
    void applyTheme(const ZDEditorTheme &theme);

    ZDCategoryNodePtr selectedNode() const;
    /// Selects the node of that kind and identity; false when the sidebar does not show it.
    bool selectNode(unsigned type, const QString &UUID);

Q_SIGNALS:
    void selectedNodeChanged(const ZDCategoryNodePtr &node);

private:
    void rememberExpansion();
    void restoreExpansion();

    ZDSidebarModel *m_model = nullptr;
    QSet<QString> m_collapsed;
    QString m_selectedKey;
};
