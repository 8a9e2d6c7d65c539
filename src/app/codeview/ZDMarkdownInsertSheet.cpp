#include "ZDMarkdownInsertSheet.h"

#include <QCheckBox>
#include <QDialogButtonBox>
#include <QFormLayout>
#include <QLineEdit>
#include <QPushButton>
#include <QSpinBox>

ZDMarkdownInsertSheet::ZDMarkdownInsertSheet(Kind kind, const QString &suggestedText,
                                             const QString &suggestedIdentifier, QWidget *parent)
    : QDialog(parent), m_kind(kind)
{
    auto *form = new QFormLayout;
    auto *buttons = new QDialogButtonBox(QDialogButtonBox::Ok | QDialogButtonBox::Cancel);
    connect(buttons, &QDialogButtonBox::accepted, this, &QDialog::accept);
    connect(buttons, &QDialogButtonBox::rejected, this, &QDialog::reject);

    if (kind == Kind::Table) {
        setWindowTitle(tr("Insert Table"));
        m_rows = new QSpinBox;
        m_columns = new QSpinBox;
        for (QSpinBox *box : {m_rows, m_columns}) {
            box->setRange(0, 100);
            box->setValue(3);
        }
        form->addRow(tr("Rows:"), m_rows);
        form->addRow(tr("Columns:"), m_columns);
    } else {
        const bool link = kind == Kind::Link;
        setWindowTitle(link ? tr("Insert Link") : tr("Insert Image"));
        m_url = new QLineEdit;
        m_text = new QLineEdit(suggestedText);
        m_title = new QLineEdit;
        m_identifier = new QLineEdit(suggestedIdentifier);
        m_referenceStyle = new QCheckBox(tr("Reference style"));
        form->addRow(tr("URL:"), m_url);
        form->addRow(link ? tr("Link text:") : tr("Alt text:"), m_text);
        form->addRow(tr("Title:"), m_title);
        form->addRow(tr("Identifier:"), m_identifier);
        form->addRow(QString(), m_referenceStyle);
        // A reference needs an identifier; any link needs its URL.
        const auto validate = [this, buttons] {
            const bool complete =
                !m_url->text().trimmed().isEmpty() &&
                (!m_referenceStyle->isChecked() || !m_identifier->text().trimmed().isEmpty());
            buttons->button(QDialogButtonBox::Ok)->setEnabled(complete);
        };
        connect(m_url, &QLineEdit::textChanged, this, validate);
        connect(m_identifier, &QLineEdit::textChanged, this, validate);
        connect(m_referenceStyle, &QCheckBox::toggled, this, validate);
        validate();
    }
    form->addRow(buttons);
    setLayout(form);
}

QString ZDMarkdownInsertSheet::nextFreeIdentifier(const QString &text)
{
    int identifier = 1;
    while (text.contains(QStringLiteral("[%1]:").arg(identifier)))
        ++identifier;
    return QString::number(identifier);
}
