#pragma once

#include <QDialog>

class QCheckBox;
class QLineEdit;
class QSpinBox;

/// The small form the editor shows to collect a Markdown link, image or table before inserting it.
class ZDMarkdownInsertSheet : public QDialog
{
    Q_OBJECT
public:
    enum class Kind
    {
        Link,
        Image,
        Table
    };

    /// `suggestedText` prefills the link text or alt text, `suggestedIdentifier` the identifier.
    ZDMarkdownInsertSheet(Kind kind, const QString &suggestedText, const QString &suggestedIdentifier,
                          QWidget *parent = nullptr);

    Kind kind() const { return m_kind; }
    QLineEdit *urlField() const { return m_url; }
    /// The link text, or the image's alt text.
    QLineEdit *textField() const { return m_text; }
    QLineEdit *titleField() const { return m_title; }
    QLineEdit *identifierField() const { return m_identifier; }
    QCheckBox *referenceStyleBox() const { return m_referenceStyle; }
    QSpinBox *rowsBox() const { return m_rows; }
    QSpinBox *columnsBox() const { return m_columns; }

    /// The smallest number not yet used as a reference identifier ("[n]:") in `text`.
    static QString nextFreeIdentifier(const QString &text);

private:
    Kind m_kind;
    QLineEdit *m_url = nullptr;
    QLineEdit *m_text = nullptr;
    QLineEdit *m_title = nullptr;
    QLineEdit *m_identifier = nullptr;
    QCheckBox *m_referenceStyle = nullptr;
    QSpinBox *m_rows = nullptr;
    QSpinBox *m_columns = nullptr;
};
