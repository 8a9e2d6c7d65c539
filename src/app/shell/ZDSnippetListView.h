#pragma once

#include "ZDRecordTypes.h"

#include <QListView>

class ZDEditorTheme;
class ZDSnippetListModel;

/// The snippet list: two lines a row (title and date; folder and languages), several rows may
/// be selected, rows drag out as snippets and as part files. Takes the editor theme's colours.
class ZDSnippetListView : public QListView
{
    Q_OBJECT
public:
    explicit ZDSnippetListView(QWidget *parent = nullptr);

    void setListModel(ZDSnippetListModel *model);
    ZDSnippetListModel *listModel() const { return m_model; }
    void applyTheme(const ZDEditorTheme &theme);

    ZDSnippetList selectedSnippets() const;
    /// Selects the snippet and makes it current; false when it is not listed.
    bool selectSnippet(const QString &UUID);

Q_SIGNALS:
    /// The selection changed (by the user or by a reload).
    void selectedSnippetsChanged(const ZDSnippetList &snippets);
    void deleteRequested();

protected:
    void keyPressEvent(QKeyEvent *event) override;

private:
    ZDSnippetListModel *m_model = nullptr;
};
