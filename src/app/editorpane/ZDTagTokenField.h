#pragma once

#include <QStringList>
#include <QWidget>

class QCompleter;
class QHBoxLayout;
class QLineEdit;
class QStringListModel;

/// A one-line field of tag tokens: each tag is drawn as a chip with a remove mark, and the text
/// typed after the chips becomes a new token on Return, comma or Tab, or when the field loses
/// the focus. Backspace in the empty text removes the last token. Typing completes from the
/// names of the library's tags (those not yet in the field).
class ZDTagTokenField : public QWidget
{
    Q_OBJECT
public:
    explicit ZDTagTokenField(QWidget *parent = nullptr);

    /// Shows these tokens; does not announce an edit.
    void setTagNames(const QStringList &names);
    QStringList tagNames() const { return m_names; }
    /// The names typing completes from.
    void setCompletionNames(const QStringList &names);
    QStringList completionNames() const;
    QLineEdit *lineEdit() const { return m_edit; }
    QCompleter *completer() const { return m_completer; }

    /// Adds a token (ignoring an empty name or one already there, compared ignoring case).
    void addTagName(const QString &name);
    /// Adds several tokens as one edit (one tagNamesEdited).
    void addTagNames(const QStringList &rawNames);
    void removeTagNameAt(int index);

Q_SIGNALS:
    /// The user changed the tokens.
    void tagNamesEdited(const QStringList &names);

protected:
    bool eventFilter(QObject *watched, QEvent *event) override;

private:
    void commitTypedText();
    void rebuildChips();
    void updateCompletions();

    QStringList m_names;
    QStringList m_allCompletions;
    QHBoxLayout *m_layout = nullptr;
    QList<QWidget *> m_chips;
    QLineEdit *m_edit = nullptr;
    QCompleter *m_completer = nullptr;
    QStringListModel *m_completionModel = nullptr;
};
